// The way of a text out of the system: line ends converted, encoded, in pieces.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "encodings/encodings.h"

namespace kelmora {

// The encoding that the text's own XML declaration names; kNone without one. Only the first 100
// units are looked at.
[[nodiscard]] EncodingId DeclaredEncoding(std::u16string_view text);

// No piece ends inside a pair of surrogates or a CR LF. In an encoding with shifts pieces end
// behind a line end, where no shift is in force. So the bytes of the pieces together are those of
// the text as a whole.
class TextEncoder {
 public:
  // Both texts must stay as they are. `pieceUnits`, at least 1, is the least size of a piece but
  // the last.
  TextEncoder(std::u16string_view text, std::u16string_view lineEnd, EncodingId encoding,
              std::size_t pieceUnits = std::size_t{1} << 16)
      : rest_(text), lineEnd_(lineEnd), encoding_(encoding), pieceUnits_(pieceUnits) {}

  // False when a conversion fails.
  [[nodiscard]] bool EncodeNext(std::string& bytes);
  bool IsDone() const { return isDone_; }  // an empty text has one piece too: it may need a mark
  std::size_t Unmappable() const { return unmappable_; }

 private:
  std::size_t PieceEnd() const;
  std::u16string_view TakePiece();
  bool HasForeignLineEnd(std::u16string_view piece) const;

  std::u16string_view rest_;
  std::u16string_view lineEnd_;
  EncodingId encoding_;
  std::size_t pieceUnits_;
  std::size_t unmappable_ = 0;
  bool isFirst_ = true;
  bool isDone_ = false;
};

}  // namespace kelmora
