// xsl:message. States:
//   Execute   the content, if any, starts with a kept fragment as output
//   Resume    the next content child starts; at the end the fragment's string value is the message.
//             The driver prints a terminating one and stops; nothing prints the other.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class MessageInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  XPathNode* Fragment = nullptr;  // of the processor
};

}  // namespace kelmora
