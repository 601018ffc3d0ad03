#include "result/processinginstructioninstruction.h"

#include "names/elementrecord.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathexpression.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ProcessingInstructionInstruction::Execute() {
  const XPathNode* element = Begin();
  XPathNode* name = static_cast<const ProcessingInstructionRecord&>(*Record).Name;
  Target = Processor->ExpandAttributeValue(name, Frame());
  if (!IsNCName(Target) || EqualsIgnoringAsciiCase(Target, u"xml")) {
    throw TQXSLTError(XsltCode::NotAPITarget, name);
  }
  if (XPathNode* first = FirstContent(element)) {
    Fragment.reset(MakeFragmentRoot());
    PushChild(first, Fragment.get());
  }
  return true;
}

bool ProcessingInstructionInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (XPathNode* next = cursor != nullptr ? NextContent(cursor) : nullptr) {
    PushChild(next, Fragment.get());
    return true;
  }
  TQString data;
  if (Fragment != nullptr) {
    int length = 0;
    constexpr int kGrowth = 64;  // units
    for (const XPathNode* child = Fragment->firstChild; child != nullptr; child = child->next) {
      if (child->IsText()) data.AppendAt(child->GetValue(), length, kGrowth);
    }
    Fragment.reset();
  }
  data.Replace(u"?>", u"? >", 0);
  AppendOrDrop(*OutputNode, MakeResultNode(XPathNodeKind::PI, std::move(Target), std::move(data)));
  Finish();
  return true;
}

}  // namespace kelmora
