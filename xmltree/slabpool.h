// SlabPool: memory for many objects of one size. What is given back is handed out again; slabs stay
// until the process ends. Pools are reached through process-wide pointers that are never freed, so
// that an object may die as late as it likes.
//
// Under AddressSanitizer every object is an allocation of its own: use after free and leaks show.
#pragma once

#include <cstddef>
#include <new>

#include "tqcore/slablist.h"

namespace kelmora {

class SlabPool {
 public:
  SlabPool(std::size_t objectSize, std::size_t alignment)
      : objectSize_((objectSize + alignment - 1) / alignment * alignment) {}
  SlabPool(const SlabPool&) = delete;
  SlabPool& operator=(const SlabPool&) = delete;

#if defined(__SANITIZE_ADDRESS__)
  void* Take() {
    return ::operator new(objectSize_);
  }
  void Give(void* object) {
    ::operator delete(object);
  }
  void Reserve(std::size_t) {}

 private:
  std::size_t objectSize_;
#else
  void* Take() {
    --available_;
    if (free_ != nullptr) {
      void* object = free_;
      free_ = free_->next;
      return object;
    }
    if (next_ == end_) AddSlab();
    std::byte* object = next_;
    next_ += objectSize_;
    return object;
  }
  void Give(void* object) {
    ++available_;
    free_ = new (object) FreeObject{free_};
  }
  // The next `count` calls of Take cannot fail.
  void Reserve(std::size_t count) {
    if (free_ == nullptr && next_ == end_) AddSlab();
    while (available_ < static_cast<std::ptrdiff_t>(count)) AddSlab();
  }

 private:
  struct FreeObject {
    FreeObject* next;
  };

  // The rest of the present slab, if any, joins the free objects.
  void AddSlab() {
    const SlabList::Slab slab = slabs_.Add();
    for (; next_ != end_; next_ += objectSize_) free_ = new (next_) FreeObject{free_};
    const std::size_t objects = slab.bytes / objectSize_;
    next_ = slab.begin;
    end_ = next_ + objectSize_ * objects;
    available_ += static_cast<std::ptrdiff_t>(objects);
  }

  std::size_t objectSize_;
  std::ptrdiff_t available_ = 0;
  FreeObject* free_ = nullptr;
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  SlabList slabs_;
#endif
};

}  // namespace kelmora
