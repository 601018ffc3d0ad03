// Comparisons and conversions against their definitions: pair by pair, digit by digit, with none of
// the short cuts.
#include "values/xpathcompare.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

#include "referenceevaluator.h"
#include "testtree.h"

namespace kelmora {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(XPathCompare, EqualsTheDefinition) {
  XPathTreeBuilder builder;
  TestTree tree(builder,
                "<r><i>1</i><i>1</i><i>2</i><i/><i>x</i><i> 3 </i><i>-1e0</i><i>x</i></r>");
  std::vector<XPathNode*> items;
  for (XPathNode* node : tree.Nodes()) {
    if (node->GetName() == u"i") items.push_back(node);
  }
  std::vector<XPathValue> values;
  for (unsigned members = 0; members < 256; members += members < 16 ? 1 : 13) {
    XPathNodeList set;
    for (std::size_t i = 0; i < items.size(); ++i) {
      if ((members >> i & 1) != 0) set.emplace_back(items[i]);
    }
    values.emplace_back().SetNodes(std::move(set));
  }
  for (double number : {kNaN, 0.0, -0.0, 1.0, 2.0, -1.0, 3.0, kInfinity, -kInfinity}) {
    values.emplace_back().SetNumber(number);
  }
  for (const char16_t* text : {u"", u"1", u" 1", u"x", u"true", u"-1"}) {
    values.emplace_back().SetString(text);
  }
  for (bool boolean : {false, true}) values.emplace_back().SetBoolean(boolean);

  for (const XPathValue& a : values) {
    for (const XPathValue& b : values) {
      const std::string pair = Show(a) + " and " + Show(b);
      EXPECT_EQ(Equal(a, b), ReferenceCompare(u"=", a, b)) << pair;
      EXPECT_EQ(NotEqual(a, b), ReferenceCompare(u"!=", a, b)) << pair;
      EXPECT_EQ(Less(a, b), ReferenceCompare(u"<", a, b)) << pair;
      EXPECT_EQ(LessOrEqual(a, b), ReferenceCompare(u"<=", a, b)) << pair;
      EXPECT_EQ(Greater(a, b), ReferenceCompare(u">", a, b)) << pair;
      EXPECT_EQ(GreaterOrEqual(a, b), ReferenceCompare(u">=", a, b)) << pair;
    }
  }
}

// The C library prints the digits that the size of the number leaves.
TEST(XPathConversions, NumbersAsText) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> mantissa(-10, 10);
  for (int i = 0; i < 20000; ++i) {
    const int exponent = static_cast<int>(random() % 60) - 30;
    double number = mantissa(random) * std::pow(10, exponent);
    if (i % 3 == 0) number = std::trunc(number);
    if (i % 7 == 0) number = std::round(number * 1000) / 1000;
    if (number == 0) continue;
    const double digits = std::log10(4503599627370496.0) - std::log10(std::fabs(number));
    char buffer[400];
    std::snprintf(buffer, sizeof buffer, "%.*f", digits > 0 ? static_cast<int>(digits) : 0, number);
    std::string expected = buffer;
    if (expected.find('.') != std::string::npos) {
      expected.resize(expected.find_last_not_of('0') + 1);
      if (expected.back() == '.') expected.pop_back();
    }
    ASSERT_EQ(Narrow(NumberToText(number)), expected);
  }
}

TEST(XPathConversions, TextsAsNumbers) {
  std::mt19937 random(12);
  const std::string alphabet = "0012359..+-eE \t\r\n";
  for (int i = 0; i < 50000; ++i) {
    std::string text;
    for (std::size_t length = random() % 9; length > 0; --length) {
      text += alphabet[random() % alphabet.size()];
    }
    std::string inside = text;
    inside.erase(0, std::min(inside.find_first_not_of(" \t\r\n"), inside.size()));
    inside.erase(inside.find_last_not_of(" \t\r\n") + 1);
    char* end = nullptr;
    const double parsed = std::strtod(inside.c_str(), &end);
    const bool isNumber = !inside.empty() && *end == 0;
    const double number = TextToNumber(Wide(text));
    ASSERT_EQ(std::isnan(number), !isNumber) << '"' << text << '"';
    if (isNumber) {
      ASSERT_EQ(number, parsed) << '"' << text << '"';
    }
  }
  for (const char* word : {"inf", "nan", "NaN", "Infinity", "0x1", "1_000", "1,5",
                           "\xC2\xA0"
                           "1x"}) {
    EXPECT_TRUE(std::isnan(TextToNumber(Wide(word)))) << word;
  }
}

// Of integers, towards zero.
TEST(XPathCompare, Modulo) {
  for (int left = -7; left <= 7; ++left) {
    for (int right = -7; right <= 7; ++right) {
      const double result = Modulo(left + 0.5 * (left > 0), right);
      if (right == 0) {
        EXPECT_TRUE(std::isnan(result)) << left;
      } else {
        EXPECT_EQ(result, left % right) << left << " mod " << right;
        EXPECT_FALSE(std::signbit(result) && result == 0) << left << " mod " << right;
      }
    }
  }
  for (double strange : {kNaN, kInfinity, -kInfinity}) {
    EXPECT_TRUE(std::isnan(Modulo(strange, 2)));
    EXPECT_TRUE(std::isnan(Modulo(2, strange)));
  }
}

}  // namespace
}  // namespace kelmora
