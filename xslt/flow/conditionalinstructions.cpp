#include "flow/conditionalinstructions.h"

#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ContentInstruction::Execute() {
  Begin();
  RunChildren();
  return true;
}

bool IfInstruction::Execute() {
  Begin();
  if (Frame().EvaluateBoolean(static_cast<const TestRecord&>(*Record).TestText)) RunChildren();
  return true;
}

bool ChooseInstruction::Execute() {
  XPathNode* element = Begin();
  XPathNode* first = FirstContent(element);
  if (first == nullptr || CodeOf(first) != XsltElement::When) {
    throw TQXSLTError(XsltCode::WhenExpected, element);
  }
  PushChild(first);
  return true;
}

bool ChooseInstruction::Resume() {
  XPathNode* next = Taken ? nullptr : NextContent(Frame().Cursor);
  if (next == nullptr) {
    Finish();
    return true;
  }
  const XsltElement code = CodeOf(next);
  if (code == XsltElement::Otherwise) {
    if (NextContent(next) != nullptr) throw TQXSLTError(XsltCode::UnexpectedOtherwise, next);
  } else if (code != XsltElement::When) {
    throw TQXSLTError(XsltCode::NotWhenOrOtherwise, next);
  }
  PushChild(next);
  return true;
}

bool WhenInstruction::Execute() {
  Begin();
  if (!Frame().EvaluateBoolean(static_cast<const TestRecord&>(*Record).TestText)) return true;
  class Instruction* parent =
      Frame().Parent != nullptr ? Frame().Parent->Instruction.get() : nullptr;
  if (parent == nullptr || parent->ElementCode != XsltElement::Choose) {
    throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  }
  static_cast<ChooseInstruction*>(parent)->Taken = true;
  RunChildren();
  return true;
}

}  // namespace kelmora
