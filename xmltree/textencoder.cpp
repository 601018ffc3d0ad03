#include "textencoder.h"

#include <optional>
#include <utility>

#include "tqcore/tqstring.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

constexpr std::size_t kDeclarationUnits = 100;

// Whether what a character is written as depends on those before it.
bool HasShifts(EncodingId encoding) {
  return encoding == EncodingId::kUtf7 || encoding == EncodingId::kIso2022Jp;
}

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

}  // namespace

EncodingId DeclaredEncoding(std::u16string_view text) {
  TQString start(text.substr(0, kDeclarationUnits));
  start.MakeLower();
  constexpr std::u16string_view kTag = u"<?xml";
  constexpr std::u16string_view kName = u"encoding";
  const int tag = start.Find(kTag);
  if (tag == TQString::kNotFound) return EncodingId::kNone;
  const int name = start.Find(kName, tag + static_cast<int>(kTag.size()));
  if (name == TQString::kNotFound) return EncodingId::kNone;
  std::u16string_view value = start.View().substr(static_cast<std::size_t>(name) + kName.size());
  const std::size_t quote = value.find_first_not_of(u" =");
  if (quote == value.npos || (value[quote] != u'"' && value[quote] != u'\'')) {
    return EncodingId::kNone;
  }
  value.remove_prefix(quote);
  const std::size_t end = value.find(value[0], 1);
  return end == value.npos ? EncodingId::kNone : EncodingFromName(value.substr(1, end - 1));
}

// How many units the next piece has.
std::size_t TextEncoder::PieceEnd() const {
  if (rest_.size() <= pieceUnits_) return rest_.size();
  std::size_t end = pieceUnits_;
  if (HasShifts(encoding_)) {
    end = FindLineEnd(rest_, end);
    if (end == rest_.npos) return rest_.size();
    ++end;
  }
  const auto cutsPair = [this](std::size_t at) {
    return IsHighSurrogate(rest_[at - 1]) || (rest_[at - 1] == u'\r' && rest_[at] == u'\n');
  };
  while (end < rest_.size() && cutsPair(end)) ++end;
  return end;
}

std::u16string_view TextEncoder::TakePiece() {
  const std::size_t end = PieceEnd();
  const std::u16string_view piece = rest_.substr(0, end);
  rest_.remove_prefix(end);
  isDone_ = rest_.empty();
  return piece;
}

// True also for some texts that need no conversion, which then changes nothing.
bool TextEncoder::HasForeignLineEnd(std::u16string_view piece) const {
  return (lineEnd_ == u"\n" ? FindUnit(piece, u'\r') : FindLineEnd(piece)) != piece.npos;
}

bool TextEncoder::EncodeNext(std::string& bytes) {
  std::u16string_view piece = TakePiece();
  TQString converted;
  if (HasForeignLineEnd(piece)) {
    converted = piece;
    converted.ConvertLineEnds(lineEnd_);
    piece = converted;
  }
  std::optional<std::string> encoded =
      EncodeText(piece, encoding_, ByteOrder::kLeastFirst, isFirst_, false);
  isFirst_ = false;
  if (!encoded.has_value()) return false;
  unmappable_ += UnmappableCount();
  bytes = std::move(*encoded);
  return true;
}

}  // namespace kelmora
