#include "applytemplatesinstruction.h"

#include "elementrecord.h"
#include "templaterules.h"
#include "xslt/xsltprocessor.h"
#include "xsltnames.h"

namespace kelmora {

ApplyTemplatesInstruction::ApplyTemplatesInstruction(XSLTProcessorBase* processor)
    : Instruction(processor) {}

bool ApplyTemplatesInstruction::Execute() {
  const XPathNode* element = Begin();
  TemplateFrame& frame = Frame();
  SavedContext = frame.NodeList;
  SavedPosition = frame.Position;
  frame.PassedParameters.Clear();
  const auto& record = static_cast<const ApplyTemplatesRecord&>(*Record);
  Mode = Processor->Rules->ResolveMode(record.Mode, element);

  XPathNode* first = FirstContent(element);
  if (first == nullptr) {
    Select();
    ApplyNext();
  } else {
    StartChild(first);
  }
  return true;
}

void ApplyTemplatesInstruction::Select() {
  const auto& record = static_cast<const ApplyTemplatesRecord&>(*Record);
  TemplateFrame& frame = Frame();
  XPathValue other;
  if (!frame.EvaluateIntoFrame(record.SelectText, other)) {
    throw TQXSLTError(XsltCode::NotANodeSet, record.Select);
  }
  SortAndNumber(*frame.NodeList);
  Evaluated = true;
}

// Parameters see the context of the caller, though the frame's list may be the selected one.
void ApplyTemplatesInstruction::StartChild(XPathNode* child) {
  const std::int32_t code = CodeOf(child);
  if (code == ElementCode::Sort) {
    if (!Evaluated) Select();
    HasSort = true;
  }
  TemplateFrame* frame = PushChild(child);
  if (code == ElementCode::WithParam) {
    frame->NodeList = SavedContext;
    frame->Position = SavedPosition;
  }
}

bool ApplyTemplatesInstruction::Resume() {
  const TemplateFrame& frame = Frame();
  if (IsWithin(frame.CallingNode, frame.LastFinished)) {
    NextParameterOrSort();
  } else {
    ApplyOrFinish();
  }
  return true;
}

void ApplyTemplatesInstruction::NextParameterOrSort() {
  TemplateFrame& frame = Frame();
  XPathNode* next = NextContent(frame.Cursor);
  if (next == nullptr) {
    if (!Evaluated) Select();
    ApplyOrFinish();
    return;
  }
  if (CodeOf(next) == ElementCode::Sort && !Evaluated) Select();
  if (Evaluated && frame.NodeList->empty()) {
    Finish();
  } else {
    StartChild(next);
  }
}

void ApplyTemplatesInstruction::ApplyOrFinish() {
  if (NextIndex >= Frame().NodeList->size()) {
    Finish();
  } else {
    ApplyNext();
  }
}

void ApplyTemplatesInstruction::ApplyNext() {
  XPathNodeList& list = *Frame().NodeList;
  if (HasSort && !Sorted) {
    SortNodes(list, SortKeys);
    SortKeys.clear();
    Sorted = true;
  }
  if (list.empty()) return;
  XPathNode* item = list[NextIndex++].node;
  TemplateRule* rule = Processor->Rules->FindRule(item, Mode);
  if (rule == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  PushRule(*rule)->Position = static_cast<std::int32_t>(NextIndex);
}

}  // namespace kelmora
