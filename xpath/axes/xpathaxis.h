// The thirteen axes over node lists. This room holds what a step of a path does: the walk of each
// axis from one node, the lists that axes make of many, and the tests of single nodes.
//
// A run of an axis takes the input nodes in their order and appends those that pass to the output,
// in the order in which the axis meets them. Positions start at 1 for each input node. A node that
// two inputs lead to is delivered once, by the first of them, on the axes that can meet it twice.
#pragma once

#include <cstddef>

#include "syntax/xpathaxisnames.h"
#include "xpath/steptest.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

inline constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

// Takes time linear in the nodes met. No node may stand in the input twice. With one input node and
// a limit, nodes beyond the first `limit` may be missing.
void RunAxis(Axis axis, const StepTest& test, const XPathNodeRef* input, std::size_t count,
             XPathNodeList& output, std::size_t limit = kNoLimit);
// The child axis from the node and everything below it, as one walk: what "//" and a child step
// deliver from one node, in their order.
void RunChildrenBelow(const StepTest& test, const XPathNodeRef& start, XPathNodeList& output);

}  // namespace kelmora
