// xsl:apply-imports: Execute starts the rule of lower precedence, with the context and the
// parameters of the running one; Resume, when that has ended, finishes.
#pragma once

#include "rules/ruleinstruction.h"

namespace kelmora {

class ApplyImportsInstruction final : public RuleInstruction {
 public:
  using RuleInstruction::RuleInstruction;
  bool Execute() override;
};

}  // namespace kelmora
