// Which encoding is a text in? Marks and the patterns that "<" and "<?" make in wide units come
// first and settle it. What shows none of them is taken for a superset of ASCII, and then its
// encoding declaration counts, unless the bytes contradict it: the escapes of ISO-2022-JP occur
// in no other text, and a text declared as UTF-16 that could be read as ASCII is not UTF-16.
#include <algorithm>
#include <array>
#include <string>

#include "encodings/encodings.h"

namespace kelmora {

namespace {

using namespace std::string_view_literals;

struct Pattern {
  std::string_view bytes;
  EncodingId id;
  ByteOrder byteOrder;
  bool isMark;
};

// In this order: FF FE 00 00 is a mark of four bytes before FF FE is one of two.
constexpr Pattern kPatterns[] = {
    {"\x00\x00\x00\x3C"sv, EncodingId::kUcs4, ByteOrder::kMostFirst, false},
    {"\x00\x00\xFE\xFF"sv, EncodingId::kUcs4, ByteOrder::kMostFirst, true},
    {"\x3C\x00\x00\x00"sv, EncodingId::kUcs4, ByteOrder::kLeastFirst, false},
    {"\xFF\xFE\x00\x00"sv, EncodingId::kUcs4, ByteOrder::kLeastFirst, true},
    {"\x00\x00\x3C\x00"sv, EncodingId::kUcs4, ByteOrder::k2143, false},
    {"\x00\x00\xFF\xFE"sv, EncodingId::kUcs4, ByteOrder::k2143, true},
    {"\x00\x3C\x00\x00"sv, EncodingId::kUcs4, ByteOrder::k3412, false},
    {"\xFE\xFF\x00\x00"sv, EncodingId::kUcs4, ByteOrder::k3412, true},
    {"\xFE\xFF"sv, EncodingId::kUtf16, ByteOrder::kMostFirst, true},
    {"\xFF\xFE"sv, EncodingId::kUtf16, ByteOrder::kLeastFirst, true},
    {"\x00\x3C\x00\x3F"sv, EncodingId::kUtf16, ByteOrder::kMostFirst, false},
    {"\x3C\x00\x3F\x00"sv, EncodingId::kUtf16, ByteOrder::kLeastFirst, false},
    {"\xEF\xBB\xBF"sv, EncodingId::kUtf8, ByteOrder::kNone, true},
    {"\x4C\x6F\xA7\x94"sv, EncodingId::kEbcdic, ByteOrder::kNone, false},
};

constexpr std::size_t kShortestText = 4;
constexpr std::size_t kDeclarationBytes = 79;

// The name in quotes behind "encoding" and "=", in upper case. False when there is no such thing.
bool FindDeclaredName(std::string_view bytes, std::u16string& name) {
  std::string head(bytes.substr(0, kDeclarationBytes));
  for (char& byte : head) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
  }
  std::size_t position = head.find("ENCODING");
  if (position != head.npos) position = head.find('=', position);
  if (position != head.npos) position = head.find_first_of("\"'", position);
  if (position == head.npos) return false;
  const std::size_t start = position + 1;
  const std::size_t end = head.find_first_of("\"'", start);
  if (end == head.npos) return false;
  for (std::size_t i = start; i < end; ++i) name += static_cast<unsigned char>(head[i]);
  return true;
}

bool HasJapaneseEscape(std::string_view bytes) {
  for (std::size_t i = bytes.find('\x1B'); i != bytes.npos; i = bytes.find('\x1B', i + 1)) {
    const std::string_view behind = bytes.substr(i + 1, 2);
    if (behind == "$B" || behind == "$@") return true;
  }
  return false;
}

DetectedEncoding DetectByDeclaration(std::string_view bytes) {
  DetectedEncoding result;
  std::u16string name;
  bool declared = FindDeclaredName(bytes, name);
  if (declared) {
    result.name = name;
    result.id = EncodingFromName(name);
    if (result.id == EncodingId::kNone) result.flags |= kUnknownDeclaration;
  }
  declared = result.id != EncodingId::kNone;

  const bool mayHoldEscapes =
      !declared || result.id == EncodingId::kShiftJis || result.id == EncodingId::kEucJp;
  if (mayHoldEscapes && HasJapaneseEscape(bytes)) {
    if (declared) result.flags |= kInconsistentDeclaration;
    declared = false;
    result.id = EncodingId::kIso2022Jp;
  }
  if (result.id >= EncodingId::kUtf16) {
    result.flags |= kInconsistentDeclaration;
    declared = false;
    result.id = EncodingId::kNone;
  }
  if (!declared) result.flags |= kNoDeclarationUsed;
  if (result.id != EncodingId::kNone) result.flags |= kEncodingFound;
  return result;
}

}  // namespace

DetectedEncoding DetectEncoding(std::string_view bytes) {
  if (bytes.size() < kShortestText) return {};
  for (const Pattern& pattern : kPatterns) {
    if (!bytes.starts_with(pattern.bytes)) continue;
    DetectedEncoding result;
    result.flags = kNoDeclarationUsed | kEncodingFound;
    result.id = pattern.id;
    result.byteOrder = pattern.byteOrder;
    result.hasMark = pattern.isMark;
    return result;
  }
  return DetectByDeclaration(bytes);
}

}  // namespace kelmora
