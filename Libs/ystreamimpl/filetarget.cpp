#include "filetarget.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <unistd.h>

namespace kelmora {
namespace {

constexpr int kMostLinks = 40;  // as many as the system follows

}  // namespace

int FileTarget::Resolve(const std::string& path) {
  directory_ = FileDescriptor();
  std::string rest = path;
  for (int link = 0; link <= kMostLinks; ++link) {
    if (const int failure = Enter(rest)) return failure;
    char content[PATH_MAX];
    const ssize_t length = readlinkat(Directory(), Name(), content, sizeof content);
    if (length < 0) return errno == EINVAL || errno == ENOENT ? 0 : errno;
    rest.assign(content, static_cast<std::size_t>(length));
  }
  return ELOOP;
}

// Goes on from the directory that is open, if there is one.
int FileTarget::Enter(const std::string& path) {
  const std::size_t end = path.rfind('/') + 1;
  const std::string directory = end == 0 ? "." : path.substr(0, end);
  const int from = directory_.IsOpen() ? Directory() : AT_FDCWD;
  directory_ = FileDescriptor(openat(from, directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  name_ = path.substr(end);
  return directory_.IsOpen() ? 0 : errno;
}

bool FileTarget::IsNameOf(const struct stat& file, const char* name) const {
  struct stat found {};
  return fstatat(Directory(), name != nullptr ? name : Name(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
         found.st_dev == file.st_dev && found.st_ino == file.st_ino;
}

}  // namespace kelmora
