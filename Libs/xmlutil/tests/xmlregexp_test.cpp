#include "xmlutil/xmlregexp.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

struct MatchRow {
  const char16_t* pattern;
  const char16_t* text;
  int result;
  bool stopAtPartial = false;
};

TEST(XMLRegExp, Matches) {
  constexpr int no = XMLRegExp::kNoMatch;
  constexpr int partial = XMLRegExp::kPartial;
  constexpr int yes = XMLRegExp::kMatch;
  const MatchRow rows[] = {
      {u"a*ab", u"aab", yes},
      {u"a|ab", u"ab", yes},
      {u"a|ab", u"ab", partial, true},
      {u"a*", u"", yes},
      {u"a", u"", no},
      {u".", u"\n", no},
      {u"[^a]", u"\n", yes},
      {u"[^a]", u"a", no},
      {u"[a-z-[aeiou]]", u"b", yes},
      {u"[a-z-[aeiou]]", u"a", no},
      {u"[^\\d]", u"5", no},
      {u"[^\\d]", u"x", yes},
      {u"\\P{L}", u"a", no},
      {u"\\P{L}", u"", no},
      {u"\\p{Lu}", u"a", no},
      {u"\\p{L}", u"a", yes},
      {u"\\p{IsGreekandCoptic}", u"\u03B1", yes},
      {u"\\p{IsNoSuchBlock}", u"a", no},
      {u"\\P{IsNoSuchBlock}", u"a", yes},
      {u"a{2,3}", u"aaaa", partial},
      {u"a{2,3}", u"aaa", yes},
      {u"a{0}", u"", yes},
      {u"a{0}", u"a", partial},
      {u"x{3,2}", u"xx", yes},
      {u"(a*)*b", u"aab", yes},
      {u".", u"\xD83D\xDE00", partial},
      {u"..", u"\xD83D\xDE00", yes},
      {u"^a$", u"^a$", yes},
      {u"\\i\\c*", u"_a-1.", yes},
      {u"\\i\\c*", u"1a", no},
      {u"\\S+(\\s\\S+)*", u"ab cd\te", yes},
      {u"[\\-\\+]?(\\d*\\.)?\\d+", u"-12.5", yes},
      {u"(a|b)*c", u"ababc", yes},
      {u"", u"anything", yes},  // no expression accepts all
      {u"(", u"anything", yes},
  };
  for (const MatchRow& row : rows) {
    const XMLRegExp expression(row.pattern, row.stopAtPartial);
    EXPECT_EQ(expression.Match(row.text), row.result)
        << ToNative(row.pattern) << " on '" << ToNative(row.text) << "'";
  }
}

