#include "flow/foreachinstruction.h"

#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ForEachInstruction::Execute() {
  const XPathNode* element = Begin();
  TemplateFrame& frame = Frame();
  const auto& record = static_cast<const SelectRecord&>(*Record);
  XPathValue other;
  if (!frame.EvaluateIntoFrame(record.SelectText, other)) {
    throw TQXSLTError(XsltCode::NotANodeSet, record.Select);
  }
  if (frame.NodeList->empty()) return true;
  SortAndNumber(*frame.NodeList);

  XPathNode* first = FirstContent(element);
  if (first == nullptr) return true;
  if (CodeOf(first) == XsltElement::Sort) {
    PushChild(first);
    SortingPhase = true;
  } else {
    FirstBodyNode = first;
    Sorted = true;
    BodyFrame(first);
  }
  return true;
}

// The body has no current rule.
void ForEachInstruction::BodyFrame(XPathNode* node) {
  TemplateFrame* frame = PushChild(node);
  frame->SetRule(nullptr);
  frame->Position = Iteration;
}

bool ForEachInstruction::Resume() {
  TemplateFrame& frame = Frame();
  if (frame.Cursor == nullptr) {
    Finish();
    return true;
  }
  XPathNode* next = NextContent(frame.Cursor);
  if (next == nullptr) {
    NextIteration();
    return true;
  }
  if (SortingPhase && CodeOf(next) == XsltElement::Sort) {
    PushChild(next);
    return true;
  }
  if (!Sorted) {
    SortNodes(*frame.NodeList, SortKeys);
    SortKeys.clear();
    Sorted = true;
  }
  SortingPhase = false;
  if (FirstBodyNode == nullptr) FirstBodyNode = next;
  BodyFrame(next);
  return true;
}

void ForEachInstruction::NextIteration() {
  TemplateFrame& frame = Frame();
  if (Iteration >= frame.ContextSize()) {
    Finish();
    return;
  }
  ++Iteration;
  // What the body bound is gone. A document element has no frame around it.
  frame.Variables = frame.Parent != nullptr ? frame.Parent->Variables : VariableMap();
  frame.Cursor = FirstBodyNode;
  if (FirstBodyNode != nullptr) BodyFrame(FirstBodyNode);
}

}  // namespace kelmora
