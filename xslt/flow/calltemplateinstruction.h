// xsl:call-template. States:
//   Execute    without children the template starts, else the first xsl:with-param
//   children   the next xsl:with-param, after the last one the template
//   called     the template has ended: Resume finishes
#pragma once

#include "rules/ruleinstruction.h"

namespace kelmora {

class CallTemplateInstruction final : public RuleInstruction {
 public:
  using RuleInstruction::RuleInstruction;
  bool Execute() override;
  bool Resume() override;

 private:
  void CallNamed(XPathNode* errorNode);
};

}  // namespace kelmora
