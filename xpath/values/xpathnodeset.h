// Operations on lists of nodes.
#pragma once

#include "xpath/xpathvalue.h"

namespace kelmora {

// Bits of XPathNode::mark. Whoever sets one clears it before any other code can look.
enum NodeMark : std::uint8_t {
  kDelivered = 1,  // stands in the output
  kWalked = 2,     // an axis has been here, and has done all that lies behind
};

// Keeps the first entry of each node. Linear.
void RemoveDuplicates(XPathNodeList& list);

// Compares by document order; entries that compare equal keep their order.
void SortByDocumentOrder(XPathNodeList& list);
void SortByReverseDocumentOrder(XPathNodeList& list);

// The entry that a sort would put first; null for an empty list.
XPathNode* FirstInDocumentOrder(const XPathNodeList& list);

}  // namespace kelmora
