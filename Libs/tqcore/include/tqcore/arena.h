// Arena: memory that is given back all at once. Objects placed in it must not need a destructor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "tqcore/slablist.h"

namespace kelmora {

class Arena {
 public:
  Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  void* Allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    auto at = (reinterpret_cast<std::uintptr_t>(next_) + alignment - 1) & ~(alignment - 1);
    if (next_ == nullptr || at + size > reinterpret_cast<std::uintptr_t>(end_)) {
      return AllocateSlow(size, alignment);
    }
    next_ = reinterpret_cast<std::byte*>(at + size);
    return reinterpret_cast<void*>(at);
  }

  template <class T, class... Arguments>
  T* Make(Arguments&&... arguments) {
    static_assert(std::is_trivially_destructible_v<T>);
    return new (Allocate(sizeof(T), alignof(T))) T(std::forward<Arguments>(arguments)...);
  }

  // A copy of the text that lives as long as the arena; a terminating 0 follows it.
  std::u16string_view Keep(std::u16string_view text) {
    auto* copy =
        static_cast<char16_t*>(Allocate((text.size() + 1) * sizeof(char16_t), alignof(char16_t)));
    if (!text.empty()) std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
    copy[text.size()] = 0;
    return {copy, text.size()};
  }

 private:
  void* AllocateSlow(std::size_t size, std::size_t alignment) {
    if (size + alignment > slabs_.NextSize() / 2) {  // big pieces get a slab of their own
      auto at = reinterpret_cast<std::uintptr_t>(slabs_.AddOfSize(size + alignment).begin);
      return reinterpret_cast<void*>((at + alignment - 1) & ~(alignment - 1));
    }
    const SlabList::Slab slab = slabs_.Add();
    next_ = slab.begin;
    end_ = slab.begin + slab.bytes;
    return Allocate(size, alignment);
  }

  SlabList slabs_;
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
};

}  // namespace kelmora
