// Small stylesheets, one for each rule of the instructions that build the result and steer the run.
#include <gtest/gtest.h>

#include <random>

#include "stylesheetrun.h"

namespace kelmora {
namespace {

struct Row {
  const char* name;
  const char* body;  // top-level elements
  const char* expected;
  const char* source = "<r/>";
};

std::string XmlSheet(std::string_view attributes, std::string_view body) {
  return "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\" " +
         std::string(attributes) + "><xsl:output omit-xml-declaration=\"yes\"/>" +
         std::string(body) + "</xsl:stylesheet>";
}

std::string AtRoot(std::string_view body) {
  return "<xsl:template match=\"/\">" + std::string(body) + "</xsl:template>";
}

// A row's body is that of the template for the root.
void ExpectAtRoot(const Row& row, std::string_view attributes = "") {
  const StylesheetRun run{.stylesheet = XmlSheet(attributes, AtRoot(row.body)),
                          .source = row.source};
  EXPECT_EQ(run.Result(), row.expected) << row.name;
}

TEST(Instructions, ScopesOfLiteralElements) {
  const Row rows[] = {
      {"a declaration once", "<a xmlns:x='u'><b xmlns:x='u'/></a>",
       "<a xmlns:p=\"urn:p\" xmlns:x=\"u\"><b/></a>"},
      {"declarations in the order of prefixes, ahead of attributes",
       "<a z='1' xmlns:y='2' xmlns='1' xmlns:b='3'/>",
       "<a xmlns=\"1\" xmlns:b=\"3\" xmlns:p=\"urn:p\" xmlns:y=\"2\" z=\"1\"/>"},
      {"out of a default namespace", "<xsl:element name='a' namespace='u'><b/></xsl:element>",
       "<a xmlns=\"u\"><b xmlns=\"\" xmlns:p=\"urn:p\"/></a>"},
      {"an excluded namespace of the element itself stays",
       "<a xsl:exclude-result-prefixes='p'><b/><p:c/><b/></a>",
       "<a><b/><p:c xmlns:p=\"urn:p\"/><b/></a>"},
      {"an exclusion ends with its element",
       "<o><a xsl:exclude-result-prefixes='x p' xmlns:x='u'/><b xmlns:x='u'/></o>",
       "<o xmlns:p=\"urn:p\"><a/><b xmlns:x=\"u\"/></o>"},
      {"one prefix, two URIs", "<a xmlns:x='u'><x:b xmlns:x='v'><x:c/></x:b><x:d/></a>",
       "<a xmlns:p=\"urn:p\" xmlns:x=\"u\"><x:b xmlns:x=\"v\"><x:c/></x:b><x:d/></a>"},
      {"braces in literal attributes",
       "<a b='{1+1}' c='{{x}}' d='&quot;{2}&quot;' e='{name(*)}!'/>",
       "<a xmlns:p=\"urn:p\" b=\"2\" c=\"{x}\" d=\"&quot;{2}&quot;\" e=\"r!\"/>"},
      {"a CDATA section becomes text", "<a><![CDATA[<]]></a>", "<a xmlns:p=\"urn:p\">&lt;</a>"},
      {"an extension element runs its first fallback",
       "<a xmlns:e='x' xsl:extension-element-prefixes='e'><e:go k='{$no}'>lost"
       "<xsl:fallback>1</xsl:fallback><xsl:fallback>2</xsl:fallback></e:go><e:none/></a>",
       "<a xmlns:p=\"urn:p\">1</a>"},
  };
  for (const Row& row : rows) ExpectAtRoot(row, "xmlns:p='urn:p'");
}

TEST(Instructions, ElementAndAttribute) {
  const Row rows[] = {
      {"a prefix of the stylesheet", "<xsl:element name='p:{name(*)}'/>",
       "<p:r xmlns:p=\"urn:p\"/>"},
      {"an unbound prefix", "<a><xsl:element name='q:b'/></a>",
       "code 10 at xsl:stylesheet/xsl:template/a/xsl:element/@name "
       "[xsl:element a xsl:template xsl:stylesheet]"},
      {"no name", "<xsl:element name='{/..}'/>",
       "code 40 at xsl:stylesheet/xsl:template/xsl:element/@name "
       "[xsl:element xsl:template xsl:stylesheet]"},
      {"xmlns as a name", "<xsl:element name='xmlns'/>",
       "code 31 at xsl:stylesheet/xsl:template/xsl:element/@name "
       "[xsl:element xsl:template xsl:stylesheet]"},
      {"xmlns as a prefix", "<xsl:element name='xmlns:e' namespace='u'/>",
       "<prefix_1:e xmlns:prefix_1=\"u\"/>"},
      {"an equal URI under another prefix doesn't serve",
       "<xsl:element name='x:a' namespace='u'><xsl:element name='y:b' namespace='u'/>"
       "<xsl:element name='x:c' namespace='u'/></xsl:element>",
       "<x:a xmlns:x=\"u\"><y:b xmlns:y=\"u\"/><x:c/></x:a>"},
      {"into no namespace",
       "<xsl:element name='a' namespace='u'><xsl:element name='b' namespace=''>"
       "<xsl:element name='c' namespace=''/></xsl:element></xsl:element>",
       "<a xmlns=\"u\"><b xmlns=\"\"><c/></b></a>"},
      {"a later attribute takes the place of the first",
       "<xsl:element name='a'><xsl:attribute name='x'>1</xsl:attribute>"
       "<xsl:attribute name='y'>2</xsl:attribute><xsl:attribute name='x'>3</xsl:attribute>"
       "</xsl:element>",
       "<a x=\"3\" y=\"2\"/>"},
      {"generated prefixes never meet",
       "<xsl:element name='a'><xsl:attribute name='x' namespace='u'>1</xsl:attribute>"
       "<xsl:attribute name='x' namespace='u'>2</xsl:attribute></xsl:element>",
       "<a xmlns:prefix_1=\"u\" prefix_1:x=\"1\" xmlns:prefix_2=\"u\" prefix_2:x=\"2\"/>"},
      {"a declared prefix does",
       "<xsl:element name='a'><xsl:attribute name='z:x' namespace='u'>1</xsl:attribute>"
       "<xsl:attribute name='z:x' namespace='u'>2</xsl:attribute></xsl:element>",
       "<a xmlns:z=\"u\" z:x=\"2\"/>"},
      {"an attribute without a place",
       "<xsl:attribute name='lost'>{$no}</xsl:attribute><xsl:element name='a'>t"
       "<xsl:attribute name='lost'><xsl:value-of select='$no'/></xsl:attribute></xsl:element>",
       "<a>t</a>"},
      {"an empty text is content",
       "<xsl:element name='a'><xsl:value-of select='/..'/><xsl:attribute name='x'/></xsl:element>",
       "<a></a>"},
      {"only the texts directly in an attribute",
       "<xsl:element name='a'><xsl:attribute name='x'>1<i>2</i><xsl:comment>3</xsl:comment>4"
       "</xsl:attribute></xsl:element>",
       "<a x=\"14\"/>"},
      {"an attribute named xmlns is none",
       "<xsl:element name='a'><xsl:attribute name='xmlns'>u</xsl:attribute></xsl:element>", "<a/>"},
      {"xml needs no declaration",
       "<xsl:element name='a'><xsl:attribute name='xml:lang'>en</xsl:attribute></xsl:element>",
       "<a xml:lang=\"en\"/>"},
      {"an unbound prefix of an attribute",
       "<xsl:element name='a'><xsl:attribute name='q:b'/></xsl:element>",
       "code 10 at xsl:stylesheet/xsl:template/xsl:element/xsl:attribute/@name "
       "[xsl:attribute xsl:element xsl:template xsl:stylesheet]"},
  };
  for (const Row& row : rows) ExpectAtRoot(row, "xmlns:p='urn:p'");
}

TEST(Instructions, ManyAttributesOfOneElement) {
  const std::string stylesheet = XmlSheet(
      "", AtRoot("<xsl:element name='a'>"
                 "<xsl:for-each select='//i'><xsl:attribute name='x{. mod 50}'>"
                 "<xsl:value-of select='.'/></xsl:attribute></xsl:for-each></xsl:element>"
                 "<xsl:element name='b'><xsl:attribute name='x1'>b</xsl:attribute></xsl:element>"));
  std::string source = "<r>";
  std::string expected = "<a";
  for (int i = 0; i < 100; ++i) source += "<i>" + std::to_string(i) + "</i>";
  for (int i = 0; i < 50; ++i) {
    expected += " x" + std::to_string(i) + "=\"" + std::to_string(i + 50) + "\"";
  }
  const StylesheetRun run{.stylesheet = stylesheet, .source = source + "</r>"};
  EXPECT_EQ(run.Result(), expected + "/><b x1=\"b\"/>");
}

TEST(Instructions, AttributeSets) {
  const std::string sets =
      "<xsl:attribute-set name='s' use-attribute-sets='t'>"
      "<xsl:attribute name='a'>s</xsl:attribute><xsl:attribute name='b'>s</xsl:attribute>"
      "</xsl:attribute-set>"
      "<xsl:attribute-set name='t'><xsl:attribute name='b'>t</xsl:attribute>"
      "<xsl:attribute name='c'>t</xsl:attribute></xsl:attribute-set>"
      "<xsl:attribute-set name='s'><xsl:attribute name='d'>s2</xsl:attribute></xsl:attribute-set>"
      "<xsl:attribute-set name='g'><xsl:attribute name='v'><xsl:value-of select='$v'/>"
      "</xsl:attribute></xsl:attribute-set>"
      "<xsl:attribute-set name='bad' use-attribute-sets='gone'/><xsl:variable name='v' "
      "select='1'/>";
  const Row rows[] = {
      {"used sets first, all definitions of a name", "<e xsl:use-attribute-sets='s'/>",
       "<e b=\"s\" c=\"t\" a=\"s\" d=\"s2\"/>"},
      {"the element's own attributes win on either side",
       "<e a='1' xsl:use-attribute-sets='s' d='2'/>", "<e a=\"1\" b=\"s\" c=\"t\" d=\"2\"/>"},
      {"xsl:element's own attribute names count",
       "<xsl:element use-attribute-sets='t' name='e'>x</xsl:element>", "<e b=\"t\" c=\"t\">x</e>"},
      {"xsl:copy",
       "<xsl:for-each select='r'><xsl:copy use-attribute-sets='t s'>y</xsl:copy>"
       "</xsl:for-each>",
       "<r b=\"s\" c=\"t\" a=\"s\" d=\"s2\">y</r>"},
      {"a set sees global variables only",
       "<xsl:variable name='v' select='2'/><e xsl:use-attribute-sets='g'/>", "<e v=\"1\"/>"},
      {"a set that doesn't exist", "<e xsl:use-attribute-sets='bad'/>",
       "code 9 at xsl:stylesheet/xsl:attribute-set/@use-attribute-sets [use-attribute-sets "
       "xsl:attribute-set xsl:use-attribute-sets e xsl:template xsl:stylesheet]"},
      {"no name of a set", "<e xsl:use-attribute-sets='s 1'/>",
       "code 40 at nowhere [xsl:use-attribute-sets e xsl:template xsl:stylesheet]"},
  };
  for (const Row& row : rows) {
    const StylesheetRun run{.stylesheet = XmlSheet("", sets + AtRoot(row.body)),
                            .source = row.source};
    EXPECT_EQ(run.Result(), row.expected) << row.name;
  }
}

TEST(Instructions, CopyAndCopyOf) {
  const char* source =
      "<?xml version='1.0'?><!--c--><d:r xmlns:d='u' a='{1}'><e xmlns:f='v' f:b='2'>t<![CDATA[<]]>"
      "</e></d:r><?p q?>";
  const Row rows[] = {
      {"a root copies its content only", "<xsl:copy><a/></xsl:copy>", "<a/>", source},
      {"braces of a source attribute",
       "<xsl:for-each select='*'><xsl:copy><xsl:for-each select='@a'><xsl:copy>lost</xsl:copy>"
       "</xsl:for-each></xsl:copy></xsl:for-each>",
       "<d:r xmlns:d=\"u\" a=\"{1}\"/>", source},
      {"content of a copied attribute is dropped, content behind it is not",
       "<a><xsl:for-each select='*/@a'><xsl:copy><b/><xsl:comment>x</xsl:comment>"
       "<xsl:copy-of select='/'/></xsl:copy></xsl:for-each><c/></a>",
       "<a a=\"{1}\"><c/></a>", source},
      {"the namespace node xml",
       "<a><xsl:for-each select='*/namespace::*'><xsl:copy>x</xsl:copy>"
       "</xsl:for-each></a>",
       "<a xmlns:d=\"u\"/>", source},
      {"the document without its declaration", "<xsl:copy-of select='/'/>",
       "<!--c--><d:r xmlns:d=\"u\" a=\"{1}\"><e xmlns:f=\"v\" f:b=\"2\">t&lt;</e></d:r><?p q?>",
       source},
      {"missing declarations, the last one first", "<xsl:copy-of select='//e'/>",
       "<e xmlns:d=\"u\" xmlns:f=\"v\" f:b=\"2\">t&lt;</e>", source},
      {"declared above",
       "<o xmlns:d='u'><xsl:copy-of select='//e'/><xsl:copy-of select='//e'/></o>",
       "<o xmlns:d=\"u\"><e xmlns:f=\"v\" f:b=\"2\">t&lt;</e><e xmlns:f=\"v\" "
       "f:b=\"2\">t&lt;</e></o>",
       source},
      {"a declaration that a nearer one hides counts",
       "<o xmlns:d='u'><i xmlns:d='w'><xsl:copy-of select='//e'/></i></o>",
       "<o xmlns:d=\"u\"><i xmlns:d=\"w\"><e xmlns:f=\"v\" f:b=\"2\">t&lt;</e></i></o>", source},
      {"in a fragment nothing above it counts",
       "<o xmlns:d='u'><xsl:variable name='f'><xsl:copy-of select='//e'/></xsl:variable>"
       "<xsl:copy-of select='$f'/></o>",
       "<o xmlns:d=\"u\"><e xmlns:d=\"u\" xmlns:f=\"v\" f:b=\"2\">t&lt;</e></o>", source},
      {"a fragment under another binding",
       "<o xmlns:d='u'><xsl:variable name='f'><e k='1'>t</e></xsl:variable>"
       "<i xmlns:d='w'><xsl:copy-of select='$f'/></i></o>",
       "<o xmlns:d=\"u\"><i xmlns:d=\"w\"><e k=\"1\" xmlns:d=\"u\">t</e></i></o>", source},
      {"an attribute behind content",
       "<a>t<xsl:copy-of select='*/@a'/><xsl:copy-of select='1+1'/></a>", "<a>t2</a>", source},
      {"output escaping travels with a copy",
       "<xsl:variable name='f'><xsl:value-of disable-output-escaping='yes' select='\"&lt;\"'/>"
       "</xsl:variable><xsl:copy-of select='$f'/><xsl:value-of select='$f'/>",
       "<&lt;", source},
  };
  for (const Row& row : rows) ExpectAtRoot(row);
}

// Elements that redeclare few prefixes again and again, some below a default namespace.
std::string RandomNamespaces(std::mt19937& random, int depth) {
  const std::string prefixes[] = {"", "p", "q", "r"};
  const std::string& prefix = prefixes[random() % 4];
  std::string declarations = prefix.empty() ? "" : " xmlns:" + prefix + "='u'";
  for (const std::string& other : prefixes) {
    if (other == prefix || random() % 4 != 0) continue;
    const bool isDefault = other.empty();
    declarations += (isDefault ? " xmlns='" : " xmlns:" + other + "='") +
                    std::string(1, static_cast<char>('a' + random() % 3)) + "'";
  }
  const std::string name = prefix.empty() ? "e" : prefix + ":e";
  std::string text = "<" + name + declarations + ">";
  for (std::size_t child = 0, count = depth == 0 ? 0 : random() % 4; child < count; ++child) {
    text += RandomNamespaces(random, depth - 1);
  }
  return text + "</" + name + ">";
}

// What is remembered of scopes must not show. An alias, though of a prefix that nothing uses, makes
// the engine walk whole scopes.
TEST(Instructions, RememberedScopesEqualWholeOnes) {
  std::mt19937 random(8);
  const std::string identity =
      "<xsl:template match='*'><xsl:copy><xsl:apply-templates/></xsl:copy></xsl:template>";
  const std::string alias = "<xsl:namespace-alias stylesheet-prefix='none' result-prefix='other'/>";
  for (const char* attributes : {"", "xmlns:x='a' extension-element-prefixes='x'",
                                 "xmlns='b' exclude-result-prefixes='#default'"}) {
    for (int round = 0; round < 20; ++round) {
      const std::string source = "<r>" + RandomNamespaces(random, 6) + "</r>";
      const StylesheetRun remembered{.stylesheet = XmlSheet(attributes, identity),
                                     .source = source};
      const StylesheetRun whole{.stylesheet = XmlSheet(attributes, alias + identity),
                                .source = source};
      ASSERT_EQ(remembered.Result(), whole.Result()) << source;
    }
  }
}

TEST(Instructions, NamespaceAliases) {
  const Row rows[] = {
      {"to XSLT",
       "<xsl:namespace-alias stylesheet-prefix='a' result-prefix='xsl'/><xsl:template match='/'>"
       "<a:if test='{{1}}'><b/></a:if></xsl:template>",
       "<xsl:if xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\" test=\"{1}\"><b/></xsl:if>"},
      {"to the default namespace",
       "<xsl:namespace-alias stylesheet-prefix='a' result-prefix='#default'/>"
       "<xsl:template match='/' xmlns='urn:d'><a:b/></xsl:template>",
       "<b xmlns=\"urn:d\"/>"},
      {"the first alias stays",
       "<xsl:namespace-alias stylesheet-prefix='a' result-prefix='b'/>"
       "<xsl:namespace-alias stylesheet-prefix='a' result-prefix='c'/>"
       "<xsl:template match='/' xmlns:b='urn:b' xmlns:c='urn:c'><a:x a:k='1'/></xsl:template>",
       "<b:x xmlns:b=\"urn:b\" xmlns:c=\"urn:c\" b:k=\"1\"/>"},
  };
  for (const Row& row : rows) {
    const StylesheetRun run{.stylesheet = XmlSheet("xmlns:a='urn:a'", row.body)};
    EXPECT_EQ(run.Result(), row.expected) << row.name;
  }
}

TEST(Instructions, TextsCommentsAndMessages) {
  const Row rows[] = {
      {"comments",
       "<a><xsl:comment/><xsl:comment>a---b-</xsl:comment><xsl:comment><i>x</i>y"
       "</xsl:comment></a>",
       "<a><!--a- - -b- --><!--xy--></a>"},
      {"processing instructions",
       "<a><xsl:processing-instruction name='p'/>"
       "<xsl:processing-instruction "
       "name='{\"q\"}'>x?>y<i>lost</i></xsl:processing-instruction></a>",
       "<a><?p ?><?q x? >y?></a>"},
      {"no target", "<xsl:processing-instruction name='Xml'/>",
       "code 39 at xsl:stylesheet/xsl:template/xsl:processing-instruction/@name "
       "[xsl:processing-instruction xsl:template xsl:stylesheet]"},
      {"texts",
       "<a><xsl:text disable-output-escaping='yes'>&lt;</xsl:text><xsl:text>&lt;</xsl:text>"
       "<xsl:text/><xsl:value-of select='*'/></a>",
       "<a><&lt;v</a>", "<r>v</r>"},
      {"string values",
       "<xsl:value-of select='r'/>|<xsl:value-of select='//@k'/>|"
       "<xsl:value-of select='//b'/>|<xsl:value-of select='2 div 4'/>|<xsl:value-of select='/..'/>",
       "x1y|&amp;|1|0.5|", "<r>x<b k='&amp;'>1</b>y</r>"},
      {"a text with content below it",
       "<xsl:variable name='v'><xsl:for-each select='r/text()[1]'><xsl:copy>+</xsl:copy>"
       "</xsl:for-each></xsl:variable><a><xsl:value-of select='$v'/></a>"
       "<xsl:if test='$v = \"x+\"'><xsl:value-of select='string-length($v)'/></xsl:if>",
       "<a>x+</a>2", "<r>x<b/></r>"},
      {"a comment and an attribute with content below them",
       "<xsl:variable name='v'><e><xsl:for-each select='r/@k'><xsl:copy>+</xsl:copy>"
       "</xsl:for-each><xsl:for-each select='r/comment()'><xsl:copy>-</xsl:copy></xsl:for-each>"
       "<xsl:value-of select='r'/></e></xsl:variable><a><xsl:value-of select='$v'/></a>"
       "<b><xsl:value-of select='string($v)'/></b>",
       "<a>+-x</a><b>+-x</b>", "<r k='1'><!--c-->x</r>"},
      {"a message that ends the run", "<a/><xsl:message terminate='yes'>m<b>n</b></xsl:message>",
       "stopped: mn"},
      {"a message that doesn't", "<xsl:message>m</xsl:message><a/>", "<a/>"},
  };
  for (const Row& row : rows) ExpectAtRoot(row);
}

TEST(Instructions, ControlFlow) {
  const char* source = "<r><i>2</i><i>3</i><i>1</i></r>";
  const std::string show =
      "<xsl:template match='i'><xsl:param name='p' select='\"-\"'/>"
      "[<xsl:value-of select='concat(., position(), last(), $p)'/>]</xsl:template>"
      "<xsl:template name='t'><xsl:param name='p'/>(<xsl:value-of select='concat(name(), $p)'/>)"
      "</xsl:template>";
  const Row rows[] = {
      {"sorted, with a parameter in the caller's context",
       "<xsl:for-each select='r/i[2]'><xsl:apply-templates select='../i'><xsl:sort/>"
       "<xsl:with-param name='p' select='concat(., "
       "position())'/></xsl:apply-templates></xsl:for-each>",
       "[11331][22331][33331]"},
      {"no nodes: the parameters run, no rule",
       "<xsl:apply-templates select='/none'><xsl:with-param name='p' select='$no'/>"
       "</xsl:apply-templates>",
       "code 1 (6) at xsl:stylesheet/xsl:template/xsl:apply-templates/xsl:with-param "
       "[xsl:with-param xsl:apply-templates xsl:template xsl:stylesheet]"},
      {"a call keeps the context",
       "<xsl:for-each select='r'><xsl:call-template name='t'>"
       "<xsl:with-param name='p' select='1'/></xsl:call-template><xsl:call-template name='t'/>"
       "</xsl:for-each>",
       "(r1)(r)"},
      {"an unknown template", "<xsl:call-template name='u'/>",
       "code 8 at xsl:stylesheet/xsl:template/xsl:call-template/@name "
       "[xsl:call-template xsl:template xsl:stylesheet]"},
      {"a variable in each pass",
       "<xsl:for-each select='r/i'><xsl:variable name='v' select='.'/>"
       "<xsl:value-of select='$v * 2'/>,</xsl:for-each>",
       "4,6,2,"},
      {"sorts alone", "<xsl:for-each select='r/i'><xsl:sort/></xsl:for-each>.", "."},
      {"no current rule in a loop", "<xsl:for-each select='r'><xsl:apply-imports/></xsl:for-each>",
       "code 36 at nowhere [xsl:apply-imports xsl:for-each xsl:template xsl:stylesheet]"},
      {"no list of the current rule beside a sort",
       "<xsl:apply-templates select='r/i'><xsl:sort/><f:f xmlns:f='f'><xsl:apply-imports/></f:f>"
       "</xsl:apply-templates>",
       "code 36 at nowhere [xsl:apply-imports f:f xsl:apply-templates xsl:template "
       "xsl:stylesheet]"},
      {"the list of the current rule in an element in front of the sort, and in a parameter",
       "<xsl:apply-templates select='r/i[1]'><f:f xmlns:f='f'><xsl:apply-imports/></f:f><xsl:sort/>"
       "<xsl:with-param name='p'><xsl:apply-imports/></xsl:with-param></xsl:apply-templates>",
       "[213-][323-][133-][211[213-][323-][133-]]"},
      {"no node set", "<xsl:for-each select='1'>x</xsl:for-each>",
       "code 29 at xsl:stylesheet/xsl:template/xsl:for-each/@select "
       "[xsl:for-each xsl:template xsl:stylesheet]"},
      {"choose",
       "<xsl:for-each select='r/i'><xsl:choose><xsl:when test='. = 1'>a</xsl:when>"
       "<xsl:when test='. &lt; 3'>b</xsl:when><xsl:otherwise>c</xsl:otherwise></xsl:choose>"
       "</xsl:for-each>",
       "bca"},
      {"a branch behind otherwise is reached late",
       "<xsl:choose><xsl:when test='true()'>a</xsl:when>"
       "<xsl:otherwise/><xsl:when test='1'/></xsl:choose>",
       "a"},
      {"otherwise isn't last",
       "<xsl:choose><xsl:when test='false()'/><xsl:otherwise/>"
       "<xsl:when test='1'/></xsl:choose>",
       "code 27 at xsl:stylesheet/xsl:template/xsl:choose/xsl:otherwise "
       "[xsl:choose xsl:template xsl:stylesheet]"},
      {"otherwise comes first", "<xsl:choose><xsl:otherwise/></xsl:choose>",
       "code 22 at xsl:stylesheet/xsl:template/xsl:choose [xsl:choose xsl:template "
       "xsl:stylesheet]"},
      {"fallback as an ordinary child",
       "<xsl:if test='r'>1<xsl:fallback>2</xsl:fallback>3</xsl:if>", "123"},
  };
  for (const Row& row : rows) {
    const StylesheetRun run{.stylesheet = Sheet(show + AtRoot(row.body)), .source = source};
    EXPECT_EQ(run.Result(), row.expected) << row.name;
  }
}

TEST(Instructions, UnknownElementsOfALaterVersion) {
  const StylesheetRun run{
      .stylesheet =
          "<xsl:stylesheet version='2.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
          "<xsl:output method='text'/><xsl:template match='/'><xsl:new>lost<xsl:fallback>1"
          "</xsl:fallback><b/><xsl:fallback>2</xsl:fallback></xsl:new><xsl:none/>"
          "</xsl:template></xsl:stylesheet>"};
  EXPECT_EQ(run.Result(), "12");
}

// Each nested instruction stands on a frame of its own, a literal attribute too.
TEST(Instructions, FramesOnTheStack) {
  const struct {
    const char* body;
    std::size_t frames;
  } rows[] = {
      {"<a/>", 3},
      {"<a b='1'/>", 4},
      {"<xsl:if test='1'>x</xsl:if>", 4},
      {"<a xsl:use-attribute-sets='s'/>", 7},
      {"<xsl:choose><xsl:when test='1'>x</xsl:when></xsl:choose>", 5},
      {"<xsl:call-template name='t'><xsl:with-param "
       "name='p'>x</xsl:with-param></xsl:call-template>",
       5},
  };
  for (const auto& row : rows) {
    StylesheetRun run{.stylesheet = Sheet("<xsl:attribute-set name='s'><xsl:attribute name='k'>x"
                                          "</xsl:attribute></xsl:attribute-set>"
                                          "<xsl:template name='t'/>" +
                                          AtRoot(row.body))};
    run.stackLimit = row.frames;
    EXPECT_NE(run.Result(), "stack overflow") << row.body;
    run.stackLimit = row.frames - 1;
    EXPECT_EQ(run.Result(), "stack overflow") << row.body;
  }
}

// Depth lies on the call stack of the engine, never on that of the machine.
TEST(Instructions, DeepResults) {
  constexpr int kDepth = 5000;
  std::string source;
  std::string ends;
  for (int depth = 0; depth < kDepth; ++depth) {
    source += "<a>";
    ends += "</a>";
  }
  source += "x" + ends;
  const struct {
    const char* name;
    const char* body;
  } rows[] = {
      {"xsl:copy",
       "<xsl:template match='*'><xsl:copy><xsl:apply-templates/></xsl:copy></xsl:template>"},
      {"xsl:element",
       "<xsl:template match='*'><xsl:element name='a'><xsl:apply-templates/></xsl:element>"
       "</xsl:template>"},
      {"xsl:copy-of", "<xsl:template match='/'><xsl:copy-of select='.'/></xsl:template>"},
      {"a fragment",
       "<xsl:template match='/'><xsl:variable name='f'><xsl:copy-of select='.'/></xsl:variable>"
       "<xsl:copy-of select='$f'/></xsl:template>"},
  };
  for (const auto& row : rows) {
    const StylesheetRun run{
        .stylesheet = XmlSheet("", row.body), .source = source, .stackLimit = 100000};
    EXPECT_TRUE(run.Result() == source) << row.name;
  }
}

}  // namespace
}  // namespace kelmora
