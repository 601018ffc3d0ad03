// The end of the road for an error that no stage catches.
#pragma once

#include <memory>
#include <new>

namespace kelmora {

// From now on an error that cannot be raised for want of memory ends the process with the message
// about exhausted memory and the exit code 0, not with a signal.
void HandleLostErrors();

// Writes what the present exception says, in one line, to standard error. To be called while it is
// handled. Nothing is raised.
void ReportUncaughtError();

// Memory that is set aside for reports about exhausted memory.
class MemoryReserve {
 public:
  MemoryReserve() : memory_(new (std::nothrow) char[kSize]) {}
  void Release() { memory_.reset(); }

 private:
  static constexpr std::size_t kSize = std::size_t{1} << 20;
  std::unique_ptr<char[]> memory_;
};

}  // namespace kelmora
