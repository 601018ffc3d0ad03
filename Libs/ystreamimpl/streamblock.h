// StreamBlock: the bytes behind a memory or URL stream. The capacity is what users can measure and
// grows by steps; the storage behind it grows geometrically, so that writing stays linear.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tqcore/tqexcept.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {

// Of one stream on a block.
struct StreamPositions {
  static constexpr std::int64_t kNone = -1;
  std::int64_t read = 0;
  std::int64_t write = 0;
};

class StreamBlock {
 public:
  static constexpr std::int64_t kStep = 65536;

  // An empty block of one step; false without the memory for it.
  [[nodiscard]] bool MakeEmpty();
  // Shares the bytes, which must outlive the block; the first write copies them.
  void Borrow(std::string_view bytes);
  void Adopt(std::string bytes);
  void Clear() { *this = StreamBlock(); }

  std::int64_t Size() const { return size_; }
  std::int64_t Capacity() const { return capacity_; }
  std::string_view Bytes() const { return {Data(), static_cast<std::size_t>(size_)}; }

  // At most `count` bytes from `position` on, which advances; returns how many.
  std::int32_t Read(void* buffer, std::int32_t count, std::int64_t& position) const;
  // One byte, sign-extended to 16 bits; false at the end.
  bool ReadChar(char16_t& unit, std::int64_t& position) const {
    if (position < 0 || position >= size_) return false;
    unit = static_cast<char16_t>(static_cast<signed char>(Data()[position++]));
    return true;
  }
  // kSuccess, or kOutOfMemory with the block as it was.
  [[nodiscard]] ResultCode Write(const void* buffer, std::int32_t count, std::int64_t& position);
  // The pseudo-positions and absolute ones of an open stream; false outside the block.
  bool Seek(std::int64_t target, StreamMode mode, StreamPositions& positions) const;

 private:
  const char* Data() const { return borrowed_ != nullptr ? borrowed_ : owned_.data(); }

  std::string owned_;
  const char* borrowed_ = nullptr;  // not null: the bytes belong to somebody else
  std::int64_t size_ = 0;
  std::int64_t capacity_ = 0;
};

}  // namespace kelmora
