// The compiled form of a grammar against the plain interpreter of its rules: random texts that the
// grammar makes, and such texts with random damage, from every rule that can start a parse.
#include <gtest/gtest.h>

#include "parsomachine.h"
#include "parsomakers.h"
#include "parsoreference.h"
#include "parsotesting.h"

namespace kelmora {
namespace {

std::string Line(const ParsoRule* rule, long start, long length, std::size_t depth) {
  return std::string(depth, ' ') + std::to_string(rule->index) + ' ' + Narrow(rule->name) + ' ' +
         std::to_string(start) + '+' + std::to_string(length) + '\n';
}

// Every node on a line, with its rule and its range, in document order.
std::string Nodes(const ParsoNode* root, const char16_t* text) {
  std::string out;
  std::vector<std::pair<const ParsoNode*, std::size_t>> pending = {{root, 0}};
  while (!pending.empty()) {
    const auto [node, depth] = pending.back();
    pending.pop_back();
    if (node->next != nullptr) pending.push_back({node->next, depth});
    if (node->firstChild != nullptr) pending.push_back({node->firstChild, depth + 1});
    EXPECT_TRUE(node->matched);
    out += Line(node->rule, node->text - text, node->length, depth);
  }
  return out;
}

void AddNodes(const ParsoReference::Node& node, std::size_t depth, std::string& out) {
  out += Line(node.rule, node.start, node.length, depth);
  for (const auto& child : node.children) AddNodes(*child, depth + 1, out);
}

std::string Failure(long offset, const ParsoRule* rule, std::u16string_view message) {
  return std::to_string(offset) + ": " +
         (rule != nullptr ? std::to_string(rule->index) + ' ' + Narrow(rule->name)
                          : "message " + Narrow(message));
}

// The nodes or the failure.
std::string Parse(const ParsoGrammar& grammar, const std::u16string& text,
                  std::u16string_view start, ParsoCompare compare = CompareExactly) {
  ParsoParser parser(&grammar);
  UseDocumentMode();
  ParsoMode::current.compare = compare;
  if (parser.Parse(text.c_str(), static_cast<std::int32_t>(text.size()), start)) {
    return Nodes(parser.Root(), text.c_str());
  }
  const ParsoErrorState& state = ParsoErrorState::current;
  return Failure(state.furthest - text.c_str(), state.failedRule, state.explicitMessage);
}

// What parses of texts by the rule of one grammar came to.
struct Tally {
  int texts = 0;
  int matches = 0;
  int byMachine = 0;
};

// Texts that the rule makes, every other one damaged.
void CompareOn(const ParsoGrammar& grammar, const ParsoRule& start, TextMaker& maker, int rounds,
               std::size_t longest, Tally& tally) {
  for (int round = 0; round < rounds; ++round) {
    std::u16string text = maker.Make(start, longest);
    if (round % 2 == 1) maker.Damage(text);
    ParsoReference reference(text);
    const auto tree = reference.Parse(start);
    if (reference.gaveUp) continue;
    std::string expected;
    if (tree != nullptr) {
      AddNodes(*tree, 0, expected);
    } else {
      const auto& [offset, rule, message] = reference.failure;
      expected = Failure(offset, rule, message);
    }
    SCOPED_TRACE(Narrow(start.name) + ": " + Narrow(text));
    EXPECT_EQ(Parse(grammar, text, start.name), expected);
    EXPECT_EQ(Parse(grammar, text, start.name, CompareExactlyToo), expected) << "plainly";
    ++tally.texts;
    tally.matches += tree != nullptr ? 1 : 0;

    // The machine alone must come to the same decision, as far as it knows the rule.
    ParsoTree own;
    const ParsoRoutine* routine = grammar.Program().StartRoutine(start);
    if (routine == nullptr) continue;
    const auto outcome = ParsoMachine(grammar.Program(), own)
                             .Run(*routine, text.c_str(), static_cast<std::int32_t>(text.size()));
    if (outcome == ParsoMachine::Outcome::Unsupported) continue;
    ++tally.byMachine;
    EXPECT_EQ(outcome == ParsoMachine::Outcome::Matched, tree != nullptr) << "the machine";
  }
}

void CompareOn(const char16_t* file, int rounds, double leastMatches) {
  const ParsoGrammar& grammar = SystemGrammar(file);
  std::mt19937 random(FreshSeed());
  TextMaker maker(grammar, random);
  Tally tally;
  for (const auto& start : grammar.rules) {
    if (start == nullptr || start->kind != ParsoKind::Rule) continue;
    CompareOn(grammar, *start, maker, rounds, 300, tally);
  }
  EXPECT_EQ(tally.byMachine, tally.texts);
  EXPECT_GT(tally.matches, tally.texts * leastMatches) << "of " << tally.texts << " texts";
  EXPECT_LT(tally.matches, tally.texts * 0.9);
}

TEST(ParsoMachine, EqualsPlainRunOnRandomGrammars) {
  constexpr int kGrammars = 1500;
  constexpr int kTexts = 12;
  std::mt19937 random(FreshSeed());
  Tally tally;
  for (int i = 0; i < kGrammars && !HasFailure(); ++i) {
    const std::string lines = GrammarMaker(random).Make();
    SCOPED_TRACE(lines);
    ParsoGrammar grammar;
    ASSERT_TRUE(grammar.LoadText(lines));
    TextMaker maker(grammar, random);
    for (const auto& start : grammar.rules) {
      if (start == nullptr || start->kind != ParsoKind::Rule) continue;
      CompareOn(grammar, *start, maker, kTexts, 12, tally);
    }
  }
  EXPECT_GT(tally.byMachine, tally.texts / 2);
  EXPECT_GT(tally.matches, tally.texts / 4) << "of " << tally.texts << " texts";
}

TEST(ParsoMachine, EqualsPlainRunXml) {
  CompareOn(u"gra_xml.txt", 100, 0.4);
}
TEST(ParsoMachine, EqualsPlainRunDtd) {
  CompareOn(u"gra_dtd.txt", 100, 0.4);
}
TEST(ParsoMachine, EqualsPlainRunEntity) {
  CompareOn(u"gra_ent.txt", 300, 0.4);
}
TEST(ParsoMachine, EqualsPlainRunLax) {
  CompareOn(u"gra_3dml.txt", 300, 0.4);
}
TEST(ParsoMachine, EqualsPlainRunRegExp) {
  CompareOn(u"gra_re.txt", 300, 0.4);
}

TEST(ParsoMachine, KnowsAllSystemGrammars) {
  for (const char16_t* file :
       {u"gra_xml.txt", u"gra_dtd.txt", u"gra_ent.txt", u"gra_3dml.txt", u"gra_re.txt"}) {
    const ParsoGrammar& grammar = SystemGrammar(file);
    for (const auto& rule : grammar.rules) {
      if (rule == nullptr || rule->kind != ParsoKind::Rule) continue;
      EXPECT_NE(grammar.Program().StartRoutine(*rule), nullptr) << Narrow(rule->name);
    }
  }
}

// Runs end where they must wherever the text lies and however long it is.
TEST(ParsoMachine, EndsRuns) {
  ParsoUnitSet set;
  set.table.fill(1);
  for (const char16_t refused : {u'\0', u'<', u'&'}) set.table[refused] = 0;
  for (const bool refusesControls : {false, true}) {
    if (refusesControls) set.table[1] = 0;
    set.skips = false;
    PrepareSkipping(set);
    EXPECT_TRUE(set.skips);
    for (std::size_t length = 0; length < 40; ++length) {
      for (std::size_t stop = 0; stop <= length; ++stop) {
        std::u16string text(length, u'\u263C');  // its low byte is '<'
        if (length > 0) text[length / 2] = u'\r';
        if (stop < length) text[stop] = refusesControls ? u'\1' : u'&';
        const char16_t* end = text.c_str() + length;
        EXPECT_EQ(SkipRun(set, text.c_str(), end) - text.c_str(), static_cast<long>(stop));
      }
    }
  }
}

TEST(ParsoMachine, TakesNoUnitZero) {
  const std::u16string text(u"<a>b\0c</a>", 10);
  EXPECT_EQ(Parse(SystemGrammar(u"gra_xml.txt"), text, {}),
            Parse(SystemGrammar(u"gra_xml.txt"), text, {}, CompareExactlyToo));
}

}  // namespace
}  // namespace kelmora
