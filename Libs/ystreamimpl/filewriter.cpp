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

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <unistd.h>

#include "filetarget.h"

namespace kelmora {
namespace {

constexpr mode_t kNewFileMode = 0666;  // less the user's mask
constexpr mode_t kPermissions = 0777;
constexpr mode_t kModeBits = 07777;
constexpr int kNameAttempts = 1000;
constexpr const char* kNameStart = ".kelmora-new-";
constexpr const char* kOwnDescriptors = "/proc/self/fd/";  // by which a nameless file gets a name
constexpr int kCopyBlock = 65536;                          // bytes
constexpr long kPipePauseNanoseconds = 20'000'000;
constexpr int kPipePausesPerSecond = 50;

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

// Whether a file whose copy cannot be made, named or moved beside its target can still be written
// in its place. On a full disk, or one that fails, that would only cost the old content.
bool MayOverwrite(int failure) {
  constexpr int kNumbers[] = {EACCES, EBUSY, EINVAL, ENAMETOOLONG, EPERM, EROFS, EXDEV};
  return std::find(std::begin(kNumbers), std::end(kNumbers), failure) != std::end(kNumbers);
}

// Takes the lock of a file, unless another run has it. Where the file system has no locks, none
// has.
bool TakeLock(const FileDescriptor& file) {
  return flock(file.Number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

FileDescriptor FileInMemory() {
  return FileDescriptor(memfd_create("kelmora", MFD_CLOEXEC));
}

// Makes the content of one file that of another, whose room is kept until the end. Returns 0 or the
// system's number.
int CopyContent(const FileDescriptor& from, const FileDescriptor& to) {
  if (lseek(from.Number(), 0, SEEK_SET) != 0 || lseek(to.Number(), 0, SEEK_SET) != 0) return errno;
  const auto block = std::make_unique<char[]>(kCopyBlock);
  off_t length = 0;
  while (true) {
    const ssize_t count = read(from.Number(), block.get(), kCopyBlock);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return ftruncate(to.Number(), length) == 0 ? 0 : errno;
    length += count;
    const int failure = WriteAll(to.Number(), {block.get(), static_cast<std::size_t>(count)});
    if (failure != 0) return failure;
  }
}

// Closing tells of writes that failed late; this asks for it and keeps the file open.
int AskForLateFailure(const FileDescriptor& file) {
  FileDescriptor duplicate = DuplicateDescriptor(file.Number());
  return duplicate.IsOpen() ? duplicate.Close() : errno;
}

}  // namespace

FileWriter::FileWriter(std::string path) : path_(std::move(path)) {}

FileWriter::~FileWriter() {
  DropReplacement();
}

int FileWriter::Open() {
  if (const int number = DescriptorOfName(path_); number >= 0) {
    file_ = DuplicateDescriptor(number);
    return file_.IsOpen() ? 0 : errno;
  }
  struct stat status {};
  isNew_ = stat(path_.c_str(), &status) != 0;
  if (isNew_ && errno != ENOENT) return errno;
  if (!isNew_) {
    if (S_ISFIFO(status.st_mode)) return OpenPipe();
    if (!S_ISREG(status.st_mode)) return OpenDirectly();
    // A file that its owner has protected is not to be replaced behind his back.
    if (access(path_.c_str(), W_OK) != 0) return errno;
  }
  if (path_.ends_with('/')) return OpenDirectly();  // which is refused
  target_ = std::make_unique<FileTarget>();
  if (const int failure = target_->Resolve(path_)) return failure;
  if (isNew_) return OpenCopy(nullptr);
  // A name below /proc can lead to a file that has lost its own.
  return target_->IsNameOf(status) ? OpenCopy(&status) : OpenDirectly();
}

int FileWriter::OpenDirectly() {
  target_.reset();
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

int FileWriter::OpenCopy(const struct stat* replaced) {
  manner_ = Manner::kReplace;
  const int failure =
      MakeReplacement(replaced != nullptr ? replaced->st_mode & kPermissions : kNewFileMode);
  if (failure == 0) {
    if (replaced != nullptr && !KeepOwnerAndMode(*replaced)) manner_ = Manner::kOverwrite;
    return 0;
  }
  if (!MayOverwrite(failure)) return failure;
  manner_ = Manner::kOverwrite;
  file_ = FileInMemory();
  return file_.IsOpen() ? 0 : errno;
}

int FileWriter::MakeReplacement(mode_t mode) {
  const int directory = target_->Directory();
  if (access(kOwnDescriptors, X_OK) == 0) {
    file_ = FileDescriptor(openat(directory, ".", O_RDWR | O_TMPFILE | O_CLOEXEC, mode));
    if (file_.IsOpen()) return 0;
  }
  return TakeName([this, directory, mode](const char* name) {
    file_ = FileDescriptor(openat(directory, name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file_.IsOpen()) return false;
    if (TakeLock(file_)) return true;
    errno = EEXIST;  // another run has taken it for a leftover meanwhile
    return false;
  });
}

int FileWriter::NameReplacement() {
  static_cast<void>(TakeLock(file_));  // nobody else can have it while it is nameless
  return TakeName([this](const char* name) { return LinkNameless(name); });
}

bool FileWriter::LinkNameless(const char* name) {
  const std::string nameless = kOwnDescriptors + std::to_string(file_.Number());
  return linkat(AT_FDCWD, nameless.c_str(), target_->Directory(), name, AT_SYMLINK_FOLLOW) == 0;
}

// Offers names beside the target, until `take` can make one of them that of the copy, which is
// locked by then: that tells other runs that its own one lives.
template <class Take>
int FileWriter::TakeName(const Take& take) {
  int failure = EEXIST;
  for (int attempt = 0; attempt < kNameAttempts && failure == EEXIST; ++attempt) {
    replacement_ = kNameStart + std::to_string(attempt);
    failure = take(replacement_.c_str()) ? 0 : errno;
    if (failure == EEXIST && RemoveLeftover()) failure = take(replacement_.c_str()) ? 0 : errno;
    if (failure == 0 && !IsCopy(file_)) failure = EEXIST;
  }
  if (failure != 0) replacement_.clear();
  return failure;
}

bool FileWriter::IsCopy(const FileDescriptor& file) const {
  struct stat status {};
  return fstat(file.Number(), &status) == 0 && S_ISREG(status.st_mode) &&
         target_->IsNameOf(status, replacement_.c_str());
}

// Removes what a run left that was killed between naming its copy and moving it. The name is looked
// at again under the lock: it may be another file's by then.
bool FileWriter::RemoveLeftover() const {
  const FileDescriptor left(openat(target_->Directory(), replacement_.c_str(),
                                   O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  return left.IsOpen() && flock(left.Number(), LOCK_EX | LOCK_NB) == 0 && IsCopy(left) &&
         unlinkat(target_->Directory(), replacement_.c_str(), 0) == 0;
}

bool FileWriter::KeepOwnerAndMode(const struct stat& replaced) {
  struct stat made {};
  if (fstat(file_.Number(), &made) != 0) return false;
  const bool sameOwner = made.st_uid == replaced.st_uid && made.st_gid == replaced.st_gid;
  if (!sameOwner && fchown(file_.Number(), replaced.st_uid, replaced.st_gid) != 0) return false;
  return fchmod(file_.Number(), replaced.st_mode & kModeBits) == 0;
}

void FileWriter::DropReplacement() {
  if (!replacement_.empty()) unlinkat(target_->Directory(), replacement_.c_str(), 0);
  replacement_.clear();
  static_cast<void>(file_.Close());
}

int FileWriter::Write(std::string_view bytes) {
  return WriteAll(file_.Number(), bytes);
}

int FileWriter::Commit() {
  if (manner_ == Manner::kDirect) return file_.Close();
  if (const int failure = AskForLateFailure(file_)) return failure;
  if (manner_ == Manner::kReplace) {
    const int failure = ReplaceTarget();
    if (failure == 0 || !MayOverwrite(failure)) return failure;
  }
  return OverwriteTarget();
}

int FileWriter::ReplaceTarget() {
  if (replacement_.empty()) {
    if (isNew_ && LinkNameless(target_->Name())) return 0;
    if (isNew_ && errno != EEXIST) return errno;
    if (const int failure = NameReplacement()) return failure;
  }
  const int directory = target_->Directory();
  if (renameat(directory, replacement_.c_str(), directory, target_->Name()) != 0) return errno;
  replacement_.clear();
  return 0;
}

int FileWriter::OverwriteTarget() {
  const int making = isNew_ ? O_CREAT | O_EXCL : 0;
  const FileDescriptor target(openat(target_->Directory(), target_->Name(),
                                     O_RDWR | O_NOCTTY | O_CLOEXEC | making, kNewFileMode));
  if (!target.IsOpen()) return errno;
  const FileDescriptor old = FileInMemory();
  if (!old.IsOpen()) return errno;
  if (const int failure = CopyContent(target, old)) return failure;
  int failure = CopyContent(file_, target);
  if (failure == 0) failure = AskForLateFailure(target);
  if (failure == 0) return 0;
  if (isNew_) {
    unlinkat(target_->Directory(), target_->Name(), 0);
  } else {
    static_cast<void>(CopyContent(old, target));
  }
  return failure;
}

}  // namespace kelmora
