// xsl:comment. States:
//   Execute   without content nothing is made; else the content starts, with a fragment as output
//   Resume    the next content child starts; at the end the fragment's string value becomes the
//             comment
#pragma once

#include "engine/instruction.h"
#include "engine/resultconstruction.h"

namespace kelmora {

class CommentInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  OwnedTree Fragment;
};

}  // namespace kelmora
