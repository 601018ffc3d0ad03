#include "modules/importinstruction.h"

#include "checks/elementdispatcher.h"
#include "names/elementrecord.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

bool ImportInstruction::Execute() {
  XPathNode* element = Begin();
  XPathNode* href = static_cast<const ImportRecord&>(*Record).Href;
  const TQString path = XSLTProcessorBase::ResolveHref(element, href->GetValue());
  Processor->CheckNotOpen(path, element);
  XPathNode* tree = Processor->LoadTree(path);
  if (tree == nullptr) throw TQXSLTError(XsltCode::ImportFailed, href);
  ElementDispatcher& dispatcher = *Processor->Dispatcher;
  if (!dispatcher.IsValidated(tree)) dispatcher.Validate(ElementCode::Literal, tree);
  XPathNode* top = tree->firstChild;
  while (top != nullptr && top->kind != XPathNodeKind::Element) top = top->next;
  if (top != nullptr) PushChild(top);
  return true;
}

bool ImportInstruction::Resume() {
  ++Processor->ImportPrecedence;
  XPathNode* element = Frame().CallingNode;
  TemplateFrame* parent = Frame().Parent;
  Finish();
  if (parent != nullptr) parent->Cursor = element;
  return true;
}

}  // namespace kelmora
