// xsl:apply-imports: Execute starts the rule of lower precedence, with the context and the
// parameters of the running one; Resume, when that has ended, finishes.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class ApplyImportsInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

}  // namespace kelmora
