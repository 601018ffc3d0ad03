// UTF-8. Most text is ASCII, so both directions take many characters in one step as long as all
// of them are, and fall back to one character at a time at the first that is not.
//
// The decoder trusts the lead byte alone: it takes as many bytes as that announces, whatever they
// are, adds them up in the way that well-formed ones want, and subtracts what their markers
// contribute. So the value of a malformed sequence is what comes out of 32-bit arithmetic, and
// C1 81 is "A". Only what lies above U+10FFFF, or begins with no lead byte at all, is unmappable.
#include <algorithm>
#include <array>
#include <span>

#include "byteword.h"
#include "conversionreport.h"
#include "converters.h"
#include "decodedtext.h"
#include "surrogates.h"

namespace kelmora {

namespace {

constexpr std::string_view kMark = "\xEF\xBB\xBF";
constexpr char32_t kLastCodePoint = 0x10FFFF;
constexpr char32_t kReplacement = 0xFFFD;
constexpr unsigned char kFirstBeyondAscii = 0x80;

// By the number of ones that a lead byte begins with. With a single one it leads nothing.
constexpr std::array<unsigned char, 9> kLengths = {1, 1, 2, 3, 4, 5, 6, 6, 6};

int SequenceLength(unsigned char lead) {
  if (lead >= 0xC0 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  return kLengths[static_cast<std::size_t>(std::countl_one(lead))];
}

// What the markers of a well-formed sequence add to the sum of its bytes.
constexpr std::uint32_t MarkersOf(int length) {
  std::uint32_t sum = 0xFF & (0xFFu << (8 - length));
  for (int i = 1; i < length; ++i) sum = (sum << 6) + 0x80;
  return sum;
}

template <int kLength>
std::uint32_t SequenceValue(const unsigned char* bytes) {
  std::uint32_t sum = 0;
  for (int i = 0; i < kLength; ++i) sum = (sum << 6) + bytes[i];
  return sum - MarkersOf(kLength);
}

// The value of the sequence at `bytes`, which has `length` bytes. Two and three are by far the
// commonest of those that come here.
std::uint32_t SequenceValue(const unsigned char* bytes, int length) {
  if (length == 2) return SequenceValue<2>(bytes);
  if (length == 3) return SequenceValue<3>(bytes);
  if (length == 4) return SequenceValue<4>(bytes);
  if (length == 5) return SequenceValue<5>(bytes);
  if (length == 6) return SequenceValue<6>(bytes);
  return *bytes < kFirstBeyondAscii ? *bytes : kLastCodePoint + 1;
}

// Widens bytes until one is 0 or beyond ASCII, or fewer than two blocks are left. What is written
// behind the last of them stays in front of `next`, since there are two blocks.
void WidenAscii(const unsigned char*& next, const unsigned char* end, char16_t*& out) {
  while (end - next >= 2 * kBytesOfBlock) {
    const std::ptrdiff_t count = WidenBlock(next, out);
    next += count;
    out += count;
    if (count != kBytesOfBlock) return;
  }
}

void NarrowAscii(const char16_t*& next, const char16_t* end, char*& out) {
  while (end - next >= kBytesOfBlock && NarrowBlock(next, out)) {
    next += kBytesOfBlock;
    out += kBytesOfBlock;
  }
}

bool IsAscii(std::span<const char16_t> units) {
  std::size_t i = 0;
  for (; i + kBytesOfWord <= units.size(); i += kBytesOfWord) {
    if (!IsAsciiWord(units.data() + i)) return false;
  }
  return std::ranges::all_of(units.subspan(i),
                             [](char16_t unit) { return unit < kFirstBeyondAscii; });
}

// Each unit counts as it would by itself, and each pair of surrogates saves two bytes. `units`
// must be followed by one more unit.
std::size_t SizeOfBlock(std::span<const char16_t> units) {
  if (IsAscii(units)) return units.size();
  std::uint16_t sum = 0;  // as wide as a unit, so that the compiler adds up eight at once
  for (std::size_t i = 0; i < units.size(); ++i) {
    const int isPair = int{IsHighSurrogate(units[i])} & int{IsLowSurrogate(units.data()[i + 1])};
    sum = static_cast<std::uint16_t>(sum + 1 + (units[i] > 0x7F) + (units[i] > 0x7FF) - 2 * isPair);
  }
  return sum;
}

std::size_t SizeInUtf8(std::u16string_view text) {
  constexpr std::size_t kBlock = 1024;  // so short that its size fits in 16 bits
  if (text.empty()) return 0;
  // The last unit has no unit behind it, but it can't begin a pair either.
  std::size_t size = 1u + (text.back() > 0x7F) + (text.back() > 0x7FF);
  const std::span<const char16_t> units(text.data(), text.size() - 1);
  for (std::size_t start = 0; start < units.size(); start += kBlock) {
    size += SizeOfBlock(units.subspan(start, std::min(kBlock, units.size() - start)));
  }
  return size;
}

char* PutSequence(char32_t codePoint, char* out) {
  const auto continuation = [codePoint](int shift) {
    return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
  };
  if (codePoint < 0x80) {
    *out++ = static_cast<char>(codePoint);
    return out;
  }
  if (codePoint < 0x800) {
    *out++ = static_cast<char>(0xC0 | (codePoint >> 6));
  } else {
    if (codePoint < 0x10000) {
      *out++ = static_cast<char>(0xE0 | (codePoint >> 12));
    } else {
      *out++ = static_cast<char>(0xF0 | (codePoint >> 18));
      *out++ = continuation(12);
    }
    *out++ = continuation(6);
  }
  *out++ = continuation(0);
  return out;
}

}  // namespace

DecodeResult DecodeUtf8(std::string_view bytes, DecodedText text) {
  const bool hasMark = bytes.starts_with(kMark);
  if (hasMark) bytes.remove_prefix(kMark.size());
  const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
  const auto* const end = next + bytes.size();
  char16_t* out = text.Begin();
  for (;;) {
    WidenAscii(next, end, out);
    if (next == end) return text.Take(out, !hasMark);
    do {
      const int length = SequenceLength(*next);
      if (end - next < length) return std::nullopt;
      char32_t value = SequenceValue(next, length);
      if (value > kLastCodePoint) {
        TheConversionReport().Record(*next);
        value = kReplacement;
      }
      out = text.Put(value, out);
      next += length;
    } while (next != end && *next >= kFirstBeyondAscii);
  }
}

std::string EncodeUtf8(std::u16string_view text, bool withMark) {
  const std::string_view mark = withMark ? kMark : std::string_view();
  std::string bytes(mark);
  bytes.resize(mark.size() + SizeInUtf8(text));
  char* out = bytes.data() + mark.size();
  const char16_t* next = text.data();
  const char16_t* const end = next + text.size();
  for (;;) {
    NarrowAscii(next, end, out);
    if (next == end) return bytes;
    do {
      out = PutSequence(ReadCodePoint(next, end), out);
    } while (next != end && *next >= kFirstBeyondAscii);
  }
}

}  // namespace kelmora