// Two records for each letter: beyond the limit there is no second attempt, and a search that
// would need 2^n attempts ends as well.
TEST(XMLRegExp, SearchIsBounded) {
  EXPECT_EQ(XMLRegExp(u"(a|b)*c", false).Match(std::u16string(600, u'a')), XMLRegExp::kNoMatch);
  EXPECT_EQ(XMLRegExp(u"(a*)*b", false).Match(std::u16string(40, u'a')), XMLRegExp::kNoMatch);
  EXPECT_EQ(XMLRegExp(u"[a-z]*", false).Match(std::u16string(200000, u'a')), XMLRegExp::kMatch);
  // Repetitions of nothing, and repetitions that multiply.
  EXPECT_EQ(XMLRegExp(u"(a*){1000000000}b", false).Match(u"b"), XMLRegExp::kMatch);
  TQString stars = u"a";
  for (int i = 0; i < 100; ++i) stars = u"(" + stars + u")*";
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(XMLRegExp(stars + u"b", false).Match(u"aaaa"), XMLRegExp::kNoMatch);
  EXPECT_EQ(XMLRegExp(u"((((a{99}){99}){99}){99}){99}b", false).Match(std::u16string(900, u'a')),
            XMLRegExp::kNoMatch);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST(XMLRegExp, NestingIsBounded) {
  const struct {
    const char16_t* open;
    const char16_t* close;
  } rows[] = {{u"(", u")"}, {u"(c|", u")"}, {u"[a-z-", u"]"}};
  for (const auto& row : rows) {
    const auto nested = [&row](int depth) {
      TQString text;
      for (int i = 0; i < depth; ++i) text += row.open;
      text += u"[a]";
      for (int i = 0; i < depth; ++i) text += row.close;
      return text;
    };
    const XMLRegExp atLimit(nested(XMLRegExp::kMaxNesting - 1), false);
    EXPECT_TRUE(atLimit.IsCompiled());
    EXPECT_NE(atLimit.Match(u"a"), atLimit.Match(u"b"));
    for (const int depth : {XMLRegExp::kMaxNesting, 50000}) {
      const XMLRegExp beyond(nested(depth), false);
      EXPECT_FALSE(beyond.IsCompiled());
      EXPECT_FALSE(XMLRegExp::LastErrorMessage().IsEmpty());
    }
  }
}

TEST(XMLRegExp, ChoicesAndAttemptsAreBoundedExactly) {
  const auto units = [](std::size_t count) { return TQString(std::u16string(count, u'a')); };
  // Each unit that the star takes is a choice.
  const XMLRegExp oneBack(u"a*ab", false);
  EXPECT_EQ(oneBack.Match(units(XMLRegExp::kMaxChoices) + u"b"), XMLRegExp::kMatch);
  EXPECT_EQ(oneBack.Match(units(XMLRegExp::kMaxChoices + 1) + u"b"), XMLRegExp::kNoMatch);
  // Both stars must give back all n units in the end: (n + 1)(n + 2) / 2 attempts.
  static_assert(140 * 141 / 2 <= XMLRegExp::kMaxAttempts &&
                141 * 142 / 2 > XMLRegExp::kMaxAttempts);
  for (const std::size_t n : {139u, 140u}) {
    const TQString all = units(n) + u"b";
    EXPECT_EQ(XMLRegExp(u"a*a*" + all, false).Match(all),
              n == 139 ? XMLRegExp::kMatch : XMLRegExp::kNoMatch);
  }
}

TEST(XMLRegExp, StepsAreBoundedExactly) {
  const XMLRegExp expression(u"[a-z]*", false);
  const auto stepsFor = [&expression](std::size_t units) {
    const std::int64_t before = XMLRegExp::steps;
    EXPECT_EQ(expression.Match(std::u16string(units, u'a')), XMLRegExp::kMatch);
    return XMLRegExp::steps - before;
  };
  const std::int64_t perUnit = stepsFor(2) - stepsFor(1);
  const std::int64_t others = stepsFor(1) - perUnit;
  const auto most = static_cast<std::size_t>((XMLRegExp::kMaxSteps - others) / perUnit);
  EXPECT_LE(stepsFor(most), XMLRegExp::kMaxSteps);
  EXPECT_EQ(expression.Match(std::u16string(most + 1, u'a')), XMLRegExp::kNoMatch);
}

TEST(XMLRegExp, FailedCompileKeepsThePlace) {
  const XMLRegExp broken(u"ab[c", false);
  EXPECT_FALSE(broken.IsCompiled());
  EXPECT_EQ(XMLRegExp::LastErrorOffset(), 3);
  EXPECT_FALSE(XMLRegExp::LastErrorMessage().IsEmpty());
}

TEST(XMLRegExp, Sample) {
  const struct {
    const char16_t* pattern;
    const char16_t* sample;
  } rows[] = {
      {u"ab|c", u"ab"},
      {u"a{3}b?", u"aaab"},
      {u"[x-z]\\n", u"x\n"},
      {u"[^a]\\D\\I", u"xx0"},
      {u"\\p{Lu}", u"A"},
      {u"(a|b)+", u"a"},
      {u"\\p{IsGreekandCoptic}", u"\u0370"},
      {u"x\\p{IsNowhere}{1000000000}", u"x"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ToNative(XMLRegExp(row.pattern, false).Sample()), ToNative(row.sample))
        << ToNative(row.pattern);
  }
}

}  // namespace
}  // namespace kelmora
