#include <gtest/gtest.h>

#include <random>

#include "numbers/numberformat.h"
#include "stylesheetrun.h"
#include "tqcore/tqtext.h"
#include "xslt/tqxslterror.h"

namespace kelmora {
namespace {

std::string PictureOf(const FormatToken& token) {
  const char* kinds[] = {"decimal", "alphabetic", "roman"};
  return ToNative(token.Picture) + " " + kinds[token.Kind] + (token.Upper ? " upper" : "");
}

TEST(NumberFormat, Tokens) {
  const struct {
    const char16_t* body;
    std::int32_t groupingSize;
    const char* tokens;
  } rows[] = {
      {u"1", 0, "22222222223 decimal"},
      {u"007", 0, "2222222222333 decimal"},
      {u"10", 0, "22222222223 decimal"},
      {u"0a", 0, "222222222233 alphabetic"},
      {u"I1", 0, "22222222223 roman upper"},
      {u"1.A", 0, "22222222223.2 decimal, 22222222223 alphabetic upper"},
      {u"i..-1", 0, "22222222223.2 roman, -22222222223 decimal"},
      {u"1) a", 0, "22222222223 decimal, ) 22222222223 alphabetic"},
      {u"1.1", 3, "2222222222,3.2 decimal, 22222222,223 decimal"},
      {u"1", 12, "22222222223 decimal"},
  };
  for (const auto& row : rows) {
    std::string tokens;
    for (const FormatToken& token : ParseFormat(row.body, {row.groupingSize, u','})) {
      tokens += (tokens.empty() ? "" : ", ") + PictureOf(token);
    }
    EXPECT_EQ(tokens, row.tokens) << ToNative(row.body);
  }
}

TEST(NumberFormat, Texts) {
  const struct {
    const char16_t* format;
    std::vector<std::int32_t> numbers;  // from the innermost to the outermost
    NumberGrouping grouping;
    const char* text;
  } rows[] = {
      {u"1", {}, {}, ""},
      {u"1", {3, 2}, {}, "2.3"},
      {u"1.1", {3, 2}, {}, "2.3"},
      {u"1-1", {4, 3, 2}, {}, "2-3-4"},
      {u"(1.a)", {28, 9, 2}, {}, "(2.i.ab)"},
      {u"1.", {3}, {}, "3."},
      {u".", {3, 2}, {}, ".2.3"},
      {u"", {3}, {}, "3"},
      {u"I", {4, 0, 1999}, {}, "MCMXCIX.IV"},
      {u"A. ", {0}, {}, ". "},
      {u"01", {1234, 7}, {}, "07.1234"},
      {u"00000000001", {7, 0}, {}, "00000000000.00000000007"},
      {u"1", {2147483647}, {}, "2147483647"},
      {u"1) 1", {5, 4}, {}, "4) 5"},
      {u"1", {-12}, {}, "412"},
      {u"1", {1234567}, {3, u','}, "1,234,567"},
      {u"a", {0}, {}, ""},
      {u"\u3042", {5}, {}, "5"},
      {u"\u2160-", {5}, {}, "5-"},
      {u"I.a.01", {4, 3, 2}, {}, "II.c.04"},
      {u"(1)(a)", {3, 2, 1}, {}, "(1)(b)(c)"},
      {u"1-a.", {3, 2}, {}, "2-c."},
      {u"1..1", {3, 2}, {}, "2.3"},
      {u"a0", {2, 1}, {}, "a.b"},
      {u"0x01", {5}, {}, "05"},
      {u"010", {5}, {}, "05"},
      {u"--", {5}, {}, "--5"},
      {u"))a)", {0}, {}, "))"},
      {u"(a))", {0}, {}, "())"},
      {u"1''1", {3, 2}, {}, "2'3"},
      {u"001", {-6}, {}, "4006"},
      {u"(i)", {-6}, {}, "()"},
      {u"00001", {12}, {3, u','}, "00,012"},
      {u"1", {1234567}, {2, u' '}, "1 23 45 67"},
      {u"1", {1234567}, {-1, u','}, "1234567"},
      {u"1.1", {12, 34}, {3, u','}, "3,4.12"},
  };
  for (const auto& row : rows) {
    NumberFormat format(row.format, row.grouping);
    EXPECT_EQ(ToNative(format.FormatNumbers(row.numbers)), row.text) << ToNative(row.format);
  }
  for (const char16_t* format : {u"1'1", u"1%.1"}) {
    EXPECT_THROW((void)NumberFormat(format, {}).FormatNumbers({1, 1}), TQXSLTError);
  }
  for (const std::int32_t size : {1, 2}) {
    EXPECT_THROW((void)NumberFormat(u"1.1", {size, u','}).FormatNumbers({1, 1}), TQXSLTError);
  }
  NumberFormat broken(u"1-.1", {});
  EXPECT_EQ(ToNative(broken.FormatNumbers({1})), "1") << "a picture counts when it is reached";
  EXPECT_THROW((void)broken.FormatNumbers({1, 1}), TQXSLTError);
}

TEST(Numbers, AtRoot) {
  const struct {
    const char* body;
    const char* source;
    const char* expected;
  } rows[] = {
      {"<xsl:number/>", "<r/>", "1"},
      {"<xsl:number value='-2'/>,<xsl:number value='-0.5'/>,<xsl:number value='2.5'/>", "<r/>",
       "41,0,3"},
      {"<xsl:for-each select='//i'><xsl:number/>,</xsl:for-each>", "<r><i/>x<i/><j/><i/></r>",
       "1,2,3,"},
      {"<xsl:for-each select='//*'>[<xsl:number/>]</xsl:for-each>",
       "<r><i xmlns='u'><j xmlns=''/></i></r>", "[1][][1]"},
      {"<xsl:for-each select='//text()'><xsl:number level='any'/><xsl:number/>,</xsl:for-each>",
       "<r>x<i/>y<i/>z</r>", "11,21,31,"},
      {"<xsl:for-each select='//i'>[<xsl:number level='multiple' count='s|i' from='c' "
       "format='1.a'/>]</xsl:for-each>",
       "<r><s/><c><s/><s><s><i/><i/></s></s></c></r>", "[2.a.a][2.a.b]"},
      {"<xsl:for-each select='//i'>[<xsl:number level='any' from='c'/>]</xsl:for-each>",
       "<r><i/><c/><i/><i/><c><i/></c></r>", "[1][1][2][1]"},
      {"<xsl:for-each select='//@*'>[<xsl:number level='any'/>]</xsl:for-each>",
       "<?xml version='1.0'?><r version='2'><i version='3'/></r>", "[1][2]"},
      {"<xsl:for-each select='//i'>[<xsl:number level='multiple' format='1.1' "
       "grouping-separator=',' grouping-size='3' count='i|r'/>]</xsl:for-each>",
       "<r><i/></r>", "[1.1]"},
      {"<xsl:for-each select='r/namespace::q'>[<xsl:number/>]</xsl:for-each>", "<r xmlns:q='u'/>",
       "[]"},
      {"<xsl:for-each select='r'><xsl:number value='7' format='{name()}' grouping-size='{no}'/>"
       "</xsl:for-each>",
       "<r/>", "7"},
      {"<xsl:for-each select='//a'><xsl:number value='position()' format='{last()}:'/>"
       "</xsl:for-each>",
       "<r><a/><a/></r>", "1:2:"},
      {"<xsl:for-each select='//a'>[<xsl:number from='a'/><xsl:number from='a' level='any'/>]"
       "</xsl:for-each>",
       "<r><a/><a/></r>", "[1][1]"},
      {"<xsl:for-each select='//a'>[<xsl:number count='a[2]'/>]</xsl:for-each>",
       "<r><a/><a/><a/></r>", "[][1][]"},
      {"<xsl:for-each select='//text()'><xsl:number count='node()'/></xsl:for-each>",
       "<r><a/>x<b/>y</r>", "23"},
      {"<xsl:for-each select='//p:l' xmlns:p='u'>[<xsl:number/>]</xsl:for-each>",
       "<r><q:l xmlns:q='u'/></r>",
       "code 1 (1) at xsl:stylesheet/xsl:template/xsl:for-each/xsl:number "
       "[xsl:number xsl:for-each xsl:template xsl:stylesheet]"},
      {"<xsl:number level='any'/>", "<r/>",
       "code 6 at xsl:stylesheet/xsl:template/xsl:number "
       "[xsl:number xsl:template xsl:stylesheet]"},
      {"<xsl:number value='1' letter-value='other'/>", "<r/>",
       "code 31 at xsl:stylesheet/xsl:template/xsl:number/@letter-value "
       "[xsl:number xsl:template xsl:stylesheet]"},
      {"<xsl:number value='1' grouping-separator=',,'/>", "<r/>",
       "code 31 at xsl:stylesheet/xsl:template/xsl:number/@grouping-separator "
       "[xsl:number xsl:template xsl:stylesheet]"},
      {"<xsl:for-each select='r'><xsl:number count='1'/></xsl:for-each>", "<r/>",
       "code 29 at xsl:stylesheet/xsl:template/xsl:for-each/xsl:number/@count "
       "[xsl:number xsl:for-each xsl:template xsl:stylesheet]"},
      {"<xsl:for-each select='r'><xsl:number from='q:r'/></xsl:for-each>", "<r/>",
       "code 1 (1) at xsl:stylesheet/xsl:template/xsl:for-each/xsl:number "
       "[xsl:number xsl:for-each xsl:template xsl:stylesheet]"},
  };
  for (const auto& row : rows) {
    const StylesheetRun run{.stylesheet = RootTemplate(row.body), .source = row.source};
    EXPECT_EQ(run.Result(), row.expected) << row.body;
  }
}

// A random tree of the elements a, b and c, with texts, attributes and, now and then, a family
// large enough for an index of its own.
std::string RandomElement(std::mt19937& random, int depth) {
  const std::string name(1, static_cast<char>('a' + random() % 3));
  std::string text = "<" + name + (random() % 4 == 0 ? " k='1'" : "") + ">";
  const std::size_t children = depth == 0 ? 0 : random() % (random() % 8 == 0 ? 60 : 4);
  for (unsigned child = 0; child < children; ++child) {
    if (random() % 4 == 0) text += "<!--c-->t";
    text += RandomElement(random, children > 20 ? 0 : depth - 1);
  }
  return text + "</" + name + ">";
}

// A count with a predicate can't be tested node by node, so it runs as an expression. It must give
// the same number.
TEST(Numbers, TheFastWayEqualsThePlainOne) {
  const struct {
    const char* count;
    const char* plain;
  } counts[] = {
      {"a", "a[true()]"},           {"a|b", "a[true()]|b[true()]"}, {"*", "*[true()]"},
      {"text()", "text()[true()]"}, {"@k", "@k[true()]"},           {"node()", "node()[true()]"},
      {"/", "(/)[true()]"},         {"a/b", "a/b[true()]"},         {"b//*", "b//*[true()]"},
  };
  std::mt19937 random(20);
  for (const char* level : {"single", "multiple", "any"}) {
    for (const char* from : {"", "c", "a|c", "b/c", "/"}) {
      std::string body;
      for (const auto& count : counts) {
        const auto number = [&](const char* text) {
          return "<xsl:number level='" + std::string(level) + "' count='" + text + "'" +
                 (*from != 0 ? " from='" + std::string(from) + "'" : "") + "/>";
        };
        body += "<xsl:variable name='f'>" + number(count.count) + "</xsl:variable>" +
                "<xsl:variable name='p'>" + number(count.plain) + "</xsl:variable>" +
                "<xsl:if test='$f != $p'>" + count.count +
                " of <xsl:value-of select='name()'/>: "
                "<xsl:value-of select='$f'/> not <xsl:value-of select='$p'/>;</xsl:if>";
        body = "<xsl:if test='true()'>" + body + "</xsl:if>";  // ends the scope of the two
      }
      const StylesheetRun run{
          .stylesheet =
              RootTemplate("<xsl:for-each select='//node()|//@*|/'>" + body + "</xsl:for-each>"),
          .source = "<r>" + RandomElement(random, 3) + RandomElement(random, 3) + "</r>"};
      EXPECT_EQ(run.Result(), "") << level << " from '" << from << "'";
    }
  }
}

// In a deep document each climb to the node that counts ends at one that is remembered.
TEST(Numbers, DeepClimbs) {
  std::string source = "<r><c/><c>";
  std::string ends = "</c></r>";
  std::string expected;
  for (int depth = 0; depth < 1000; ++depth) {
    source += depth == 700 ? "<c>" : "<d>";
    ends = (depth == 700 ? "</c>" : "</d>") + ends;
    expected += depth < 700 ? "2" : "1";
  }
  const StylesheetRun run{
      .stylesheet = RootTemplate("<xsl:for-each select='//c[2]//*'><xsl:number count='c'/>"
                                 "</xsl:for-each>"),
      .source = source + ends};
  EXPECT_EQ(run.Result(), expected);
}

}  // namespace
}  // namespace kelmora
