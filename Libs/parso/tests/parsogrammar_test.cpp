#include <gtest/gtest.h>

#include <set>

#include "parso/grammarruletable.h"
#include "parsooptimiser.h"
#include "parsotesting.h"
#include "ystreamimpl/embeddedfiles.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {
namespace {

// One object: what it is, its operands with their quantifiers, the description.
std::string Describe(const ParsoRule* rule) {
  if (rule == nullptr) return "null";
  std::string out(1, rule->kind == ParsoKind::Group ? '0' : static_cast<char>(rule->kind));
  if (rule->op != ParsoOp::None) out += static_cast<char>(rule->op);
  if (rule->flagNoNode) out += '!';
  if (rule->flagKeepApart) out += '&';
  if (rule->flagKeepNode) out += '$';
  for (const ParsoChild& child : rule->children) {
    const ParsoRule& operand = *child.rule;
    out += ' ';
    if (operand.kind == ParsoKind::Group) {
      out += '(' + Describe(&operand) + ')';
    } else {
      out += operand.kind == ParsoKind::Class ? "[]" : Narrow(operand.name);
    }
    if (child.quantifier != ParsoQuantifier::One) out += static_cast<char>(child.quantifier);
  }
  for (const ParsoRule* name : rule->constraint) {
    out += " =" + (name != nullptr ? Narrow(name->name) : "null");
  }
  if (!rule->description.empty()) out += " >" + Narrow(rule->description);
  return out;
}

TEST(ParsoGrammar, CompilesBodies) {
  const struct {
    const char* body;
    const char* expected;
  } rows[] = {
      {"b c", "is b c"},
      {"b", "i b"},
      {"b | c", "i| b c"},
      {"b c | d", "i| b c d"},
      {"b* c *  d? e+", "is b* c* d? e+"},
      {"b 'xy'? \"it's\"", "is b xy? it's"},
      {"b (c | 'xy')* d >what it is", "is b (0| c xy)* d >what it is"},
      {"'(' b ')' '*'?", "is ( b ) *?"},
      {"b '>' c >d > e", "is b > c >d > e"},
      {"b - 'xyz'", "i- b xyz"},
      {"b* / 'xy'", "i/ b* xy"},
      {"b c { b = c }", "is b c =b =c"},
      {"b c {b=c}", "is b c =b =c"},
      {"b { b = c }", "i b"},
      {"b c { bc }", "is b c"},
      {"b c (", "is b c"},
      {"b c d'", "is b c"},
      {"b [x-z]+ #x41", "is b []+ A"},
      {"b [[x]]", "is b []"},
  };
  for (const auto& row : rows) {
    ParsoGrammar grammar;
    const std::string text = std::string("a ::= ") + row.body + "\r\nb ::= 'bb'\r\n";
    static_cast<void>(grammar.LoadText(text));
    EXPECT_EQ(Describe(grammar.root), row.expected) << row.body;
  }
}

TEST(ParsoGrammar, LoadsOrStops) {
  const struct {
    const char* name;
    std::string text;
    bool loads;
    const char* root;
  } rows[] = {
      {"empty", "", false, "null"},
      {"empty first line", "\r\na ::= 'xy'\r\n", false, "null"},
      {"lines that are skipped", " \t\r\n\xFF what\r\na ::= 'xy'\r\n", true, "i xy"},
      {"what follows an empty line", "a ::= 'xy'\r\n\r\nnonsense\r\n", true, "i xy"},
      {"no line end", "a ::= 'xy'", true, "i xy"},
      {"LF alone", "a ::= b\nb ::= 'xy'\n", true, "i b"},
      {"flags in any order", "a&$! ::= 'xy'\r\n", true, "i!&$ xy"},
      {"tabs", "a\t::=\t'xy' b\t\r\n", true, "is xy b"},
      {"no ::=", "a ::= b\r\nb 'xy'\r\n", false, "i b"},
      {"nothing behind ::=", "a ::= b\r\nb ::= \r\n", false, "i b"},
      {"not referred to", "a ::= [x]\r\nb ::= 'y'\r\n", false, "i x"},
      {"second definition appends", "a ::= b\r\na ::= c\r\n", true, "is b c"},
      {"a class as the root", "a ::= [x]\r\n", true, "c"},
  };
  for (const auto& row : rows) {
    ParsoGrammar grammar;
    EXPECT_EQ(grammar.LoadText(row.text), row.loads) << row.name;
    EXPECT_TRUE(grammar.valid) << row.name;
    EXPECT_EQ(Describe(grammar.root), row.root) << row.name;
  }
}

TEST(ParsoGrammar, KeepsItsLimits) {
  std::string operands;
  for (int i = 0; i < 45; ++i) operands += "b ";
  ParsoGrammar fortyFive;
  ASSERT_TRUE(fortyFive.LoadText("a ::= " + operands + "\r\n"));
  EXPECT_EQ(fortyFive.root->children.size(), 40u);

  ParsoGrammar longLiteral;
  ASSERT_TRUE(longLiteral.LoadText("a ::= '" + std::string(300, 'x') + "'\r\n"));
  EXPECT_EQ(longLiteral.root->children[0].rule->name.size(), 254u);  // body: quote and 254

  std::string many = "a0 ::= 'xy'";
  for (int i = 1; i < 600; ++i) {
    many += " a" + std::to_string(i);
    if (i % 30 == 0) many += "\r\na" + std::to_string(i) + " ::= 'xy'";
  }
  ParsoGrammar full;
  EXPECT_FALSE(full.LoadText(many + "\r\n"));
  EXPECT_EQ(full.rules.size(), ParsoGrammar::kMaxRules);
}

TEST(ParsoGrammar, CompilesClasses) {
  const struct {
    const char16_t* text;
    const char* taken;  // units that the class takes
    const char* refused;
  } rows[] = {
      {u"abc", "abc", "d-"},
      {u"a-cx", "abcx", "d-"},
      {u"-a", "-a", "b"},
      {u"a-", "a-", "b"},
      {u"^<&", "a>\xFF", "<&"},
      {u"#x41-#x43", "ABC", "D#x"},
      {u"#x2D#x5B#x5D", "-[]", "x2"},
      {u"#65#", "A#", "65"},
      {u"*#@$", "*#@$", "x"},
      {u"a^b", "ab", "^"},
      {u"#xF8-#xFF", "\xF8\xFF", "\xF7"},
      {u"[\\.]", "[\\.]", "a"},
  };
  for (const auto& row : rows) {
    const ParsoClassTable table = CompileBracketClass(row.text);
    for (const char* unit = row.taken; *unit != 0; ++unit) {
      EXPECT_TRUE(table[static_cast<unsigned char>(*unit)]) << Narrow(row.text) << " " << *unit;
    }
    for (const char* unit = row.refused; *unit != 0; ++unit) {
      EXPECT_FALSE(table[static_cast<unsigned char>(*unit)]) << Narrow(row.text) << " " << *unit;
    }
  }
}

TEST(ParsoGrammar, Optimises) {
  ParsoGrammar grammar;
  ASSERT_TRUE(
      grammar.LoadText("a ::= S Digit Digits b-\r\n"
                       "S! ::= (#x20 | #x09)+\r\n"
                       "Digit! ::= [0-9] | '.'\r\n"
                       "Digits ::= Digit*\r\n"));
  EXPECT_EQ(Describe(grammar.FindRule(u"S")), "i! []+") << "a quantifier keeps a rule apart";
  EXPECT_EQ(grammar.FindRule(u"Digit"), nullptr) << "a class has no name";
  EXPECT_EQ(Describe(grammar.FindRule(u"Digits")), "i []*");
  EXPECT_EQ(grammar.FindRule(u""), nullptr);
  EXPECT_EQ(grammar.FindRule(u"."), nullptr);

  ParsoGrammar literals;
  ASSERT_TRUE(literals.LoadText("a ::= '-' b '-'\r\nb ::= '-' 'xy'\r\n"));
  const auto& operands = literals.root->children;
  EXPECT_EQ(operands[0].rule, operands[2].rule);
  EXPECT_EQ(operands[0].rule, literals.FindRule(u"b")->children[0].rule);
  EXPECT_EQ(operands[0].rule, literals.FindRule(u"-", ParsoKind::Literal));
}

struct SystemGrammarRow {
  const char16_t* file;
  std::size_t bytes;
  std::size_t objects;
  const char16_t* root;
  std::set<std::u16string_view> classes;  // rules that became classes
};

const SystemGrammarRow kSystemGrammars[] = {
    {u"gra_xml.txt",
     11731,
     296,
     u"document",
     {u"CharNoWhite", u"Letter", u"NameChar", u"Digit", u"PubidChar", u"PubidCharNoQu",
      u"CharNoDash", u"Char"}},
    {u"gra_dtd.txt",
     10485,
     263,
     u"extSubset",
     {u"Letter", u"NameChar", u"Digit", u"Char", u"PubidChar", u"PubidCharNoQu", u"CharNoDash"}},
    {u"gra_ent.txt",
     3451,
     114,
     u"extParsedEnt",
     {u"CharNoWhite", u"Letter", u"NameChar", u"Digit", u"CharNoDash", u"Char"}},
    {u"gra_3dml.txt",
     3276,
     103,
     u"document",
     {u"CharNoWhite", u"CharData", u"Letter", u"NameChar", u"Digit", u"PubidChar", u"PubidCharNoQu",
      u"CharNoDash"}},
    {u"gra_re.txt", 3718, 91, u"regExp", {u"Char", u"WildcardEsc", u"XmlChar", u"XmlCharIncDash"}},
};

TEST(SystemGrammars, AreWhatTheyWere) {
  for (const SystemGrammarRow& row : kSystemGrammars) {
    const std::string_view text = LookupEmbeddedFileView(row.file);
    EXPECT_EQ(text.size(), row.bytes) << Narrow(row.file);
    ParsoGrammar grammar;
    ASSERT_TRUE(grammar.LoadText(text)) << Narrow(row.file);
    EXPECT_EQ(grammar.rules.size(), row.objects) << Narrow(row.file);
    EXPECT_EQ(grammar.root->name, row.root);
    std::set<std::u16string_view> classes;
    for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1) {
      const std::string_view line = text.substr(start, text.find('\r', start) - start);
      const TQString name = Wide(line.substr(0, line.find_first_of("!&$ \t")));
      if (name.IsEmpty() || grammar.FindRule(name) != nullptr) continue;
      for (const auto& known : row.classes) {
        if (name == known) classes.insert(known);
      }
      EXPECT_TRUE(row.classes.contains(name.View())) << Narrow(name);
    }
    EXPECT_EQ(classes, row.classes) << Narrow(row.file);
  }
}

