#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "sorting/collation.h"
#include "stylesheetrun.h"

namespace kelmora {
namespace {

class Sorts : public testing::Test {
 protected:
  Sorts() { setenv("LC_ALL", "C", 1); }

  // The values "2 10 x" as elements v, sorted and joined again.
  static std::string Sorted(const std::string& sorts, const std::string& values) {
    std::string source = "<?xml version='1.0' encoding='UTF-8'?><r><v>";
    for (const char unit : values) source += unit == ' ' ? "</v><v>" : std::string(1, unit);
    const StylesheetRun run{.stylesheet = RootTemplate(
                                "<xsl:for-each select='r/v'>" + sorts +
                                "<xsl:value-of select='.'/><xsl:text> </xsl:text></xsl:for-each>"),
                            .source = source + "</v></r>"};
    std::string result = run.Result();
    while (!result.empty() && result.back() == ' ') result.pop_back();
    return result;
  }
};

TEST_F(Sorts, Orders) {
  const struct {
    const char* sorts;
    const char* values;
    const char* sorted;
  } rows[] = {
      {"<xsl:sort/>", "b B a _ ab 10 9", "10 9 B _ a ab b"},
      {"<xsl:sort order='descending'/>", "abcdefghi abcdefghij abcdefgh",
       "abcdefghij abcdefghi abcdefgh"},
      {"<xsl:sort data-type='number'/>", "10 9 x -1 1e1 0.5", "x -1 0.5 9 10 1e1"},
      {"<xsl:sort data-type='number' order='{\"descending\"}'/>", "10 x 9 y -1", "10 9 -1 x y"},
      {"<xsl:sort select='string-length()' data-type='number'/><xsl:sort order='descending'/>",
       "aa c b bb a", "c b a bb aa"},
      {"<xsl:sort select='1'/>", "c b a", "c b a"},
      {"<xsl:sort select='position()' data-type='number' order='descending'/>", "c b a", "a b c"},
      {"<xsl:sort case-order='upper-first'/>", "b A a B aB ab Ab", "A a Ab aB ab B b"},
      {"<xsl:sort case-order='lower-first'/>", "b A a B aB ab Ab", "a A ab aB Ab b B"},
      {"<xsl:sort case-order='upper-first' order='descending'/>", "b A a B", "b B a A"},
      {"<xsl:sort lang='xx'/>", "b B a", "B a b"},
      {"<xsl:sort data-type='my:type'/>", "10 9", "10 9"},
      {"<xsl:sort data-type='number'/>", "+5 0x10 50 1e2 NaN", "0x10 NaN +5 50 1e2"},
      {"<xsl:sort select='last() - position()' data-type='number'/>", "c b a", "a b c"},
      {"<xsl:sort select='count(current()/preceding-sibling::v) mod 2' data-type='number'/>",
       "a b c d", "a c b d"},
      {"<xsl:sort select='1' order='descending'/>", "c b a", "c b a"},
      {"<xsl:sort case-order='upper-first'/>", "a1 A aB Ab AB", "A a1 AB Ab aB"},
      {"<!--c--><?p q?><xsl:sort/><!--d--><xsl:sort select='1'/>", "c b a", "a b c"},
      {"<xsl:sort data-type='1x'/>", "a",
       "code 40 at xsl:stylesheet/xsl:template/xsl:for-each/xsl:sort/@data-type "
       "[xsl:sort xsl:for-each xsl:template xsl:stylesheet]"},
      {"<xsl:sort case-order=''/>", "a",
       "code 31 at xsl:stylesheet/xsl:template/xsl:for-each/xsl:sort/@case-order "
       "[xsl:sort xsl:for-each xsl:template xsl:stylesheet]"},
  };
  for (const auto& row : rows) EXPECT_EQ(Sorted(row.sorts, row.values), row.sorted) << row.sorts;
}

// Without nodes no key is made, but xsl:apply-templates runs its first sort; xsl:for-each runs
// none.
TEST_F(Sorts, NoNodes) {
  const std::string stack = " [xsl:sort xsl:apply-templates xsl:template xsl:stylesheet]";
  const std::string at = " at xsl:stylesheet/xsl:template/xsl:apply-templates/xsl:sort/@";
  const struct {
    const char* sorts;
    std::string applied;
  } rows[] = {
      {"<xsl:sort order='up'/>", "code 31" + at + "order" + stack},
      {"<xsl:sort case-order='both'/>", "code 31" + at + "case-order" + stack},
      {"<xsl:sort data-type=''/>", "code 40" + at + "data-type" + stack},
      {"<xsl:sort select='$none'/>", "."},
      // The attributes see the context of the caller.
      {"<xsl:sort order='{substring(\"ascending\", position(), last() + 8)}'/>", "."},
      {"<xsl:sort data-type='{count(.)}{name(*)}'/>", "code 40" + at + "data-type" + stack},
      {"<xsl:sort order='{name(*)}'/>", "code 31" + at + "order" + stack},
      {"<xsl:sort lang='{/}' case-order='upper-{name(r) = \"r\"}'/>",
       "code 31" + at + "case-order" + stack},
      {"<xsl:sort/><xsl:sort order='up'/>", "."},
      {"<xsl:with-param name='p' select='1'/><xsl:sort order='up'/>", "."},
  };
  for (const auto& row : rows) {
    const auto result = [&row](const std::string& element) {
      return StylesheetRun{
          RootTemplate("<" + element + " select='none'>" + row.sorts + "</" + element + ">.")}
          .Result();
    };
    EXPECT_EQ(result("xsl:apply-templates"), row.applied) << row.sorts;
    if (std::string(row.sorts).starts_with("<xsl:sort")) {
      EXPECT_EQ(result("xsl:for-each"), ".") << row.sorts;
    }
  }
}

// Nodes of several documents and of one key value; a sort in the body of the loop comes too late.
TEST_F(Sorts, Lists) {
  const struct {
    const char* body;
    const char* expected;
  } rows[] = {
      {"<xsl:for-each select=\"document('d.xml')//v | //v\"><xsl:sort select='1'/>"
       "<xsl:value-of select='.'/></xsl:for-each>",
       "bax"},
      {"<xsl:for-each select='//@*'><xsl:sort select='name()'/><xsl:value-of select='name()'/>"
       "</xsl:for-each>",
       "klmoo"},
      // The attributes of a sort see the first of the nodes.
      {"<xsl:for-each select='//v'><xsl:sort order='{@o}'/><xsl:value-of select='.'/>"
       "</xsl:for-each>",
       "ba"},
      {"<xsl:for-each select='r'><xsl:apply-templates select='v'><xsl:sort select='1'/>"
       "<xsl:sort order='{@o}'/></xsl:apply-templates></xsl:for-each>",
       "ba"},
      {"<xsl:for-each select='//v'>[<xsl:sort/><xsl:value-of select='.'/>]</xsl:for-each>",
       "[b][a]"},
      {"<xsl:for-each select='//v'><xsl:sort/><xsl:value-of select='concat(position(), last(), "
       ".)'/>"
       "</xsl:for-each>",
       "12a22b"},
      {"<xsl:for-each select='//v'><xsl:sort order='descending'/><xsl:for-each select='@*'>"
       "<xsl:sort select='.' data-type='number'/><xsl:value-of select='name()'/>,</xsl:for-each>"
       "</xsl:for-each>",
       "o,l,m,k,"},
  };
  for (const auto& row : rows) {
    const StylesheetRun run{
        .stylesheet = RootTemplate(row.body),
        .source = "<r o='no'><v m='3' l='2' o='descending'>b</v><v k='1'>a</v></r>",
        .files = {{"d.xml", "<r><v>x</v></r>"}}};
    EXPECT_EQ(run.Result(), row.expected) << row.body;
  }
}

// Three keys over many records, against an order made by other means.
TEST_F(Sorts, RandomRecords) {
  struct Record {
    std::string text;
    int number;
    int place;
  };
  std::mt19937 random(7);
  std::vector<Record> records;
  std::string source = "<r>";
  for (int place = 0; place < 500; ++place) {
    std::string text(random() % 12, 'm');  // beyond and below the eight bytes that compare first
    for (char& unit : text) unit = static_cast<char>(random() % 5 == 0 ? 'm' + random() % 2 : 'm');
    records.push_back({text, static_cast<int>(random() % 3) - 1, place});
    source += "<i n='" + std::to_string(records.back().number) + "'>" + text + "</i>";
  }
  for (const bool descends : {false, true}) {
    std::ranges::stable_sort(records, [descends](const Record& a, const Record& b) {
      if (a.text != b.text) return descends ? a.text > b.text : a.text < b.text;
      if (a.number != b.number) return a.number > b.number;
      return a.place < b.place;
    });
    std::string expected;
    for (const Record& record : records) expected += std::to_string(record.place + 1) + " ";
    const std::string order = descends ? "descending" : "ascending";
    const StylesheetRun run{
        .stylesheet = Sheet("<xsl:template match='/'><xsl:apply-templates select='r/i'>"
                            "<xsl:sort order='" +
                            order +
                            "'/>"
                            "<xsl:sort select='@n' data-type='number' order='descending'/>"
                            "</xsl:apply-templates></xsl:template>"
                            "<xsl:template match='i'><xsl:number/><xsl:text> </xsl:text>"
                            "</xsl:template>"),
        .source = source + "</r>"};
    EXPECT_EQ(run.Result(), expected) << order;
  }
}

TEST_F(Sorts, Languages) {
  Collations collations;
  if (&collations.ForLanguage(u"en") == &collations.Present()) GTEST_SKIP() << "no collation data";
  const char* values = "z o b-c Zz bd \xC3\xB6 B a-c oz";
  EXPECT_EQ(Sorted("<xsl:sort lang='de'/>", values), "a-c B b-c bd o \xC3\xB6 oz z Zz");
  EXPECT_EQ(Sorted("<xsl:sort lang='sv-SE'/>", values), "a-c B b-c bd o oz z Zz \xC3\xB6");
  EXPECT_EQ(Sorted("<xsl:sort lang='en' case-order='upper-first'/>", "b a B A"), "A a B b");
  EXPECT_EQ(Sorted("<xsl:sort lang='en' case-order='lower-first'/>", "b a B A"), "a A b B");
}

TEST_F(Sorts, LanguageOfTheEnvironment) {
  const struct {
    const char* locale;
    bool isUnits;
  } rows[] = {
      {"C", true}, {"POSIX", true}, {"C.UTF-8", true}, {"xx_YY", true}, {"de_DE.UTF-8", false}};
  for (const auto& row : rows) {
    setenv("LC_ALL", row.locale, 1);
    Collations collations;
    if (&collations.ForLanguage(u"de") == &collations.Present() && row.isUnits) {
      GTEST_SKIP() << "no collation data";
    }
    std::vector<std::uint8_t> key;
    collations.Present().AppendKey(u"ab", false, key);
    EXPECT_EQ(key == std::vector<std::uint8_t>({'a', 'b'}), row.isUnits) << row.locale;
  }
}

}  // namespace
}  // namespace kelmora
