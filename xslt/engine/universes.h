// Universes: per document, the list of all nodes that patterns run from.
#pragma once

#include <unordered_map>

#include "base/documentkey.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class Universes {
 public:
  // What "//node()" yields with the root in front, in document order and numbered from 1; what
  // "//@*" yields for an attribute as context node. The list lives as long as this object
  // or until its document is forgotten.
  const XPathNodeList& Find(XPathNode* contextNode);
  void Forget(const XPathNode& root);

 private:
  using Lists = std::unordered_map<DocumentKey, XPathNodeList>;

  Lists NodeUniverse;
  Lists AttributeUniverse;
};

}  // namespace kelmora
