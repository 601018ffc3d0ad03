// xsl:text and xsl:value-of. Both are done in Execute: each makes one text node, also an empty one,
// and never merges it with a neighbour.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class TextInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

class ValueOfInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

}  // namespace kelmora
