// xsl:key: does nothing when it runs, since the checks have filled Keys.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class KeyInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

}  // namespace kelmora
