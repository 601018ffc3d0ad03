#include "flow/calltemplateinstruction.h"

#include "names/elementrecord.h"
#include "rules/templaterules.h"
#include "xslt/xsltprocessorbase.h"

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
  const auto& record = static_cast<const CallTemplateRecord&>(*Record);
  // Rules are only ever added, so as many as before are the same as before.
  if (record.RuleCount != Processor->Rules->Count()) {
    record.RuleCount = Processor->Rules->Count();
    record.Rule = Processor->Rules->FindNamed(record.Name);
  }
  if (record.Rule == nullptr) throw TQXSLTError(XsltCode::UndefinedTemplate, errorNode);
  PushRule(*record.Rule);
}

}  // namespace kelmora
