#include "escape.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace kelmora {

namespace {

constexpr std::size_t kAscii = 128;

constexpr std::array<std::uint8_t, kAscii> MakeClasses() {
  std::array<std::uint8_t, kAscii> classes{};
  for (char16_t unit : std::u16string_view(u"<>")) classes[unit] |= EscapeAngle;
  for (char16_t unit : std::u16string_view(u"\r\n")) classes[unit] |= EscapeBreak;
  for (char16_t unit : std::u16string_view(u" \"%<>^`{|}")) classes[unit] |= EscapeURL;
  classes[u'&'] |= EscapeAmp;
  classes[u'"'] |= EscapeQuote;
  return classes;
}
constexpr std::array<std::uint8_t, kAscii> kClasses = MakeClasses();

// Indexed by character; all four lie below 64.
constexpr std::size_t kEntityTableSize = 64;
constexpr std::array<std::u16string_view, kEntityTableSize> MakeEntityNames() {
  std::array<std::u16string_view, kEntityTableSize> names{};
  names[u'<'] = u"&lt;";
  names[u'>'] = u"&gt;";
  names[u'&'] = u"&amp;";
  names[u'"'] = u"&quot;";
  return names;
}
constexpr std::array<std::u16string_view, kEntityTableSize> EntityNames = MakeEntityNames();

// Eight units at a time: all that any class but EscapeURL asks for.
using Block = std::uint16_t __attribute__((vector_size(16)));
constexpr std::size_t kBlock = sizeof(Block) / sizeof(char16_t);
constexpr std::uint16_t kMarkup[] = {'<', '>', '&', '"', '\r', '\n'};
bool HoldsMarkup(const char16_t* units) {
  Block block;
  std::memcpy(&block, units, sizeof block);
  const auto found = (block == kMarkup[0]) | (block == kMarkup[1]) | (block == kMarkup[2]) |
                     (block == kMarkup[3]) | (block == kMarkup[4]) | (block == kMarkup[5]);
  std::uint64_t halves[2];
  std::memcpy(halves, &found, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

}  // namespace

std::size_t FindEscapable(std::u16string_view text, std::size_t start, unsigned classes) {
  const bool inBlocks = classes < EscapeURL;
  std::size_t i = start;
  while (i < text.size()) {
    const std::size_t end = std::min(text.size(), i + kBlock);
    if (inBlocks && end - i == kBlock && !HoldsMarkup(text.data() + i)) {
      i = end;
      continue;
    }
    for (; i < end; ++i) {
      const char16_t unit = text[i];
      if (unit < kAscii && (kClasses[unit] & classes) != 0) return i;
    }
  }
  return text.size();
}

bool IsPrintableAscii(std::u16string_view text) {
  for (char16_t unit : text) {
    if (unit < u' ' || unit > u'~') return false;
  }
  return true;
}

std::u16string_view EntityReference(char16_t unit) {
  return unit < kEntityTableSize ? EntityNames[unit] : std::u16string_view();
}

}  // namespace kelmora
