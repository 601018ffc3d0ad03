#include "ystreamimpl/filedescriptor.h"

#include <cerrno>
#include <charconv>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace kelmora {
namespace {

struct StandardName {
  std::string_view path;
  int number;
};
constexpr StandardName kStandardNames[] = {
    {"/dev/stdin", 0}, {"/dev/stdout", 1}, {"/dev/stderr", 2}};
constexpr std::string_view kNumberedNames[] = {"/dev/fd/", "/proc/self/fd/"};

}  // namespace

int FileDescriptor::Close() {
  const int number = std::exchange(number_, -1);
  return number >= 0 && close(number) != 0 ? errno : 0;
}

int DescriptorOfName(const std::string& path) {
  for (const StandardName& name : kStandardNames) {
    if (path == name.path) return name.number;
  }
  for (const std::string_view name : kNumberedNames) {
    if (!path.starts_with(name)) continue;
    int number = -1;
    const char* end = path.data() + path.size();
    const auto [stop, failure] = std::from_chars(path.data() + name.size(), end, number);
    if (failure == std::errc() && stop == end && number >= 0) return number;
  }
  return -1;
}

FileDescriptor DuplicateDescriptor(int number) {
  return FileDescriptor(fcntl(number, F_DUPFD_CLOEXEC, 0));
}

}  // namespace kelmora
