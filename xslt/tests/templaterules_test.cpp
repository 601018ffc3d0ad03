// Which rule is taken for a node.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>

#include "rules/templaterule.h"
#include "stylesheetrun.h"

namespace kelmora {
namespace {

TEST(TemplateRulesTest, DefaultPriority) {
  const struct {
    const char16_t* pattern;
    double priority;
  } rows[] = {
      {u"foo", 0},
      {u"@foo", 0},
      {u"a:foo", 0},
      {u"child::foo", 0},
      {u"processing-instruction()", 0},
      {u"processing-instruction('t')", 0},
      {u"*", -0.5},
      {u"@*", -0.5},
      {u"text()", -0.5},
      {u"node()", -0.5},
      {u"a:*", -0.25},
      {u"@a:*", -0.25},
      {u"attribute::a:*", -0.25},
      {u"child::*", -0.5},
      {u"descendant-or-self::*", -0.25},
      {u"/", 0.5},
      {u"a/b", 0.5},
      {u"a[1]", 0.5},
      {u"a[", 0},
      {u"id('x')", 0.5},
      {u"key('k','v')", 0.5},
      {u"idea", 0.5},
      {u"keyboard", 0.5},
      {u" idea", 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(DefaultPriority(row.pattern), row.priority) << TQString(row.pattern).Length();
  }
}

struct Row {
  const char* rules;
  const char* expected;
};

std::string Rule(const char* match, const char* text, const char* more = "") {
  return std::string("<xsl:template match=\"") + match + "\" " + more + ">" + text +
         "</xsl:template>";
}

TEST(TemplateRulesTest, Selection) {
  const std::string source = "<r k='1'><a>x</a><b/><!--c--><?p i?></r>";
  const struct {
    std::string rules;
    const char* expected;
  } rows[] = {
      {"", "x"},
      {Rule("a", "1") + Rule("a", "2"), "2"},
      {Rule("a|b", "1") + Rule("r", "r<xsl:apply-templates select='node()'/>") +
           Rule("node()", "2"),
       "r1122"},
      {Rule("a", "1", "priority='1'") + Rule("a", "2"), "1"},
      {Rule("a", "1", "priority=' -.5 '") + Rule("*[1]", "(<xsl:apply-templates/>)"), "((x))"},
      {Rule("a[. = '|' or 'b|c']", "1"), "1"},
      {Rule("a", "1", "mode='m'"), "x"},
      {Rule("r", "<xsl:apply-templates mode='m'/>") + Rule("a", "1") +
           Rule("text()", "t", "mode='m'"),
       "t"},
      {Rule("r", "<xsl:apply-templates select='@k'/>") + Rule("@*", "1") + Rule("@k", "2"), "2"},
      {Rule("r", "<xsl:apply-templates mode='m:x' xmlns:m='u'/>") +
           Rule("a", "1", "mode='n:x' xmlns:n='u'"),
       "1"},
      {Rule("processing-instruction('q')", "1") + Rule("processing-instruction()", "2"), "x2"},
      {Rule("/r/a", "1") + Rule("r//b", "2") + Rule("c//b", "3"), "12"},
      {Rule(".", "1"), "1"},
      {Rule("1", "1") + Rule("'a'", "2"), "x"},
      {Rule("q", "1", "name='a'") + "<xsl:template name='b'>B</xsl:template>" +
           Rule("a", "<xsl:call-template name='b'/>"),
       "B"},
      {"<xsl:template name='b' mode='m'/>",
       "code 16 at xsl:stylesheet/xsl:template [xsl:stylesheet]"},
      {Rule("a|", ""), "code 31 at xsl:stylesheet/xsl:template/@match [xsl:stylesheet]"},
      {Rule("a", "", "priority='x'"),
       "code 31 at xsl:stylesheet/xsl:template/@priority [xsl:stylesheet]"},
      {Rule("a", "", "priority='1e999'"),
       "code 31 at xsl:stylesheet/xsl:template/@priority [xsl:stylesheet]"},
      {Rule("a", "", "name='1'"), "code 40 at xsl:stylesheet/xsl:template/@name [xsl:stylesheet]"},
      {"<xsl:template/>", "code 48 at xsl:stylesheet/xsl:template [xsl:stylesheet]"},
      {Rule("a|b", "", "name='n'"), "code 11 at nowhere [xsl:stylesheet]"},
      {Rule("a[", "1"),
       "code 6 at xsl:stylesheet/xsl:template/@match"
       " [xsl:stylesheet]"},
      {Rule("*[", "1", "priority='-1'") + Rule("/", "(<xsl:apply-templates/>)") +
           Rule("*|text()", "2"),
       "(2)"},
      {Rule("a[$v]", "1"),
       "code 46 at xsl:stylesheet/xsl:template/@match"
       " [xsl:stylesheet]"},
      {Rule("self::a", "1"),
       "code 1 (12) at xsl:stylesheet/xsl:template/@match"
       " [xsl:stylesheet]"},
      {Rule("/", "<xsl:apply-templates/>") + Rule("r", "<xsl:apply-templates/>") +
           Rule("a[b]/..", "1", "priority='-3'"),
       "code 1 (12) at xsl:stylesheet/xsl:template/@match"
       " [xsl:apply-templates xsl:template xsl:apply-templates xsl:template xsl:stylesheet]"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ((StylesheetRun{Sheet(row.rules), source}.Result()), row.expected) << row.rules;
  }
}

// A built-in rule goes on in the mode that it was last entered in; every nested selection counts.
TEST(TemplateRulesTest, LastMode) {
  const std::string rules = Rule("/",
                                 "<xsl:apply-templates select='r' mode='m'/>|"
                                 "<xsl:apply-templates select='r'/>") +
                            Rule("a", "(m<xsl:apply-templates mode='n'/>)", "mode='m'") +
                            Rule("a", "(0)") + Rule("text()", "n", "mode='n'") +
                            Rule("b", "b", "mode='m'") + Rule("b", "bn", "mode='n'");
  EXPECT_EQ((StylesheetRun{Sheet(rules), "<r><a>x</a><b/><c><b/></c></r>"}.Result()), "(mn)bb|(0)");
  // The inner selection takes the built-in rule that is still at work on the outer list.
  const std::string outer = Rule("/", "<xsl:apply-templates mode='m'/>") +
                            Rule("y", "<xsl:apply-templates select='z' mode='n'/>", "mode='m'") +
                            Rule("w", "m", "mode='m'") + Rule("w", "n", "mode='n'");
  const char* source = "<x><w/><y><z/></y><w/></x>";
  EXPECT_EQ((StylesheetRun{Sheet(outer), source}.Result()), "mn");
  EXPECT_EQ((StylesheetRun{Sheet(outer + Rule("z", "z", "mode='n'")), source}.Result()), "mzm");
}

TEST(TemplateRulesTest, NodesWithoutARule) {
  EXPECT_EQ((StylesheetRun{Sheet(Rule("/", "<xsl:apply-templates select='r/namespace::*'/>") +
                                 Rule("node()|@*|*|.", "1"))}
                 .Result()),
            "code 7 at nowhere [xsl:apply-templates xsl:template xsl:stylesheet]");
}

TEST(TemplateRulesTest, ImportedRules) {
  const std::string low = Sheet(Rule("a", "low", "priority='9'") + Rule("b", "lowb") +
                                Rule("@*", "[low@<xsl:apply-imports/>]"));
  const std::string middle =
      Sheet("<xsl:import href='low.xsl'/>" + Rule("a", "(<xsl:apply-imports/>)", "priority='-9'"));
  const std::string main =
      Sheet("<xsl:import href='middle.xsl'/>" + Rule("a", "{<xsl:apply-imports/>}") +
            Rule("b", "<xsl:apply-imports/><xsl:apply-templates select='@k'/>") +
            Rule("@k", "@<xsl:apply-imports/>"));
  const StylesheetRun run{
      main, "<r><a/><b k='v'/></r>", {{"low.xsl", low}, {"middle.xsl", middle}}};
  EXPECT_EQ(run.Result(), "{(low)}lowb@[low@v]");
}

// Patterns that are tested node by node must select as the same patterns do when they run as
// queries, which current() in a predicate enforces. KELMORA_SEED repeats a failure.
TEST(TemplateRulesTest, DirectTestsEqualQueries) {
  const char* given = std::getenv("KELMORA_SEED");
  const auto seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                     : std::random_device()();
  std::cout << "KELMORA_SEED=" << seed << "\n";
  std::minstd_rand random(seed);
  const auto pick = [&random](auto& list) { return list[random() % std::size(list)]; };
  const char* const steps[] = {
      "a",  "b",  "*",   "p:a", "p:*", "text()", "node()", "comment()", "processing-instruction()",
      "@k", "@*", "@p:k"};
  const char* const parents[] = {"a/",    "*/",     "p:b//",   "/",
                                 "//",    "r//",    "node()/", "r/*/",
                                 "*[2]/", "a[1]//", "*[@k]/",  "node()[last()]//"};
  const char* const predicates[] = {"",
                                    "",
                                    "",
                                    "[1]",
                                    "[2]",
                                    "[last()]",
                                    "[@k]",
                                    "[. = 't']",
                                    "[*][1]",
                                    "[position() > 1]",
                                    "[../@k]",
                                    "[p:a]",
                                    "[@k][last()]"};
  const std::string source =
      "<r xmlns:p='u'><a k='1' p:k='2'>t<b k='3'><p:a>u</p:a><!--c--></b></a>"
      "<p:b p:k='4'><a><p:a k='5'/>v</a><?x y?><b/></p:b><a/></r>";
  // A fragment of copies, of what was made, and of texts that have children.
  const std::string fragment =
      "<xsl:variable name='f'><a k='1'><xsl:copy-of select='r/node()'/><b/>t</a>"
      "<xsl:for-each select='//text()'><xsl:copy><a k='2'/><xsl:copy-of select='//b'/></xsl:copy>"
      "</xsl:for-each><xsl:copy-of select='r'/></xsl:variable>";
  const std::string walk = "<xsl:apply-templates select='//node() | //@* | /' mode='m'/>";
  const std::string start =
      Rule("/", (walk + fragment + "<xsl:apply-templates select='$f' mode='walk'/>").c_str()) +
      Rule("/", walk.c_str(), "mode='walk'");
  for (int round = 0; round < 60; ++round) {
    std::string direct = start;
    std::string queries = start;
    for (int i = 0; i < 6; ++i) {
      std::string pattern = std::string(pick(steps)) + pick(predicates);
      for (int depth = static_cast<int>(random() % 3); depth > 0 && pattern[0] != '/'; --depth) {
        pattern = pick(parents) + pattern;
      }
      const std::string more =
          "mode='m' xmlns:p='u' priority='" + std::to_string(random() % 3) + "'";
      const std::string text = std::to_string(i) + ",";
      direct += Rule(pattern.c_str(), text.c_str(), more.c_str());
      queries += Rule((pattern + "[current()]").c_str(), text.c_str(), more.c_str());
    }
    const std::string result = StylesheetRun{Sheet(direct), source}.Result();
    ASSERT_EQ(result, (StylesheetRun{Sheet(queries), source}.Result())) << direct;
    ASSERT_FALSE(result.starts_with("code")) << result << direct;
  }
}

}  // namespace
}  // namespace kelmora
