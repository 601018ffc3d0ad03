// xsl:call-template. States:
//   Execute    without children the template starts, else the first xsl:with-param
//   children   the next xsl:with-param, after the last one the template
//   called     the template has ended: Resume finishes
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class CallTemplateInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  void CallNamed(XPathNode* errorNode);
};

}  // namespace kelmora
