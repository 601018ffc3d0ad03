// Variables, parameters and expressions of the stylesheet in their scopes.
#include <gtest/gtest.h>

#include "engine/attributetemplates.h"
#include "stylesheetrun.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

struct Row {
  std::string body;
  const char* expected;
};

const std::string kSource = "<r><a>1</a><a>2</a><b>3</b></r>";

TEST(BindingsTest, Locals) {
  const std::string var = "<xsl:variable name='v' select='";
  const std::string show = "<xsl:value-of select='$v'/>";
  const Row rows[] = {
      {var + "1'/>" + show, "1"},
      {"<xsl:variable name='v'/>[" + show + "]", "[]"},
      {"<xsl:variable name='v'>x<e>y</e></xsl:variable>" + show, "xy"},
      {var + "1'/>" + var + "2'/>",
       "code 13 at xsl:stylesheet/xsl:template/xsl:variable/@name"
       " [xsl:variable xsl:template xsl:stylesheet]"},
      {var + "1'/><xsl:if test='1'>" + var + "2'/></xsl:if>",
       "code 13 at xsl:stylesheet/xsl:template/xsl:if/xsl:variable/@name"
       " [xsl:variable xsl:if xsl:template xsl:stylesheet]"},
      {"<xsl:if test='1'>" + var + "1'/>" + show + "</xsl:if><xsl:if test='1'>" + var + "2'/>" +
           show + "</xsl:if>",
       "12"},
      {"<xsl:if test='1'>" + var + "1'/></xsl:if>" + show,
       "code 1 (6) at xsl:stylesheet/xsl:template/xsl:value-of"
       " [xsl:value-of xsl:template xsl:stylesheet]"},
      {"<xsl:for-each select='r/a'>" + var + ".'/>" + show + "</xsl:for-each>", "12"},
      {"<xsl:variable name='p:v' select='1' xmlns:p='u'/><xsl:value-of select='$q:v' xmlns:q='u'/>",
       "1"},
      {var + "r/a | r/b'/><xsl:value-of select='$v[3]'/>", "3"},
      {"<xsl:variable name='f'><a/></xsl:variable><xsl:value-of select='$f/a'/>",
       "code 1 (11) at xsl:stylesheet/xsl:template/xsl:value-of"
       " [xsl:value-of xsl:template xsl:stylesheet]"},
      {var + "((('/>",
       "code 6 at xsl:stylesheet/xsl:template/xsl:variable/@select"
       " [xsl:variable xsl:template xsl:stylesheet]"},
      {var + "true() or $none'/>",
       "code 1 (6) at xsl:stylesheet/xsl:template/xsl:variable"
       " [xsl:variable xsl:template xsl:stylesheet]"},
      {"<xsl:call-template name='t'><xsl:with-param name='p' select='1'/>"
       "<xsl:with-param name='p' select='1'/></xsl:call-template>",
       "code 14 at xsl:stylesheet/xsl:template/xsl:call-template/xsl:with-param/@name"
       " [xsl:with-param xsl:call-template xsl:template xsl:stylesheet]"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ((StylesheetRun{RootTemplate(row.body), kSource}.Result()), row.expected) << row.body;
  }
}

TEST(BindingsTest, Parameters) {
  const std::string t =
      "<xsl:template name='t'><xsl:param name='p' select='position()'/>"
      "<xsl:param name='q'>q<xsl:value-of select='$p'/></xsl:param>"
      "<xsl:value-of select='concat($p, $q, \";\")'/></xsl:template>";
  const std::string call = "<xsl:call-template name='t'>";
  const std::string end = "</xsl:call-template>";
  const Row rows[] = {
      {call + end, "1q1;"},
      {call + "<xsl:with-param name='p' select=\"'x'\"/>" + end, "xqx;"},
      {call + "<xsl:with-param name='q'>y</xsl:with-param><xsl:with-param name='z'/>" + end, "1y;"},
      {"<xsl:for-each select='r/*'><xsl:sort select='.' order='descending'/>" + call +
           "<xsl:with-param name='q' select='.'/>" + end + "</xsl:for-each>",
       "13;22;31;"},
      // A template that doesn't declare a parameter neither sees it nor hands it on, and no
      // built-in rule does.
      {"<xsl:call-template name='v'><xsl:with-param name='p' select='9'/>" + end, "1q1;"},
      {"<xsl:apply-templates select='r'><xsl:with-param name='p' select='9'/>"
       "</xsl:apply-templates>",
       "12[0]"},
      {"<xsl:call-template name='w'><xsl:with-param name='s' select='r/b/preceding-sibling::*'/>" +
           end,
       "2 1 1"},
      // Sets that are passed are not numbered anew: an index counts, position() has what it had.
      {"<xsl:call-template name='u'><xsl:with-param name='s' select='(r/*)[. > 1]'/>" + end, "3"},
  };
  const std::string u =
      "<xsl:template name='u'><xsl:param name='s'/>"
      "<xsl:value-of select='$s[2]'/></xsl:template>"
      "<xsl:template name='v'>" +
      call + end +
      "</xsl:template><xsl:template match='b'><xsl:param name='p' select='0'/>"
      "[<xsl:value-of select='$p'/>]</xsl:template><xsl:template name='w'>"
      "<xsl:param name='s'/><xsl:value-of select=\"concat($s[1], ' ', $s[2], "
      "' ', $s)\"/></xsl:template>";
  for (const Row& row : rows) {
    const std::string sheet =
        Sheet("<xsl:template match='/'>" + row.body + "</xsl:template>" + t + u);
    EXPECT_EQ((StylesheetRun{sheet, kSource}.Result()), row.expected) << row.body;
  }
}

TEST(BindingsTest, Globals) {
  const std::string root = "<xsl:template match='/'><xsl:value-of select='$a'/></xsl:template>";
  const std::string at = " at xsl:stylesheet/xsl:variable";
  const Row rows[] = {
      {"<xsl:variable name='a' select='$b + $c'/><xsl:variable name='c' select='$b * 2'/>"
       "<xsl:variable name='b' select='5'/>",
       "15"},
      {"<xsl:variable name='a'><xsl:if test='1'><xsl:value-of select='$b'/></xsl:if></xsl:variable>"
       "<xsl:param name='b' select='//b'/>",
       "3"},
      // Keys and messages work before any rule does.
      {"<xsl:variable name='a' select=\"key('k', 2)\"/><xsl:variable name='e' select=\"'a'\"/>"
       "<xsl:key name='k' match='*' use='self::*[name() = $e]'/>",
       "2"},
      {"<xsl:variable name='a'><xsl:message terminate='yes'>m</xsl:message></xsl:variable>",
       "stopped: m"},
      {"<xsl:variable name='a'><xsl:apply-templates select='r/b'/></xsl:variable>", "3"},
      {"<xsl:variable name='a'><xsl:apply-imports/></xsl:variable>",
       "code 36 at nowhere [xsl:apply-imports xsl:variable xsl:stylesheet]"},
      {"<xsl:variable name='a' select='1'/><xsl:variable name='a' select='2'/>",
       "code 13 at xsl:stylesheet/xsl:variable/@name [xsl:variable xsl:stylesheet]"},
      {"<xsl:variable name='a' select='1'/><xsl:param name='a' select='2'/>",
       "code 14 at xsl:stylesheet/xsl:param/@name [xsl:param xsl:stylesheet]"},
      {"<xsl:variable name='a' select='$a'/>", "stack overflow"},
      {"<xsl:variable name='a' select='$b'/><xsl:variable name='b' select='$a'/>",
       "stack overflow"},
      {"<xsl:variable name='a'><x><xsl:value-of select='$none'/></x></xsl:variable>",
       "code 1 (6) at xsl:stylesheet/xsl:variable/x/xsl:value-of [xsl:variable xsl:stylesheet]"},
      {"<xsl:variable name='a' select='count(1)'/>",
       "code 1 (4, count) at xsl:stylesheet/xsl:variable [xsl:variable xsl:stylesheet]"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ((StylesheetRun{Sheet(row.body + root), kSource}.Result()), row.expected) << row.body;
  }
}

TEST(BindingsTest, CommandLine) {
  const std::string sheet = Sheet(
      "<xsl:param name='n' select='0'/><xsl:param name='s'/>"
      "<xsl:template match='/'><xsl:param name='n'/>"
      "<xsl:value-of select=\"concat($n + 1, '|', $s, '|')\"/>"
      "<xsl:call-template name='t'/></xsl:template>"
      "<xsl:template name='t'><xsl:param name='s' select=\"'own'\"/>"
      "<xsl:value-of select='$s'/></xsl:template>");
  EXPECT_EQ((StylesheetRun{sheet, kSource, {}, {"n=1+1", "n=9", "s=r/b", "none=1"}}.Result()),
            "3|3|own");
  EXPECT_EQ((StylesheetRun{sheet, kSource, {}, {"s='a=b'"}}.Result()), "NaN|a=b|own");
  const std::string ahead =
      Sheet(
          "<xsl:key name='k' match='a' use='.'/><xsl:variable name='v' select='$p:n'/>"
          "<xsl:param name='p:n' xmlns:p='u' select='5'/><xsl:template match='/'>"
          "<xsl:value-of select='$v'/></xsl:template>")
          .insert(15, " xmlns:p='u'");
  EXPECT_EQ((StylesheetRun{ahead, kSource}.Result()), "5");
  EXPECT_EQ((StylesheetRun{ahead, kSource, {}, {"u:n=count(key('k', 2))"}}.Result()), "1");
  EXPECT_EQ((StylesheetRun{ahead, kSource, {}, {"p:n=9"}}.Result()), "5");
  EXPECT_EQ((StylesheetRun{sheet, kSource, {}, {"n"}}.Result()), "code 6 at nowhere");
  EXPECT_EQ((StylesheetRun{sheet, kSource, {}, {"n=$x"}}.Result()),
            "code 1 (6) at xsl:stylesheet [xsl:stylesheet]");
}

// The parts of a template: literals in brackets, expressions in braces, "!" for a fault.
std::string Parts(const char16_t* text) {
  std::string shown;
  for (const TemplatePart& part : ParseAttributeTemplate(text, nullptr)) {
    if (part.kind == TemplatePart::Literal) shown.append("[").append(ToNative(part.literal)) += "]";
    if (part.kind == TemplatePart::Expression) {
      shown.append("{").append(ToNative(part.expression.Text)) += "}";
    }
    if (part.kind == TemplatePart::Fault) shown += "!";
  }
  return shown;
}

TEST(BindingsTest, AttributeValueTemplates) {
  EXPECT_EQ(Parts(u"a{b}c{d}{e}"), "[a]{b}[c]{d}{e}");
  EXPECT_EQ(Parts(u"{{a}}{b}"), "[{a}]{b}");
  EXPECT_EQ(Parts(u"'{b}' \"{\" {b}"), "['{b}' \"{\" ]{b}");
  EXPECT_EQ(Parts(u"it's {b}"), "[it's {b}]");
  EXPECT_EQ(Parts(u"{'}'}{\"{\"}"), "{'}'}{\"{\"}");
  EXPECT_EQ(Parts(u"{}"), "{}");
  EXPECT_EQ(Parts(u"a{b}c}d{e}"), "[a]{b}[c]!");
  EXPECT_EQ(Parts(u"{a{b}"), "!");
  EXPECT_EQ(Parts(u"{a"), "!");
  EXPECT_EQ(Parts(u"{'a}"), "!");
  EXPECT_EQ(Parts(u"{a}}"), "{a}!");
}

// A fault behind an expression shows after that expression has run.
TEST(BindingsTest, AttributeValueTemplateFaults) {
  const std::string stack = " [a e xsl:template xsl:stylesheet]";
  const Row rows[] = {
      {"<e a='{1}}'/>", "code 47 at xsl:stylesheet/xsl:template/e/@a"},
      {"<e a='{$x}}'/>", "code 1 (6) at xsl:stylesheet/xsl:template/e/@a"},
      {"<e a='{1 +}}'/>", "code 6 at xsl:stylesheet/xsl:template/e/@a"},
      {"<e a='{}'/>", "code 6 at xsl:stylesheet/xsl:template/e/@a"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(StylesheetRun{RootTemplate(row.body)}.Result(), row.expected + stack) << row.body;
  }
}

TEST(BindingsTest, Keys) {
  const std::string show =
      "<xsl:template match='/'><xsl:value-of select=\"concat(count(key('k', "
      "'2')), key('k', //b), count(key('k', //*)))\"/></xsl:template>";
  const Row rows[] = {
      {"<xsl:key name='k' match='b' use='string()'/><xsl:key name='k' match='a' use='.'/>",
       "code 1 (4) at xsl:stylesheet/xsl:key"},
      {"<xsl:key name='k' match='a' use='.'/><xsl:key name='k' match='b' use='string()'/>",
       "code 1 (4) at xsl:stylesheet/xsl:key"},
      {"<xsl:key name='k' match='a' use='.'/><xsl:key name='k' match='b' use='@x'/>", "133"},
      {"<xsl:key name='k' match='a|b' use='. - 1'/>", "12"},
      {"<xsl:key name='k' match=\"key('k', 1)\" use='.'/>", "code 1 (17, key)"},
      {"<xsl:key name='k' match='a[' use='.'/>", "code 6 at xsl:stylesheet/xsl:key"},
      {"<xsl:key name='k' match='a' use=\"key('k', .)\"/>", "00"},
  };
  for (const Row& row : rows) {
    const std::string result = StylesheetRun{Sheet(row.body + show), kSource}.Result();
    EXPECT_EQ(result.substr(0, std::string(row.expected).size()), row.expected) << row.body;
  }
}

// Keys that ask for one another nest evaluations on the machine stack, which has a bound.
TEST(BindingsTest, NestedKeys) {
  for (const int count : {10, 10000}) {
    std::string keys = "<xsl:key name='k0' match='a' use='.'/>";
    for (int i = 1; i <= count; ++i) {
      keys += "<xsl:key name='k" + std::to_string(i) + "' match='a' use=\"key('k" +
              std::to_string(i - 1) + "', .)\"/>";
    }
    const std::string show = "<xsl:template match='/'><xsl:value-of select=\"key('k" +
                             std::to_string(count) + "', '2')\"/></xsl:template>";
    const std::string result = StylesheetRun{Sheet(keys + show), kSource}.Result();
    EXPECT_EQ(result.substr(0, 16), count == 10 ? "2" : "code 1 (17, key)");
  }
}

// Frames of a deep recursion, and a stylesheet as deep.
TEST(BindingsTest, Depth) {
  const std::string sheet = Sheet(
      "<xsl:template match='/'><xsl:call-template name='t'/></xsl:template>"
      "<xsl:template name='t'><xsl:param name='n' select='0'/><xsl:if test='$n &lt; 30000'>"
      "<xsl:call-template name='t'><xsl:with-param name='n' select='$n + 1'/>"
      "</xsl:call-template></xsl:if><xsl:if test='$n = 30000'>end</xsl:if></xsl:template>");
  StylesheetRun run{sheet};
  run.stackLimit = 1000000;
  EXPECT_EQ(run.Result(), "end");
  run.stackLimit = 90000;
  EXPECT_EQ(run.Result(), "stack overflow");
  std::string open, close;
  for (int i = 0; i < 100000; ++i) {
    open += "<e>";
    close += "</e>";
  }
  EXPECT_EQ(StylesheetRun{RootTemplate("<xsl:if test='0'>" + open + close + "</xsl:if>")}.Result(),
            "");
}

}  // namespace
}  // namespace kelmora
