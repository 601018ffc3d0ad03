// The functions that only a stylesheet can call, with the elements that feed them.
#include <gtest/gtest.h>

#include "stylesheetrun.h"

namespace kelmora {
namespace {

using Files = std::map<std::string, std::string>;

struct Row {
  std::string body;  // of the template for the root
  const char* expected;
  const char* source = "<r/>";
};

std::string ValueOf(const std::string& expression) {
  return "<xsl:value-of select=\"" + expression + "\"/>";
}

void Check(std::initializer_list<Row> rows, const std::string& top = "", const Files& files = {}) {
  for (const Row& row : rows) {
    StylesheetRun run{Sheet(top + "<xsl:template match='/'>" + row.body + "</xsl:template>")};
    run.source = row.source;
    run.files = files;
    EXPECT_EQ(run.Result(), row.expected) << row.body;
  }
}

TEST(XsltFunctions, Documents) {
  const Files files = {{"d.xml", "<d>\n  <x>1</x>\n <y> </y>\n</d>"},
                       {"f.xml", "<f>top</f>"},
                       {"sub/e.xml", "<e><n>f.xml</n></e>"},
                       {"sub/f.xml", "<f>sub</f>"}};
  const std::string in =
      " at xsl:stylesheet/xsl:template/xsl:value-of [xsl:value-of xsl:template "
      "xsl:stylesheet]";
  const std::string noNodeSet = "code 1 (4, document)" + in;
  const std::string missing = "code 1 (16, document)" + in;
  Check(
      {
          {ValueOf("count(document('d.xml')//text())"), "1"},
          {ValueOf("count(document('d.xml') | document('d.xml'))"), "1"},
          {ValueOf("name((document('d.xml') | /)/*)"), "r"},
          {ValueOf("count(document(//u))"), "2",
           "<r><u>f.xml</u><u>sub/f.xml</u><u/><u>f.xml</u></r>"},
          // A name is resolved where it stands: in the stylesheet, in a node, or in the base.
          {ValueOf("document('f.xml')"), "top"},
          {ValueOf("document(document('sub/e.xml')//n)"), "sub"},
          {ValueOf("document(string(document('sub/e.xml')//n))"), "top"},
          {ValueOf("document(document('sub/e.xml')//n, /)"), "top"},
          {ValueOf("document('f.xml', document('sub/e.xml'))"), "sub"},
          // What is missing is a fault by name, and silence by node.
          {ValueOf("document('none.xml')"), missing.c_str()},
          {ValueOf("count(document(//u))"), "0", "<r><u>none.xml</u></r>"},
          {ValueOf("document('f.xml', //none)"), noNodeSet.c_str()},
          {ValueOf("document('f.xml', 'x')"), noNodeSet.c_str()},
          {ValueOf("count(document(//none))"), "0"},
          {ValueOf("name(document('')/*)"), "xsl:stylesheet"},
          {ValueOf("name(document('', //none)/*)"), noNodeSet.c_str()},
          {"<xsl:for-each select=\"document('d.xml')//x\">" + ValueOf("name(/*)") +
               ValueOf("name(current()/..)") + "</xsl:for-each>",
           "dd"},
      },
      "", files);
}

// document('') is the module that the expression stands in; what was included stands in the
// including one.
TEST(XsltFunctions, OwnModule) {
  const std::string mark = "<z:m xmlns:z='z'>";
  const std::string show = ValueOf("document('')/*/*[local-name() = 'm']") + ";";
  const Files files = {
      {"m/import.xsl", Sheet(mark + "import</z:m><xsl:template name='i'>" + show +
                             ValueOf("document('d.xml')") + "</xsl:template>")},
      {"m/include.xsl", Sheet(mark + "include</z:m><xsl:template name='c'>" + show +
                              ValueOf("document('d.xml')") + "</xsl:template>")},
      {"m/d.xml", "<d>beside</d>"}};
  const StylesheetRun run{
      .stylesheet = Sheet("<xsl:import href='m/import.xsl'/><xsl:include href='m/include.xsl'/>" +
                          mark + "main</z:m><xsl:template match='/'>" + show +
                          "<xsl:call-template name='i'/>,<xsl:call-template name='c'/>"
                          "</xsl:template>"),
      .files = files};
  EXPECT_EQ(run.Result(), "include;import;beside,include;beside");
}

TEST(XsltFunctions, Keys) {
  const char* source = "<r><a k='1'>A</a><a k='2'>B</a><a k='1'>C</a><b>1</b><b>2</b><b>9</b></r>";
  const std::string top =
      "<xsl:key name='k' match='a' use='@k'/><xsl:key name='p:k' match='a' use='.' xmlns:p='u'/>"
      "<xsl:key name='place' match='a' use='position()'/><xsl:key name='size' match='a' "
      "use='last()'/><xsl:key name='self' match='a|b' use='name(current())'/>"
      "<xsl:key name='many' match='r' use='*'/><xsl:key name='at' match='@k' use='name(..)'/>"
      "<xsl:key name='true' match='a' use='@k = 1'/>";
  Check(
      {
          {ValueOf("concat(count(key('k', 1)), count(key('k', '3')), key('k', 2))"), "20B", source},
          {ValueOf("count(key('k', //b))"), "3", source},
          {ValueOf("count(key('k', //b | //@k))"), "3", source},
          {ValueOf("key('k', 1)[2]"), "C", source},
          {ValueOf("key('k', //b[. = 9])"), "", source},
          {"<xsl:for-each select='//b' xmlns:q='u'>" + ValueOf("key('q:k', 'B')/@k") +
               "</xsl:for-each>",
           "222", source},
          {ValueOf("concat(key('place', 2), count(key('size', 3)))"), "B3", source},
          {ValueOf("concat(count(key('self', 'a')), count(key('self', 'b')))"), "33", source},
          {ValueOf("concat(name(key('many', 'C')), count(key('many', //a)))"), "r1", source},
          {ValueOf("count(key('at', 'a'))"), "3", source},
          {ValueOf("concat(count(key('true', 'true')), count(key('true', false())))"), "21",
           source},
          // The document of the current node is searched, wherever the path has gone.
          {"<xsl:for-each select=\"document('d.xml')\">" + ValueOf("key('k', 1)") +
               "</xsl:for-each>" + ValueOf("key('k', 2)") +
               ValueOf("count(document('d.xml')//a[key('k', 2)])"),
           "DB1", source},
          {ValueOf("key('x:k', 1)"),
           "code 1 (7, key) at xsl:stylesheet/xsl:template/xsl:value-of "
           "[xsl:value-of xsl:template xsl:stylesheet]"},
      },
      top, {{"d.xml", "<d><a k='1'>D</a></d>"}});
}

TEST(XsltFunctions, DecimalFormats) {
  const std::string top =
      "<xsl:variable name='early' select=\"format-number(0 div 0, '0')\"/>"
      "<xsl:decimal-format NaN='none'/><xsl:decimal-format NaN='none' digit='#'/>"
      "<xsl:decimal-format name='p:eu' decimal-separator=',' grouping-separator='.' "
      "xmlns:p='u'/>";
  const std::string nan = ValueOf("format-number(0 div 0, '0')");
  Check({{nan + ValueOf("$early"), "noneNaN"},
         {ValueOf("format-number(1234.5, '#.##0,00', 'q:eu')").replace(13, 0, " xmlns:q='u'"),
          "1.234,50"},
         {ValueOf("format-number(1, '0', '')"), "1"},
         {ValueOf("format-number(1, '0', 'eu')"),
          "code 1 (13, format-number) at xsl:stylesheet/xsl:template/xsl:value-of "
          "[xsl:value-of xsl:template xsl:stylesheet]"}},
        top);
  const struct {
    const char* formats;
    const char* expected;
  } rows[] = {
      {"<xsl:decimal-format NaN='a'/><xsl:decimal-format NaN='b'/>",
       "code 4 at nowhere [xsl:decimal-format xsl:stylesheet]"},
      {"<xsl:decimal-format name='f'/><xsl:decimal-format name='f' digit='?'/>",
       "code 4 at xsl:stylesheet/xsl:decimal-format/@name [xsl:decimal-format xsl:stylesheet]"},
      {"<xsl:decimal-format/><xsl:decimal-format NaN='NaN' zero-digit='0'/>", "NaN"},
  };
  for (const auto& row : rows) Check({{nan, row.expected}}, row.formats);
  for (const char* attribute : {"decimal-separator", "grouping-separator", "percent", "per-mille",
                                "zero-digit", "digit", "pattern-separator", "minus-sign"}) {
    for (const char* value : {"", "ab"}) {
      const std::string at = std::string("xsl:stylesheet/xsl:decimal-format/@") + attribute;
      Check({{"", ("code 31 at " + at).c_str()}},
            std::string("<xsl:decimal-format name='f' ") + attribute + "='" + value + "'/>");
    }
  }
}

// Of an imported module everything ran before: its formats, keys and variables are there.
TEST(XsltFunctions, AcrossImports) {
  const Files files = {
      {"i.xsl", Sheet("<xsl:decimal-format NaN='low'/><xsl:key name='k' match='a' use='@k'/>"
                      "<xsl:variable name='v' select=\"format-number(0 div 0, '0')\"/>")}};
  Check({{ValueOf("concat($v, format-number(0 div 0, '0'), count(key('k', '1')))"), "lowlow2",
          "<r><a k='1'/><b k='1'/></r>"}},
        "<xsl:import href='i.xsl'/><xsl:key name='k' match='b' use='@k'/>", files);
  Check({{"", "code 4 at nowhere [xsl:decimal-format xsl:stylesheet]"}},
        "<xsl:import href='i.xsl'/><xsl:decimal-format NaN='high'/>", files);
}

}  // namespace
}  // namespace kelmora
