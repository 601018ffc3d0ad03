#pragma once

namespace kelmora {

inline bool IsHighSurrogate(char32_t unit) {
  return (unit & 0xFFFFFC00) == 0xD800;
}
inline bool IsLowSurrogate(char32_t unit) {
  return (unit & 0xFFFFFC00) == 0xDC00;
}

// The code point at `next`, which moves behind it. A surrogate without its other half is taken
// for a code point of its own. `next` is not `end`.
inline char32_t ReadCodePoint(const char16_t*& next, const char16_t* end) {
  const char32_t unit = *next++;
  if (!IsHighSurrogate(unit) || next == end || !IsLowSurrogate(*next)) return unit;
  return 0x10000 + ((unit - 0xD800) << 10) + (*next++ - 0xDC00);
}

}  // namespace kelmora
