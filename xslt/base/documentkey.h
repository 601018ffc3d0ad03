// DocumentKey: the identity of a node's tree for what is kept per document. A stamped node knows
// the number of its document; only others (of result tree fragments) walk up to their root.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "xmltree/xpathnode.h"

namespace kelmora {

using DocumentKey = std::uintptr_t;

inline bool IsStamped(const XPathNode* node) {
  return node->orderNumber > 0;
}

inline DocumentKey DocumentKeyOf(const XPathNode* node) {
  if (!IsStamped(node)) node = node->Root();
  // Odd, so that a number never equals the address of a root.
  if (IsStamped(node)) return static_cast<DocumentKey>(node->documentNumber) * 2 + 1;
  return reinterpret_cast<DocumentKey>(node);
}

// The keys of nodes asked for one by one. What a climb to the root found far below it is
// remembered, so that asking for each node of a deep tree takes one step for most of them. Trees
// must stay.
class DocumentKeys {
 public:
  DocumentKey KeyOf(const XPathNode* node);

 private:
  static constexpr int kFreeLevels = 16;  // that a climb takes without looking here

  std::unordered_map<const XPathNode*, DocumentKey> keys_;
};

}  // namespace kelmora
