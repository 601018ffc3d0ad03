// Arena: memory that is given back all at once. Objects placed in it must not need a destructor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

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
  static constexpr std::size_t kFirstChunk = 4096;
  static constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

  void* AllocateSlow(std::size_t size, std::size_t alignment) {
    if (size + alignment > chunkSize_ / 2) {  // big pieces get a chunk of their own
      chunks_.push_back(std::make_unique_for_overwrite<std::byte[]>(size + alignment));
      auto at = reinterpret_cast<std::uintptr_t>(chunks_.back().get());
      return reinterpret_cast<void*>((at + alignment - 1) & ~(alignment - 1));
    }
    chunks_.push_back(std::make_unique_for_overwrite<std::byte[]>(chunkSize_));
    next_ = chunks_.back().get();
    end_ = next_ + chunkSize_;
    if (chunkSize_ < kLargestChunk) chunkSize_ *= 2;
    return Allocate(size, alignment);
  }

  std::vector<std::unique_ptr<std::byte[]>> chunks_;
  std::byte* next_ = nullptr;
  std::byte* end_ = nullptr;
  std::size_t chunkSize_ = kFirstChunk;
};

}  // namespace kelmora
