// The keyed hash against published values, and that texts spread alike under any key.
#include "tqcore/texthash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

// The key and the messages are those of the authors' vectors: the bytes 0 to 15, and the bytes from
// 0 on, an even number of them. The values came from another program:
//   openssl mac -macopt hexkey:000102030405060708090a0b0c0d0e0f -macopt size:8
//     -macopt c-rounds:1 -macopt d-rounds:3 -in FILE SIPHASH
TEST(TextHash, HasTheKnownValues) {
  constexpr std::uint64_t kValues[] = {
      0xabac0158050fc4dcu, 0x82cb9b024dc7d44du, 0xcf75576088d38328u, 0xc50d2b50c59f22a7u,
      0x369095118d299a8eu, 0x79de85ee92ff097fu, 0x78a384b157b4d9a2u, 0x605aa111c0f95d34u,
      0xcc4fdd1a7d908b66u, 0x8ffc389cb473e63eu, 0xc0dc2f46a6cce040u, 0x7ffe7b9ba320872eu,
      0xf464aeb267349c8cu, 0x3a3e35e3ca9913a5u, 0xfb0bed02ef6cd00du, 0x540f11d643c5e663u,
      0x81157b6c16a7b60du, 0x759f12781f2a753eu, 0x2cf508d3ada26206u, 0xb3f47496ae3a36a1u,
      0xc1d2363299e41531u, 0x65704ffec8138825u, 0xc2ca1cedfaf8876bu, 0xa16e9c9368b1d623u,
      0x9f3143f8df074c46u, 0x7eaf49d10a52098fu, 0xc44a30dda2f41f12u, 0x318fb34c73f0bce6u,
      0xb4bcc0db243c6d75u, 0x8f035f4da67d8a08u, 0xf6f4e6bcf7a644eeu, 0xc3b2f6154b6694e0u};
  constexpr HashState kKey(0x0706050403020100u, 0x0f0e0d0c0b0a0908u);
  std::u16string message;
  for (const std::uint64_t value : kValues) {
    EXPECT_EQ(HashText(kKey, message), value) << message.size() << " units";
    const auto next = static_cast<char16_t>(2 * message.size());
    message.push_back(static_cast<char16_t>(next | (next + 1) << 8));
  }
}

using Names = std::vector<std::u16string>;

std::u16string Number(int number) {
  return FromNative(std::to_string(number)).c_str();
}

// Texts of a kind that simple hashes do badly with: numbered, of one unit far from the end, and
// with an end in common.
std::vector<Names> Kinds(int count) {
  std::vector<Names> kinds(3);
  for (int i = 0; i < count; ++i) {
    kinds[0].push_back(u"name" + Number(i));
    kinds[1].push_back(std::u16string(1, static_cast<char16_t>(0x4E00 + i)) +
                       u"name of some length");
    kinds[2].push_back(Number(i * 4096) + u"000000000000");
  }
  return kinds;
}

// The fullest of `count` places is a matter of chance, and 4000 texts in as many places have hardly
// ever 13 in one. Whatever bits a table takes, and whatever the key, it must be so.
TEST(TextHash, TextsSpreadUnderAnyKey) {
  constexpr int kCount = 4000;
  std::mt19937_64 random(1);
  const std::vector<Names> kinds = Kinds(kCount);
  for (int key = 0; key < 20; ++key) {
    const HashState state(key == 0 ? 0 : random(), key == 0 ? 0 : random());
    for (const Names& names : kinds) {
      std::vector<int> byPrime(4003), byLowBits(4096), byMiddleBits(4096);
      for (const std::u16string& name : names) {
        const std::uint64_t hash = HashText(state, name);
        ++byPrime[hash % byPrime.size()];
        ++byLowBits[hash % 4096];
        ++byMiddleBits[(hash >> 20) % 4096];
      }
      for (const std::vector<int>& places : {byPrime, byLowBits, byMiddleBits}) {
        EXPECT_LT(std::ranges::max(places), 13);
        const auto empty = static_cast<double>(std::ranges::count(places, 0));
        EXPECT_NEAR(empty / static_cast<double>(places.size()), std::exp(-1.0), 0.03);
      }
    }
  }
}

TEST(TextHash, KeysAreDrawnAnew) {
  std::set<std::uint64_t> hashes;
  for (int i = 0; i < 100; ++i) {
    hashes.insert(HashText(DrawHashKey(), u"name"));
    hashes.insert(HashText(DrawHashKey(false), u"name"));
  }
  EXPECT_EQ(hashes.size(), 200U);
}

TEST(TextHash, NamesDifferByTheirNamespace) {
  const int uris[2] = {};
  const std::set<std::uint64_t> hashes = {HashName(u"a", &uris[0]), HashName(u"a", &uris[1]),
                                          HashName(u"a", nullptr), HashName(u"b", &uris[0])};
  EXPECT_EQ(hashes.size(), 4U);
  EXPECT_EQ(HashName(u"a", &uris[0]), HashName(std::u16string(1, u'a'), &uris[0]));
}

}  // namespace
}  // namespace kelmora
