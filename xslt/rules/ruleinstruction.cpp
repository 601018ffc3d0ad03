#include "rules/ruleinstruction.h"

#include "rules/templaterule.h"

namespace kelmora {

TemplateFrame* RuleInstruction::PushRule(TemplateRule& rule) {
  auto* child = new TemplateFrame(&Frame(), OutputNode);
  child->CurrentNode = rule.TemplateNode;
  child->SetRule(&rule);
  Processor->PushFrame(child);
  return child;
}

}  // namespace kelmora
