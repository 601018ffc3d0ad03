// The mapping tables of the encodings that have one, and the lookup tables made from them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "encodings/encodings.h"

namespace kelmora {

struct CodeRun {
  char16_t first;
  std::uint16_t count;
};

// A list of pairs (code, character): the codes are those of the runs one behind the other, and
// each has one unit of `characters`. Of two pairs with one code or one character the later counts.
struct CodePage {
  EncodingId id;
  std::span<const CodeRun> runs;
  std::u16string_view characters;
};

// The table of an encoding; null if it has none. Three Japanese encodings share one, which is
// keyed by Shift-JIS codes.
[[nodiscard]] const CodePage* FindCodePage(EncodingId id);

inline constexpr char16_t kReplacement = 0xFFFD;  // what a code without a character becomes
inline constexpr char16_t kSubstitute = u'_';     // what a character without a code becomes

// From code to character, kReplacement where there is none: 256 entries for a single-byte
// encoding, else 65536. From character to code, kSubstitute where there is none: 65536 entries.
// Both are keyed by the codes of `id` itself, are made at the first call for it and stay to the
// end of the process. `id` must have a code page.
using LookupTable = std::vector<char16_t>;
[[nodiscard]] const LookupTable& DecodingTable(EncodingId id);
[[nodiscard]] const LookupTable& EncodingTable(EncodingId id);

// Below this an encoding has codes of one byte only.
inline constexpr EncodingId kFirstMultibyte{90};

}  // namespace kelmora
