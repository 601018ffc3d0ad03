// xsl:template, as the root of a running rule. Made on the frame of the rule, it empties the local
// variables and parameters that the frame inherited; PassedParameters stay for xsl:param.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

class TemplateInstruction final : public Instruction {
 public:
  explicit TemplateInstruction(XSLTProcessorBase* processor);
  bool Execute() override;
  bool Resume() override;
};

}  // namespace kelmora
