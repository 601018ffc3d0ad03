#include "streamblock.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace kelmora {

namespace {
constexpr std::int64_t kLargestBlock = std::numeric_limits<std::int32_t>::max();
}

bool StreamBlock::MakeEmpty() {
  Clear();
  try {
    owned_.resize(kStep);
  } catch (const std::bad_alloc&) {
    return false;
  }
  capacity_ = kStep;
  return true;
}

void StreamBlock::Borrow(std::string_view bytes) {
  Clear();
  borrowed_ = bytes.data();
  size_ = capacity_ = static_cast<std::int64_t>(bytes.size());
}

void StreamBlock::Adopt(std::string bytes) {
  Clear();
  owned_ = std::move(bytes);
  size_ = capacity_ = static_cast<std::int64_t>(owned_.size());
}

std::int32_t StreamBlock::Read(void* buffer, std::int32_t count, std::int64_t& position) const {
  if (position < 0 || position >= size_ || count <= 0) return 0;
  const std::int64_t size = std::min<std::int64_t>(count, size_ - position);
  std::memcpy(buffer, Data() + position, static_cast<std::size_t>(size));
  position += size;
  return static_cast<std::int32_t>(size);
}

ResultCode StreamBlock::Write(const void* buffer, std::int32_t count, std::int64_t& position) {
  if (count <= 0 || position < 0) return streamresult::kSuccess;
  const std::int64_t end = position + count;
  if (end > kLargestBlock) return kOutOfMemory;
  try {
    if (borrowed_ != nullptr) {
      owned_.assign(borrowed_, static_cast<std::size_t>(size_));
      borrowed_ = nullptr;
    }
    if (end > capacity_) {
      const std::int64_t capacity = capacity_ + (end - capacity_ + kStep - 1) / kStep * kStep;
      owned_.resize(static_cast<std::size_t>(capacity));
      capacity_ = capacity;
    }
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  } catch (const std::length_error&) {
    return kOutOfMemory;
  }
  std::memcpy(owned_.data() + position, buffer, static_cast<std::size_t>(count));
  position = end;
  size_ = std::max(size_, end);
  return streamresult::kSuccess;
}

bool StreamBlock::Seek(std::int64_t target, StreamMode mode, StreamPositions& positions) const {
  using namespace seekposition;
  if (target == kStartForReading) {
    positions.read = 0;
  } else if (target == kEndForReading) {
    positions.read = size_;
  } else if (target == kStartForWriting) {
    positions.write = 0;
  } else if (target == kEndForWriting) {
    positions.write = capacity_;
  } else {
    const bool forReading = mode == StreamMode::kRead || mode == StreamMode::kReadWrite;
    const bool forWriting = mode == StreamMode::kWrite || mode == StreamMode::kReadWrite;
    if (target < 0 || !(forReading || forWriting)) return false;
    if (target >= (forReading ? size_ : capacity_)) return false;
    if (forReading) positions.read = target;
    if (forWriting) positions.write = target;
  }
  return true;
}

}  // namespace kelmora
