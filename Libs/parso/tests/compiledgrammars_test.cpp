// The grammars that were compiled while the program was built against those that the loader makes
// of their texts: the same rules and the same code.
#include <gtest/gtest.h>

#include <map>

#include "parsoprogram.h"
#include "parsotesting.h"
#include "ystreamimpl/embeddedfiles.h"

namespace kelmora {
namespace {

std::string Describe(const ParsoRule* rule) {
  if (rule == nullptr) return "deleted";
  std::string out = Narrow(rule->name) + " > " + Narrow(rule->description);
  for (const int part :
       {rule->index, int(rule->kind), int(rule->op), int(rule->flagNoNode),
        int(rule->flagKeepApart), int(rule->flagKeepNode), int(rule->grammarRule)}) {
    out += ' ' + std::to_string(part);
  }
  for (const ParsoChild& child : rule->children) {
    out +=
        " child " + std::to_string(child.rule->index) + ' ' + std::to_string(int(child.quantifier));
  }
  for (const ParsoRule* name : rule->constraint) {
    out += " constraint " + (name != nullptr ? std::to_string(name->index) : "deleted");
  }
  return out;
}

bool SameOperands(const ParsoInstruction& a, const ParsoInstruction& b) {
  switch (OperandOf(a.opcode)) {
    case ParsoOperand::None:
      return a.data == b.data;
    case ParsoOperand::Set:
      return *a.set == *b.set;
    case ParsoOperand::Name:
      return *a.name == *b.name;
    case ParsoOperand::Stop:
      return *a.stop == *b.stop;
    case ParsoOperand::Beginning:
      return *a.beginning == *b.beginning;
    case ParsoOperand::Dispatch:
      return *a.dispatch == *b.dispatch;
    case ParsoOperand::Routine:
      return a.routine->output == b.routine->output &&
             a.routine->rule->index == b.routine->rule->index;
  }
  return false;
}

bool SameSecondOperands(const ParsoInstruction& a, const ParsoInstruction& b) {
  switch (SecondOperandOf(a.opcode)) {
    case ParsoSecondOperand::None:
    case ParsoSecondOperand::Owner:
      return a.owner == b.owner;
    case ParsoSecondOperand::Rule:
      return a.rule->index == b.rule->index;
    case ParsoSecondOperand::Literal:
      return std::u16string_view(a.literal, a.count) == std::u16string_view(b.literal, b.count);
  }
  return false;
}

bool SameInstruction(const ParsoInstruction& a, const ParsoInstruction& b) {
  return a.opcode == b.opcode && a.count == b.count && a.jump == b.jump && SameOperands(a, b) &&
         SameSecondOperands(a, b);
}

void CompareRoutines(const ParsoGrammar& compiled, const ParsoGrammar& loaded) {
  std::map<std::pair<ParsoOutput, std::int32_t>, const ParsoRoutine*> byRule;
  for (const ParsoRoutine& routine : loaded.Program().AllRoutines()) {
    byRule[{routine.output, routine.rule->index}] = &routine;
  }
  const auto& routines = compiled.Program().AllRoutines();
  ASSERT_EQ(routines.size(), byRule.size());
  for (const ParsoRoutine& routine : routines) {
    const ParsoRoutine* other = byRule[{routine.output, routine.rule->index}];
    ASSERT_NE(other, nullptr) << Narrow(routine.rule->name);
    EXPECT_FALSE(other->code.empty()) << Narrow(routine.rule->name);
    EXPECT_TRUE(std::ranges::equal(routine.code, other->code, SameInstruction))
        << Narrow(routine.rule->name) << ' ' << int(routine.output);
  }
}

TEST(CompiledGrammars, AreWhatTheLoaderMakes) {
  for (const char16_t* file :
       {u"gra_3dml.txt", u"gra_dtd.txt", u"gra_ent.txt", u"gra_re.txt", u"gra_xml.txt"}) {
    SCOPED_TRACE(Narrow(file));
    ParsoGrammar loaded;
    ASSERT_TRUE(loaded.LoadText(LookupEmbeddedFileView(file)));
    ParsoGrammar compiled;
    ASSERT_TRUE(compiled.InitCompiled(file));
    EXPECT_TRUE(compiled.valid);
    EXPECT_EQ(compiled.root->index, loaded.root->index);
    ASSERT_EQ(compiled.rules.size(), loaded.rules.size());
    for (std::size_t i = 0; i < loaded.rules.size(); ++i) {
      const ParsoRule* a = compiled.rules[i];
      const ParsoRule* b = loaded.rules[i];
      EXPECT_EQ(Describe(a), Describe(b));
      if (a == nullptr || b == nullptr) continue;
      EXPECT_EQ(a->grammar, &compiled);
      ASSERT_EQ(a->table != nullptr, b->table != nullptr);
      EXPECT_TRUE(a->table == nullptr || *a->table == *b->table);
      EXPECT_EQ(compiled.FindRule(b->name) != nullptr, loaded.FindRule(b->name) != nullptr);
    }
    CompareRoutines(compiled, loaded);
  }
}

TEST(CompiledGrammars, HasNoOthers) {
  ParsoGrammar none;
  EXPECT_FALSE(none.InitCompiled(u"gra_xsl.txt"));
  EXPECT_FALSE(none.valid);
  EXPECT_EQ(none.root, nullptr);
}

}  // namespace
}  // namespace kelmora
