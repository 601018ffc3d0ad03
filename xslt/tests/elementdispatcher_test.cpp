// What the checks of a stylesheet refuse, and where they say it is.
#include <gtest/gtest.h>

#include "stylesheetrun.h"

namespace kelmora {
namespace {

struct Row {
  const char* body;  // of xsl:stylesheet
  const char* expected;
};

TEST(ElementDispatcherTest, TopLevel) {
  const Row rows[] = {
      {"stray", "code 33 at xsl:stylesheet/text()"},
      {"<plain/>", "code 33 at xsl:stylesheet/plain"},
      {"<x:y xmlns:x='u'><xsl:if/></x:y>", "code 19 at nowhere"},
      {"<x:y xmlns:x='u'><z/></x:y><!-- c --><?p i?>", ""},
      {"<xsl:unknown/>", "code 33 at xsl:stylesheet/xsl:unknown"},
      {"<xsl:if test='1'/>", "code 33 at xsl:stylesheet/xsl:if"},
      {"<xsl:stylesheet version='1.0'/>", "code 33 at xsl:stylesheet/xsl:stylesheet"},
      {"<xsl:attribute-set/>", "code 21 at nowhere"},
      {"<xsl:attribute-set name='a b'/>", "code 40 at xsl:stylesheet/xsl:attribute-set/@name"},
      {"<xsl:attribute-set name='a'>t</xsl:attribute-set>",
       "code 33 at xsl:stylesheet/xsl:attribute-set/text()"},
      {"<xsl:include/>", "code 23 at xsl:stylesheet/xsl:include"},
      {"<xsl:strip-space/>", "code 24 at xsl:stylesheet/xsl:strip-space"},
      {"<xsl:preserve-space elements='*'/>", ""},
      {"<xsl:key match='a' use='b'/>", "code 21 at xsl:stylesheet/xsl:key"},
      {"<xsl:key name='1' match='a' use='b'/>", "code 40 at xsl:stylesheet/xsl:key/@name"},
      {"<xsl:key name='k' use='b'/>", "code 16 at xsl:stylesheet/xsl:key"},
      {"<xsl:key name='k' match='a'/>", "code 17 at xsl:stylesheet/xsl:key"},
      {"<xsl:namespace-alias result-prefix='a'/>", "code 25 at xsl:stylesheet/xsl:namespace-alias"},
      {"<xsl:namespace-alias stylesheet-prefix='a'/>", "code 26 at nowhere"},
      {"<xsl:namespace-alias stylesheet-prefix='a' result-prefix=''/>",
       "code 31 at xsl:stylesheet/xsl:namespace-alias/@result-prefix"},
      {"<xsl:decimal-format name='p:x'/>", "code 10 at xsl:stylesheet/xsl:decimal-format/@name"},
      {"<xsl:decimal-format digit='##' name='1'/>",
       "code 40 at xsl:stylesheet/xsl:decimal-format/@name"},
      {"<xsl:decimal-format NaN='' digit='##'/>",
       "code 31 at xsl:stylesheet/xsl:decimal-format/@digit"},
      {"<xsl:decimal-format infinity=''/>",
       "code 31 at xsl:stylesheet/xsl:decimal-format/@infinity"},
      {"<xsl:output method='XML'/>", "code 31 at xsl:stylesheet/xsl:output/@method"},
      {"<xsl:output method='x:y' media-type=''/>", ""},
      {"<xsl:output encoding='' indent='maybe'/>",
       "code 31 at xsl:stylesheet/xsl:output/@encoding"},
      {"<xsl:output doctype-public='' indent='maybe'/>",
       "code 31 at xsl:stylesheet/xsl:output/@indent"},
      {"<xsl:output cdata-section-elements='a b:c'/>",
       "code 10 at xsl:stylesheet/xsl:output/@cdata-section-elements"},
      {"<xsl:output cdata-section-elements='a 1 b:c'/>",
       "code 40 at xsl:stylesheet/xsl:output/@cdata-section-elements"},
      {"<xsl:param select='1'/>", "code 21 at xsl:stylesheet/xsl:param"},
      {"<xsl:variable name='v' select='1'>x</xsl:variable>",
       "code 15 at xsl:stylesheet/xsl:variable"},
      {"<xsl:variable name='v' select='1'><!-- c --></xsl:variable>", ""},
      {"<xsl:variable name='v' select=''/>", "code 5 at xsl:stylesheet/xsl:variable/@select"},
  };
  for (const Row& row : rows) {
    const std::string expected = row.expected;
    EXPECT_EQ(StylesheetRun{Sheet(row.body)}.Result(), expected) << row.body;
  }
}

TEST(ElementDispatcherTest, Instructions) {
  const std::string in = "xsl:stylesheet/xsl:template/";
  const Row rows[] = {
      {"<xsl:apply-imports select='1'/>", "code 32 at #xsl:apply-imports/@select"},
      {"<xsl:apply-templates>t</xsl:apply-templates>", "code 33 at #xsl:apply-templates/text()"},
      {"<xsl:apply-templates><xsl:param name='p'/></xsl:apply-templates>",
       "code 33 at #xsl:apply-templates/xsl:param"},
      {"<xsl:attribute/>", "code 21 at #xsl:attribute"},
      {"<xsl:call-template/>", "code 21 at #xsl:call-template"},
      {"<xsl:call-template name=' a'/>", "code 40 at #xsl:call-template/@name"},
      {"<xsl:choose>t</xsl:choose>", "code 33 at #xsl:choose/text()"},
      {"<xsl:copy-of/>", "code 18 at #xsl:copy-of"},
      {"<xsl:copy-of select='1'>t</xsl:copy-of>", "code 33 at #xsl:copy-of/text()"},
      {"<xsl:element/>", "code 21 at #xsl:element"},
      {"<xsl:for-each/>", "code 18 at #xsl:for-each"},
      {"<xsl:if/>", "code 19 at nowhere"},
      {"<xsl:if test=''/>", "code 5 at #xsl:if/@test"},
      {"<xsl:if test='1' foo=''/>", "code 32 at #xsl:if/@foo"},
      {"<xsl:if test='1' x:foo='' xmlns:x='u'/>", ""},
      {"<xsl:if test='1' xsl:foo=''/>", ""},
      {"<xsl:choose><xsl:when/></xsl:choose>", "code 19 at #xsl:choose/xsl:when"},
      {"<xsl:choose><xsl:when test=''/></xsl:choose>", "code 5 at #xsl:choose/xsl:when/@test"},
      {"<xsl:when test='1'/>", "code 33 at #xsl:when"},
      {"<xsl:sort/>", "code 33 at #xsl:sort"},
      {"<xsl:template match='a'/>", "code 33 at #xsl:template"},
      {"<xsl:output/>", "code 33 at #xsl:output"},
      {"<xsl:key name='k' match='a' use='b'/>", "code 33 at #xsl:key"},
      {"<e><xsl:with-param name='a'/></e>", "code 33 at #e/xsl:with-param"},
      {"<xsl:stylesheet/>", "code 20 at #xsl:stylesheet"},
      {"<xsl:transform version='1.0'/>", "code 38 at nowhere"},
      {"<xsl:message terminate='1'/>", "code 31 at #xsl:message/@terminate"},
      {"<xsl:number level='all'/>", "code 31 at #xsl:number/@level"},
      {"<xsl:processing-instruction/>", "code 21 at #xsl:processing-instruction"},
      {"<xsl:text disable-output-escaping='true'/>",
       "code 31 at #xsl:text/@disable-output-escaping"},
      {"<xsl:text><b/></xsl:text>", "code 33 at #xsl:text/b"},
      {"<xsl:text><x:b xmlns:x='u'/></xsl:text>", "code 33 at #xsl:text/x:b"},
      {"<xsl:text disable-output-escaping='yes'>a<!-- c --><![CDATA[ ]]>b</xsl:text>", "a b"},
      {"<xsl:value-of disable-output-escaping='true'/>",
       "code 31 at #xsl:value-of/@disable-output-escaping"},
      {"<xsl:value-of/>", "code 18 at #xsl:value-of"},
      {"<xsl:param name='a'/><!-- c --><xsl:param name='b'/>", ""},
      {"<xsl:variable name='a'/><xsl:param name='b'/>", "code 34 at #xsl:param"},
      {"t<xsl:param name='b'/>", "code 34 at #xsl:param"},
      {"<e><xsl:param name='b'/></e>", "code 34 at #e/xsl:param"},
      {"<xsl:call-template name='t'><xsl:with-param name='p' select=''/></xsl:call-template>",
       "code 5 at #xsl:call-template/xsl:with-param/@select"},
      {"<e xsl:exclude-result-prefixes='xsl y'/>", "code 10 at #e/@xsl:exclude-result-prefixes"},
      {"<e xsl:extension-element-prefixes='#default'/>",
       "code 10 at #e/@xsl:extension-element-prefixes"},
      {"<e exclude-result-prefixes='nobody' bogus='{'/><xsl:if xsl:test='1' test='0'/>",
       "code 47 at #e/@bogus [bogus e xsl:template xsl:stylesheet]"},
  };
  for (const Row& row : rows) {
    std::string expected = row.expected;
    if (const std::size_t at = expected.find('#'); at != std::string::npos) {
      expected.replace(at, 1, in);
    }
    EXPECT_EQ(StylesheetRun{RootTemplate(row.body)}.Result(), expected) << row.body;
  }
}

TEST(ElementDispatcherTest, StylesheetElement) {
  const std::string xsl = " xmlns:xsl='http://www.w3.org/1999/XSL/Transform'";
  EXPECT_EQ(StylesheetRun{"<xsl:stylesheet" + xsl + "/>"}.Result(), "code 20 at xsl:stylesheet");
  EXPECT_EQ(StylesheetRun{"<xsl:stylesheet version='1.0' xsl:version='1.0'" + xsl + "/>"}.Result(),
            "code 2 at xsl:stylesheet/@xsl:version");
  EXPECT_EQ(StylesheetRun{"<xsl:transform version='1.0' x:y='' xmlns:x='u'" + xsl + "/>"}.Result(),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>");
  EXPECT_EQ(StylesheetRun{"<xsl:other" + xsl + "/>"}.Result(), "code 34 at xsl:other [xsl:other]");
}

// An unknown element of XSLT is a fault only where it runs and the version is 1.0.
TEST(ElementDispatcherTest, ForwardCompatible) {
  const std::string body =
      "<xsl:template match='/'><xsl:new a='{'>x<xsl:fallback>f</xsl:fallback></xsl:new>"
      "</xsl:template></xsl:stylesheet>";
  const std::string start =
      "<xsl:stylesheet xmlns:xsl='http://www.w3.org/1999/XSL/Transform' version='";
  const std::string method = "'><xsl:output method='text'/>";
  EXPECT_EQ(StylesheetRun{start + "2.0" + method + body}.Result(), "f");
  EXPECT_EQ(StylesheetRun{start + "1.0" + method + body}.Result(),
            "code 34 at xsl:stylesheet/xsl:template/xsl:new [xsl:new xsl:template xsl:stylesheet]");
}

}  // namespace
}  // namespace kelmora
