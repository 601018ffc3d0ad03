// Text helpers on views, for code that reads text it does not own. All counts are 16-bit units.
#pragma once

#include <string>
#include <string_view>

#include "tqcore/tqstring.h"

namespace kelmora {

// The four units that XML counts as white space: blank, tab, CR, LF.
constexpr bool IsXmlSpace(char16_t unit) {
  return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}
inline constexpr std::u16string_view kXmlSpaces = u" \t\r\n";

// The C library's wide isspace in the C locale: blank, tab, LF, VT, FF, CR, for every locale alike.
constexpr bool IsWideSpace(char16_t unit) {
  return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

// Unit index of the first occurrence at or behind `start`, or npos. Linear in the text, whatever
// the needle; an empty needle is found at `start`.
std::size_t FindUnit(std::u16string_view text, char16_t unit, std::size_t start = 0);
std::size_t FindText(std::u16string_view text, std::u16string_view needle, std::size_t start = 0);
std::size_t FindLineEnd(std::u16string_view text, std::size_t start = 0);  // a CR or LF
// The text up to, not including, its first unit of value 0.
std::u16string_view CutAtZero(std::u16string_view text);

bool IsBlank(std::u16string_view text);
std::u16string_view TrimView(std::u16string_view text, std::u16string_view set = kXmlSpaces);
// The one-to-one lower-case form by the Unicode tables; a unit without one is its own.
char16_t LowerCase(char16_t unit);
bool EqualsIgnoringAsciiCase(std::u16string_view a, std::u16string_view b);
// Text before the first ":", empty without one; text behind it, all of it without one.
std::u16string_view PrefixOf(std::u16string_view name);
std::u16string_view LocalPartOf(std::u16string_view name);

// The names of the outside world (arguments, file names, console) are UTF-8. A byte that is not
// part of valid UTF-8 travels as the unit 0xDC00 + byte and comes out as that byte again, so that
// every file name survives the round trip.
TQString FromNative(std::string_view bytes);
std::string ToNative(std::u16string_view text);

// The C library's strtod in the C locale on ASCII text: decimal digits, point, sign, exponent;
// "inf", "nan" and hexadecimal are not numbers here. `consumed` (may be null) receives the units
// used, 0 when there is no number.
double ParseDouble(std::u16string_view text, std::size_t* consumed);

}  // namespace kelmora
