// General category and block of a 16-bit unit, by version 3.2.0 of the Unicode Character Database.
// Only the Basic Multilingual Plane exists here. All texts are constants of the program.
#pragma once

namespace kelmora {

// "Lu", "Nd" and so on, two units and a terminating 0; never null. A unit that the database doesn't
// list has the category of the nearest one listed below it, so no unit is "Cn"; U+FFFE and U+FFFF
// alone have the empty text. Constant time.
[[nodiscard]] const char16_t* GeneralCategory(char16_t unit);

// The name of the block without blanks, such as "Latin-1Supplement"; null for a unit between two
// blocks. Logarithmic.
[[nodiscard]] const char16_t* BlockName(char16_t unit);

}  // namespace kelmora
