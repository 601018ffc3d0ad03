#include "calltemplateinstruction.h"

#include "elementrecord.h"
#include "templaterules.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

bool CallTemplateInstruction::Execute() {
  const XPathNode* element = Begin();
  Frame().PassedParameters.Clear();
  if (XPathNode* first = FirstContent(element)) {
    PushChild(first);
  } else {
    CallNamed(static_cast<const CallTemplateRecord&>(*Record).NameNode);
  }
  return true;
}

bool CallTemplateInstruction::Resume() {
  const TemplateFrame& frame = Frame();
  if (!IsWithin(frame.CallingNode, frame.LastFinished)) {
    Finish();
  } else if (XPathNode* next = NextContent(frame.Cursor)) {
    PushChild(next);
  } else {
    CallNamed(nullptr);
  }
  return true;
}

void CallTemplateInstruction::CallNamed(XPathNode* errorNode) {
  TemplateRule* rule =
      Processor->Rules->FindNamed(static_cast<const CallTemplateRecord&>(*Record).Name);
  if (rule == nullptr) throw TQXSLTError(XsltCode::UndefinedTemplate, errorNode);
  PushRule(*rule);
}

}  // namespace kelmora
