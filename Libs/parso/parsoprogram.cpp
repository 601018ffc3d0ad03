#include "parsoprogram.h"

#include <algorithm>
#include <utility>

#include "parsocompiler.h"
#include "parsotable.h"

namespace kelmora {

ParsoOperand OperandOf(ParsoOpcode opcode) {
  static constexpr ParsoOperand kOperands[] = {
#define PARSO_OPCODE(name, operand, also) ParsoOperand::operand,
#include "parsoopcode.def"
#undef PARSO_OPCODE
  };
  return kOperands[static_cast<std::size_t>(opcode)];
}

ParsoSecondOperand SecondOperandOf(ParsoOpcode opcode) {
  static constexpr ParsoSecondOperand kOperands[] = {
#define PARSO_OPCODE(name, operand, also) ParsoSecondOperand::also,
#include "parsoopcode.def"
#undef PARSO_OPCODE
  };
  return kOperands[static_cast<std::size_t>(opcode)];
}

ParsoProgram::ParsoProgram(const ParsoGrammar& grammar) : grammar_(grammar) {
  for (auto& routines : routinesByRule_) routines.resize(grammar.rules.size());
  for (const ParsoRule* rule : grammar.rules) {
    if (rule == nullptr) continue;
    const bool needsTwo = rule->op == ParsoOp::Except || rule->op == ParsoOp::StopAt;
    isSupported_ &= !rule->flagKeepApart && !(needsTwo && rule->children.size() < 2);
    hasConstraints_ |= !rule->constraint.empty();
  }
}

const ParsoRoutine* ParsoProgram::StartRoutine(const ParsoRule& rule) {
  if (!isSupported_ || rule.kind != ParsoKind::Rule) return nullptr;
  ParsoRoutine* routine = RoutineFor(rule, ParsoOutput::Root);
  return Complete(*routine) ? routine : nullptr;
}

bool ParsoProgram::Complete(ParsoRoutine& routine) {
  if (!routine.code.empty() || TakeFromTable(routine)) return true;
  if (analysis_ == nullptr) analysis_ = std::make_unique<ParsoAnalysis>(grammar_);
  return ParsoCompiler(*this).Compile(routine);
}

const std::deque<ParsoRoutine>& ParsoProgram::AllRoutines() {
  for (const ParsoRule* rule : grammar_.rules) {
    if (rule != nullptr && rule->kind == ParsoKind::Rule) StartRoutine(*rule);
  }
  for (std::size_t i = 0; i < routines_.size(); ++i) Complete(routines_[i]);
  return routines_;
}

bool ParsoProgram::TakeFromTable(ParsoRoutine& routine) {
  const ParsoGrammarTable* table = grammar_.table_;
  if (table == nullptr) return false;
  const auto key = [](const auto& row) { return std::pair(row.output, row.rule); };
  const std::pair wanted(routine.output, static_cast<std::uint16_t>(routine.rule->index));
  const auto found = std::ranges::lower_bound(table->routines, wanted, {}, key);
  if (found == table->routines.end() || key(*found) != wanted) return false;
  const std::size_t start = found == table->routines.begin() ? 0 : (found - 1)->codeEnd;
  routine.code.reserve(found->codeEnd - start);
  for (const ParsoInstructionRow& row : table->code.subspan(start, found->codeEnd - start)) {
    routine.code.push_back(FromRow(row, *table));
  }
  return true;
}

ParsoInstruction ParsoProgram::FromRow(const ParsoInstructionRow& row,
                                       const ParsoGrammarTable& table) {
  ParsoInstruction instruction(row.opcode, row.jump);
  instruction.count = row.count;
  switch (OperandOf(row.opcode)) {
    case ParsoOperand::None:
      break;
    case ParsoOperand::Set:
      instruction.set = &table.sets[row.operand];
      break;
    case ParsoOperand::Name:
      instruction.name = &table.names[row.operand];
      break;
    case ParsoOperand::Stop:
      instruction.stop = StopFromRow(table.stops[row.operand], table);
      break;
    case ParsoOperand::Beginning:
      instruction.beginning = &table.beginnings[row.operand];
      break;
    case ParsoOperand::Dispatch:
      instruction.dispatch = &table.dispatches[row.operand];
      break;
    case ParsoOperand::Routine:
      instruction.routine = RoutineFor(*grammar_.rules[row.operand], row.output);
      break;
  }
  switch (SecondOperandOf(row.opcode)) {
    case ParsoSecondOperand::None:
      break;
    case ParsoSecondOperand::Rule:
      instruction.rule = grammar_.rules[static_cast<std::size_t>(row.also)];
      break;
    case ParsoSecondOperand::Literal:
      instruction.literal = grammar_.rules[static_cast<std::size_t>(row.also)]->name.data();
      break;
    case ParsoSecondOperand::Owner:
      instruction.owner = row.also;
      break;
  }
  return instruction;
}

const ParsoStop* ParsoProgram::StopFromRow(const ParsoStopRow& row,
                                           const ParsoGrammarTable& table) {
  ParsoStop stop;
  stop.run = table.sets[row.run];
  stop.whole = table.sets[row.whole];
  for (std::size_t i = 0; i < row.literals.size(); ++i) {
    if (row.literals[i] != ParsoGrammarTable::kNone) {
      stop.literals[i] = grammar_.rules[row.literals[i]]->name;
    }
  }
  return KeepOnce(stops_, stop);
}

ParsoRoutine* ParsoProgram::RoutineFor(const ParsoRule& rule, ParsoOutput output) {
  auto& place =
      routinesByRule_[static_cast<std::size_t>(output)][static_cast<std::size_t>(rule.index)];
  if (place == nullptr) place = &routines_.emplace_back(ParsoRoutine{&rule, output, {}});
  return place;
}

const std::vector<bool>& ParsoProgram::MemoisedRules() {
  if (memoised_.empty()) memoised_ = FindMemoisedRules(grammar_);
  return memoised_;
}

}  // namespace kelmora
