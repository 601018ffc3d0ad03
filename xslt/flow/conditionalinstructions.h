// xsl:if, xsl:choose and its branches.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

// Instructions whose content runs child by child once they let it: if, when, otherwise, fallback.
class ContentInstruction : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override { return NextChild(); }
};

class IfInstruction final : public ContentInstruction {
 public:
  using ContentInstruction::ContentInstruction;
  bool Execute() override;
};

// States:
//   Execute   the first branch, which must be xsl:when, runs its test
//   Resume    the next branch, until one has been taken or none is left
class ChooseInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

  bool Taken = false;  // set by the branch whose test is true
};

class WhenInstruction final : public ContentInstruction {
 public:
  using ContentInstruction::ContentInstruction;
  bool Execute() override;
};

class OtherwiseInstruction final : public ContentInstruction {
 public:
  using ContentInstruction::ContentInstruction;
};

}  // namespace kelmora
