// The formatter of format-number() and xsl:number.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "testtree.h"
#include "xpath/decimalformat.h"

namespace kelmora {
namespace {

std::string Format(double number, const std::string& pattern,
                   const DecimalFormat& format = DecimalFormat()) {
  NumberPattern parsed(format);
  return parsed.ParsePattern(Wide(pattern)) ? Narrow(parsed.FormatNumber(number)) : "no pattern";
}

struct Row {
  double number;
  const char* pattern;
  const char* expected;
};

void Check(std::initializer_list<Row> rows, const DecimalFormat& format = DecimalFormat()) {
  for (const Row& row : rows) {
    EXPECT_EQ(Format(row.number, row.pattern, format), row.expected)
        << row.number << " in " << row.pattern;
  }
}

TEST(NumberPattern, SignsAndLiterals) {
  Check({
      {0.25, "%0", "%25"},
      {0.25, "0 %", "25% "},
      {5, "%", "%500"},
      {5, "%0\xE2\x80\xB0",
       "\xE2\x80\xB0"
       "5000\xE2\x80\xB0"},
      {5,
       "\xE2\x80\xB0"
       "0%",
       "%500%"},
      {-0.25, "0%", "-25%"},
      {-0.25, "0%;(0)", "(0)"},
      {-0.75, "0%;(0)", "(1)"},
      {5, "abc", "abc5"},
      {5, " ", " 5"},
      {5, "$0 a", "$5 a"},
      {5, "-0", "-5"},
      {-5, "-0", "--5"},
      {5, "0-", "5-"},
      {-5, "0;-0", "-5"},
      {-5, "0;0-", "5-"},
      {-5, ";(0)", "(5)"},
      {5, ";(0)", "5"},
      {-1234, "#,##0;neg #", "neg 1234"},
      {5, "'#'0", "#5"},
      {5, "''0", "'5"},
      {5, "'a''b'0", "a'b5"},
      {5, "'%'0", "%5"},
      {5, "0'%'", "5%"},
      {5, "'0'", "05"},
      {-5, "0;-0-", "no pattern"},
      {5, "a%0", "no pattern"},
      {5, "0% ", "no pattern"},
      {5, "0-0", "no pattern"},
      {5, "%%0", "no pattern"},
      {5, "0%%", "no pattern"},
      {5, "", "no pattern"},
      {5, "0;", "no pattern"},
      {5, "0;0;0", "no pattern"},
      {5, "'0", "no pattern"},
      {5, "0'", "no pattern"},
  });
}

TEST(NumberPattern, DigitsAndGroups) {
  Check({
      {0, "#", "0"},
      {0, "#.##", "0"},
      {0, "0.00", "0.00"},
      {5, "0.", "5"},
      {5.5, ".", "6"},
      {0.5, ".0", "0.5"},
      {5, "000", "005"},
      {5, "0,000", "0,005"},
      {1.25, "0.0#", "1.25"},
      {1, "0.0#", "1.0"},
      {1234, "0,0", "1,2,3,4"},
      {1234, ",0", "1,2,3,4"},
      {1234567, "#,##,##0", "1,234,567"},
      {12345, "#,####", "1,2345"},
      {123, "#,##0", "123"},
      {123456, "#,##0", "123,456"},
      {1e20, "0", "100000000000000000000"},
      {5, "#,", "no pattern"},
      {5, "0,.0", "no pattern"},
      {5, "0,#", "no pattern"},
      {5, "0#", "no pattern"},
      {5, "0.#0", "no pattern"},
      {5, "0.0,0", "no pattern"},
      {5, "0.0.0", "no pattern"},
      {5, "0 0", "no pattern"},
  });
}

// Neither the pattern nor a percent sign counts for what is no finite number.
TEST(NumberPattern, Words) {
  const double infinity = std::numeric_limits<double>::infinity();
  DecimalFormat format;
  format.infinity = u"inf";
  format.nan = u"n/a";
  format.minusSign = u'_';
  Check({{infinity, "%0", "inf"},
         {-infinity, "0;(0)", "_inf"},
         {std::nan(""), "x0", "n/a"},
         {-3, "0.0", "_3.0"},
         {-3, "-0", "_-3"},
         {infinity, "", "no pattern"}},
        format);
}

TEST(NumberPattern, OtherSymbols) {
  DecimalFormat german;
  german.decimalSeparator = u',';
  german.groupingSeparator = u'.';
  Check({{1234.5, "#.##0,00", "1.234,50"}, {5, "0.0", "0.5"}, {1234, "0.0", "1.2.3.4"}}, german);
  DecimalFormat symbols;
  symbols.digit = u'?';
  symbols.patternSeparator = u'|';
  symbols.percent = u'p';
  symbols.perMille = u'm';
  Check({{-1234.5, "?,??0|[?,??0.00]", "[1,234.50]"},
         {0.5, "0p", "50p"},
         {0.5, "m0", "m500"},
         {5, "0#", "5#"},
         {5, "0%;", "5%;"}},
        symbols);
  DecimalFormat letters;
  letters.zeroDigit = u'a';  // a letter moves all digits
  Check({{1203, "aaaaaa", "aabcad"},
         {1234.5, "#,aaa.aa", "b,cde.fa"},
         {12, "###", "bc"},
         {5, "0", "0f"}},
        letters);
  DecimalFormat arabic;
  arabic.zeroDigit = u'\u0660';  // a digit of another script does not
  Check({{7, "\xD9\xA0\xD9\xA0", "07"}, {7, "0", "07"}}, arabic);
}

// Half up on the 17 digits that one sees; the digits behind them are zeros.
TEST(NumberPattern, Rounding) {
  Check({
      {0.285, "0.00", "0.28"},
      {1.005, "0.00", "1.00"},
      {0.005, "0.00", "0.01"},
      {0.5, "0", "1"},
      {-2.5, "0", "-3"},
      {0.49999999999999994, "0", "0"},
      {999.995, "0.00", "1000.00"},
      {0.96, "#.#", "1"},
      {-0.04, "#.#", "0"},  // no minus sign at a zero
      {-0.4, "0", "0"},
      {-0.5, "0", "-1"},
      {-0.001, "0.00", "0.00"},
      {-0.001, "0%", "0%"},
      {-0.0, "0.0", "0.0"},
      {0, "0;(0)", "0"},
      {-0.001, "0.00;(0.00)", "(0.00)"},
      {0.1, "0.000000000000000000", "0.100000000000000010"},
      {1152921504606846976, "0", "1152921504606847000"},
      {5e-8, "0.#######", "0"},
  });
  std::mt19937_64 random(13);
  for (int i = 0; i < 20000; ++i) {
    const double number = static_cast<double>(random() % 100000000000) / 100000;
    const int places = static_cast<int>(random() % 5);
    char scientific[40];
    std::snprintf(scientific, sizeof scientific, "%.16e", number);
    std::int64_t digits = 0;  // 17 of them
    for (const char* at = scientific; *at != 'e'; ++at) {
      if (*at != '.') digits = digits * 10 + (*at - '0');
    }
    int dropped = 16 - std::atoi(std::strchr(scientific, 'e') + 1) - places;
    if (dropped > 17) dropped = 18;
    for (; dropped > 1; --dropped) digits /= 10;
    digits = (digits + (dropped == 1 ? 5 : 0)) / (dropped == 1 ? 10 : 1);
    std::string text = std::to_string(digits);
    const auto width = static_cast<std::size_t>(places) + 1;
    if (text.size() < width) text.insert(0, width - text.size(), '0');
    if (places > 0) text.insert(text.size() - static_cast<std::size_t>(places), ".");
    const std::string pattern = "0." + std::string(static_cast<std::size_t>(places), '0');
    ASSERT_EQ(Format(number, pattern), text) << scientific << " " << places;
  }
}

}  // namespace
}  // namespace kelmora
