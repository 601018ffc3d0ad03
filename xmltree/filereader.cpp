#include "filereader.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fileerror.h"
#include "tqcore/processstate.h"
#include "tqcore/tqtext.h"
#include "ystreamimpl/filedescriptor.h"
#include "ystreamimpl/patience.h"

namespace kelmora {
namespace {

constexpr std::size_t kFirstBlock = 65536;  // bytes
constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr int kMilliseconds = 1000;

// Without waiting: the mere opening of a pipe that nobody writes to would never return.
FileDescriptor OpenToRead(const std::string& path) {
  return FileDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
}

class Reader {
 public:
  Reader(int descriptor, EncodedBytes& bytes, LoadError& error)
      : descriptor_(descriptor), bytes_(bytes), error_(error) {}

  bool ReadFile(std::size_t size, std::size_t limit) {
    if (size > limit) return Fail(EFBIG);
    bytes_.Resize(size);
    if (!Fill()) return false;
    // Files grow while they are read, and some of the system's own have no size to tell.
    while (length_ == bytes_.Size()) {
      char further = 0;
      const ssize_t count = ReadSome(&further, 1);
      if (count < 0) return Fail(errno);
      if (count == 0) return true;
      if (!Grow(limit)) return Fail(EFBIG);
      bytes_.Data()[length_++] = further;
      if (!Fill()) return false;
    }
    bytes_.Resize(length_);
    return true;
  }

  bool ReadStream(int megabytes, const StreamLimits& limits, bool isNamedPipe) {
    const std::size_t limit = static_cast<std::size_t>(megabytes) * kMegabyte;
    if (isNamedPipe && !AwaitWriter(limits.writerSeconds)) return false;
    while (true) {
      if (length_ == bytes_.Size() && !Grow(limit)) {
        SetFileError(error_, EFBIG,
                     TQString::Format(u"The input does not end within %d MiB", {megabytes}));
        return false;
      }
      if (!AwaitData(limits.silentSeconds)) return false;
      const ssize_t count = ReadSome(bytes_.Data() + length_, bytes_.Size() - length_);
      if (count < 0 && errno == EAGAIN) continue;
      if (count < 0) return Fail(errno);
      if (count == 0) break;
      length_ += static_cast<std::size_t>(count);
    }
    bytes_.Resize(length_);
    return true;
  }

 private:
  bool Fail(int number) {
    SetSystemError(error_, number);
    return false;
  }

  ssize_t ReadSome(char* to, std::size_t room) {
    ssize_t count;
    do {
      count = read(descriptor_, to, room);
    } while (count < 0 && errno == EINTR);
    return count;
  }

  // Up to the end of the file or of the room that there is; at the end the room is cut.
  bool Fill() {
    while (length_ < bytes_.Size()) {
      const ssize_t count = ReadSome(bytes_.Data() + length_, bytes_.Size() - length_);
      if (count < 0) return Fail(errno);
      if (count == 0) {
        bytes_.Resize(length_);
        return true;
      }
      length_ += static_cast<std::size_t>(count);
    }
    return true;
  }

  bool Grow(std::size_t limit) {
    if (bytes_.Size() >= limit) return false;
    bytes_.Resize(std::min(std::max(kFirstBlock, 2 * bytes_.Size()), limit));
    return true;
  }

  // A writer tells of himself by what he writes. One who has not yet written makes the pipe one
  // that may be read later; without a writer it has ended.
  bool AwaitWriter(int seconds) {
    seconds = ProcessState::Of<Patience>().Grant(seconds);
    if (Poll(seconds) != 0) return true;
    bytes_.Resize(1);
    const ssize_t count = ReadSome(bytes_.Data(), 1);
    if (count == 0) return GiveUp(seconds);
    if (count > 0) ++length_;
    return true;
  }

  bool AwaitData(int seconds) {
    seconds = ProcessState::Of<Patience>().Grant(seconds);
    const int ready = Poll(seconds);
    if (ready < 0) return Fail(errno);
    return ready > 0 || GiveUp(seconds);
  }

  // As poll: 0 when the time is over.
  int Poll(int seconds) {
    pollfd waiting{descriptor_, POLLIN, 0};
    int ready;
    do {
      ready = poll(&waiting, 1, seconds * kMilliseconds);
    } while (ready < 0 && errno == EINTR);
    return ready;
  }

  bool GiveUp(int seconds) {
    ProcessState::Of<Patience>().Spend(seconds);
    SetFileError(error_, ETIMEDOUT, TQString::Format(u"No data came within %d seconds", {seconds}));
    return false;
  }

  int descriptor_;
  EncodedBytes& bytes_;
  LoadError& error_;
  std::size_t length_ = 0;  // of what was read into bytes_
};

}  // namespace

bool ReadWholeFile(std::u16string_view path, EncodedBytes& bytes, LoadError& error,
                   const StreamLimits& limits) {
  bytes.Resize(0);
  const std::string name = ToNative(path);
  const int ownDescriptor = DescriptorOfName(name);
  FileDescriptor file = OpenToRead(name);
  const int openFailure = errno;
  struct stat status {};
  const bool isOpen = file.IsOpen() && fstat(file.Number(), &status) == 0;
  if (isOpen && S_ISREG(status.st_mode)) {
    Reader reader(file.Number(), bytes, error);
    return reader.ReadFile(static_cast<std::size_t>(status.st_size), limits.fileBytes);
  }
  // A pipe that this process was given is read through what it was given: only that knows whether
  // a writer was there.
  if (ownDescriptor >= 0) file = DuplicateDescriptor(ownDescriptor);
  if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
    SetSystemError(error, ownDescriptor >= 0 ? errno : openFailure);
    return false;
  }
  if (S_ISDIR(status.st_mode)) {
    SetSystemError(error, EISDIR);
    return false;
  }
  const bool isDevice = S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode);
  Reader reader(file.Number(), bytes, error);
  return reader.ReadStream(isDevice ? limits.deviceMegabytes : limits.pipeMegabytes, limits,
                           S_ISFIFO(status.st_mode) && ownDescriptor < 0);
}

}  // namespace kelmora
