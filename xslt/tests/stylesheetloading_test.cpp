// xsl:import and xsl:include over several files.
#include <gtest/gtest.h>

#include "stylesheetrun.h"

namespace kelmora {
namespace {

using Files = std::map<std::string, std::string>;

struct Row {
  const char* body;  // of the main stylesheet
  Files files;       // bodies too
  const char* expected;
};

std::string ResultOf(const Row& row) {
  StylesheetRun run{Sheet(row.body), "<r><a/></r>"};
  for (const auto& [name, body] : row.files) run.files[name] = Sheet(body);
  return run.Result();
}

TEST(StylesheetLoadingTest, Results) {
  const Row rows[] = {
      {"<xsl:include href='d/i.xsl'/>",
       {{"d/i.xsl", "<xsl:include href='j.xsl'/>"},
        {"d/j.xsl", "<xsl:template match='a'>j</xsl:template>"}},
       "j"},
      // What came in by an include stands where the include stood.
      {"<xsl:template match='a'>1</xsl:template><xsl:include href='i.xsl'/>",
       {{"i.xsl", "<xsl:template match='a'>i</xsl:template>"}},
       "i"},
      {"<xsl:include href='i.xsl'/><xsl:template match='a'>1</xsl:template>",
       {{"i.xsl", "<xsl:template match='a'>i</xsl:template>"}},
       "1"},
      // An import that came in by an include goes behind the imports of the including stylesheet.
      {"<xsl:import href='x.xsl'/><xsl:template match='r' priority='2'><xsl:apply-templates/>"
       "</xsl:template><xsl:include href='i.xsl'/>",
       {{"x.xsl", "<xsl:template match='a'>x</xsl:template>"},
        {"y.xsl", "<xsl:template match='a'>y</xsl:template>"},
        {"i.xsl", "<xsl:import href='y.xsl'/>"}},
       "y"},
      {"<xsl:include href='e.xsl'/><xsl:import href='x.xsl'/>",
       {{"e.xsl", ""}, {"x.xsl", "<xsl:template match='a'>x</xsl:template>"}},
       "code 49 at xsl:stylesheet/xsl:import [xsl:stylesheet]"},
      {"<xsl:import href='x.xsl'/><xsl:import href='x.xsl'/>",
       {{"x.xsl",
         "<xsl:variable name='v' select='1'/><xsl:key name='k' match='a' "
         "use='local-name()'/><xsl:template match='a'><xsl:value-of "
         "select=\"$v + count(key('k', 'a'))\"/></xsl:template>"}},
       "2"},
      {"<xsl:import href='x.xsl'/><xsl:variable name='v' select='2'/>"
       "<xsl:template match='a'><xsl:value-of select='concat($v, $w)'/></xsl:template>",
       {{"x.xsl", "<xsl:variable name='v' select='1'/><xsl:param name='w' select='$v'/>"}},
       "21"},
      // Each import of a module registers its rules again, above what came between.
      {"<xsl:import href='x.xsl'/><xsl:import href='y.xsl'/><xsl:import href='x.xsl'/>",
       {{"x.xsl", "<xsl:template match='a'>x</xsl:template>"},
        {"y.xsl", "<xsl:template match='a'>y</xsl:template>"}},
       "x"},
      {"<xsl:import href='x.xsl'/><xsl:include href='x.xsl'/><xsl:template match='r'>"
       "<xsl:apply-templates/></xsl:template>",
       {{"x.xsl", "<xsl:template match='a'>(<xsl:apply-imports/>)</xsl:template>"}},
       "(())"},
      {"<!--c--><?p q?><xsl:import href='x.xsl'/><z:z xmlns:z='z'/>",
       {{"x.xsl", "<xsl:template match='a'>x</xsl:template>"}},
       "x"},
      {"<xsl:variable name='v' select='$w + 1'/><xsl:include href='i.xsl'/>"
       "<xsl:template match='a'><xsl:value-of select='$v'/></xsl:template>",
       {{"i.xsl", "<xsl:variable name='w' select='5'/>"}},
       "6"},
      // A key may use a variable that doesn't exist yet while an import is being loaded.
      {"<xsl:import href='x.xsl'/><xsl:key name='k' match='*' use='$v'/>"
       "<xsl:variable name='v' select='1'/><xsl:template match='a'>"
       "<xsl:value-of select=\"count(key('k', 1))\"/></xsl:template>",
       {{"x.xsl", "<xsl:template name='n'/>"}},
       "2"},
      // document('') has what came in by an include in its place, in document order too.
      {"<xsl:template name='m'/><xsl:include href='i.xsl'/><xsl:template name='n'/>"
       "<xsl:template match='a'><xsl:for-each select=\"document('')/*/*/@name\">"
       "<xsl:value-of select='.'/></xsl:for-each>,<xsl:for-each select=\"document('')\">"
       "<xsl:value-of select='concat(//@name, (//@name[true()])[2])'/></xsl:for-each>"
       "</xsl:template>",
       {{"i.xsl", "<xsl:template name='i'/><xsl:template name='j'/>"}},
       "mijn,mi"},
      // A module is indexed when it is loaded, before its includes are replaced.
      {"<xsl:import href='x.xsl'/><xsl:import href='y.xsl'/>",
       {{"x.xsl",
         "<xsl:key name='k' match='*[true()]' use='local-name()'/>"
         "<xsl:variable name='v' select=\"count(key('k', 'a'))\"/>"},
        {"y.xsl",
         "<xsl:include href='z.xsl'/><xsl:template match='a'><xsl:for-each "
         "select=\"document('')\"><xsl:value-of select=\"count(key('k', 'include'))\"/>"
         "<xsl:for-each select=\"key('k', 'template')\"><xsl:value-of select='@name'/>,"
         "</xsl:for-each></xsl:for-each></xsl:template>"},
        {"z.xsl", "<xsl:template name='z'/><xsl:template name='zz'/>"}},
       "0z,zz,,"},
      // A module included twice over enters its keys once.
      {"<xsl:include href='i.xsl'/><xsl:template match='a'>"
       "<xsl:value-of select=\"count(key('k', 'a'))\"/></xsl:template>",
       {{"i.xsl", "<xsl:include href='j.xsl'/>"},
        {"j.xsl", "<xsl:key name='k' match='a' use='concat(name(), @x)'/>"}},
       "1"},
  };
  for (const Row& row : rows) EXPECT_EQ(ResultOf(row), row.expected) << row.body;
}

TEST(StylesheetLoadingTest, Failures) {
  const Row rows[] = {
      {"<xsl:template match='a'/><xsl:import href='x.xsl'/>",
       {{"x.xsl", ""}},
       "code 49 at xsl:stylesheet/xsl:import [xsl:stylesheet]"},
      {"<xsl:import href='none.xsl'/>",
       {},
       "code 43 at xsl:stylesheet/xsl:import/@href [xsl:import xsl:stylesheet]"},
      {"<xsl:include href='none.xsl'/>",
       {},
       "code 44 at xsl:stylesheet/xsl:include/@href [xsl:stylesheet]"},
      {"<xsl:import href='b.xsl'/>",
       {{"b.xsl", "<xsl:import href='main.xsl'/>"}},
       "code 45 at xsl:stylesheet/xsl:import [xsl:import xsl:stylesheet xsl:import "
       "xsl:stylesheet]"},
      {"<xsl:include href='b.xsl'/>",
       {{"b.xsl", "<xsl:include href='d/../main.xsl'/>"}, {"d/x.xsl", ""}},
       "code 45 at xsl:stylesheet/xsl:include [xsl:stylesheet]"},
      {"<xsl:import href='b.xsl'/>",
       {{"b.xsl", "<xsl:include href='b.xsl'/>"}},
       "code 45 at xsl:stylesheet/xsl:include [xsl:stylesheet xsl:import xsl:stylesheet]"},
      {"<xsl:include href='i.xsl'/>",
       {{"i.xsl", "<xsl:if test='1'/>"}},
       "code 33 at xsl:stylesheet/xsl:if [xsl:stylesheet]"},
      {"<xsl:include href='i.xsl'/><xsl:template name='n'/>",
       {{"i.xsl", "<xsl:template name='n'/>"}},
       "code 11 at nowhere [xsl:stylesheet]"},
      {"<z:z xmlns:z='z'/><xsl:import href='x.xsl'/>",
       {{"x.xsl", ""}},
       "code 49 at xsl:stylesheet/xsl:import [xsl:stylesheet]"},
      {"<xsl:import href='x.xsl'/>",
       {{"x.xsl", "stray"}},
       "code 33 at xsl:stylesheet/text() [xsl:import xsl:stylesheet]"},
      {"<xsl:import href='x.xsl'/><xsl:variable name='v' select='1'/>",
       {{"x.xsl", "<xsl:variable name='w' select='$v'/>"}},
       "code 1 (6) at xsl:stylesheet/xsl:variable "
       "[xsl:variable xsl:stylesheet xsl:import xsl:stylesheet]"},
      {"<xsl:import href='x.xsl'/><xsl:import href='x.xsl'/>",
       {{"x.xsl", "<xsl:template name='n'/>"}},
       "code 11 at nowhere [xsl:stylesheet xsl:import xsl:stylesheet]"},
  };
  for (const Row& row : rows) EXPECT_EQ(ResultOf(row), row.expected) << row.body;
}

// Only what an include brings in is checked, so its root may be anything; an import is checked
// whole and its root runs.
TEST(StylesheetLoadingTest, OddModules) {
  const std::string xslt = " xmlns:xsl='http://www.w3.org/1999/XSL/Transform'";
  const std::string rule = "<xsl:template match='a'>x</xsl:template>";
  const struct {
    std::string module;
    const char* included;
    const char* imported;
  } rows[] = {
      {"", "", ""},
      {"<none/>", "", ""},
      {"<none" + xslt + ">1<xsl:value-of select='1 + 1'/></none>",
       "code 33 at xsl:stylesheet/xsl:value-of [xsl:stylesheet]", "12"},
      {"<xsl:stylesheet odd='1'" + xslt + ">stray<plain/>" + rule + "</xsl:stylesheet>", "x",
       "code 32 at xsl:stylesheet/@odd [xsl:import xsl:stylesheet]"},
      {"<xsl:stylesheet" + xslt + ">" + rule + "</xsl:stylesheet>", "x",
       "code 20 at xsl:stylesheet [xsl:import xsl:stylesheet]"},
      {"<!--c--><?p q?><xsl:transform version='1.0'" + xslt + ">" + rule + "</xsl:transform>", "x",
       "x"},
  };
  for (const auto& row : rows) {
    const Files files = {{"m.xsl", row.module}};
    EXPECT_EQ((StylesheetRun{Sheet("<xsl:include href='m.xsl'/>"), "<r><a/></r>", files}.Result()),
              row.included)
        << row.module;
    EXPECT_EQ((StylesheetRun{Sheet("<xsl:import href='m.xsl'/>"), "<r><a/></r>", files}.Result()),
              row.imported)
        << row.module;
  }
}

TEST(StylesheetLoadingTest, Documents) {
  const StylesheetRun run{
      Sheet("<xsl:include href='d/i.xsl'/><xsl:template match='/'>"
            "<xsl:value-of select=\"count(document('d/x.xml')//text())\"/>"
            "<xsl:value-of select=\"count(document('d/x.xml') | document('d/x.xml'))\"/>"
            "<xsl:value-of select=\"count(document('')//*[local-name() = 'mark'])\"/>"
            "<xsl:value-of select=\"generate-id(document('')/*/*[1]) = "
            "generate-id(document('')/*/*[2])\"/>"
            "<xsl:apply-templates/></xsl:template>"),
      "<r><a/></r>",
      {{"d/x.xml", "<x>\n <y> </y> z</x>"},
       {"d/i.xsl", Sheet("<u:mark xmlns:u='u'/><xsl:template match='a'>"
                         "<xsl:value-of select=\"document('x.xml')/x\"/></xsl:template>")}}};
  EXPECT_EQ(run.Result(), "111false z");
}

// A literal result element as the whole stylesheet runs with the source root as its context.
TEST(StylesheetLoadingTest, SimplifiedStylesheet) {
  const StylesheetRun run{
      "<out xsl:version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>"
      "<xsl:value-of select='count(r/a)'/></out>",
      "<r><a/></r>"};
  const std::string result = run.Result();
  EXPECT_EQ(result.substr(result.find("<out")), "<out>1</out>");
  const StylesheetRun unversioned{
      "<out xmlns:xsl='http://www.w3.org/1999/XSL/Transform' n='{count(//a)}'>"
      "<xsl:apply-templates/></out>",
      "<r>t<a/></r>"};
  EXPECT_EQ(unversioned.Result().substr(result.find("<out")), "<out n=\"1\">t</out>");
}

// So do some instructions. There is no frame around theirs.
TEST(StylesheetLoadingTest, InstructionAsDocumentElement) {
  const struct {
    std::string start;
    const char* expected;
  } rows[] = {
      {"<xsl:for-each select='//a'>t", "tt"},
      {"<xsl:for-each select='//a'><xsl:variable name='v' select='.'/><xsl:value-of select='$v'/>",
       "12"},
      {"<xsl:variable name='v' select='1'>", ""},
      {"<xsl:variable name='v'>text", ""},
      {"<xsl:variable name='v' select='none()'>", "code 1 (9) at xsl:variable [xsl:variable]"},
  };
  for (const auto& row : rows) {
    const std::size_t end = row.start.find_first_of(" ");
    const std::string declared = row.start.substr(0, end) +
                                 " xmlns:xsl='http://www.w3.org/1999/XSL/Transform'" +
                                 row.start.substr(end) + "</" + row.start.substr(1, end - 1) + ">";
    std::string result = StylesheetRun{declared, "<r><a>1</a><a>2</a></r>"}.Result();
    const std::size_t declaration = result.find("?>");
    if (declaration != std::string::npos) result = result.substr(declaration + 2);
    EXPECT_EQ(result, row.expected) << row.start;
  }
}

// Neither the prefix xsl nor any other has to be used.
TEST(StylesheetLoadingTest, DefaultNamespace) {
  const StylesheetRun run{
      "<transform version='1.0' xmlns='http://www.w3.org/1999/XSL/Transform'>"
      "<output method='text'/><template match='/'><value-of select='r/a'/><unknown/></template>"
      "</transform>",
      "<r><a>1</a></r>"};
  EXPECT_EQ(run.Result(), "code 34 at transform/template/unknown [unknown template transform]");
}

}  // namespace
}  // namespace kelmora
