// Eight or more characters at a time, for stretches of text that only need widening or narrowing.
// All steps work on the memory order of either kind of machine.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kelmora {

inline constexpr std::ptrdiff_t kBytesOfWord = 8;

template <typename Word>
Word LoadAs(const void* memory) {
  Word word;
  std::memcpy(&word, memory, sizeof word);
  return word;
}

// Each of eight bytes becomes a unit.
inline void WidenWord(const unsigned char* bytes, char16_t* units) {
  for (int half = 0; half < 2; ++half) {
    std::uint64_t word = LoadAs<std::uint32_t>(bytes + half * 4);
    word = (word | word << 16) & 0x0000FFFF0000FFFF;
    word = (word | word << 8) & 0x00FF00FF00FF00FF;
    std::memcpy(units + half * 4, &word, sizeof word);
  }
}

// Each of eight units becomes a byte; none is above FF.
inline void NarrowWord(const char16_t* units, char* bytes) {
  for (int half = 0; half < 2; ++half) {
    auto word = LoadAs<std::uint64_t>(units + half * 4);
    word = (word | word >> 8) & 0x0000FFFF0000FFFF;
    const auto packed = static_cast<std::uint32_t>(word | word >> 16);
    std::memcpy(bytes + half * 4, &packed, sizeof packed);
  }
}

inline constexpr std::uint64_t kOneInEachByte = 0x0101010101010101;
inline constexpr std::uint64_t kHighBits = 0x8080808080808080;

// Not 0 if a byte of `word` is 0.
inline std::uint64_t ZeroBytes(std::uint64_t word) {
  return (word - kOneInEachByte) & ~word & kHighBits;
}

// Marks, by its high bit, the first byte in memory that is 0 or beyond ASCII. Bytes behind it may
// be marked by mistake; on a machine that stores the most significant byte first one in front of
// it may, which makes for a shorter stretch.
inline std::uint64_t OtherThanPlainAscii(std::uint64_t word) {
  return ((word - kOneInEachByte) | word) & kHighBits;
}

// How many bytes stand in front of the first one that `marks` has marked.
inline std::ptrdiff_t BytesBefore(std::uint64_t marks) {
  constexpr bool kFirstIsLowest = std::endian::native == std::endian::little;
  return (kFirstIsLowest ? std::countr_zero(marks) : std::countl_zero(marks)) / 8;
}

// Whether all of eight units are ASCII.
inline bool IsAsciiWord(const char16_t* units) {
  constexpr std::uint64_t kBeyondAscii = 0xFF80FF80FF80FF80;
  return ((LoadAs<std::uint64_t>(units) | LoadAs<std::uint64_t>(units + 4)) & kBeyondAscii) == 0;
}

// WidenBlock widens a block of bytes and returns how many of them stand in front of the first one
// that is 0 or beyond ASCII; the units from there on are of no use. NarrowBlock narrows a block of
// units that are all ASCII, else it returns false.
#if defined(__SSE2__)
inline constexpr std::ptrdiff_t kBytesOfBlock = 16;
inline std::ptrdiff_t WidenBlock(const unsigned char* bytes, char16_t* units) {
  const __m128i block = LoadAs<__m128i>(bytes);
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(units), _mm_unpacklo_epi8(block, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(units + 8), _mm_unpackhi_epi8(block, zero));
  return std::countr_one(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(block, zero))));
}
inline bool NarrowBlock(const char16_t* units, char* bytes) {
  if (!IsAsciiWord(units) || !IsAsciiWord(units + 8)) return false;
  const __m128i block = _mm_packus_epi16(LoadAs<__m128i>(units), LoadAs<__m128i>(units + 8));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), block);
  return true;
}
#else
inline constexpr std::ptrdiff_t kBytesOfBlock = kBytesOfWord;
inline std::ptrdiff_t WidenBlock(const unsigned char* bytes, char16_t* units) {
  const std::uint64_t others = OtherThanPlainAscii(LoadAs<std::uint64_t>(bytes));
  WidenWord(bytes, units);
  return others == 0 ? kBytesOfBlock : BytesBefore(others);
}
inline bool NarrowBlock(const char16_t* units, char* bytes) {
  if (!IsAsciiWord(units)) return false;
  NarrowWord(units, bytes);
  return true;
}
#endif

}  // namespace kelmora
