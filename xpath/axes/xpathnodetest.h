// What axes and node tests ask of a node. Each question is asked in one place alone.
#pragma once

#include <string_view>

#include "xmltree/xpathnode.h"

namespace kelmora {

inline bool IsDeclarationKind(const XPathNode& node) {
  return node.kind >= XPathNodeKind::XMLDeclaration;
}
// No axis yields it.
inline bool IsDeclaration(const XPathNode& node) {
  return IsDeclarationKind(node) || (node.parent != nullptr && IsDeclarationKind(*node.parent));
}
inline bool IsElementAttribute(const XPathNode& node) {
  return node.kind == XPathNodeKind::Attribute && node.parent != nullptr &&
         node.parent->kind == XPathNodeKind::Element;
}
// The axes of content yield it. Namespace declarations pass: the node tests keep them out.
inline bool IsContentNode(const XPathNode& node) {
  return !IsDeclaration(node) && !IsElementAttribute(node);
}

// True when the part of the name behind its first ":" (all of it without one) equals `local`,
// which has none itself.
inline bool HasLocalName(const XPathNode& node, std::u16string_view local) {
  std::u16string_view name = node.GetName();
  if (name.size() == local.size()) return name == local;
  if (name.size() <= local.size()) return false;
  std::size_t colon = name.size() - local.size() - 1;
  return name[colon] == u':' && name.substr(colon + 1) == local && name.find(u':') == colon;
}
// An element or attribute in the namespace.
inline bool IsInNamespace(const XPathNode& node, InternedURI uri) {
  return (node.kind == XPathNodeKind::Element || node.kind == XPathNodeKind::Attribute) &&
         node.namespaceURI == uri;
}
inline bool HasExpandedName(const XPathNode& node, InternedURI uri, std::u16string_view local) {
  return IsInNamespace(node, uri) && HasLocalName(node, local);
}

}  // namespace kelmora
