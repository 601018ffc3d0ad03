#include "result/copyinstructions.h"

#include "names/elementrecord.h"
#include "result/resultscope.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool CopyInstruction::Execute() {
  Begin();
  XPathNode* node = Frame().ContextNode();
  if (node->kind == XPathNodeKind::Namespace && node->GetName() == u"xml") return true;
  if (node->kind != XPathNodeKind::Root) CopyResultNode(*node, true, false);
  RunSetsAndChildren(static_cast<const CopyRecord&>(*Record).UseAttributeSets);
  return true;
}

bool CopyOfInstruction::Execute() {
  Begin();
  XPathValue value;
  Frame().Evaluate(static_cast<const SelectRecord&>(*Record).SelectText, value);
  if (value.kind != XPathValue::NodeSet) {
    AppendText(*OutputNode, value, true, JoinsTexts());
    return true;
  }
  if (value.IsFragment()) {
    CopyFragment(*value.nodes.front().node);
    return true;
  }
  SortAndNumber(value.nodes);
  for (const XPathNodeRef& entry : value.nodes) {
    if (entry.node->kind != XPathNodeKind::Root) {
      CopyNode(*entry.node);
      continue;
    }
    for (const XPathNode* child = entry.node->firstChild; child != nullptr; child = child->next) {
      // The XML declaration and the DOCTYPE with all that is in it stay behind.
      if (child->kind < XPathNodeKind::XMLDeclaration) CopyNode(*child);
    }
  }
  return true;
}

void CopyOfInstruction::CopyFragment(const XPathNode& root) {
  for (const XPathNode* child = root.firstChild; child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Namespace) {
      AddDeclaration(DeclaredPrefix(*child), child->GetValue());
      continue;
    }
    OwnedTree copy(XPathNode::Copy(*child, true, nullptr));
    if (child->kind == XPathNodeKind::Element) {
      Processor->Scopes->ReconcileNamespaces(*copy, *OutputNode);
    }
    AppendOrDrop(*OutputNode, std::move(copy));
  }
}

void CopyOfInstruction::CopyNode(const XPathNode& node) {
  if (node.kind == XPathNodeKind::Namespace) {
    AddDeclaration(node.GetName(), node.GetValue());
    return;
  }
  OwnedTree made(XPathNode::Copy(node, true, nullptr));
  if (node.kind == XPathNodeKind::Attribute) {
    AddCopiedAttribute(std::move(made));
    return;
  }
  XPathNode* copy = AppendOrDrop(*OutputNode, std::move(made));
  if (copy != nullptr && copy->kind == XPathNodeKind::Element) {
    Processor->Scopes->DeclareMissingNamespaces(*copy, !Frame().InFragment);
  }
}

}  // namespace kelmora
