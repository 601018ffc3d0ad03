#include <filesystem>
#include <system_error>

#include "tqcore/tqtext.h"
#include "tqforwardingstream.h"

namespace kelmora {

namespace {

constexpr std::u16string_view kBuildDirectories[] = {u"/release", u"/serverrelease"};

TQString ExecutablePath() {
  std::error_code error;
  return FromNative(std::filesystem::read_symlink("/proc/self/exe", error).native());
}

}  // namespace

ResultCode TQModuleFileStream::Open(std::u16string_view name, StreamMode mode) {
  const TQString path = ModuleDirectory(ExecutablePath()) + TQString(name).FileName();
  return TQForwardingStream::Open(path.View(), mode);
}

TQString TQModuleFileStream::ModuleDirectory(const TQString& executable) {
  TQString directory = executable.Directory(false);
  for (std::u16string_view build : kBuildDirectories) {
    const int found = directory.Find(build);
    if (found == TQString::kNotFound) continue;
    directory = directory.Left(found + static_cast<int>(build.size()));
    break;
  }
  return directory += u'/';
}

}  // namespace kelmora
