// Sets of units in the form that a parse tests: a table, and for sets that refuse only a few units
// a way to skip eight accepted ones at a time.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>

#include "parso/parsorule.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kelmora {

struct ParsoUnitSet {
  static constexpr std::size_t kMostStops = 4;

  // Entry 0 is never set: the unit behind the text ends every run, so that no length is tested.
  ParsoClassTable table{};
  // For a set with `skips`: what it refuses beside control characters. Repeated to fill up.
  std::array<char16_t, kMostStops> stops{};
  bool stopsAtControls = false;  // refuses units from 1 to 31 as well
  bool skips = false;

  bool Takes(char16_t unit) const {
    return table[std::min<std::size_t>(unit, table.size() - 1)] != 0;
  }
  bool operator==(const ParsoUnitSet&) const = default;
};

// Finds out whether the table lets itself be skipped through.
inline void PrepareSkipping(ParsoUnitSet& set) {
  constexpr std::size_t kControls = 32;
  std::size_t count = 0;
  bool refusesControl = false;
  for (std::size_t unit = 1; unit < set.table.size(); ++unit) {
    if (set.table[unit] != 0) continue;
    if (unit < kControls) {
      refusesControl = true;
    } else if (count < ParsoUnitSet::kMostStops) {
      set.stops[count++] = static_cast<char16_t>(unit);
    } else {
      return;
    }
  }
  // The unit 0 needs a place among the stops when the control characters don't cover it.
  if (!refusesControl) {
    if (count == ParsoUnitSet::kMostStops) return;
    set.stops[count++] = 0;
  }
  if (count == 0) set.stops[count++] = 0;
  for (; count < ParsoUnitSet::kMostStops; ++count) set.stops[count] = set.stops[0];
  set.stopsAtControls = refusesControl;
  set.skips = set.table.back() != 0;
}

#if defined(__SSE2__)
// The first unit from `text` on that may be refused, or a place less than eight units before
// `end`. `text` may be `end` itself.
template <bool kStopsAtControls>
inline const char16_t* SkipAccepted(const ParsoUnitSet& set, const char16_t* text,
                                    const char16_t* end) {
  constexpr std::ptrdiff_t kUnits = 8;
  constexpr short kLastControl = 31;
  const __m128i a = _mm_set1_epi16(static_cast<short>(set.stops[0]));
  const __m128i b = _mm_set1_epi16(static_cast<short>(set.stops[1]));
  const __m128i c = _mm_set1_epi16(static_cast<short>(set.stops[2]));
  const __m128i d = _mm_set1_epi16(static_cast<short>(set.stops[3]));
  while (end - text >= kUnits) {
    const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    __m128i stop = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(units, a), _mm_cmpeq_epi16(units, b)),
                                _mm_or_si128(_mm_cmpeq_epi16(units, c), _mm_cmpeq_epi16(units, d)));
    if constexpr (kStopsAtControls) {
      const __m128i above = _mm_subs_epu16(units, _mm_set1_epi16(kLastControl));
      stop = _mm_or_si128(stop, _mm_cmpeq_epi16(above, _mm_setzero_si128()));
    }
    const int mask = _mm_movemask_epi8(stop);
    if (mask != 0) return text + std::countr_zero(static_cast<unsigned>(mask)) / 2;
    text += kUnits;
  }
  return text;
}
#endif

// The first unit from `text` on that the set refuses; `end` at the latest, where a 0 stands.
inline const char16_t* SkipRun(const ParsoUnitSet& set, const char16_t* text,
                               [[maybe_unused]] const char16_t* end) {
#if defined(__SSE2__)
  if (set.skips) {
    while (true) {
      text = set.stopsAtControls ? SkipAccepted<true>(set, text, end)
                                 : SkipAccepted<false>(set, text, end);
      // Here stands a unit that is refused, or a control that isn't, or the last few units.
      if (!set.Takes(*text)) return text;
      ++text;
    }
  }
#endif
  while (set.Takes(*text)) ++text;
  return text;
}

}  // namespace kelmora
