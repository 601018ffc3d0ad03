// Searches, trimming, and conversion between UTF-8 bytes and 16-bit units.
//
// Searches for a unit or a line end look at eight units at a time; a text is found by its first
// unit, and by the method of Knuth, Morris and Pratt ("Fast Pattern Matching in Strings", SIAM
// Journal on Computing 6, 1977) once the plain way has compared too much, so that no text and no
// needle makes a search quadratic.
//
// The trap is that names of this system need not be UTF-8: a byte that is no part of a character
// becomes a unit of its own that no character has (IsStrayByte), and the way back makes that byte
// of it again. A name that was read is written as it was.
#include "tqcore/tqtext.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "unitset.h"

namespace kelmora {

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;
// Eight units at a time, in whatever registers the machine has.
using Block = std::uint16_t __attribute__((vector_size(16)));
constexpr std::size_t kBlock = sizeof(Block) / sizeof(char16_t);
constexpr std::uint16_t kCr = u'\r';
constexpr std::uint16_t kLf = u'\n';

// The first unit from `start` on that `isWanted`, which answers for a unit and for a block alike.
template <class IsWanted>
std::size_t FindWanted(std::u16string_view text, std::size_t start, IsWanted isWanted) {
  std::size_t i = start;
  for (; i + kBlock <= text.size(); i += kBlock) {
    Block block;
    std::memcpy(&block, text.data() + i, sizeof block);
    const auto wanted = isWanted(block);
    std::uint64_t halves[2];
    std::memcpy(halves, &wanted, sizeof halves);
    if ((halves[0] | halves[1]) != 0) break;
  }
  for (; i < text.size(); ++i) {
    if (isWanted(text[i])) return i;
  }
  return kNone;
}

// Knuth, Morris and Pratt: linear whatever the needle. Slower than the plain search on usual text.
std::size_t FindRepetitive(std::u16string_view text, std::u16string_view needle,
                           std::size_t start) {
  std::vector<std::uint32_t> border(needle.size(), 0);
  for (std::size_t i = 1, length = 0; i < needle.size();) {
    if (needle[i] == needle[length]) {
      border[i++] = static_cast<std::uint32_t>(++length);
    } else if (length != 0) {
      length = border[length - 1];
    } else {
      ++i;
    }
  }
  for (std::size_t i = start, matched = 0; i < text.size();) {
    if (text[i] == needle[matched]) {
      ++i;
      if (++matched == needle.size()) return i - matched;
    } else if (matched != 0) {
      matched = border[matched - 1];
    } else {
      ++i;
    }
  }
  return kNone;
}

struct LowerCaseRange {
  char16_t first;
  char16_t last;
  std::int16_t step;
  std::int32_t difference;
};

constexpr LowerCaseRange kLowerCaseRanges[] = {
#define KELMORA_LOWERCASE(first, last, step, difference) {first, last, step, difference},
#include "lowercase.def"
#undef KELMORA_LOWERCASE
};

constexpr bool IsDigit(char16_t unit) {
  return unit >= u'0' && unit <= u'9';
}

char16_t AsciiLower(char16_t unit) {
  return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

constexpr char16_t kByteUnits = 0xDC00;  // a stray byte b travels as kByteUnits + b
constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsLowSurrogate(char16_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}
constexpr bool IsStrayByte(char16_t unit) {
  return unit >= 0xDC80 && unit <= 0xDCFF;
}

// Bytes of the well-formed UTF-8 character that begins the text, 0 when none does.
std::size_t Utf8Size(std::string_view bytes, char32_t& character) {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  struct Form {
    unsigned char mask, lead;
    std::size_t size;
    char32_t smallest;
  };
  static constexpr Form kForms[] = {
      {0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};
  for (const Form& form : kForms) {
    if ((lead & form.mask) != form.lead) continue;
    if (bytes.size() < form.size) return 0;
    character = lead & static_cast<unsigned char>(~form.mask);
    for (std::size_t i = 1; i < form.size; ++i) {
      const auto byte = static_cast<unsigned char>(bytes[i]);
      if ((byte & 0xC0) != 0x80) return 0;
      character = (character << 6) | (byte & 0x3Fu);
    }
    const bool isSurrogate = character >= 0xD800 && character < 0xE000;
    return character < form.smallest || isSurrogate || character > 0x10FFFF ? 0 : form.size;
  }
  return 0;
}

void AppendUtf8(std::string& bytes, char32_t character) {
  const auto continuation = [&](int shift) {
    bytes += static_cast<char>(0x80 | ((character >> shift) & 0x3F));
  };
  if (character < 0x80) {
    bytes += static_cast<char>(character);
  } else if (character < 0x800) {
    bytes += static_cast<char>(0xC0 | (character >> 6));
    continuation(0);
  } else if (character < 0x10000) {
    bytes += static_cast<char>(0xE0 | (character >> 12));
    continuation(6);
    continuation(0);
  } else {
    bytes += static_cast<char>(0xF0 | (character >> 18));
    continuation(12);
    continuation(6);
    continuation(0);
  }
}

}  // namespace

std::size_t FindUnit(std::u16string_view text, char16_t unit, std::size_t start) {
  const std::uint16_t wanted = unit;
  return FindWanted(text, start, [wanted](auto units) { return units == wanted; });
}

std::size_t FindLineEnd(std::u16string_view text, std::size_t start) {
  return FindWanted(text, start, [](auto units) { return (units == kCr) | (units == kLf); });
}

std::size_t FindText(std::u16string_view text, std::u16string_view needle, std::size_t start) {
  if (needle.empty()) return start <= text.size() ? start : kNone;
  if (needle.size() == 1) return FindUnit(text, needle[0], start);
  // Each false start may compare a whole needle; a text made for that gets the other search.
  constexpr std::size_t kShortNeedle = 16;
  std::size_t budget = 4 * (text.size() - std::min(start, text.size()));
  while (start + needle.size() <= text.size()) {
    const std::size_t found =
        FindUnit(text.substr(0, text.size() - needle.size() + 1), needle[0], start);
    if (found == kNone) return kNone;
    std::size_t matched = 1;
    while (matched < needle.size() && text[found + matched] == needle[matched]) ++matched;
    if (matched == needle.size()) return found;
    start = found + 1;
    if (needle.size() > kShortNeedle) {
      if (matched > budget) return FindRepetitive(text, needle, start);
      budget -= matched;
    }
  }
  return kNone;
}

std::u16string_view CutAtZero(std::u16string_view text) {
  return text.substr(0, FindUnit(text, 0));
}

bool IsBlank(std::u16string_view text) {
  return std::ranges::all_of(text, IsXmlSpace);
}

std::u16string_view TrimView(std::u16string_view text, std::u16string_view set) {
  const UnitSet units(set);
  while (!text.empty() && units.Has(text.front())) text.remove_prefix(1);
  while (!text.empty() && units.Has(text.back())) text.remove_suffix(1);
  return text;
}

char16_t LowerCase(char16_t unit) {
  if (unit < 0x80) return AsciiLower(unit);
  const auto* range = std::ranges::lower_bound(kLowerCaseRanges, unit, {}, &LowerCaseRange::last);
  if (range == std::end(kLowerCaseRanges) || unit < range->first) return unit;
  if ((unit - range->first) % range->step != 0) return unit;
  return static_cast<char16_t>(unit + range->difference);
}

bool EqualsIgnoringAsciiCase(std::u16string_view a, std::u16string_view b) {
  return std::ranges::equal(a, b, {}, AsciiLower, AsciiLower);
}

std::u16string_view PrefixOf(std::u16string_view name) {
  const std::size_t colon = FindUnit(name, u':');
  return colon == kNone ? std::u16string_view() : name.substr(0, colon);
}

std::u16string_view LocalPartOf(std::u16string_view name) {
  const std::size_t colon = FindUnit(name, u':');
  return colon == kNone ? name : name.substr(colon + 1);
}

TQString FromNative(std::string_view bytes) {
  TQString text;
  int cursor = 0;
  const int margin = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
  while (!bytes.empty()) {
    char32_t character = 0;
    const std::size_t size = Utf8Size(bytes, character);
    if (size == 0) {
      const auto byte = static_cast<unsigned char>(bytes[0]);
      text.AppendUnitAt(static_cast<char16_t>(kByteUnits + byte), cursor, margin);
    } else if (character >= 0x10000) {
      const char32_t offset = character - 0x10000;
      text.AppendUnitAt(static_cast<char16_t>(0xD800 + (offset >> 10)), cursor, margin);
      text.AppendUnitAt(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)), cursor, margin);
    } else if (character == 0) {
      break;
    } else {
      text.AppendUnitAt(static_cast<char16_t>(character), cursor, margin);
    }
    bytes.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return text;
}

std::string ToNative(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
      AppendUtf8(bytes, 0x10000 + ((unit - char32_t{0xD800}) << 10) + (text[++i] - 0xDC00u));
    } else if (IsStrayByte(unit)) {
      bytes += static_cast<char>(unit - kByteUnits);
    } else {
      AppendUtf8(bytes, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit);
    }
  }
  return bytes;
}

