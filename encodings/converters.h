// The converters behind DecodeText and EncodeText, a pair for each way of storing text. All record
// what they can't map in TheConversionReport() and raise TQExcept or std::bad_alloc when memory
// runs out; bytes that fail the conversion are std::nullopt. Any bytes are read within bounds.
//
// A decoder is given the empty text that it fills, with room for a unit for each byte. The text may
// lie over the bytes, with its end at theirs: a decoder writes no unit before it has read the byte
// that pays for it, and nothing behind what it has written.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "decodedtext.h"
#include "encodings/encodings.h"

namespace kelmora {

using DecodeResult = std::optional<TQString>;

// Each byte is the code point of its value; each character is cut to its low byte.
DecodeResult DecodeBytes(std::string_view bytes, DecodedText text);
std::string EncodeBytes(std::u16string_view text);

// The encodings with a code page.
DecodeResult DecodeCodePage(std::string_view bytes, EncodingId id, DecodedText text);
std::string EncodeCodePage(std::u16string_view text, EncodingId id);

DecodeResult DecodeUtf8(std::string_view bytes, DecodedText text);
std::string EncodeUtf8(std::u16string_view text, bool withMark);

DecodeResult DecodeUtf7(std::string_view bytes, DecodedText text);
std::string EncodeUtf7(std::u16string_view text);

// Units of two bytes (UTF-16 and UCS-2) and of four.
DecodeResult DecodeTwoByteUnits(std::string_view bytes, ByteOrder byteOrder, DecodedText text);
std::string EncodeTwoByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark);
DecodeResult DecodeFourByteUnits(std::string_view bytes, ByteOrder byteOrder, DecodedText text);
std::string EncodeFourByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark);

}  // namespace kelmora
