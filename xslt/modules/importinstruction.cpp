#include "modules/importinstruction.h"

#include "checks/elementdispatcher.h"
#include "modules/stylesheetmodules.h"
#include "names/elementrecord.h"
#include "names/stylesheetindex.h"
#include "rules/templaterules.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ImportInstruction::Execute() {
  XPathNode* element = Begin();
  XPathNode* href = static_cast<const ImportRecord&>(*Record).Href;
  const TQString path = ResolveHref(element, href->GetValue());
  Processor->Modules->CheckNotOpen(path, element);
  XPathNode* tree = Processor->Modules->LoadTree(path);
  if (tree == nullptr) throw TQXSLTError(XsltCode::ImportFailed, href);
  if (!Processor->Index->Holds(tree)) Processor->Dispatcher->Validate(XsltElement::Literal, tree);
  XPathNode* top = tree->firstChild;
  while (top != nullptr && top->kind != XPathNodeKind::Element) top = top->next;
  if (top != nullptr) PushChild(top);
  return true;
}

bool ImportInstruction::Resume() {
  ++Processor->Rules->ImportPrecedence;
  XPathNode* element = Frame().CallingNode;
  TemplateFrame* parent = Frame().Parent;
  Finish();
  if (parent != nullptr) parent->Cursor = element;
  return true;
}

}  // namespace kelmora
