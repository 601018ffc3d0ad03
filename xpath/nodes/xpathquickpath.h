// XPathQuickPath: the nodes of a simple path, met one after the other instead of collected.
//
// Existence tests, comparisons with a value, count() and the text of the first node need no list.
// A path is quick when each of its steps is a walk from one node: along children, attributes,
// siblings or ancestors, or "//" in front of a child step, with no predicate or a single [n].
// Nothing can fail in it when no step can fail by its prefix or axis, so stopping early hides no
// error.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nodes/xpathvaluenode.h"
#include "syntax/xpathaxisnames.h"
#include "syntax/xpathparsetree.h"
#include "xpath/steptest.h"

namespace kelmora {

class XPathStepNode;

class XPathQuickPath {
 public:
  // Adds a step; false, and the path is of no use, for one of another form.
  bool Add(const XPathStepNode& step, bool descendantBefore);

  // Calls the visitor for each node that the path leads to from `start`, until it returns false.
  // A node may come twice unless MeetsOnce(). False when the visitor stopped.
  bool Visit(const XPathContext& context, XPathNode* start, NodeVisitor& visitor) const;

  // From one start, no node is met twice.
  bool MeetsOnce() const { return meetsOnce_; }
  // From one start, nodes of a loaded tree come in document order.
  bool IsInOrder() const { return inOrder_; }
  // The walk is that of the axes only where nodes bear stamps, since two axes sort by them.
  bool NeedsStamps() const { return needsStamps_; }
  // Nodes without stamps come in another order than the axes deliver them.
  bool ReordersUnstamped() const { return reordersUnstamped_; }

 private:
  struct Step {
    Axis axis;
    std::int32_t onlyIndex;  // n of [n], 0 without
    int prefixNumber;        // of the test's URI, -1 where that is fixed
    StepTest test;           // complete but for its URI
  };
  static constexpr int kMostSteps = 6;
  class Walk;
  void Judge(const Step& step);

  Step steps_[kMostSteps] = {};
  int count_ = 0;
  bool meetsOnce_ = true;
  bool inOrder_ = true;
  bool needsStamps_ = false;
  bool reordersUnstamped_ = false;
  // Of the steps so far: at most one node comes out; one may lie below another.
  bool atMostOne_ = true;
  bool mayNest_ = false;
};

}  // namespace kelmora
