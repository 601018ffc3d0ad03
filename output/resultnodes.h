// Questions that the serializer and the writers ask of the nodes of a result.
#pragma once

#include "xmltree/xpathnode.h"

namespace kelmora {

// Only text proper counts, no CDATA section. Linear in the children.
inline bool HasTextChild(const XPathNode& node) {
  for (const XPathNode* child = node.firstChild; child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Text) return true;
  }
  return false;
}

// Null without one. Linear in the children in front of it.
inline const XPathNode* FirstElement(const XPathNode& root) {
  const XPathNode* node = root.firstChild;
  while (node != nullptr && node->kind != XPathNodeKind::Element) node = node->next;
  return node;
}

inline bool IsAttributeOrNamespace(const XPathNode& node) {
  return node.kind == XPathNodeKind::Attribute || node.kind == XPathNodeKind::Namespace;
}

}  // namespace kelmora
