// Finds what the writers have to escape. A text is written in runs: everything up to the next unit
// of interest goes out as one piece.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelmora {

// What a unit may need; the writers look for a set of these.
enum EscapeClass : std::uint8_t {
  EscapeAngle = 1,  // < >
  EscapeAmp = 2,    // &
  EscapeQuote = 4,  // "
  EscapeBreak = 8,  // CR LF
  EscapeURL = 16,   // what a URL made of printable ASCII may not hold
};

// What the values of a method need.
inline constexpr unsigned kTextEscapes = EscapeAngle | EscapeAmp;  // comments, too
inline constexpr unsigned kXmlAttributeEscapes = kTextEscapes | EscapeQuote | EscapeBreak;
inline constexpr unsigned kHtmlAttributeEscapes = EscapeAngle | EscapeQuote;

// Index of the first unit at or behind `start` that belongs to one of `classes`, else the length.
std::size_t FindEscapable(std::u16string_view text, std::size_t start, unsigned classes);

// True when every unit lies between blank and "~".
bool IsPrintableAscii(std::u16string_view text);

// "&lt;", "&gt;", "&amp;" and "&quot;" for their characters, empty for every other.
std::u16string_view EntityReference(char16_t unit);

}  // namespace kelmora
