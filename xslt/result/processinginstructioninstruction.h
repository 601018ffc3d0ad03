// xsl:processing-instruction. States:
//   Execute   the target is checked; the content, if any, starts with a fragment as output
//   Resume    the next content child starts; at the end the texts directly in the fragment become
//             the data, which is empty without content
#pragma once

#include "engine/instruction.h"
#include "engine/resultconstruction.h"

namespace kelmora {

class ProcessingInstructionInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  TQString Target;
  OwnedTree Fragment;
};

}  // namespace kelmora
