#include "modules/templateinstruction.h"

#include "xslt/xsltprocessorbase.h"

namespace kelmora {

TemplateInstruction::TemplateInstruction(XSLTProcessorBase* processor) : Instruction(processor) {
  TemplateFrame& frame = Frame();
  frame.Variables.Clear();
  frame.Parameters.Clear();
  frame.RootFrame = &frame;
}

bool TemplateInstruction::Execute() {
  Begin();
  RunChildren();
  return true;
}

bool TemplateInstruction::Resume() {
  return NextChild();
}

}  // namespace kelmora
