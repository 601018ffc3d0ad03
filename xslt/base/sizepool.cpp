#include "base/sizepool.h"

namespace kelmora {

std::array<SizePool::FreeBlock*, SizePool::kLargest / SizePool::kStep + 1> SizePool::lists_{};

void* SizePool::Refill(std::size_t size) {
  constexpr std::size_t kChunk = 32 * 1024;  // bytes
  const std::size_t blockSize = ClassOf(size) * kStep;
  if (kChecked) return ::operator new(blockSize);
  auto* chunk = static_cast<std::byte*>(::operator new(kChunk));
  FreeBlock*& list = lists_[ClassOf(size)];
  for (std::size_t at = kChunk / blockSize - 1; at > 0; --at) {
    list = new (chunk + at * blockSize) FreeBlock{list};
  }
  return chunk;
}

}  // namespace kelmora
