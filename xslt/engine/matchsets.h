// MatchSets: for each document that a rule has met, the nodes that its pattern yields. A stamped
// document keeps one bit per node or, for few matches, their sorted order numbers; an unstamped
// tree (a result tree fragment) the pointers.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/documentkey.h"
#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class MatchSet {
 public:
  explicit MatchSet(const XPathNodeList& nodes);
  bool Contains(const XPathNode* node) const;

 private:
  std::int32_t firstNumber_ = 0;
  std::vector<std::uint64_t> bits_;    // by order number from firstNumber_ on
  std::vector<std::int32_t> numbers_;  // ascending; used when bits_ would be larger
  std::unordered_set<const XPathNode*> unstamped_;
};

class MatchSets {
 public:
  const MatchSet* Find(DocumentKey document) const;  // null for a document that has none yet
  const MatchSet& Add(DocumentKey document, const XPathNodeList& nodes);

 private:
  std::unordered_map<DocumentKey, MatchSet> sets_;
  mutable DocumentKey lastDocument_ = 0;  // selections come in runs over one document
  mutable const MatchSet* last_ = nullptr;
};

}  // namespace kelmora
