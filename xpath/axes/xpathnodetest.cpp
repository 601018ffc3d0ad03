#include "axes/xpathnodetest.h"

#include "xpath/steptest.h"

namespace kelmora {

bool StepTest::Matches(const XPathNode& node) const {
  switch (kind) {
    case None:
    case AnyNode:
      return true;
    case Element:
      return node.kind == XPathNodeKind::Element;
    case Text:
      return node.IsText();
    case Attribute:
      return IsElementAttribute(node);
    case NamespaceNode:
      return node.kind == XPathNodeKind::Namespace;
    case Comment:
      return node.kind == XPathNodeKind::Comment;
    case PI:
      return node.kind == XPathNodeKind::PI && (name.empty() || node.GetName() == name);
    case NotNamespace:
      return node.kind != XPathNodeKind::Namespace;
    case Content:
      return node.kind != XPathNodeKind::Namespace && !IsElementAttribute(node);
    case Name:
      return HasExpandedName(node, uri, name);
    case LocalName:
      return HasLocalName(node, name);
    case Namespace:
      return IsInNamespace(node, uri);
  }
  return false;
}

}  // namespace kelmora
