#include "flow/applytemplatesinstruction.h"

#include "engine/resultconstruction.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "rules/templaterule.h"
#include "rules/templaterules.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

ApplyTemplatesInstruction::ApplyTemplatesInstruction(XSLTProcessorBase* processor)
    : RuleInstruction(processor) {}

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

namespace {

// The commonest values of select have a direct form; a missing one is "node()".
bool IsContentSelect(const ApplyTemplatesRecord& record) {
  return record.Select == nullptr;
}
bool IsChildrenSelect(const ApplyTemplatesRecord& record) {
  const TQString& text = record.SelectText.Text;
  return text == u"@*|node()" || text == u"@* | node()";
}

// The children of the node that are attributes, if wanted, or content.
XPathNodeList ChildrenOf(const XPathNode& node, bool withAttributes) {
  XPathNodeList children;
  for (XPathNode* child = node.firstChild; child != nullptr; child = child->next) {
    const bool isDeclaration =
        child->kind >= XPathNodeKind::XMLDeclaration || child->kind == XPathNodeKind::Namespace;
    const bool isAttribute = child->kind == XPathNodeKind::Attribute;
    if (!isDeclaration && (withAttributes || !isAttribute)) children.emplace_back(child);
  }
  return children;
}

}  // namespace

void ApplyTemplatesInstruction::Select() {
  const auto& record = static_cast<const ApplyTemplatesRecord&>(*Record);
  TemplateFrame& frame = Frame();
  const XPathNode* context = frame.ContextNode();
  XPathValue other;
  const bool isContent = IsContentSelect(record);
  if (context != nullptr && (isContent || IsChildrenSelect(record))) {
    frame.SetOwnNodeList(ChildrenOf(*context, !isContent));
    frame.Position = frame.NodeList->empty() ? 0 : 1;
  } else if (!frame.EvaluateIntoFrame(record.SelectText, other)) {
    throw TQXSLTError(XsltCode::NotANodeSet, record.Select);
  }
  SortAndNumber(*frame.NodeList);
  Evaluated = true;
}

// Parameters see the context of the caller, though the frame's list may be the selected one. So do
// the attributes of an xsl:sort that has nothing to sort, and no node to see otherwise.
void ApplyTemplatesInstruction::StartChild(XPathNode* child) {
  const XsltElement code = CodeOf(child);
  if (code == XsltElement::Sort) {
    if (!Evaluated) Select();
    HasSort = true;
  }
  const bool sortsNothing = code == XsltElement::Sort && Frame().NodeList->empty();
  TemplateFrame* frame = PushChild(child);
  if (code == XsltElement::WithParam || sortsNothing) {
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
  if (CodeOf(next) == XsltElement::Sort && !Evaluated) Select();
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
  while (NextIndex < list.size()) {
    XPathNode* item = list[NextIndex++].node;
    TemplateRule* rule = Processor->Rules->FindRule(item, Mode);
    if (rule == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
    if (!TakeShortcut(*rule, *item)) {
      PushRule(*rule)->Position = static_cast<std::int32_t>(NextIndex);
      return;
    }
  }
}

// Leaves everything as the frames of the template would, provided that the stack has room for them.
bool ApplyTemplatesInstruction::TakeShortcut(const TemplateRule& rule, const XPathNode& item) {
  using Shortcut = TemplateRule::Shortcut;
  if (rule.Effect == Shortcut::None) return false;
  if (!Processor->HasRoom(TemplateRule::kShortcutFrames)) return false;
  if (rule.Effect != Shortcut::Nothing) {
    AppendText(*OutputNode, item, rule.Effect == Shortcut::Value, JoinsTexts());
  }
  Frame().LastFinished = rule.TemplateNode;
  return true;
}

}  // namespace kelmora