double ParseDouble(std::u16string_view text, std::size_t* consumed) {
  const auto at = [&](std::size_t i) { return i < text.size() ? text[i] : u'\0'; };
  std::size_t i = 0;
  if (consumed != nullptr) *consumed = 0;
  while (IsWideSpace(at(i))) ++i;
  const bool isNegative = at(i) == u'-';
  if (isNegative || at(i) == u'+') ++i;

  const std::size_t start = i;
  while (IsDigit(at(i))) ++i;
  std::size_t digits = i - start;
  if (at(i) == u'.') {
    const std::size_t point = i++;
    while (IsDigit(at(i))) ++i;
    digits += i - point - 1;
  }
  if (digits == 0) return 0;
  if (at(i) == u'e' || at(i) == u'E') {
    std::size_t exponent = i + 1;
    if (at(exponent) == u'-' || at(exponent) == u'+') ++exponent;
    if (IsDigit(at(exponent))) {
      while (IsDigit(at(exponent))) ++exponent;
      i = exponent;
    }
  }
  if (consumed != nullptr) *consumed = i;

  constexpr std::size_t kUsualSize = 64;
  char usual[kUsualSize];
  std::string longText;
  const std::size_t size = i - start;
  if (size >= kUsualSize) longText.resize(size);
  char* const number = size < kUsualSize ? usual : longText.data();
  for (std::size_t n = 0; n < size; ++n) number[n] = static_cast<char>(text[start + n]);
  number[size] = '\0';

  double value = 0;
  const auto result = std::from_chars(number, number + size, value);
  // Out of range: only the C function tells whether that means 0 or infinity.
  if (result.ec == std::errc::result_out_of_range) value = std::strtod(number, nullptr);
  return isNegative ? -value : value;
}

}  // namespace kelmora
