#include <new>
#include <utility>

#include "conversionreport.h"
#include "converters.h"
#include "encodings/encodings.h"
#include "tqcore/tqexcept.h"

namespace kelmora {

namespace {

bool IsConvertible(EncodingId id) {
  return id == EncodingId::kNone || IndexOfEncoding(id) >= 0;
}

DecodeResult Decode(std::string_view bytes, EncodingId id, ByteOrder byteOrder, DecodedText text) {
  if (id >= EncodingId::kUcs4) return DecodeFourByteUnits(bytes, byteOrder, std::move(text));
  if (id >= EncodingId::kUtf16) return DecodeTwoByteUnits(bytes, byteOrder, std::move(text));
  if (id == EncodingId::kUtf7) return DecodeUtf7(bytes, std::move(text));
  if (id == EncodingId::kUtf8) return DecodeUtf8(bytes, std::move(text));
  if (id == EncodingId::kNone) return DecodeBytes(bytes, std::move(text));
  return DecodeCodePage(bytes, id, std::move(text));
}

std::string Encode(std::u16string_view text, EncodingId id, ByteOrder byteOrder, bool markForUtf16,
                   bool markForUtf8) {
  if (id >= EncodingId::kUcs4) return EncodeFourByteUnits(text, byteOrder, markForUtf16);
  if (id >= EncodingId::kUtf16) return EncodeTwoByteUnits(text, byteOrder, markForUtf16);
  if (id == EncodingId::kUtf7) return EncodeUtf7(text);
  if (id == EncodingId::kUtf8) return EncodeUtf8(text, markForUtf8);
  if (id == EncodingId::kNone) return EncodeBytes(text);
  return EncodeCodePage(text, id);
}

// Runs `convert`; running out of memory is a failed conversion, of which the report knows.
template <typename Convert>
auto Guarded(Convert convert) -> std::optional<typename decltype(convert())::value_type> {
  try {
    return convert();
  } catch (const TQExcept&) {
  } catch (const std::bad_alloc&) {
  }
  TheConversionReport().memoryRanOut = true;
  return std::nullopt;
}

}  // namespace

std::optional<TQString> DecodeText(std::string_view bytes, EncodingId id, ByteOrder byteOrder) {
  TheConversionReport().Clear();
  if (!IsConvertible(id)) return std::nullopt;
  return Guarded([&] { return Decode(bytes, id, byteOrder, DecodedText(bytes.size())); });
}

std::optional<TQString> DecodeText(EncodedBytes&& bytes, EncodingId id, ByteOrder byteOrder) {
  TheConversionReport().Clear();
  if (!IsConvertible(id)) return std::nullopt;
  const std::string_view view = bytes;
  return Guarded([&] { return Decode(view, id, byteOrder, DecodedText(std::move(bytes))); });
}

std::optional<std::string> EncodeText(std::u16string_view text, EncodingId id, ByteOrder byteOrder,
                                      bool markForUtf16, bool markForUtf8) {
  TheConversionReport().Clear();
  if (!IsConvertible(id)) return std::nullopt;
  return Guarded(
      [&] { return std::optional(Encode(text, id, byteOrder, markForUtf16, markForUtf8)); });
}

}  // namespace kelmora
