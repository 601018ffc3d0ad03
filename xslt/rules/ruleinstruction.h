// RuleInstruction: what the instructions share that start a template rule.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class TemplateRule;

class RuleInstruction : public Instruction {
 public:
  using Instruction::Instruction;

 protected:
  // A child frame that runs a rule, in the context of this frame; Cursor stays.
  TemplateFrame* PushRule(TemplateRule& rule);
};

}  // namespace kelmora
