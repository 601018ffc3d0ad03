// What the engine does in a shorter way must come out as if it did not: random stylesheets and
// sources run in both ways.
#include <gtest/gtest.h>

#include <random>

#include "stylesheetrun.h"

namespace kelmora {
namespace {

std::string XmlSheet(std::string_view body) {
  return "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
         "<xsl:output omit-xml-declaration=\"yes\"/>" +
         std::string(body) + "</xsl:stylesheet>";
}

std::string AtRoot(std::string_view body) {
  return "<xsl:template match=\"/\">" + std::string(body) + "</xsl:template>";
}

std::string RandomTexts(std::mt19937& random, int depth) {
  static const char* const kPieces[] = {
      "<xsl:text>&lt;</xsl:text>",
      "<xsl:text disable-output-escaping='yes'>&lt;</xsl:text>",
      "<xsl:text/>",
      "<xsl:value-of select='12'/>",
      "<xsl:value-of select='//t'/>",
      "<xsl:value-of select='//t[2]' disable-output-escaping='yes'/>",
      "word",
      "<xsl:copy-of select='1 div 2'/>",
      "<xsl:for-each select='//t/text()'><xsl:copy/></xsl:for-each>",
      "<xsl:comment>c</xsl:comment>"};
  std::string text = "<e>";
  for (std::size_t piece = 0, count = random() % 9; piece < count; ++piece) {
    text += depth > 0 && random() % 6 == 0 ? RandomTexts(random, depth - 1)
                                           : kPieces[random() % std::size(kPieces)];
  }
  return text + "</e>";
}

// Texts side by side become one node in the result tree, and stay apart in a fragment.
TEST(Shortcuts, JoinedTextsEqualSeparateOnes) {
  std::mt19937 random(9);
  const std::string source = "<r><t>" + std::string(250, 'x') + "</t><t>&amp;y</t></r>";
  for (int round = 0; round < 60; ++round) {
    const std::string body = RandomTexts(random, 3);
    const std::string output = round % 3 == 0   ? "<xsl:output method='text'/>"
                               : round % 3 == 1 ? "<xsl:output method='html'/>"
                                                : "<xsl:output indent='yes'/>";
    const StylesheetRun joined{.stylesheet = XmlSheet(output + AtRoot(body)), .source = source};
    const std::string fragment =
        "<xsl:variable name='v'>" + body + "</xsl:variable><xsl:copy-of select='$v'/>";
    const StylesheetRun separate{.stylesheet = XmlSheet(output + AtRoot(fragment)),
                                 .source = source};
    ASSERT_EQ(joined.Result(), separate.Result()) << body;
  }
  const StylesheetRun sections{.stylesheet =
                                   XmlSheet("<xsl:output cdata-section-elements='a'/>" +
                                            AtRoot("<a>x<xsl:value-of select='1'/></a>"))};
  EXPECT_EQ(sections.Result(), "<a><![CDATA[x]]><![CDATA[1]]></a>");
}

// Content of a variable with nodes that were made and copies of others, each text another one.
std::string RandomFragment(std::mt19937& random, int depth, int& texts) {
  std::string body;
  for (std::size_t piece = 0, count = 1 + random() % 5; piece < count; ++piece) {
    const std::string text = std::to_string(++texts) + ",";
    const std::string nested = depth > 0 ? RandomFragment(random, depth - 1, texts) : text;
    const std::string node = "//node()[not(self::r)][" + std::to_string(1 + random() % 9) + "]";
    const std::string forms[] = {
        "<e k='1'>" + nested + "</e>",
        "<xsl:element name='f'><xsl:attribute name='k'>1</xsl:attribute>" + nested +
            "</xsl:element>",
        "<xsl:value-of select='\"" + text + "\"'/>",
        "<xsl:text>" + text + "</xsl:text>",
        "<xsl:copy-of select='" + node + "'/>",
        "<xsl:for-each select='" + node + "'><xsl:copy>" + nested + "</xsl:copy></xsl:for-each>",
        "<xsl:variable name='v" + std::to_string(texts) + "'>" + nested +
            "</xsl:variable><xsl:copy-of select='$v" + std::to_string(texts) + "'/>",
        "<xsl:comment>c</xsl:comment>"};
    body += forms[random() % std::size(forms)];
  }
  return body;
}

// Copies of nodes and nodes that were made stand in one order, that of the tree. The string value
// takes it from the tree.
TEST(Shortcuts, NodesOfFragmentsStandInTheOrderOfTheTree) {
  const std::string walks[] = {
      "<xsl:for-each select='descendant::text()'><xsl:value-of select='.'/></xsl:for-each>",
      "<xsl:for-each select='descendant::node()[self::text()]'><xsl:value-of select='.'/>"
      "</xsl:for-each>",
      "<xsl:for-each select='(descendant::text() | descendant::text())[true()]'>"
      "<xsl:value-of select='.'/></xsl:for-each>",
      "<xsl:for-each select='descendant::text()'><xsl:sort select='1'/><xsl:value-of select='.'/>"
      "</xsl:for-each>",
      "<xsl:apply-templates select='descendant::text()'/>",
      "<xsl:variable name='w'><xsl:copy-of select='node()'/></xsl:variable>"
      "<xsl:value-of select='$w'/>",
      "<e><xsl:value-of select='.'/></e>"};
  std::mt19937 random(12);
  for (int round = 0; round < 100; ++round) {
    int texts = 0;
    const std::string body = RandomFragment(random, 3, texts);
    const std::string& walk = walks[static_cast<unsigned>(round) % std::size(walks)];
    const auto run = [&body](const std::string& show) {
      return StylesheetRun{
          .stylesheet = Sheet(AtRoot("<xsl:variable name='v'>" + body +
                                     "</xsl:variable><xsl:apply-templates select='$v' mode='m'/>") +
                              "<xsl:template match='/' mode='m'>" + show + "</xsl:template>"),
          .source = "<r>A,<a>B,</a><!--c-->C,<b>D,<c>E,</c>F,</b></r>"}
          .Result();
    };
    ASSERT_EQ(run(walk), run("<xsl:value-of select='string()'/>")) << walk << body;
  }
}

std::string RandomContent(std::mt19937& random, int depth) {
  static const char* const kPieces[] = {"t",        "<a>1</a>", "<b k='v'/>",
                                        "<!--c-->", "<?p i?>",  "<c>x</c>"};
  std::string text;
  for (std::size_t piece = 0, count = random() % 5; piece < count; ++piece) {
    const bool nests = depth > 0 && random() % 2 == 0;
    text += nests ? "<d n='1'>" + RandomContent(random, depth - 1) + "</d>"
                  : kPieces[random() % std::size(kPieces)];
  }
  return text;
}

TEST(Shortcuts, ContentEqualsNodeTest) {
  const auto rules = [](const std::string& apply) {
    return "<xsl:template match='*|/'>(" + apply +
           ")</xsl:template><xsl:template match='@*|text()|comment()|processing-instruction()'>"
           "<xsl:value-of select='position()'/>/<xsl:value-of select='last()'/>,</xsl:template>"
           "<xsl:template match='r'><xsl:variable name='v'>x<xsl:copy-of select='node()'/>y"
           "<z/></xsl:variable>" +
           apply + "<xsl:apply-templates select='$v'/></xsl:template>";
  };
  std::mt19937 random(11);
  for (int round = 0; round < 30; ++round) {
    const std::string source =
        "<!DOCTYPE r [<!--d-->]><?p?><r>" + RandomContent(random, 4) + "</r><!--behind-->";
    const StylesheetRun direct{.stylesheet = XmlSheet(rules("<xsl:apply-templates/>")),
                               .source = source};
    const StylesheetRun evaluated{
        .stylesheet = XmlSheet(rules("<xsl:apply-templates select='node()'/>")), .source = source};
    ASSERT_EQ(direct.Result(), evaluated.Result()) << source;
    const StylesheetRun all{
        .stylesheet = XmlSheet(rules("<xsl:apply-templates select='@*|node()'/>")),
        .source = source};
    const StylesheetRun allEvaluated{
        .stylesheet = XmlSheet(rules("<xsl:apply-templates select='(@*|node())'/>")),
        .source = source};
    ASSERT_EQ(all.Result(), allEvaluated.Result()) << source;
  }
}

// Templates that come to a text or to nothing leave no trace of whether they had frames.
TEST(Shortcuts, TemplatesWithoutFramesEqualThoseWithThem) {
  const std::string rules[] = {
      "",
      "<xsl:template match='a'/><xsl:template match='c'><xsl:value-of select='.' "
      "disable-output-escaping='yes'/></xsl:template>",
      "<xsl:template match='d'><e><xsl:apply-templates select='@*|node()' mode='m'><xsl:with-param "
      "name='p' select='1'/><xsl:sort order='descending'/></xsl:apply-templates></e>"
      "</xsl:template><xsl:template match='b' mode='m'><xsl:value-of select='position()'/>"
      "</xsl:template>",
      "<xsl:template match='text()'>[<xsl:value-of select='.'/>]</xsl:template>"
      "<xsl:template match='c'><xsl:apply-templates/><xsl:apply-imports/></xsl:template>",
      "<xsl:template match='d'>t<xsl:text>u</xsl:text><e k='{@n}'>v<xsl:value-of select='@n'/>"
      "<xsl:for-each select='*'><xsl:value-of select='position()'/>,<f/><xsl:value-of "
      "select='last()'/></xsl:for-each></e><xsl:if test='c'>w<xsl:value-of select='name(c)'/>"
      "</xsl:if><xsl:apply-templates/></xsl:template>",
      "<xsl:template match='d'><xsl:for-each select='d'>x<xsl:value-of select='1 | a'/>"
      "</xsl:for-each><xsl:apply-templates/></xsl:template>",
      "<xsl:template match='b'>x<xsl:value-of select='q:a'/></xsl:template><xsl:template match='a'>"
      "<xsl:value-of xmlns:q='q' select='count(../q:a)'/></xsl:template>",
      "<xsl:variable name='g'>y<e>x<xsl:value-of select='$h'/></e></xsl:variable><xsl:variable "
      "name='h' select='2'/><xsl:template match='a'><xsl:value-of select='$g'/></xsl:template>"
      "<xsl:template match='b'>z<xsl:value-of select='$none'/></xsl:template>"};
  std::mt19937 random(10);
  for (int round = 0; round < 160; ++round) {
    StylesheetRun run{
        .stylesheet = XmlSheet(rules[static_cast<unsigned>(round) % std::size(rules)]),
        .source = "<r>" + RandomContent(random, 4) + "</r>"};
    run.stackLimit = round % 5 == 0 ? 3 + random() % 9 : 1000;
    const std::string without = run.Result();
    run.givesAllFrames = true;
    ASSERT_EQ(without, run.Result()) << run.source << " within " << run.stackLimit;
  }
}

}  // namespace
}  // namespace kelmora
