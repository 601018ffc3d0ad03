#include "parsoprogram.h"

#include "parsocompiler.h"

namespace kelmora {

ParsoProgram::ParsoProgram(const ParsoGrammar& grammar) : grammar_(grammar), analysis_(grammar) {
  for (auto& routines : routinesByRule_) routines.resize(grammar.rules.size());
  for (const auto& rule : grammar.rules) {
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
  return !routine.code.empty() || ParsoCompiler(*this).Compile(routine);
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
