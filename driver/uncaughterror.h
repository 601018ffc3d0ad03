// The end of the road for an error that no stage catches.
#pragma once

#include <memory>
#include <new>

#include "tqcore/tqstring.h"

namespace kelmora {

// What the present exception says, in one line. To be called while it is handled.
TQString DescribeUncaughtError();

// Memory that is set aside for the message about exhausted memory.
class MemoryReserve {
 public:
  MemoryReserve() : memory_(new (std::nothrow) char[kSize]) {}
  void Release() { memory_.reset(); }

 private:
  static constexpr std::size_t kSize = std::size_t{1} << 20;
  std::unique_ptr<char[]> memory_;
};

}  // namespace kelmora
