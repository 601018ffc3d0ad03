#include <algorithm>

#include "parso/parsogrammar.h"
#include "parsotable.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

std::u16string_view TextOf(const ParsoGrammarTable& table, ParsoTextRow row) {
  return table.texts.substr(row.start, row.length);
}

}  // namespace

bool ParsoGrammar::InitCompiled(std::u16string_view fileName) {
  const std::span<const ParsoGrammarTable> all = CompiledGrammars();
  const auto found = std::ranges::find_if(all, [&](const ParsoGrammarTable& table) {
    return EqualsIgnoringAsciiCase(fileName, table.file);
  });
  if (found == all.end()) return false;
  const ParsoGrammarTable& table = *found;
  const std::size_t count = table.rules.size();
  auto* objects =
      static_cast<ParsoRule*>(arena_.Allocate(count * sizeof(ParsoRule), alignof(ParsoRule)));
  auto* children = static_cast<ParsoChild*>(
      arena_.Allocate(table.children.size() * sizeof(ParsoChild), alignof(ParsoChild)));
  auto* constraints = static_cast<ParsoRule**>(
      arena_.Allocate(table.constraints.size() * sizeof(ParsoRule*), alignof(ParsoRule*)));
  const auto ruleAt = [&](std::uint16_t index) {
    return index == ParsoGrammarTable::kNone ? nullptr : objects + index;
  };
  for (std::size_t i = 0; i < table.children.size(); ++i) {
    children[i] = {ruleAt(table.children[i].rule), table.children[i].quantifier};
  }
  for (std::size_t i = 0; i < table.constraints.size(); ++i) {
    constraints[i] = ruleAt(table.constraints[i]);
  }
  rules.resize(count);
  std::size_t childrenStart = 0;
  std::size_t constraintStart = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const ParsoRuleRow& row = table.rules[i];
    if ((row.flags & ParsoRuleRow::kDeleted) != 0) continue;
    auto* rule = new (objects + i) ParsoRule;
    rule->name = TextOf(table, row.name);
    rule->description = TextOf(table, row.description);
    rule->children = {children + childrenStart, row.childrenEnd - childrenStart};
    rule->constraint = {constraints + constraintStart, row.constraintEnd - constraintStart};
    if (row.classTable != ParsoGrammarTable::kNone) rule->table = &table.classes[row.classTable];
    rule->grammar = this;
    rule->index = static_cast<std::int32_t>(i);
    rule->kind = row.kind;
    rule->op = row.op;
    rule->flagNoNode = (row.flags & ParsoRuleRow::kNoNode) != 0;
    rule->flagKeepApart = (row.flags & ParsoRuleRow::kKeepApart) != 0;
    rule->flagKeepNode = (row.flags & ParsoRuleRow::kKeepNode) != 0;
    rule->grammarRule = row.grammarRule;
    rules[i] = rule;
    childrenStart = row.childrenEnd;
    constraintStart = row.constraintEnd;
  }
  root = rules[table.root];
  table_ = &table;
  valid = true;
  return true;
}

}  // namespace kelmora
