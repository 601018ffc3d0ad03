#include "encodings/encodedbytes.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "tqcore/tqexcept.h"

namespace kelmora {

void EncodedBytes::Resize(std::size_t size) {
  if (size <= size_) {
    size_ = size;  // they stay further back than they need be
    return;
  }
  if (size > kMostBytes) throw TQExcept(kAllocationFailed, __LINE__, u"encodedbytes.cpp");
  TQString larger;
  char16_t* begin = larger.WriteBuffer(static_cast<int>(size));
  char* bytes = reinterpret_cast<char*>(begin) + size;
  if (size_ != 0) std::memcpy(bytes, bytes_, size_);
  block_ = std::move(larger);
  begin_ = begin;
  bytes_ = bytes;
  size_ = size;
}

}  // namespace kelmora
