#include "xmltree/sourcewriter.h"

#include <gtest/gtest.h>

#include "tqcore/tqtext.h"
#include "treedump.h"

namespace kelmora {
namespace {

std::string Written(std::u16string_view text, const SourceWriteOptions& options,
                    GrammarKind kind = GrammarKind::XML) {
  const auto parsed = ParseText(text, kind);
  if (parsed->tree == nullptr) return ToNative(parsed->error.message);
  TQString out;
  int cursor = 0;
  WriteSource(*parsed->tree->root, out, cursor, 0, options);
  EXPECT_EQ(cursor, out.Length());
  return ToNative(out);
}

struct Row {
  std::u16string_view text;
  const char* written;
};

TEST(SourceWriter, WritesDocumentsAsTheErrorReportCountsThem) {
  for (const Row& row : {
           Row{u"<a/>", "<a />\n"},
           {u"<a></a>", "<a />\n"},
           {u"<a>x</a>", "<a>x</a>\n"},
           {u"<a x = \"1\" y='\"'>x&amp;<b/> </a>", "<a x=\"1\" y='\"'>x&amp;<b /></a>\n"},
           {u"<?xml  version='1.0'  encoding='UTF-8' ?>\r<!--c--> <a/> <?p   d?>",
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!--c-->\n<a />\n<?p d?>\n"},
           {u"<a><?p?><![CDATA[<]]></a>", "<a><?p?><![CDATA[<]]></a>\n"},
           {u"<!DOCTYPE a SYSTEM 's'><a/>", "<!DOCTYPE a SYSTEM 's'>\n<a />\n"},
           {u"<!DOCTYPE a><a/>", "<!DOCTYPE a>\n<a />\n"},
           {u"<!DOCTYPE a PUBLIC 'p' 's' [ <!--c--> %p; <!ENTITY e 'v'> ]><a/>",
            "<!DOCTYPE a PUBLIC 'p' 's' [<!--c-->%p;<!ENTITY e 'v'>]>\n<a />\n"},
       }) {
    EXPECT_EQ(Written(row.text, {}), row.written);
  }
}

TEST(SourceWriter, WritesDeclarationsThatReadTheSame) {
  for (const Row& row : {
           Row{u"<!ELEMENT a EMPTY>", "<!ELEMENT a EMPTY>\n"},
           {u"<!ELEMENT a ANY>", "<!ELEMENT a ANY>\n"},
           {u"<!ELEMENT a (#PCDATA)>", "<!ELEMENT a (#PCDATA)>\n"},
           {u"<!ELEMENT a (#PCDATA|b|c)*>", "<!ELEMENT a (#PCDATA | b | c)*>\n"},
           {u"<!ELEMENT a (b?,(c|d+)*,(e))+>", "<!ELEMENT a (b?, (c | d+)*, (e))+>\n"},
           {u"<!ELEMENT a %m;>", "<!ELEMENT a %m;>\n"},
           {u"<!ATTLIST a x CDATA #IMPLIED y (p|q) 'p'> <!ATTLIST a z NOTATION (n) #FIXED '\"'>",
            "<!ATTLIST a\n  x CDATA #IMPLIED\n\n  y (p | q) \"p\"\n\n  z NOTATION (n) #FIXED "
            "'\"'>\n"},
           {u"<!ATTLIST a x ID #REQUIRED><!ATTLIST a %y; = >",
            "<!ATTLIST a\n  x ID #REQUIRED>\n<!ATTLIST a %y; = >\n"},
           {u"<!ENTITY % p 'x'><!NOTATION n SYSTEM 's'>",
            "<!ENTITY % p 'x'>\n<!NOTATION n SYSTEM 's'>\n"},
       }) {
    SourceWriteOptions options;
    options.indent = u"  ";
    const std::string written = Written(row.text, options, GrammarKind::DTD);
    EXPECT_EQ(written, row.written);
    const auto before = ParseText(row.text, GrammarKind::DTD);
    const auto after = ParseText(FromNative(written), GrammarKind::DTD);
    ASSERT_NE(after->tree, nullptr) << written;
    EXPECT_EQ(Dump(*after->tree->root), Dump(*before->tree->root));
  }
}

TEST(SourceWriter, ObeysItsOptions) {
  const std::u16string_view text =
      u"<?xml version='1.0'?><a x='1'><b/>t<c><d/><![CDATA[]]></c><pre><e/></pre></a>";
  SourceWriteOptions options;
  options.collapseEmpty = false;
  options.omitDeclaration = true;
  options.newline = u"|";
  EXPECT_EQ(Written(text, options),
            "|<a x=\"1\"><b></b>t<c><d></d><![CDATA[]]></c><pre><e></e></pre></a>|");
  options.collapseEmpty = true;
  options.spaceBeforeSlash = false;
  options.pretty = true;
  options.indent = u".";
  const std::vector<TQString> names{u"pre"};
  options.preserveNames = &names;
  EXPECT_EQ(Written(text, options),
            "|<a x=\"1\">|.<b/>t|.<c>|..<d/><![CDATA[]]>|.</c>|.<pre><e/></pre>|</a>|");
}

}  // namespace
}  // namespace kelmora
