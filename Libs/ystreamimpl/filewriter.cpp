// The new content goes to a file without a name (O_TMPFILE), or where there are none to one with a
// name of its own beside the target; Commit gives it that name if it has none yet and renames it
// over the target, which the system does in one step. `target_` is the file behind all symbolic
// links, and empty when `path_` is written directly; `replacement_` is the name beside it, empty as
// long as there is none.
//
// The traps are the targets that a rename would harm: pipes and devices, files of another owner,
// files in a directory that may not be written, mount points. They are written in place, after all
// that can fail without touching them. A failure that a full disk or a quota gives ends the writing
// instead, since the old content is worth more than a part of the new.
#include "ystreamimpl/filewriter.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace kelmora {
namespace {

constexpr mode_t kNewFileMode = 0666;  // less the user's mask
constexpr mode_t kPermissions = 0777;
constexpr mode_t kModeBits = 07777;
constexpr int kNameAttempts = 100;
constexpr const char* kOwnDescriptors = "/proc/self/fd/";  // by which a nameless file gets a name
constexpr int kCopyBlock = 65536;                          // bytes
constexpr long kPipePauseNanoseconds = 20'000'000;
constexpr int kPipePausesPerSecond = 50;

std::string ResolveLinks(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr),
                                                             &std::free);
  return resolved != nullptr ? resolved.get() : "";
}

// With its slash; empty for a bare name.
std::string DirectoryOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

// A pipe that this process was given may be one that never waits.
int AwaitRoom(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  return poll(&waiting, 1, -1) >= 0 || errno == EINTR ? 0 : errno;
}

int WriteAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    if (count >= 0 || errno == EINTR) continue;
    if (errno != EAGAIN) return errno;
    if (const int failure = AwaitRoom(descriptor)) return failure;
  }
  return 0;
}

// Whether a file that cannot be made or named beside its target can still be written in its place.
// On a full disk that would only cost the old content.
bool MayWriteInPlace(int failure) {
  return failure == EACCES || failure == EPERM || failure == EROFS || failure == ENAMETOOLONG;
}

}  // namespace

FileWriter::~FileWriter() {
  DropReplacement();
}

int FileWriter::Open() {
  if (const int number = DescriptorOfName(path_); number >= 0) {
    file_ = DuplicateDescriptor(number);
    return file_.IsOpen() ? 0 : errno;
  }
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) {
    struct stat link {};
    if (errno != ENOENT || lstat(path_.c_str(), &link) == 0) return OpenDirectly();
    target_ = path_;
    return OpenReplacement(nullptr);
  }
  if (S_ISFIFO(status.st_mode)) return OpenPipe();
  if (!S_ISREG(status.st_mode)) return OpenDirectly();
  // A file that its owner has protected is not to be replaced behind his back.
  if (access(path_.c_str(), W_OK) != 0) return errno;
  target_ = ResolveLinks(path_);
  return target_.empty() ? OpenDirectly() : OpenReplacement(&status);
}

int FileWriter::OpenDirectly() {
  target_.clear();
  file_ = FileDescriptor(
      open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, kNewFileMode));
  return file_.IsOpen() ? 0 : errno;
}

// Opening a pipe waits for its reader; one that never comes must not hang the run.
int FileWriter::OpenPipe() {
  for (int pause = 0; pause < kPipeSeconds * kPipePausesPerSecond; ++pause) {
    file_ = FileDescriptor(open(path_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
    if (file_.IsOpen()) {
      const int flags = fcntl(file_.Number(), F_GETFL);
      return fcntl(file_.Number(), F_SETFL, flags & ~O_NONBLOCK) == 0 ? 0 : errno;
    }
    if (errno != ENXIO) return errno;
    const timespec time{0, kPipePauseNanoseconds};
    nanosleep(&time, nullptr);
  }
  return ETIMEDOUT;
}

int FileWriter::OpenReplacement(const struct stat* replaced) {
  const mode_t mode = replaced != nullptr ? replaced->st_mode & kPermissions : kNewFileMode;
  if (const int failure = MakeReplacement(mode)) {
    return replaced == nullptr || MayWriteInPlace(failure) ? OpenDirectly() : failure;
  }
  if (replaced == nullptr || KeepOwnerAndMode(*replaced)) return 0;
  DropReplacement();
  return OpenDirectly();
}

int FileWriter::MakeReplacement(mode_t mode) {
  const std::string directory = DirectoryOf(target_);
  if (access(kOwnDescriptors, X_OK) == 0) {
    file_ = FileDescriptor(
        open(directory.empty() ? "." : directory.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, mode));
    if (file_.IsOpen()) return 0;
  }
  return TakeName([this, mode](const char* name) {
    file_ = FileDescriptor(open(name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    return file_.IsOpen();
  });
}

int FileWriter::NameReplacement() {
  const std::string nameless = kOwnDescriptors + std::to_string(file_.Number());
  return TakeName([&nameless](const char* name) {
    return linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
  });
}

// Offers names beside the target, until `take` can make one of them that of the new file.
template <class Take>
int FileWriter::TakeName(const Take& take) {
  const std::string start = DirectoryOf(target_) + ".kelmora-" + std::to_string(getpid()) + "-";
  int failure = EEXIST;
  for (int attempt = 0; attempt < kNameAttempts && failure == EEXIST; ++attempt) {
    replacement_ = start + std::to_string(attempt);
    failure = take(replacement_.c_str()) ? 0 : errno;
  }
  if (failure != 0) replacement_.clear();
  return failure;
}

bool FileWriter::KeepOwnerAndMode(const struct stat& replaced) {
  struct stat made {};
  if (fstat(file_.Number(), &made) != 0) return false;
  const bool sameOwner = made.st_uid == replaced.st_uid && made.st_gid == replaced.st_gid;
  if (!sameOwner && fchown(file_.Number(), replaced.st_uid, replaced.st_gid) != 0) return false;
  return fchmod(file_.Number(), replaced.st_mode & kModeBits) == 0;
}

void FileWriter::DropReplacement() {
  static_cast<void>(file_.Close());
  if (!replacement_.empty()) unlink(replacement_.c_str());
  replacement_.clear();
}

int FileWriter::Write(std::string_view bytes) {
  return WriteAll(file_.Number(), bytes);
}

int FileWriter::Commit() {
  if (target_.empty()) return file_.Close();
  // Closing tells of writes that failed late, which must be known before the old file goes; the
  // descriptor itself may yet be needed.
  if (const int failure = DuplicateDescriptor(file_.Number()).Close()) return failure;
  if (replacement_.empty()) {
    const int failure = NameReplacement();
    if (failure != 0) return MayWriteInPlace(failure) ? CopyOverTarget() : failure;
  }
  if (rename(replacement_.c_str(), target_.c_str()) != 0) return CopyOverTarget();
  replacement_.clear();
  return file_.Close();
}

// A file that is a mount point of its own cannot be replaced, only written; nor can one whose
// replacement may get no name.
int FileWriter::CopyOverTarget() {
  FileDescriptor target(
      open(target_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFileMode));
  if (!target.IsOpen()) return errno;
  if (lseek(file_.Number(), 0, SEEK_SET) != 0) return errno;
  const auto block = std::make_unique<char[]>(kCopyBlock);
  while (true) {
    const ssize_t count = read(file_.Number(), block.get(), kCopyBlock);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return target.Close();
    const int failure = WriteAll(target.Number(), {block.get(), static_cast<std::size_t>(count)});
    if (failure != 0) return failure;
  }
}

}  // namespace kelmora
