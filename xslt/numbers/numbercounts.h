// NumberCounts: counting for xsl:number without evaluating anything, for counts and froms that can
// be tested on one node (CountTest): a name, "*", "a | b", "chapter/title" and the like. What
// NumberCounter gives is the definition; this declines whatever it can't answer in the same way.
//
// Why level="any" is fast. The nodes that count lie between two places of the document's order:
// behind the last `from` in front of the node, and up to the node. Nodes carry their place as a
// number. So the numbers of all nodes of the tree that pass a test are collected once and kept in
// ascending order, and a count is the difference of two binary searches in that list, where the
// definition visits all that precedes the node. One walk collects the lists of all names together,
// since the default count names the node itself: it would otherwise walk the tree once a name.
//
// Why the other levels are. The climb to the node that counts leaves its answer at every 64th step,
// so that numbering each node of a deep document stays linear. Among siblings it counts back no
// further than to the last one that got a number, and after a few steps it takes the parent's
// children from a list as above.
//
// The trap: order numbers. Copies and nodes of a result have none, or some that are out of order,
// so every climb and every list is looked through, and one without order is declined.
#pragma once

#include <cstdint>
#include <vector>

#include "numbers/countcache.h"
#include "numbers/counttests.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

struct NumberQuery;

class NumberCounts {
 public:
  // Append the numbers, from the innermost to the outermost. False, with nothing appended, when
  // they decline.
  bool CountSingle(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);
  bool CountMultiple(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);
  bool CountAny(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);

 private:
  enum class Climb { Found, None, Declined };
  // The two tests of a query; without them it is to be declined.
  struct Tests {
    const CountTest* count = nullptr;
    const CountTest* from = nullptr;  // may be null beside a count

    explicit operator bool() const { return count != nullptr; }
  };

  Tests FindTests(const NumberQuery& query);
  Tests FindChainTests(const NumberQuery& query);
  Climb FindTarget(const Tests& tests, XPathNode* node, XPathNode*& target);
  std::int32_t CountSiblings(const CountTest& count, XPathNode* target);

  CountTests tests_;
  CountCache cache_;
};

}  // namespace kelmora
