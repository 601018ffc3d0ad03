// SizePool: memory for the small objects that each step of a run makes and drops, frames and
// instructions. Freed blocks wait in a list per size and are never given back to the system; the
// pool is as large as the deepest call stack was.
#pragma once

#include <array>
#include <cstddef>
#include <new>

namespace kelmora {

class SizePool {
 public:
  // Sizes in bytes; beyond kLargest the general heap serves.
  static void* Allocate(std::size_t size) {
    if (size > kLargest) return ::operator new(size);
    FreeBlock*& list = lists_[ClassOf(size)];
    if (list == nullptr) return Refill(size);
    FreeBlock* block = list;
    list = block->next;
    return block;
  }
  static void Free(void* memory, std::size_t size) noexcept {
    if (memory == nullptr) return;
    if (size > kLargest || kChecked) return ::operator delete(memory);
    FreeBlock*& list = lists_[ClassOf(size)];
    list = new (memory) FreeBlock{list};
  }

 private:
  struct FreeBlock {
    FreeBlock* next;
  };
  static constexpr std::size_t kStep = 16;  // sizes are rounded up to a multiple
  static constexpr std::size_t kLargest = 512;
#ifdef __SANITIZE_ADDRESS__
  static constexpr bool kChecked = true;  // so that the sanitizer sees every use after the end
#else
  static constexpr bool kChecked = false;
#endif

  static std::size_t ClassOf(std::size_t size) {
    return (size + kStep - 1) / kStep;
  }
  static void* Refill(std::size_t size);

  static std::array<FreeBlock*, kLargest / kStep + 1> lists_;
};

}  // namespace kelmora
