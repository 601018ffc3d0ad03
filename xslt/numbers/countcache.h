// CountCache: what xsl:number has counted. One kind of key finds all of it: the test, and the node
// at which it was asked or the tree in which it was.
//
// It is made for one run and never emptied within it, since what it knows stays true so long: the
// trees that expressions see do not change, and none is deleted before the run ends. The next run
// must have a new one; there the same addresses may belong to other nodes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "base/documentkey.h"
#include "numbers/counttests.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

using OrderNumbers = std::vector<std::int32_t>;  // ascending

struct CountKey {
  const CountTest* test = nullptr;  // null: each name, for all tests of a name together
  std::uintptr_t place = 0;         // the address of a node or, for a whole tree, its DocumentKey

  friend bool operator==(const CountKey&, const CountKey&) = default;
};
struct CountKeyHash {
  std::size_t operator()(const CountKey& key) const;
};

class CountCache {
 public:
  // Order numbers of the element children, or of the nodes of the tree of `node`, which must be
  // stamped, that pass. Null when there is no order. The first call goes over the nodes once.
  const OrderNumbers* ChildrenOf(const CountTest& test, XPathNode* parent);
  const OrderNumbers* NodesOf(const CountTest& test, XPathNode* node);

  // Where a climb from a node ends; the target is null when nothing above counts.
  struct ClimbEnd {
    XPathNode* target;
  };
  const ClimbEnd* FindClimb(const CountTest* count, const XPathNode* node) const;
  void AddClimb(const CountTest* count, const XPathNode* node, XPathNode* target);

  // The child of `parent` that got a number last; no target at first, and again when another pair
  // has taken the place.
  struct Last {
    CountKey key;
    const XPathNode* target = nullptr;
    std::int32_t number = 0;
  };
  Last& LastOf(const CountTest& count, const XPathNode* parent);

 private:
  struct Lists {
    bool isOrdered = true;
    std::unordered_map<NodeName, OrderNumbers, NodeNameHash> byName;  // a test's own: no name

    void Enter(const CountTest* test, XPathNode* node);
  };

  static CountKey At(const CountTest* test, const XPathNode* node) {
    return {test, reinterpret_cast<std::uintptr_t>(node)};
  }
  static const OrderNumbers* Find(const Lists& lists, const CountTest& test);

  std::unordered_map<CountKey, Lists, CountKeyHash> lists_;
  std::unordered_map<CountKey, ClimbEnd, CountKeyHash> climbs_;
  std::vector<Last> lasts_;
};

}  // namespace kelmora
