// xsl:import: Execute loads and checks the tree and starts it, Resume ends the import, which raises
// the precedence of what is registered from here on.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class ImportInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;
};

}  // namespace kelmora
