#include <gtest/gtest.h>

#include "parsomachine.h"
#include "parsotesting.h"

namespace kelmora {
namespace {

struct ParseRow {
  const char* grammar;  // lines, or the name of a system grammar
  const char* start;    // a rule, or nothing for the root
  std::string text;
  std::string expected;  // the tree, or "offset: message"
};

std::string Outcome(ParsoParser& parser, const TQString& text, const char* start) {
  return parser.Parse(text, Wide(start)) ? Dump(parser.Root()) : ErrorOf(parser);
}

// Each row has to come out alike from the machine and from the plain interpreter.
void Check(const ParseRow& row) {
  ParsoGrammar own;
  const bool isFile = std::string_view(row.grammar).ends_with(".txt");
  ASSERT_TRUE(isFile || own.LoadText(row.grammar)) << row.grammar;
  const ParsoGrammar& grammar = isFile ? SystemGrammar(Wide(row.grammar).c_str()) : own;
  const TQString text = Wide(row.text);
  ParsoParser parser(&grammar);
  UseDocumentMode();
  EXPECT_EQ(Outcome(parser, text, row.start), row.expected) << row.text;
  ParsoMode::current.compare = CompareExactlyToo;
  EXPECT_EQ(Outcome(parser, text, row.start), row.expected) << "plainly: " << row.text;

  // The parser asks the interpreter when the machine refuses, so a wrong refusal shows only here.
  const ParsoRule* start = *row.start == 0 ? grammar.root : grammar.FindRule(Wide(row.start));
  if (!isFile || start == nullptr) return;
  ParsoTree tree;
  const auto outcome =
      ParsoMachine(grammar.Program(), tree)
          .Run(*grammar.Program().StartRoutine(*start), text.c_str(), text.Length());
  EXPECT_EQ(outcome == ParsoMachine::Outcome::Matched, parser.Root() != nullptr) << row.text;
}

constexpr const char* kXml = "gra_xml.txt";
constexpr const char* kDtd = "gra_dtd.txt";
constexpr const char* kLax = "gra_3dml.txt";

TEST(ParsoParser, BuildsTrees) {
  const ParseRow rows[] = {
      {kXml, "", "<a x=\"1\"><b/> t</a>",
       "document(realElemTag(sTag(ElementName 'a', attribute(AttName 'x', AttValue1 '1')), "
       "content(emptyElemTag(ElementName 'b'), TextData ' t')))"},
      {kXml, "", "<a></a>", "document(realElemTag(ElementName 'a', content ''))"},
      {kXml, "", "<a> <b/> </a >",
       "document(realElemTag(ElementName 'a', content(* ' ', emptyElemTag(ElementName 'b'), "
       "* ' ')))"},
      {kXml, "", "<?xml version='1.0' encoding=\"x\" standalone='no' ?>\n<!----><?p d?><a/>\n",
       "document(prolog(xmlDecl(versionInfo(VersionNum '1.0'), encodingDecl(EncName 'x'), "
       "sdDecl(SDValue 'no')), CommentText '', pi(PITarget 'p', PIData 'd')), "
       "emptyElemTag(ElementName 'a'))"},
      {kXml, "", "<a>x&amp;]]>&#x1F;<![CDATA[<]]]]><![CDATA[]]></a>",
       "document(realElemTag(ElementName 'a', content(TextData 'x&amp;', TextData ']]>&#x1F;', "
       "cdSect(CData '<]]'), cdSect '<![CDATA[]]>')))"},
      {kXml, "content", "", "content ''"},
      {kXml, "content", "\xE9<\xE9/>", "content(TextData '?', emptyElemTag(ElementName '?'))"},
      {kXml, "PITarget", "xml-x", "PITarget 'xml-x'"},
      {kXml, "elementdecl", "<!ELEMENT a (#PCDATA)>",
       "elementdecl(ElementDeclName 'a', elementSpec(elementSpecFormatted(elementText("
       "ElementPCDATA '(#PCDATA)'))))"},
      {kXml, "elementSpecFormatted", "(#PCDATA|b)*",
       "elementSpecFormatted(elementMixed(elementMixedI(ElementSubName 'b')))"},
      // At the end of the text an optional item leaves no node, even if it can match nothing.
      {kXml, "elementSpecFormatted", "(a)",
       "elementSpecFormatted(elementChildren(elementSeq(elementSeqI(elementGroup(ElementSubName "
       "'a', ElementRepeat '')))))"},
      {kXml, "elementSpec", "(%a;|((b,c),d))+>",
       "elementSpec(elementSpecFormatted(elementChildren(elementChoice(elementChoiceI(elementGroup("
       "ElementSubName '%a;', ElementRepeat ''), elementGroup(elementSeq(elementSeqI(elementGroup("
       "elementSeq(elementSeqI(elementGroup(ElementSubName 'b', ElementRepeat ''), elementGroup("
       "ElementSubName 'c', ElementRepeat ''))), ElementRepeat ''), elementGroup(ElementSubName "
       "'d', ElementRepeat ''))), ElementRepeat ''))), ElementRepeat '+')))"},
      {kXml, "elementSpec", "(a%b;c)>",
       "elementSpec(elementSpecUnformatted(PEReference '%b;', * 'c', * ')'))"},
      {kXml, "attlistText", "a CDATA\n#IMPLIED b\nIDREFS 'x'",
       "attlistText(attDef(AttDefName 'a', attDefRest(attType(attTypeText(AttTypeCDATA 'CDATA')), "
       "attDefault(AttIMPLIED '#IMPLIED'))), attDef(AttDefName 'b', attDefRest(attType(attTypeText("
       "AttTypeIDREFS 'IDREFS')), attDefault(attDefValue(AttValue2 'x')))))"},
      {kDtd, "", "<![ INCLUDE [<!ENTITY % e 'v'>]]>",
       "extSubset(DocTypeText '<![ INCLUDE [<!ENTITY % e 'v'>]]>')"},
      {kDtd, "ignoreSectContents", "a<![b]]>c",
       "ignoreSectContents(Ignore 'a', Ignore 'b', Ignore 'c')"},
      {kLax, "", "<?xml a='&'?>< a b=\"&\">&x</a>",
       "document(xmlDecl(attribute(AttName 'a', AttValue2 '&')), realElemTag(sTag("
       "ElementName 'a', attribute(AttName 'b', AttValue1 '&')), content(TextData '&x')))"},
      {"gra_re.txt", "regExp", "a|[^b]{2,}",
       "regExp(branch(piece(atom 'a')), branch(piece(atom(charClass(charClassExpr(charGroup("
       "negCharGroup(posCharGroup(charRangeBegin 'b')))))), quantifier(quantity(quantMin("
       "QuantExact '2'))))))"},
  };
  for (const ParseRow& row : rows) Check(row);
}

TEST(ParsoParser, TellsTheFurthestFailure) {
  const std::string longName(300, 'n');
  const ParseRow rows[] = {
      {kXml, "", "", "0: XML Document"},
      {kXml, "", "x", "0: XML Document"},
      {kXml, "", "<a x=1/>", "5: Whitespace (Blank, Tab, CR, LF)"},
      {kXml, "", "<a></b>", "5: a closing element name"},
      {kXml, "", "<x><item></b></x>", "11: item closing element name"},
      {kXml, "", "<item></b><", "8: item closing element name"},
      {kXml, "", "<a></A>", "5: a closing element name"},
      {kXml, "", "<" + longName + "></x>",
       "304: " + longName.substr(0, 255) + " closing element name"},
      {kXml, "", "<a>", "2: Whitespace (Blank, Tab, CR, LF)"},
      {kXml, "", "<a/>x", "4: <!--"},
      {kXml, "", "<?XML a?><a/>", "2: Processing Instruction Name (may not be 'xml')"},
      {kXml, "", "<a><?p ?></a>", "7: Processing Instruction Data"},
      {kXml, "none", "<a/>", "0: unknown identifier: none; valid grammar ident"},
      {kXml, "Letter", "a", "0: unknown identifier: Letter; valid grammar ident"},
      {kXml, "EncName", "utf 8", "3: end of Encoding Name (UTF-8, ISO-8859-1, etc)"},
      {kDtd, "", "<![IGNORE[a<![b]]>", "15: <!["},
      {kLax, "", "<a b=\"<\"/>", "6: \""},
      // What has no description shows its rule.
      {"a ::= 'xy' b\r\nb ::= [yz] c? ('z' | \"'z\")+ #x41 * d\r\nc ::= 'qq'\r\nd ::= e\r\n", "",
       "xyw", "2: b ::= [...] c? ('z' | \"'z\")+ 'A'* d"},
  };
  for (const ParseRow& row : rows) Check(row);

  ParsoParser empty(nullptr);
  const TQString text = u"x";
  EXPECT_FALSE(empty.Parse(text));
  EXPECT_EQ(ErrorOf(empty), "0: no valid grammar; grammar root rule");
}

TEST(ParsoParser, MatchesByItsRules) {
  const ParseRow rows[] = {
      // A sequence doesn't try an item again, and a choice takes the first that matches.
      {"a ::= [xy]* 'x'\r\n", "", "xx", "0: a ::= [...]* 'x'"},
      {"a ::= (b | c) 'z'\r\nb ::= 'x'\r\nc ::= 'xy'\r\n", "", "xyz", "1: z"},
      {"a ::= ('x'? | B) 'z'\r\nB ::= 'yy'\r\n", "", "yyz", "a(B 'yy')"},
      {"a ::= ('x'? | 'y') 'z'\r\n", "", "z", "0: a ::= ('x'? | 'y') 'z'"},
      {"a ::= (B | 'y')* 'z'\r\nB ::= 'xx'\r\n", "", "xxyz", "a(B 'xx', * 'y')"},
      {"a ::= B c\r\nB ::= 'xx'\r\nc ::= d | 'yyz'\r\nd ::= C 'q'\r\nC ::= 'yy'\r\n", "", "xxyyz",
       "a(B 'xx')"},
      // Pruning.
      {"a ::= b 'z'\r\nb ::= C\r\nC ::= D\r\nD ::= 'xx'\r\n", "", "xxz", "a(C 'xx')"},
      {"a ::= b\r\nb ::= c 'z'?\r\nc ::= D E\r\nD ::= 'xx'?\r\nE ::= 'yy'\r\n", "", "yy",
       "a(c(D '', E 'yy'))"},
      {"a ::= b\r\nb$ ::= c\r\nc$ ::= d 'z'\r\nd ::= 'xx'\r\n", "", "xxz", "a(b(c 'xxz'))"},
      {"a ::= B c\r\nB ::= 'xx'\r\nc! ::= D\r\nD ::= 'yy'\r\n", "", "xxyy", "a(B 'xx')"},
      {"a ::= b E\r\nb& ::= c\r\nc& ::= D\r\nD ::= 'xx'\r\nE ::= 'yy'\r\n", "", "xxyy",
       "a(D 'xx', E 'yy')"},
      {"a ::= b E\r\nb& ::= c 'z'\r\nc& ::= D D\r\nD ::= 'xx'\r\nE ::= 'yy'\r\n", "", "xxxxzyy",
       "a(b(c(D 'xx', D 'xx')), E 'yy')"},
      // Stopping and excluding.
      {"a ::= B C\r\nB ::= [^q]* / ( 'xy' | 'zz' )\r\nC ::= [a-z]+\r\n", "", "xzxy",
       "a(B 'xz', C 'xy')"},
      {"a ::= b* / 'xy'\r\nb$ ::= 'z' C\r\nC ::= [a-w] [a-w]\r\n", "", "zaazbb",
       "a(b(C 'aa'), b(C 'bb'))"},
      {"a ::= (B - 'xml') C?\r\nB ::= [a-zA-Z]+\r\nC ::= 'qq'\r\n", "", "xML",
       "0: a ::= (B - 'xml') C?"},
      // An operator without its two operands matches nothing.
      {"a ::= -\r\n", "", "x", "0: a"},
      {"a ::= /\r\n", "", "x", "0: a"},
      {"a ::= b -\r\nb ::= 'xx'\r\n", "", "xx", "0: a"},
      {"a ::= b* /\r\nb ::= 'xx'\r\n", "", "xx", "0: a"},
      // Nothing is tried on an empty text, not even what may be empty.
      {"a ::= b - 'xx'\r\nb ::= [x]*\r\n", "", "", "0: a"},
      // The text in front of a stop is not all that a rule gets elsewhere.
      {"a ::= (s 'zz') | (y 'zz')\r\ns ::= y* / '-'\r\ny ::= 'bb' ('-' y)?\r\n", "", "bb-bx",
       "3: bb"},
      // A repeated sequence may begin with a choice.
      {"N ::= x*\r\nx ::= (('b<' | '</')+ | [ab]+)+ ('-' 'x')*\r\n", "", "ab</", "N 'ab</'"},
      // Names of a constraint that lie in each other.
      {"a ::= '<' b* a { a = a }\r\nb ::= [^a]\r\n", "", "<<", "0: a ::= '<' [...]* a"},
      // Constraints that no machine checks on the way.
      {"a ::= B '=' C { B = C }\r\nB ::= [a-z]+\r\nC ::= [a-z]+ >other\r\n", "", "ab=ab",
       "a(B 'ab')"},
      {"a ::= B '=' C { B = C }\r\nB ::= [a-z]+\r\nC ::= [a-z]+ >other\r\n", "", "ab=ac",
       "3: ab other"},
      // An empty repetition ends itself.
      {"a ::= b* C\r\nb$ ::= 'x'?\r\nC ::= 'yy'\r\n", "", "xyy", "a(b 'x', b '', C 'yy')"},
  };
  for (const ParseRow& row : rows) Check(row);
}

TEST(ParsoParser, HasModes) {
  const ParsoGrammar& grammar = SystemGrammar(u"gra_xml.txt");
  ParsoParser parser(&grammar);
  EXPECT_FALSE(ParsoMode::current.flatten);
  EXPECT_FALSE(ParsoMode::current.dropEndNames);
  const TQString mixed = u"<a></A>";
  const TQString exact = u"<a></a>";
  ASSERT_TRUE(parser.Parse(mixed)) << "the default compare ignores case";
  EXPECT_EQ(Dump(parser.Root()),
            "document(prolog '', element(realElemTag(sTag(ElementName 'a'), content '', "
            "eTag(ElementNameEnd 'A'))))");
  ParsoMode::current.flatten = true;
  ParsoMode::current.compare = CompareExactly;
  EXPECT_FALSE(parser.Parse(mixed));
  ASSERT_TRUE(parser.Parse(exact));
  EXPECT_EQ(Dump(parser.Root()),
            "document(realElemTag(ElementName 'a', content '', ElementNameEnd 'a'))");
  ParsoParser other(&grammar);
  EXPECT_EQ(ParsoMode::current.compare, CompareIgnoringCase);
}

TEST(ParsoParser, CountsLinesPlainly) {
  ParsoGrammar grammar;
  ASSERT_TRUE(grammar.LoadText("a ::= (B S)* B\r\nB ::= [a-z]+\r\nS ::= [#x0D#x0A]+\r\n"));
  ParsoParser parser(&grammar);
  const TQString text = u"a\nb\r\nc\rd\r\n\ne";
  ASSERT_TRUE(parser.Parse(text));
  std::string lines;
  for (const ParsoNode* node = parser.Root()->firstChild; node != nullptr; node = node->next) {
    lines += std::to_string(node->line);
  }
  EXPECT_EQ(lines, "12346");
}

TEST(ParsoParser, HandsItsTreeOver) {
  const TQString text = u"<a><b/></a>";
  std::unique_ptr<ParsoTree> tree;
  {
    ParsoParser parser(&SystemGrammar(u"gra_xml.txt"));
    UseDocumentMode();
    ASSERT_TRUE(parser.Parse(text));
    tree = parser.TakeTree();
    EXPECT_EQ(parser.Root(), nullptr);
    const TQString other = u"<c>d</c>";
    ASSERT_TRUE(parser.Parse(other));
  }
  EXPECT_EQ(Dump(tree->root),
            "document(realElemTag(ElementName 'a', content(emptyElemTag(ElementName 'b'))))");
  ParsoNode* element = tree->root->firstChild;
  const GrammarRuleTable rules(SystemGrammar(u"gra_xml.txt"));
  const ParsoRule* name = rules[GrammarRule::ElementName];
  EXPECT_EQ(element->ChildCount(), 2);
  EXPECT_EQ(element->FindByRule(name, 1), element->firstChild);
  EXPECT_EQ(element->firstChild->next->FindByRule(name, 1), nullptr);
  ParsoNode* inner = element->firstChild->next->FindByRule(name, 2);
  ASSERT_NE(inner, nullptr);
  EXPECT_FALSE(inner->Remove(inner));
  EXPECT_TRUE(tree->root->Remove(inner));
  EXPECT_EQ(Dump(tree->root),
            "document(realElemTag(ElementName 'a', content(emptyElemTag '<b/>')))");
}

std::u16string Repeated(std::u16string_view text, std::size_t count) {
  std::u16string out;
  for (std::size_t i = 0; i < count; ++i) out += text;
  return out;
}

// Depth takes heap, not stack; and no alternative is tried again at every level.
TEST(ParsoParser, GoesDeep) {
  const std::size_t kDeep = 100000;
  const struct {
    const char16_t* grammar;
    const char16_t* start;
    std::u16string text;
    bool matches;
  } rows[] = {
      {u"gra_xml.txt", u"", Repeated(u"<a>", kDeep) + Repeated(u"</a>", kDeep), true},
      {u"gra_xml.txt", u"", Repeated(u"<a>", kDeep) + Repeated(u"</a>", kDeep - 1), false},
      {u"gra_3dml.txt", u"", Repeated(u"<a b='c'>", kDeep) + Repeated(u"</a>", kDeep), true},
      {u"gra_re.txt", u"", Repeated(u"(", kDeep) + u"a" + Repeated(u")", kDeep), true},
      {u"gra_re.txt", u"", Repeated(u"[a-", kDeep) + u"[b]" + Repeated(u"]", kDeep), true},
      {u"gra_re.txt", u"", Repeated(u"[a-", kDeep) + u"[b]", false},
      {u"gra_dtd.txt", u"", Repeated(u"<![INCLUDE[", kDeep) + Repeated(u"]]>", kDeep), true},
      {u"gra_dtd.txt", u"",
       u"<![IGNORE[a" + Repeated(u"<![a", kDeep) + Repeated(u"]]>a", kDeep) + u"]]>", true},
      {u"gra_xml.txt", u"elementSpec",
       Repeated(u"(", kDeep) + u"a" + Repeated(u",b)", kDeep) + u">", true},
      {u"gra_xml.txt", u"elementSpec",
       Repeated(u"(", kDeep) + u"a" + Repeated(u"|b)", kDeep) + u">", true},
      {u"gra_xml.txt", u"elementSpec",
       Repeated(u"(", kDeep) + u"a" + Repeated(u",b)", kDeep - 1) + u">", false},
  };
  for (const auto& row : rows) {
    ParsoParser parser(&SystemGrammar(row.grammar));
    UseDocumentMode();
    EXPECT_EQ(parser.Parse(row.text.data(), static_cast<std::int32_t>(row.text.size()), row.start),
              row.matches)
        << Narrow(row.text.substr(0, 20));
  }
}

}  // namespace
}  // namespace kelmora
