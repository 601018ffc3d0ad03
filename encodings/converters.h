// The converters behind DecodeText and EncodeText, a pair for each way of storing text. All record
// what they can't map in TheConversionReport() and raise TQExcept or std::bad_alloc when memory
// runs out; bytes that fail the conversion are std::nullopt. Any bytes are read within bounds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "encodings/encodings.h"

namespace kelmora {

using DecodeResult = std::optional<TQString>;

// Each byte is the code point of its value; each character is cut to its low byte.
DecodeResult DecodeBytes(std::string_view bytes);
std::string EncodeBytes(std::u16string_view text);

// The encodings with a code page.
DecodeResult DecodeCodePage(std::string_view bytes, EncodingId id);
std::string EncodeCodePage(std::u16string_view text, EncodingId id);

DecodeResult DecodeUtf8(std::string_view bytes);
std::string EncodeUtf8(std::u16string_view text, bool withMark);

DecodeResult DecodeUtf7(std::string_view bytes);
std::string EncodeUtf7(std::u16string_view text);

// Units of two bytes (UTF-16 and UCS-2) and of four.
DecodeResult DecodeTwoByteUnits(std::string_view bytes, ByteOrder byteOrder);
std::string EncodeTwoByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark);
DecodeResult DecodeFourByteUnits(std::string_view bytes, ByteOrder byteOrder);
std::string EncodeFourByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark);

}  // namespace kelmora
