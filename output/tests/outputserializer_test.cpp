#include "output/outputserializer.h"

#include <gtest/gtest.h>

#include <string>

#include "resulttree.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

struct Row {
  const char* name;
  const char* tree;
  const char* settings;
  const char* text;
};

template <std::size_t Count>
void Check(const Row (&rows)[Count]) {
  for (const Row& row : rows) {
    const ResultTree tree = MakeResultTree(row.tree);
    OutputSerializer serializer;
    serializer.SetResultRoot(tree.get());
    EXPECT_EQ(ToNative(serializer.Serialize(MakeSettings(row.settings))), row.text) << row.name;
  }
}

#define DECLARATION R"(<?xml version="1.0" encoding="UTF-8"?>)"
#define META R"(<META http-equiv="Content-Type" content="text/html; charset=UTF-8">)"

constexpr Row kMethodRows[] = {
    {"html in any case behind space", "{ \t}<HTML/>", "", " \t<HTML />"},
    {"html behind text", "{x}<html/>", "", DECLARATION "x<html/>"},
    {"html in a namespace", "<html @u/>", "", DECLARATION "<html/>"},
    {"html with a prefix alone", "<x:html/>", "", "<x:html />"},
    {"html behind a section", "[x[<html/>", "", "x<html />"},
    {"other element first", "<a/><html/>", "", DECLARATION "<a/><html/>"},
    {"nothing", "", "indent=yes system=s", DECLARATION},
    {"given, in any case", "<a/>", "method=HTML", "<a></a>"},
    {"given as a name of its own", "<html/>", "method=p:q", "<html />"},
};
TEST(OutputSerializer, ChoosesTheMethod) {
  Check(kMethodRows);
}

constexpr Row kXmlRows[] = {
    {"declaration", "<a/>", "encoding=x standalone=yes",
     R"(<?xml version="1.0" encoding="x" standalone="yes"?><a/>)"},
    {"break behind the declaration", "<a><b/></a>", "indent=yes",
     DECLARATION "\n<a>\n\t<b/>\n</a>"},
    {"no break at the start", "<a><b/></a>", "omit=yes indent=yes", "<a>\n\t<b/>\n</a>"},
    {"text stops breaks", "<a>{x}<b/></a>", "omit=yes indent=yes", "<a>x<b/></a>"},
    {"text stops them for one level", "<a>{}<b><c/></b></a>", "omit=yes indent=yes",
     "<a><b>\n\t\t<c/>\n\t</b></a>"},
    {"a section does not", "<a>[x[<b/></a>", "omit=yes indent=yes", "<a>x\n\t<b/>\n</a>"},
    {"text at the top", "{x}<a><b/></a><!--c-->", "omit=yes indent=yes",
     "x<a>\t<b/>\n</a><!--c-->"},
    {"breaks of comments", "<a><!--c--><b/><?p v?></a>", "omit=yes indent=yes",
     "<a>\t<!--c-->\n\n\t<b/>\t<?p v?>\n\n</a>"},
    {"empty elements", "<a><b x='1'/><c>{}</c><d/></a>", "omit=yes",
     "<a><b x=\"1\"/><c></c><d/></a>"},
    {"attribute value", "<a x='<&\"\n\r\nz\r'/>", "omit=yes",
     "<a x=\"&lt;&amp;&quot;&#xA;&#xA;z&#xA;\"/>"},
    {"declaration value", "<a xmlns:p='u v&\xC3\xA9'/>", "omit=yes",
     "<a xmlns:p=\"u%20v&%C3%A9\"/>"},
    {"text", "<a>{<>&\"'\xC3\xA9\n}{!<&>}</a>", "omit=yes", "<a>&lt;&gt;&amp;\"'\xC3\xA9\n<&></a>"},
    {"comment and instruction", "<!--a<b&--><?p x<y?><?e ?>", "omit=yes",
     "<!--a&lt;b&amp;--><?p x<y?><?e ?>"},
    {"doctype", "<!--c--><p:a/>", "omit=yes public=P system=s&",
     "<!DOCTYPE p:a PUBLIC \"P\" \"s&\"><!--c--><p:a/>"},
    {"doctype without public id", "<a/>", "omit=yes system=s", "<!DOCTYPE a SYSTEM \"s\"><a/>"},
    {"doctype without system id", "<a/>", "omit=yes public=P", "<a/>"},
    {"sections", "<a>{x<]]>y]]>}{}<c>{<}</c>[z[</a>", "omit=yes cdata=b cdata=a",
     "<a><![CDATA[x<]]]]><![CDATA[>y]]]]><![CDATA[>]]><![CDATA[]]><c>&lt;</c><![CDATA[z]]></a>"},
    {"sections by namespace", "<r><p:b @u>{!<}</p:b><b>{<}</b><b @v>{<}</b><p:c>{<}</p:c></r>",
     "omit=yes cdata=u:b cdata=c",
     "<r><p:b><![CDATA[<]]></p:b><b>&lt;</b><b>&lt;</b>"
     "<p:c>&lt;</p:c></r>"},
};
TEST(OutputSerializer, WritesXml) {
  Check(kXmlRows);
}

