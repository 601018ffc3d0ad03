#include "tqcore/largememory.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#if defined(__linux__) && !KELMORA_IS_SANITIZED
#define KELMORA_MAPS_MEMORY
#include <sys/mman.h>
#endif

namespace kelmora {
namespace {

constexpr std::size_t RoundUp(std::size_t bytes, std::size_t unit) {
  return (bytes + unit - 1) / unit * unit;
}

#if defined(KELMORA_MAPS_MEMORY)

constexpr std::size_t kPage = 65536;  // the largest that a system has

// Address space alone, aligned. Pieces often lie one below the other, so that the first try fits.
std::byte* MapAligned(std::size_t bytes, int protection) {
  const auto map = [&](std::size_t size) {
    void* place = mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return place == MAP_FAILED ? nullptr : static_cast<std::byte*>(place);
  };
  std::byte* place = map(bytes);
  if (place == nullptr || reinterpret_cast<std::uintptr_t>(place) % kHugePage == 0) return place;
  munmap(place, bytes);
  place = map(bytes + kHugePage);
  if (place == nullptr) return nullptr;
  const std::size_t excess = kHugePage - reinterpret_cast<std::uintptr_t>(place) % kHugePage;
  munmap(place, excess);
  if (excess < kHugePage) munmap(place + excess + bytes, kHugePage - excess);
  return place + excess;
}

// Whether huge pages come at once. In a virtual machine whose host took its free memory back each
// of them takes milliseconds, far more than as many small pages, which were in use a moment ago.
bool hugePagesAreCheap = true;

bool IsFirstTouchCheap(volatile std::byte* memory) {
  constexpr std::chrono::microseconds kMostForOne{800};  // five times what clearing one takes
  const auto start = std::chrono::steady_clock::now();
  *memory = std::byte{0};
  return std::chrono::steady_clock::now() - start < kMostForOne;
}

// Asks for the pages that serve a new piece best.
void ChoosePages(std::byte* memory, std::size_t bytes) {
  if (hugePagesAreCheap && bytes >= kHugePage) {
    madvise(memory, bytes, MADV_HUGEPAGE);
    hugePagesAreCheap = IsFirstTouchCheap(memory);
  }
  if (hugePagesAreCheap) return;
  madvise(memory, bytes, MADV_NOHUGEPAGE);
#if defined(MADV_POPULATE_WRITE)
  // A single one is a slab, of which all will be used: one call gets all pages of it.
  if (bytes == kHugePage) madvise(memory, bytes, MADV_POPULATE_WRITE);
#endif
}

// Single huge pages that were given back, for the next who wants one: the parse tree of a document
// goes when its nodes come. They have been touched already.
constexpr std::size_t kMostSpares = 256;
void* spares[kMostSpares];
std::size_t spareCount = 0;

#endif

}  // namespace

#if defined(KELMORA_MAPS_MEMORY)

void* AllocateLarge(std::size_t bytes) noexcept {
  if (bytes == kHugePage && spareCount > 0) return spares[--spareCount];
  bytes = RoundUp(bytes, kPage);
  std::byte* memory = MapAligned(bytes, PROT_READ | PROT_WRITE);
  if (memory != nullptr) ChoosePages(memory, bytes);
  return memory;
}

void FreeLarge(void* memory, std::size_t bytes) noexcept {
  if (bytes == kHugePage && spareCount < kMostSpares) {
    spares[spareCount++] = memory;
    return;
  }
  munmap(memory, RoundUp(bytes, kPage));
}

void* ResizeLarge(void* memory, std::size_t bytes, std::size_t newBytes) noexcept {
  bytes = RoundUp(bytes, kPage);
  newBytes = RoundUp(newBytes, kPage);
  if (mremap(memory, bytes, newBytes, 0) != MAP_FAILED) return memory;
  // Huge pages stay whole only when they move from one aligned place to another.
  std::byte* place = MapAligned(newBytes, PROT_NONE);
  if (place == nullptr) return nullptr;
  if (mremap(memory, bytes, newBytes, MREMAP_MAYMOVE | MREMAP_FIXED, place) != MAP_FAILED) {
    return place;
  }
  munmap(place, newBytes);
  return nullptr;
}

#else

void* AllocateLarge(std::size_t bytes) noexcept {
  return std::aligned_alloc(kHugePage, RoundUp(bytes, kHugePage));
}

void FreeLarge(void* memory, std::size_t) noexcept {
  std::free(memory);
}

void* ResizeLarge(void* memory, std::size_t bytes, std::size_t newBytes) noexcept {
  void* larger = AllocateLarge(newBytes);
  if (larger == nullptr) return nullptr;
  std::memcpy(larger, memory, std::min(bytes, newBytes));
  FreeLarge(memory, bytes);
  return larger;
}

#endif

}  // namespace kelmora
