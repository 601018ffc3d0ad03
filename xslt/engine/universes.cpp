#include "engine/universes.h"

namespace kelmora {

namespace {

// The next node behind `node` in document order that patterns can see: neither an attribute nor a
// declaration, nor anything below one.
XPathNode* NextVisible(XPathNode* node) {
  XPathNode* next = node->NextInDocument(true);
  while (next != nullptr) {
    const XPathNodeRef::Kind kind = XPathNodeRef::KindOf(next);
    const bool isHidden = kind == XPathNodeRef::Attribute || kind == XPathNodeRef::Namespace ||
                          kind == XPathNodeRef::Declaration;
    if (!isHidden) return next;
    next = next->NextSkippingChildren(nullptr);
  }
  return nullptr;
}

XPathNodeList AllNodes(XPathNode* root) {
  XPathNodeList list;
  for (XPathNode* node = root; node != nullptr; node = NextVisible(node)) {
    list.emplace_back(node, static_cast<std::int32_t>(list.size()) + 1);
  }
  return list;
}

XPathNodeList AllAttributes(XPathNode* root) {
  XPathNodeList list;
  for (XPathNode* node = root; node != nullptr; node = NextVisible(node)) {
    if (node->kind != XPathNodeKind::Element) continue;
    std::int32_t position = 0;
    for (XPathNode* child = node->firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Attribute) list.emplace_back(child, ++position);
    }
  }
  return list;
}

}  // namespace

const XPathNodeList& Universes::Find(XPathNode* contextNode) {
  const bool ofAttributes = contextNode->kind == XPathNodeKind::Attribute;
  Lists& lists = ofAttributes ? AttributeUniverse : NodeUniverse;
  const DocumentKey document = DocumentKeyOf(contextNode);
  const auto found = lists.find(document);
  if (found != lists.end()) return found->second;
  XPathNode* root = contextNode->Root();
  return lists.emplace(document, ofAttributes ? AllAttributes(root) : AllNodes(root)).first->second;
}

void Universes::Forget(const XPathNode& root) {
  NodeUniverse.erase(DocumentKeyOf(&root));
  AttributeUniverse.erase(DocumentKeyOf(&root));
}

}  // namespace kelmora
