// The text that a decoder makes, written straight into the block of a TQString.
//
// The decoder keeps the place of the next unit in a local pointer, which starts at Begin() and
// stays within the number of units asked for. A TQString ends at its first unit of value 0, but
// a decoder reads on to the end of the bytes, because the report counts all of them. So it says
// where it writes a 0, and what stands behind the first one is left out at the end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>

#include "encodings/encodedbytes.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqstring.h"

namespace kelmora {

class DecodedText {
 public:
  // Raises TQExcept when there is no room for `mostUnits`. Pages of the block that aren't
  // written cost no memory, so the worst case may be asked for.
  explicit DecodedText(std::size_t mostUnits) {
    if (mostUnits > EncodedBytes::kMostBytes) {
      throw TQExcept(kAllocationFailed, __LINE__, u"decodedtext.h");
    }
    begin_ = text_.WriteBuffer(static_cast<int>(mostUnits));
  }

  // The text takes the place of its bytes.
  explicit DecodedText(EncodedBytes bytes) : text_(std::move(bytes.block_)), begin_(bytes.begin_) {
    if (begin_ == nullptr) begin_ = text_.WriteBuffer(0);
  }

  char16_t* Begin() { return begin_; }

  void NoteZero(const char16_t* place) {
    if (zero_ == nullptr) zero_ = place;
  }

  // Writes one unit or, above U+FFFF, two, and returns the place behind them. `codePoint` is at
  // most U+10FFFF.
  char16_t* Put(char32_t codePoint, char16_t* place) {
    if (codePoint > 0xFFFF) {
      *place++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
      *place++ = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
      return place;
    }
    if (codePoint == 0) NoteZero(place);
    *place++ = static_cast<char16_t>(codePoint);
    return place;
  }

  // The finished text, which ends at `end`. With `dropMark` a first U+FEFF is taken out.
  TQString Take(const char16_t* end, bool dropMark) {
    if (zero_ != nullptr) end = zero_;
    if (dropMark && end != begin_ && *begin_ == u'\uFEFF') {
      std::copy(static_cast<const char16_t*>(begin_ + 1), end, begin_);
      --end;
    }
    text_.FinishWriting(static_cast<int>(end - begin_));
    return std::move(text_);
  }

 private:
  TQString text_;
  char16_t* begin_ = nullptr;
  const char16_t* zero_ = nullptr;
};

}  // namespace kelmora
