// What reading and writing files share: an owned descriptor, and names that stand for descriptors
// of this process.
#pragma once

#include <string>
#include <utility>

namespace kelmora {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~FileDescriptor() { static_cast<void>(Close()); }

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }
  // Zero, or the system's number of the failure. Some file systems report a failed write only here.
  int Close();

 private:
  int number_ = -1;
};

// 0, 1, 2 for "/dev/stdin", "/dev/stdout", "/dev/stderr"; N for "/dev/fd/N" and "/proc/self/fd/N";
// -1 for every other name.
int DescriptorOfName(const std::string& path);
FileDescriptor DuplicateDescriptor(int number);

}  // namespace kelmora
