#include "syntax/xpathparsenode.h"

namespace kelmora {

void XPathParseNode::AddChild(XPathParseNode* child, std::int8_t asRole) {
  if (child == nullptr) return;
  if (position < 0) position = child->position;
  child->role = asRole;
  if (lastChild != nullptr) {
    lastChild->nextSibling = child;
  } else {
    firstChild = child;
  }
  lastChild = child;
}

std::u16string_view LeafText(const XPathParseNode& node) {
  const XPathParseNode* at = &node;
  while (at->firstChild != nullptr) at = at->firstChild;
  return at->text;
}

ParsedName NameOf(const XPathParseNode& qualifiedName) {
  const XPathParseNode& name = *qualifiedName.firstChild;
  bool prefixed = name.rule == XPathRule::PrefixedName ||
                  name.rule == XPathRule::FieldPrefixedName ||
                  name.rule == XPathRule::SelectorPrefixedName;
  if (!prefixed) return {{}, LeafText(name), false};
  return {LeafText(*name.firstChild), LeafText(*name.lastChild), true};
}

}  // namespace kelmora
