// XPathQuickPath: the nodes of a simple path, met one after the other instead of collected.
//
// Existence tests, comparisons with a value, count() and the text of the first node need no list.
// A path is quick when its steps have no predicates and lie on the axes that a walk down or up
// from one node serves: child, attribute, self, parent, and "//" in front of a child step. Nothing
// can fail in it when no step can fail by its prefix or axis, so stopping early hides no error.
#pragma once

#include <cstddef>
#include <cstdint>

#include "xpathaxis.h"
#include "xpathnodetest.h"
#include "xpathparsenode.h"

namespace kelmora {

class XPathNodeTestNode;
class XPathStepNode;

class XPathQuickPath {
 public:
  // Adds a step; false, and the path is of no use, for one of another form.
  bool Add(const XPathStepNode& step, bool descendantBefore);

  // Calls the visitor for each node that the path leads to from `start`, until it returns false.
  // A node may come twice unless MeetsOnce(). False when the visitor stopped.
  bool Visit(const XPathContext& context, XPathNode* start, NodeVisitor& visitor) const;

  // From one start, no node is met twice, and nodes of a loaded tree come in document order.
  bool MeetsOnce() const { return meetsOnce_; }
  bool IsInOrder() const { return inOrder_; }
  // With "//" the starts of one node may lie below those of another.
  bool GoesDeep() const { return goesDeep_; }

 private:
  struct Step {
    Axis axis;  // Child, Attribute, Parent, Descendant
    const XPathNodeTestNode* test;  // null for ".."
  };
  static constexpr int kMostSteps = 6;
  class Walk;

  Step steps_[kMostSteps] = {};
  int count_ = 0;
  bool meetsOnce_ = true;
  bool inOrder_ = true;
  bool goesDeep_ = false;
};

}  // namespace kelmora