constexpr Row kHtmlRows[] = {
    {"page", "<html><head><title>{t}</title></head><body><p>{x}</p></body></html>", "",
     "<html><head>\t\t" META "<title>t</title></head><body><p>x</p>\n\t</body></html>"},
    {"head without content", "<html><head/><body>{x}</body></html>", "",
     "<html><head /><body>\t\t" META "x</body></html>"},
    {"meta shows the encoding", "<HEAD>{x}</HEAD>", "method=html indent=no encoding=l1",
     R"(<HEAD><META http-equiv="Content-Type" content="text/html; charset=l1">x</HEAD>)"},
    {"empty element with content", "<p><br>{x}</br></p>", "method=html", "<p><br>x</p>"},
    {"no content", "<b><Img src='x'/><p/><td/><span/><brx/><blockquotes/></b>", "method=html",
     "<b><Img src=\"x\"><p />\t<td /><span></span><brx /><blockquotes /></b>"},
    {"blocks", "<div><div/></div>", "method=html", "<div>\n\t<div>\n\t</div>\n</div>"},
    {"blocks without indent", "<div><div/></div>", "method=html indent=no",
     "<div><div></div></div>"},
    {"text last", "<div><p/>{x}</div>", "method=html", "<div>\t<p />x</div>"},
    {"section last", "<p/><div>[x[</div>", "method=html", "<p />\n<div>x\n</div>"},
    {"comments go by the last element", "<div><!--c<--><b>{x}</b><!--d--><?p v?></div>",
     "method=html", "<div>\t<!--c&lt;-->\n<b>x</b><!--d--><?p v></div>"},
    {"uri", "<a href='x y\"%{|}^`~\\' cite='\xC3\xA9 y' src='a&b' data=''/>", "method=html",
     "<a href=\"x%20y%22%25%7B%7C%7D%5E%60~\\\" cite=\"\xC3\xA9 y\" src=\"a&b\" data=\"\"></a>"},
    {"attribute value", "<a title='a<b&\"\xC3\xA9\n %'/>", "method=html",
     "<a title=\"a&lt;b&&quot;\xC3\xA9\n %\"></a>"},
    {"attribute without value", "<INPUT CHECKED='no' checke='x'/>", "method=html",
     "<INPUT CHECKED checke=\"x\">"},
    {"raw text", "<Script>{<&}<b>{<}</b><!--<-->[&[</Script>", "method=html indent=no",
     "<Script><&<b>&lt;</b><!--&lt;-->&</Script>"},
    {"doctype", "<x/>", "method=html public=P", "<!DOCTYPE HTML PUBLIC \"P\"><x />"},
};
TEST(OutputSerializer, WritesHtml) {
  Check(kHtmlRows);
}

constexpr Row kTextRows[] = {
    {"text alone", "<a x='1'>{a<}{!&}[no[<b>{c}</b><!--n--><?p n?></a>{d}",
     "method=text system=s indent=yes", "a<&cd"},
    {"elements alone", "<a><b/></a>", "method=text", ""},
};
TEST(OutputSerializer, WritesText) {
  Check(kTextRows);
}

TEST(OutputSerializer, KeepsTheTextWithoutARoot) {
  const ResultTree tree = MakeResultTree("<html><p/><p/></html>");
  OutputSerializer serializer;
  serializer.SetLineEnd(u"\r\n");
  serializer.SetEncoding(u"x");
  serializer.SetResultRoot(tree.get());
  EXPECT_EQ(serializer.Serialize(MakeSettings("method=xml indent=yes")),
            u"<?xml version=\"1.0\" encoding=\"x\"?>\r\n<html>\r\n\t<p/>\r\n\t<p/>\r\n</html>");
  serializer.Serialize(MakeSettings("encoding=y"));
  EXPECT_EQ(serializer.OutputSettings().Method, u"html");
  serializer.SetResultRoot(nullptr);
  EXPECT_EQ(serializer.Serialize(MakeSettings("method=text")), u"<html><p />\t<p />\r\n</html>");
  EXPECT_EQ(serializer.OutputSettings().Encoding, u"y");
  serializer.ClearText();
  EXPECT_EQ(serializer.Serialize({}), u"");
}

TEST(OutputSerializer, WritesDeepTrees) {
  constexpr int kLevels = 100000;
  std::string tree;
  for (int i = 0; i < kLevels; ++i) tree += "<b>";
  const ResultTree root = MakeResultTree(tree + "{x}");
  OutputSerializer serializer;
  serializer.SetResultRoot(root.get());
  EXPECT_EQ(serializer.Serialize(MakeSettings("method=text")), u"x");
  for (const char* settings : {"method=html", "method=xml omit=yes"}) {
    const TQString& text = serializer.Serialize(MakeSettings(settings));
    EXPECT_EQ(text.Length(), kLevels * 7 + 1);
    EXPECT_EQ(text.Mid(kLevels * 3 - 3, 8), u"<b>x</b>");
  }
}

TEST(OutputSettings, ForgetAtReset) {
  OutputSettings settings = MakeSettings("cdata=a method=text indent=yes");
  settings.Reset();
  EXPECT_FALSE(settings.MethodGiven || settings.IndentGiven || settings.CdataElementsGiven);
  settings.AddCdataElements(u" b");
  EXPECT_EQ(settings.CdataElements, u" b");
}

}  // namespace
}  // namespace kelmora
