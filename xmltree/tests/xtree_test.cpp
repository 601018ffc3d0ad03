#include <gtest/gtest.h>

#include <random>

#include "tqcore/tqtext.h"
#include "treedump.h"

namespace kelmora {
namespace {

struct WalkRow {
  std::u16string_view text;
  const char* dump;
};

void ExpectWalks(std::initializer_list<WalkRow> rows, GrammarKind kind, bool normalize) {
  for (const WalkRow& row : rows) {
    const auto parsed = ParseText(row.text, kind, normalize);
    ASSERT_NE(parsed->tree, nullptr) << ToNative(row.text) << ToNative(parsed->error.message);
    std::string dump;
    for (const XTreeNode* node = parsed->tree->root->first; node != nullptr; node = node->next) {
      dump += Join(dump.empty() ? "" : " ", Dump(*node));
    }
    EXPECT_EQ(dump, row.dump) << ToNative(row.text);
  }
}

TEST(XTree, DocumentsBecomeNormalizedTrees) {
  ExpectWalks(
      {
          {u"<a/>", "<a>"},
          {u"<a></a>", "<a>"},
          {u"<a>text</a>", "<a 'text'>"},
          {u"<a x='1'>text</a>", "<a @x=1 'text'>"},
          {u"<a x='1' y='2' x='3'/>", "<a @x=1 @y=2 @x=3>"},
          {u"<a x=''><b y='1'/></a>", "<a @x= <b @y=1>>"},
          {u"<a> <b/> </a>", "<a <b>>"},
          {u"<a> </a>", "<a ' '>"},
          {u"<a x='1'> </a>", "<a @x=1 ' '>"},
          {u"<a>x <b/>\r y</a>", "<a 'x ' <b> '\r y'>"},
          {u"<a>a]]>b</a>", "<a 'a]]>b'>"},
          {u"<a>p<![CDATA[<&]]]>q</a>", "<a 'p' [<&]] 'q'>"},
          {u"<a><![CDATA[]]></a>", "<a []>"},
          {u"<a>x<!--c--><!----><?p?><?p d ?>y</a>", "<a 'x' !c ! ?p ?p:d  'y'>"},
          {u"<a>&lt;&#65;</a>", "<a '&lt;&#65;'>"},
          {u"<?xml version='1.0' encoding=\"UTF-8\" standalone='no'?> <!--c--> <p:a/> <?e?>",
           "3:XML(@version=1.0 @encoding=UTF-8 @standalone=no) !c <p:a> ?e"},
          {u"<!DOCTYPE a SYSTEM 'x.dtd' [<!-- c --> %p; %q;<?i j?>]><a/>",
           "10:a(11:SYSTEM ''x.dtd'' ! c  '%p;%q;' ?i:j) <a>"},
          {u"<!DOCTYPE a PUBLIC '-//P' 's'><a/>", "10:a(11:PUBLIC ''-//P' 's'') <a>"},
      },
      GrammarKind::XML, true);
}

TEST(XTree, DeclarationsBecomeTrees) {
  ExpectWalks(
      {
          {u"<!ELEMENT a EMPTY><!ELEMENT b ANY><!ELEMENT c (#PCDATA)>", "12:a i4 12:b i5 12:c i0"},
          {u"<!ELEMENT a (#PCDATA | b | c)*>", "12:a i1(12:b i7 12:c i7)"},
          {u"<!ELEMENT a (b, (c | d+)?, e*)+>",
           "12:a i2 r2(12:b i7 12 i3 r1(12:c i7 12:d i7 r2) 12:e i7 r3)"},
          {u"<!ELEMENT a %m;><!ELEMENT b (c, %m;, d)>",
           "12:a i6 '%m;' 12:b i2(12:c i7 12:%m; i7 12:d i7)"},
          {u"<!ELEMENT a (b | %m;?#)>", "12:a i6 '(b | %m;?#)'"},
          {u"<!ATTLIST a x CDATA #IMPLIED y (p | q) 'p' z NOTATION (n) #FIXED \"n\">",
           "13:a i0(13 i1 'x' 13 i2 13 i15) 13:a i0(13 i1 'y' 13 i11(13 i13 'p' 13 i13 'q') "
           "13 i17 'p') 13:a i0(13 i1 'z' 13 i10(13 i13 'n') 13 i16 13 i17 'n')"},
          {u"<!ATTLIST a x ID #REQUIRED>", "13:a i0(13 i1 'x' 13 i3 13 i14)"},
          {u"<!ATTLIST a x %t; #REQUIRED>", "13:a i0(13 i1 'x' 13 i12 '%t;' 13 i14)"},
          {u"<!ATTLIST a %x; = >", "13:a i18 '%x; = '"},
          {u"<!ENTITY e \"<b>\"><!ENTITY % p SYSTEM 's'><!NOTATION n PUBLIC 'i'>",
           "14:e '\"<b>\"' 14:% p 'SYSTEM 's'' 15:n 'PUBLIC 'i''"},
          {u"<![IGNORE[a]]> %p;", "'<![IGNORE[a]]>' '%p;'"},
      },
      GrammarKind::DTD, true);
}

TEST(XTree, ExternalEntityKeepsItsTextAsAChild) {
  ExpectWalks({{u"only text", "'only text'"}, {u"a<b/>c", "'a' <b> 'c'"}}, GrammarKind::Entity,
              true);
}

TEST(XTree, WithoutNormalizeTextsStayWhereTheyWere) {
  ExpectWalks({{u"<a>text</a>", "<a 'text'>"}, {u"<a>a]]>b</a>", "<a 'a' ']]>b'>"}},
              GrammarKind::XML, false);
  const auto parsed = ParseText(u"<a>text</a>", GrammarKind::XML, false);
  EXPECT_EQ(parsed->tree->root->first->FirstChild()->kind, XTreeKind::Text);
}

struct RangeRow {
  std::u16string_view text;
  XTreeKind kind;
  std::u16string_view range;
};

TEST(XTree, NodesKnowWhereTheyStand) {
  for (const RangeRow& row : {
           RangeRow{u"<d><a x='1'>t</a></d>", XTreeKind::Element, u"d"},
           {u"<a x='1'>t<b/></a>", XTreeKind::Element, u"<a x='1'>"},
           {u"<a  x='1' />", XTreeKind::Element, u"a"},
           {u"<a  x='1' />", XTreeKind::Attribute, u"x='1'"},
           {u"<a><b/> t </a>", XTreeKind::Text, u" t "},
           {u"<a><!-- c --></a>", XTreeKind::Comment, u"<!-- c -->"},
           {u"<a><?p  d?></a>", XTreeKind::PI, u"<?p  d?>"},
           {u"<a><![CDATA[x]]></a>", XTreeKind::CData, u"<![CDATA[x]]>"},
           {u"<!DOCTYPE a><a/>", XTreeKind::DocType, u"<!DOCTYPE a>"},
       }) {
    const auto parsed = ParseText(row.text);
    const XTreeNode* node = parsed->tree->root;
    while (node->FirstChildOfKind(row.kind) == nullptr) node = node->FirstChild();
    node = node->FirstChildOfKind(row.kind);
    const auto start = static_cast<std::size_t>(node->sourceStart);
    const auto end = static_cast<std::size_t>(node->sourceEnd);
    EXPECT_EQ(ToNative(row.text.substr(start, end - start)), ToNative(row.range));
  }
}

TEST(XTree, FragmentsBeginWithAnyRule) {
  const DocumentKindRow& row = *Kinds().Find(GrammarKind::DTD);
  const auto dump = [&](std::u16string_view text, std::u16string_view rule, XTreeKind root) {
    const auto tree = ParseFragment(row, text, rule, root, false);
    return tree != nullptr ? Dump(*tree->root) : "no";
  };
  EXPECT_EQ(dump(u"#PCDATA | b", u"elementMixedI", XTreeKind::DTDElement), "12 i1(12:b i7)");
  EXPECT_EQ(dump(u"a, b?", u"elementSeqI", XTreeKind::DTDElement), "12 i2(12:a i7 12:b i7 r1)");
  EXPECT_EQ(dump(u"a | b", u"elementChoiceI", XTreeKind::DTDElement), "12 i3(12:a i7 12:b i7)");
  EXPECT_EQ(dump(u"(a)*", u"elementSpecFormatted", XTreeKind::DTDElement), "12 i2 r3(12:a i7)");
  EXPECT_EQ(dump(u"x ID #IMPLIED y CDATA 'v'", u"attlistText", XTreeKind::DTDAttlist),
            "13 i0(13 i1 'x' 13 i3 13 i15 13 i0(13 i1 'y' 13 i2 13 i17 'v'))");
  EXPECT_EQ(dump(u"a, ", u"elementSeqI", XTreeKind::DTDElement), "no");
  EXPECT_EQ(dump(u"x", u"noSuchRule", XTreeKind::DTDElement), "no");
}

TEST(XTree, ParserMessagesNameThePlace) {
  struct Row {
    std::u16string_view text;
    const char* message;
  };
  for (const Row& row : {
           Row{u"<a x=1/>", "Line 1, character 6: expected Whitespace (Blank, Tab, CR, LF)"},
           {u"<a>\r<b>\r  <item>x</b></a>",
            "Line 3, character 12: expected item closing element name"},
           {u"x<a/>", "Line 1, character 1: expected XML Document"},
       }) {
    const auto parsed = ParseText(row.text);
    EXPECT_EQ(parsed->tree, nullptr);
    EXPECT_EQ(parsed->error.code, LoadError::ParseFailed);
    EXPECT_EQ(parsed->error.severity, LoadError::Parsing);
    EXPECT_EQ(ToNative(parsed->error.message), row.message);
  }
}

TEST(XTree, NormalizeTidiesTreesOfOtherOrigin) {
  XTree tree;
  auto* element = tree.Make<XTreeElement>();
  element->SetName(u"e");
  element->SetText(u"own ");
  const std::pair<XTreeKind, const char16_t*> children[] = {
      {XTreeKind::Text, u"a"},    {XTreeKind::Text, u"b"},   {XTreeKind::Attribute, u"x"},
      {XTreeKind::Text, u"<![c"}, {XTreeKind::Element, u""}, {XTreeKind::Attribute, u"y"},
      {XTreeKind::Text, u"d"},    {XTreeKind::Text, u"e"},   {XTreeKind::Text, u"f"},
  };
  for (const auto& [kind, text] : children) {
    XTreeNode* child = tree.MakeOfKind(kind);
    child->SetText(text);
    element->AppendChild(child);
  }
  element->NormalizeTree(tree);
  EXPECT_EQ(Dump(*element), "<e 'own ' @=x @=y 'ab' '<![c' <> 'def'>");
  EXPECT_EQ(element->CountChildren(XTreeKind::Any), static_cast<int>(element->childCount));
  EXPECT_EQ(element->CountChildren(XTreeKind::Text), 4);
}

// The walk tidies only the nodes that it took note of; NormalizeTree looks at every node.
TEST(XTree, TheWalkTidiesAsNormalizeTreeDoes) {
  std::mt19937 random(31);
  constexpr std::u16string_view kPieces[] = {u"t",  u" ",          u"&e;",     u"<![CDATA[x]]>",
                                             u"]>", u"<!--c-->",   u"<?p d?>", u"<c/>",
                                             u"",   u"<d y='1'/>", u"<a>",     u"<b x='1' z='2'>"};
  for (int round = 0; round < 400; ++round) {
    std::u16string text = u"<?xml version='1.0'?><!--c--><!DOCTYPE r [<!ENTITY e 'x'> %p; %q;]>";
    std::vector<std::u16string_view> open = {u"</r>"};
    text += u"<r>";
    for (int i = 0; i < 30; ++i) {
      const std::u16string_view piece = kPieces[random() % std::size(kPieces)];
      text += piece.empty() && open.size() > 1 ? open.back() : piece;
      if (piece.empty() && open.size() > 1) open.pop_back();
      if (piece.starts_with(u"<a")) open.push_back(u"</a>");
      if (piece.starts_with(u"<b")) open.push_back(u"</b>");
    }
    for (; !open.empty(); open.pop_back()) text += open.back();
    const auto tidied = ParseText(text);
    const auto plain = ParseText(text, GrammarKind::XML, false);
    ASSERT_NE(tidied->tree, nullptr) << ToNative(text);
    plain->tree->root->NormalizeTree(*plain->tree);
    EXPECT_EQ(Dump(*tidied->tree->root), Dump(*plain->tree->root)) << ToNative(text);
  }
}

TEST(XTree, DocumentsPutDeclarationAndDoctypeInFront) {
  XTree tree;
  auto* document = tree.Make<XTreeDocument>();
  for (const XTreeKind kind : {XTreeKind::Comment, XTreeKind::Element, XTreeKind::DocType,
                               XTreeKind::PI, XTreeKind::XMLTag}) {
    document->AppendChild(tree.MakeOfKind(kind));
  }
  document->NormalizeTree(tree);
  EXPECT_EQ(Dump(*document), "0(3:XML ! 10 <> ?)");
  EXPECT_EQ(document->last->previous->previous->kind, XTreeKind::DocType);
}

}  // namespace
}  // namespace kelmora
