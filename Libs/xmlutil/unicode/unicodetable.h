// The form of the generated table. The categories of all units are a table of two levels: the
// units are cut into pages, and of pages with equal contents only one is kept.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

inline constexpr std::size_t kUnits = 0x10000;
inline constexpr std::size_t kPageUnits = 128;
inline constexpr std::size_t kPages = kUnits / kPageUnits;

using CategoryPage = std::uint8_t[kPageUnits];  // indexes of category names

struct BlockRange {
  char16_t first;
  char16_t last;
};

struct UnicodeBlock {
  BlockRange range;
  const char16_t* name;
};

}  // namespace kelmora