TEST(SystemGrammars, LoadThroughStreams) {
  const std::unique_ptr<YStream> stream = CreateStream(StreamNumber::kResource);
  ASSERT_EQ(stream->Open(u"GRA_XML.TXT", StreamMode::kRead), streamresult::kSuccess);
  ParsoGrammar grammar(stream.get());
  ASSERT_NE(grammar.root, nullptr);
  EXPECT_EQ(grammar.rules.size(), 296u);
  EXPECT_EQ(stream->Close(), streamresult::kSuccess);
  EXPECT_FALSE(ParsoGrammar(stream.get()).FindRule(u"document")) << "a closed stream reads nothing";

  for (const GrammarKind missing : {GrammarKind::XmlTD, GrammarKind::Stylesheet}) {
    const ParsoGrammar none(KindFileName(missing));
    EXPECT_FALSE(none.valid);
    EXPECT_EQ(none.root, nullptr);
  }
}

TEST(GrammarRuleTable, HoldsWhatTheGrammarHas) {
  static constexpr std::u16string_view kNames[] = {
#define GRAMMAR_RULE(name) u"" #name,
#include "parso/grammarrule.def"
#undef GRAMMAR_RULE
  };
  const struct {
    GrammarKind kind;
    std::size_t present;
    GrammarRule first, last;  // of those absent
  } rows[] = {
      {GrammarKind::XML, 82, GrammarRule::None, GrammarRule::None},
      {GrammarKind::DTD, 82 - 14, GrammarRule::sdDecl, GrammarRule::DocTypeName},
      {GrammarKind::Entity, 25 - 2, GrammarRule::sdDecl, GrammarRule::NotationText},
      {GrammarKind::Lax, 33 - 12, GrammarRule::versionInfo, GrammarRule::NotationText},
  };
  for (const auto& row : rows) {
    const ParsoGrammar& grammar = SystemGrammar(KindFileName(row.kind));
    const GrammarRuleTable table(grammar);
    std::size_t present = 0;
    std::vector<GrammarRule> absent;
    for (std::size_t i = 0; i < kGrammarRuleCount; ++i) {
      const auto rule = static_cast<GrammarRule>(i);
      EXPECT_EQ(table[rule], grammar.FindRule(kNames[i]));
      EXPECT_EQ(GrammarRuleFromName(kNames[i]), rule);
      if (table[rule] == nullptr) {
        absent.push_back(rule);
      } else {
        EXPECT_EQ(table[rule]->grammarRule, rule);
        ++present;
      }
    }
    EXPECT_EQ(present, row.present) << Narrow(KindFileName(row.kind));
    if (absent.empty()) continue;
    EXPECT_EQ(absent.front(), row.first);
    EXPECT_EQ(absent.back(), row.last);
  }
  EXPECT_EQ(GrammarRuleFromName(u"element"), GrammarRule::None);
}

}  // namespace
}  // namespace kelmora
