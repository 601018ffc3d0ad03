#include "tqcore/slablist.h"

#include <algorithm>
#include <new>

#include "tqcore/largememory.h"

namespace kelmora {

SlabList::~SlabList() {
  for (const Slab& slab : slabs_) {
    if (slab.bytes >= kHugePage) {
      FreeLarge(slab.begin, slab.bytes);
    } else {
      ::operator delete(slab.begin);
    }
  }
}

SlabList::Slab SlabList::Add() {
  const Slab slab = AddOfSize(nextBytes_);
  nextBytes_ = std::min(nextBytes_ * 2, kHugePage);
  return slab;
}

SlabList::Slab SlabList::AddOfSize(std::size_t bytes) {
  slabs_.push_back({nullptr, 0});
  void* memory = bytes >= kHugePage ? AllocateLarge(bytes) : ::operator new(bytes);
  if (memory == nullptr) throw std::bad_alloc();
  return slabs_.back() = {static_cast<std::byte*>(memory), bytes};
}

}  // namespace kelmora
