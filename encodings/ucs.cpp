// Units of two and of four bytes. Bytes that don't fill a last unit are left out.
#include <array>

#include "conversionreport.h"
#include "converters.h"
#include "decodedtext.h"
#include "surrogates.h"

namespace kelmora {

namespace {

constexpr char32_t kMark = 0xFEFF;
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char16_t kReplacement = 0xFFFD;
constexpr std::size_t kTwoBytes = 2;
constexpr std::size_t kFourBytes = 4;

const unsigned char* BytesOf(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// Where in four bytes the most significant byte of the value stands, then the next ones.
using Places = std::array<std::size_t, kFourBytes>;

Places PlacesOf(ByteOrder order) {
  switch (order) {
    case ByteOrder::kMostFirst:
      return {0, 1, 2, 3};
    case ByteOrder::k3412:
      return {2, 3, 0, 1};
    case ByteOrder::k2143:
      return {1, 0, 3, 2};
    case ByteOrder::kNone:
    case ByteOrder::kLeastFirst:
      break;
  }
  return {3, 2, 1, 0};
}

char* PutFourBytes(char32_t value, const Places& places, char* out) {
  for (const std::size_t place : places) {
    out[place] = static_cast<char>(value >> 24);
    value <<= 8;
  }
  return out + kFourBytes;
}

}  // namespace

DecodeResult DecodeTwoByteUnits(std::string_view bytes, ByteOrder byteOrder, DecodedText text) {
  const bool mostFirst = byteOrder == ByteOrder::kMostFirst;
  if (bytes.starts_with(mostFirst ? "\xFE\xFF" : "\xFF\xFE")) bytes.remove_prefix(kTwoBytes);
  const std::size_t count = bytes.size() / kTwoBytes;
  const unsigned char* const high = BytesOf(bytes) + (mostFirst ? 0 : 1);
  const unsigned char* const low = BytesOf(bytes) + (mostFirst ? 1 : 0);
  char16_t* out = text.Begin();
  for (std::size_t i = 0; i < count * kTwoBytes; i += kTwoBytes) {
    const char16_t unit = static_cast<char16_t>(high[i] << 8 | low[i]);
    if (unit == 0) text.NoteZero(out);
    *out++ = unit;
  }
  return text.Take(out, false);
}

std::string EncodeTwoByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark) {
  const bool mostFirst = byteOrder == ByteOrder::kMostFirst;
  std::string bytes(withMark ? (mostFirst ? "\xFE\xFF" : "\xFF\xFE") : "");
  const std::size_t start = bytes.size();
  bytes.resize(start + text.size() * kTwoBytes);
  char* high = bytes.data() + start + (mostFirst ? 0 : 1);
  char* low = bytes.data() + start + (mostFirst ? 1 : 0);
  for (const char16_t unit : text) {
    *high = static_cast<char>(unit >> 8);
    *low = static_cast<char>(unit);
    high += kTwoBytes;
    low += kTwoBytes;
  }
  return bytes;
}

// The room is that of one unit for each value and one more, so a text with two values above
// U+FFFF fails.
DecodeResult DecodeFourByteUnits(std::string_view bytes, ByteOrder byteOrder, DecodedText text) {
  const Places places = PlacesOf(byteOrder);
  const std::size_t count = bytes.size() / kFourBytes;
  char16_t* out = text.Begin();
  const char16_t* const end = out + count + 1;
  const unsigned char* next = BytesOf(bytes);
  for (std::size_t i = 0; i < count; ++i, next += kFourBytes) {
    char32_t value = 0;
    for (const std::size_t place : places) value = value << 8 | next[place];
    if (value > kLastCodePoint) {
      TheConversionReport().Record(kReplacement);
      value = kReplacement;
    }
    if (end - out < (value > 0xFFFF ? 2 : 1)) return std::nullopt;
    out = text.Put(value, out);
  }
  return text.Take(out, true);
}

std::string EncodeFourByteUnits(std::u16string_view text, ByteOrder byteOrder, bool withMark) {
  const Places places = PlacesOf(byteOrder);
  std::string bytes((text.size() + (withMark ? 1 : 0)) * kFourBytes, '\0');
  char* out = bytes.data();
  if (withMark) out = PutFourBytes(kMark, places, out);
  const char16_t* next = text.data();
  const char16_t* const end = next + text.size();
  while (next != end) out = PutFourBytes(ReadCodePoint(next, end), places, out);
  bytes.resize(static_cast<std::size_t>(out - bytes.data()));
  return bytes;
}

}  // namespace kelmora
