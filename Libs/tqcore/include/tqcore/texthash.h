// TextHash: the hash of every table that is keyed by text.
//
// Texts come from documents of anybody. Whoever can foretell a hash can make thousands of texts
// that share one, and then each search is as long as the table. So the hash is keyed: SipHash-1-3,
// of "SipHash: a fast short-input PRF", under a secret that each process draws when it starts.
//
// Hashes differ from run to run, and so does the order in a hashed table. Nothing that a run shows
// may depend on them: a walk over such a table has to come to the same in any order.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kelmora {

// The state of SipHash, and at its start the key.
class HashState {
 public:
  // The key as two numbers, its first byte the lowest.
  constexpr HashState(std::uint64_t low, std::uint64_t high)
      : a_(low ^ 0x736f6d6570736575u),
        b_(high ^ 0x646f72616e646f6du),
        c_(low ^ 0x6c7967656e657261u),
        d_(high ^ 0x7465646279746573u) {}

  constexpr void Take(std::uint64_t word) {
    d_ ^= word;
    Round();
    a_ ^= word;
  }
  constexpr std::uint64_t Finish() {
    c_ ^= 0xff;
    Round();
    Round();
    Round();
    return a_ ^ b_ ^ c_ ^ d_;
  }

 private:
  constexpr void Round() {
    a_ += b_;
    c_ += d_;
    b_ = std::rotl(b_, 13) ^ a_;
    d_ = std::rotl(d_, 16) ^ c_;
    a_ = std::rotl(a_, 32);
    c_ += b_;
    a_ += d_;
    b_ = std::rotl(b_, 17) ^ c_;
    d_ = std::rotl(d_, 21) ^ a_;
    c_ = std::rotl(c_, 32);
  }

  std::uint64_t a_;
  std::uint64_t b_;
  std::uint64_t c_;
  std::uint64_t d_;
};

// A key that nobody can foretell. It never fails: where the system gives no random bytes (`ask` is
// false in tests of that), it is made of those that a process has from its start, and the time.
HashState DrawHashKey(bool ask = true) noexcept;

// The secret. Inline, so that it is drawn before what a file that includes this header makes at
// start.
inline const HashState kHashKey = DrawHashKey();

// The bytes of a unit count with the lower one in front.
[[gnu::always_inline]] inline std::uint64_t HashText(HashState state, std::u16string_view text) {
  constexpr std::size_t kUnits = 4;  // of a word
  constexpr std::size_t kBits = 16;  // of a unit
  const auto unit = [text](std::size_t at) { return std::uint64_t{text[at]}; };
  const auto word = [&](std::size_t at) {
    if constexpr (std::endian::native == std::endian::little) {
      std::uint64_t units;
      std::memcpy(&units, text.data() + at, sizeof units);
      return units;
    } else {
      return unit(at) | unit(at + 1) << kBits | unit(at + 2) << 2 * kBits |
             unit(at + 3) << 3 * kBits;
    }
  };
  const std::size_t size = text.size();
  std::size_t at = 0;
  for (; at + kUnits <= size; at += kUnits) state.Take(word(at));
  // The units behind the last word, the first of them lowest, without a branch for their number.
  std::uint64_t rest = 0;
  if (size >= kUnits) {
    rest = word(size - kUnits) >> 1 >> (63 - kBits * (size - at));
  } else if (size > 0) {
    rest = unit(0) | unit(size / 2) << kBits * (size / 2) | unit(size - 1) << kBits * (size - 1);
  }
  state.Take(rest | std::uint64_t{size * 2} << 56);
  return state.Finish();
}

inline std::uint64_t HashText(std::u16string_view text) {
  return HashText(kHashKey, text);
}

// Of a local name and the interned text of its namespace, which may be null.
inline std::uint64_t HashName(std::u16string_view local, const void* uri) {
  HashState state = kHashKey;
  state.Take(reinterpret_cast<std::uintptr_t>(uri));
  return HashText(state, local);
}

struct TextHash {
  using is_transparent = void;
  // Without noexcept, since that would tell the tables of the library to compute the hashes of
  // their keys again and again instead of keeping them.
  std::size_t operator()(std::u16string_view text) const { return HashText(text); }
};

}  // namespace kelmora
