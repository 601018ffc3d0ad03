#include "xmltree/prefixmap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>

namespace kelmora {
namespace {

using Model = std::map<std::u16string, InternedURI>;

const TQString kUris[] = {u"u0", u"u1", u"u2", u"u3"};

// Everything that a map tells must agree with the model.
void ExpectEqual(const PrefixMap& map, const Model& model) {
  ASSERT_EQ(map.Size(), static_cast<int>(model.size()));
  ASSERT_EQ(map.IsEmpty(), model.empty());
  auto expected = model.begin();
  for (const PrefixMap::Entry& entry : map) {
    ASSERT_NE(expected, model.end());
    ASSERT_EQ(entry.prefix, expected->first);
    ASSERT_EQ(entry.uri, expected->second);
    ++expected;
  }
  ASSERT_EQ(expected, model.end());
  for (const auto& [prefix, uri] : model) {
    ASSERT_NE(map.Find(prefix), nullptr);
    ASSERT_EQ(map.Lookup(prefix), uri);
  }
  ASSERT_EQ(map.Find(u"never"), nullptr);
}

std::u16string RandomPrefix(std::mt19937& random) {
  std::u16string prefix;
  for (auto length = random() % 3; length > 0; --length) {
    prefix +=
        static_cast<char16_t>(random() % 2 == 0 ? u'a' + random() % 9 : 0xFF00 + random() % 9);
  }
  return prefix;
}

// Copies must keep their content whatever happens to the map that they were taken from.
TEST(PrefixMap, AgreesWithAnOrderedMapAndKeepsOldVersions) {
  std::mt19937 random(20240229);
  std::vector<std::pair<PrefixMap, Model>> versions(1);
  for (int step = 0; step < 4000; ++step) {
    auto version = versions[random() % versions.size()];
    auto& [map, model] = version;
    for (auto changes = random() % 4; changes > 0; --changes) {
      const std::u16string prefix = RandomPrefix(random);
      const auto uri = random() % 5;
      model[prefix] = uri < 4 ? &kUris[uri] : nullptr;
      map.Set(prefix, model[prefix]);
    }
    if (versions.size() < 60) {
      versions.push_back(version);
    } else {
      versions[random() % versions.size()] = std::move(version);
    }
    if (step % 50 == 0) {
      for (const auto& [kept, expected] : versions)
        ASSERT_NO_FATAL_FAILURE(ExpectEqual(kept, expected));
    }
  }
}

// A tree that degenerates overruns the path of an iterator.
TEST(PrefixMap, StaysBalancedForEveryOrderOfInsertion) {
  constexpr unsigned kCount = 60'000;
  for (const unsigned step : {1u, kCount - 1, 7919u}) {
    PrefixMap map;
    for (unsigned i = 0; i < kCount; ++i) {
      const char16_t prefix = static_cast<char16_t>(1 + i * step % kCount);
      map.Set({&prefix, 1}, &kUris[0]);
    }
    char16_t expected = 1;
    for (const PrefixMap::Entry& entry : map) ASSERT_EQ(entry.prefix.View()[0], expected++);
    EXPECT_EQ(expected, kCount + 1);
  }
}

TEST(PrefixMap, SharesUntilItIsChanged) {
  PrefixMap map;
  map.Set(u"p", nullptr);
  PrefixMap copy = map;
  copy.Set(u"p", nullptr);  // which it already is
  EXPECT_TRUE(copy.SharesWith(map));
  copy.Set(u"p", &kUris[1]);
  EXPECT_FALSE(copy.SharesWith(map));
}

}  // namespace
}  // namespace kelmora
