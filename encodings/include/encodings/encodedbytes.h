// The bytes of a text on their way to DecodeText. They lie at the end of the block that their text
// will fill, and are overwritten by it: no decoder makes more units than it has read bytes, so what
// it writes never reaches what it has yet to read. A large file so needs one block in place of two.
#pragma once

#include <cstddef>
#include <string_view>

#include "tqcore/tqstring.h"

namespace kelmora {

class EncodedBytes {
 public:
  // As many as a TQString has room for, in any encoding.
  static constexpr std::size_t kMostBytes = 0x7FFFFF00;

  char* Data() { return bytes_; }
  std::size_t Size() const { return size_; }
  std::string_view View() const { return {bytes_, size_}; }
  operator std::string_view() const { return View(); }  // NOLINT(google-explicit-constructor)
  // Keeps what fits; what is new is undefined. Growing copies. Raises TQExcept.
  void Resize(std::size_t size);

 private:
  friend class DecodedText;

  TQString block_;
  char16_t* begin_ = nullptr;  // of the block's units
  char* bytes_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace kelmora
