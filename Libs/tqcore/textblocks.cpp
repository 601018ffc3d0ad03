// Most texts are short and many: they come from pools, one for each size. Blocks of a huge page and
// more are large memory, which grows without being copied. What lies between comes from malloc.
#include "textblocks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tqcore/largememory.h"
#include "tqcore/slablist.h"

namespace kelmora {
namespace {

constexpr std::size_t kUnit = 16;  // bytes; sizes of small blocks are multiples of it
constexpr std::size_t kSmallSizes = 16;

// Blocks that are given back are handed out again; slabs stay until the process ends.
class SmallBlocks {
 public:
  static constexpr std::size_t SizeIndex(std::size_t bytes) { return (bytes - 1) / kUnit; }

  void* Take(std::size_t bytes) noexcept {
    const std::size_t index = SizeIndex(bytes);
    if (FreeBlock* block = free_[index]) {
      free_[index] = block->next;
      return block;
    }
    const auto size = static_cast<std::ptrdiff_t>((index + 1) * kUnit);
    if (end_ - next_ < size && !AddSlab()) return nullptr;
    void* block = next_;
    next_ += size;
    return block;
  }
  void Give(void* block, std::size_t bytes) noexcept {
    FreeBlock*& first = free_[SizeIndex(bytes)];
    first = new (block) FreeBlock{first};
  }

 private:
  struct FreeBlock {
    FreeBlock* next;
  };

  bool AddSlab() noexcept {
    try {
      if (slabs_ == nullptr) slabs_ = new SlabList;
      const SlabList::Slab slab = slabs_->Add();
      next_ = slab.begin;
      end_ = slab.begin + slab.bytes;
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }

  FreeBlock* free_[kSmallSizes] = {};
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  SlabList* slabs_ = nullptr;  // never freed: a text may die as late as it likes
};
constinit SmallBlocks smallBlocks;

constexpr bool IsSmall(std::size_t bytes) {
  return !KELMORA_IS_SANITIZED && bytes <= kSmallSizes * kUnit;
}
constexpr bool IsLarge(std::size_t bytes) {
  return bytes >= kHugePage;
}

void* TakeTextBlock(std::size_t bytes) noexcept {
  if (IsSmall(bytes)) return smallBlocks.Take(bytes);
  return IsLarge(bytes) ? AllocateLarge(bytes) : std::malloc(bytes);
}

}  // namespace

void* ResizeTextBlock(void* block, std::size_t bytes, std::size_t newBytes) noexcept {
  if (block == nullptr) return TakeTextBlock(newBytes);
  const bool isSmall = IsSmall(bytes);
  if (isSmall == IsSmall(newBytes) && IsLarge(bytes) == IsLarge(newBytes)) {
    if (IsLarge(bytes)) return ResizeLarge(block, bytes, newBytes);
    if (!isSmall) return std::realloc(block, newBytes);
    if (SmallBlocks::SizeIndex(bytes) == SmallBlocks::SizeIndex(newBytes)) return block;
  }
  void* resized = TakeTextBlock(newBytes);
  if (resized == nullptr) return nullptr;
  std::memcpy(resized, block, std::min(bytes, newBytes));
  FreeTextBlock(block, bytes);
  return resized;
}

void FreeTextBlock(void* block, std::size_t bytes) noexcept {
  if (IsSmall(bytes)) {
    smallBlocks.Give(block, bytes);
  } else if (IsLarge(bytes)) {
    FreeLarge(block, bytes);
  } else {
    std::free(block);
  }
}

}  // namespace kelmora
