// The thirteen axes, one function for all of them, in the plain form and in the fast one.
//
// A run of an axis takes the input nodes in their order and appends those that pass to the output,
// in the order in which the axis meets them. Positions start at 1 for each input node. A node that
// two inputs lead to is delivered once, by the first of them, on the axes that can meet it twice.
#pragma once

#include <cstdint>
#include <string_view>

#include "xpath/xpathvalue.h"

namespace kelmora {

enum class Axis : std::int8_t {
  Ancestor = 0,
  AncestorOrSelf = 1,
  Attribute = 2,
  Child = 3,
  Descendant = 4,
  DescendantOrSelf = 5,
  Following = 6,
  FollowingSibling = 7,
  Namespace = 8,
  Parent = 9,
  Preceding = 10,
  PrecedingSibling = 11,
  Self = 12,
};
inline constexpr int kAxisCount = 13;

// The names in the order in which the parser tries them: tokens match as prefixes, so a long name
// stands before the short one that it starts with.
struct AxisNameRow {
  std::u16string_view name;
  Axis axis;
};
inline constexpr AxisNameRow kAxisNames[kAxisCount] = {
    {u"ancestor-or-self", Axis::AncestorOrSelf},
    {u"ancestor", Axis::Ancestor},
    {u"attribute", Axis::Attribute},
    {u"child", Axis::Child},
    {u"descendant-or-self", Axis::DescendantOrSelf},
    {u"descendant", Axis::Descendant},
    {u"following-sibling", Axis::FollowingSibling},
    {u"following", Axis::Following},
    {u"namespace", Axis::Namespace},
    {u"parent", Axis::Parent},
    {u"preceding-sibling", Axis::PrecedingSibling},
    {u"preceding", Axis::Preceding},
    {u"self", Axis::Self},
};

class XPathNodeTest;
struct StepTest;

// The axis as described, with sets of nodes met so far. `test` may be null.
void RunPlainAxis(Axis axis, const XPathNodeTest* test, const XPathNodeList& input,
                  XPathNodeList& output);
// The same result by links and marks, in time linear in the nodes met. With one input node and a
// limit, nodes beyond the first `limit` may be missing.
inline constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);
void RunQuickAxis(Axis axis, const StepTest& test, const XPathNodeRef* input, std::size_t count,
                  XPathNodeList& output, std::size_t limit = kNoLimit);
// The child axis from the node and everything below it, as one walk: what "//" and a child step
// deliver from one node, in their order.
void RunChildrenBelow(const StepTest& test, const XPathNodeRef& start, XPathNodeList& output);

}  // namespace kelmora
