// The class of each rule. Rules without a row only group: their nodes have no value of their own,
// and hand on that of the one part that has.

#include <algorithm>
#include <array>

#include "nodes/xpathfunctioncall.h"
#include "nodes/xpathidentitynodes.h"
#include "nodes/xpathoperatornodes.h"
#include "nodes/xpathpathnodes.h"
#include "nodes/xpathprimarynodes.h"
#include "syntax/xpathparsetree.h"

namespace kelmora {
namespace {

class XPathGenericNode final : public XPathParseNode {
 public:
  void Prepare(XPathParseTree& tree) override;
};

void XPathGenericNode::Prepare(XPathParseTree&) {
  harmless = true;
  int parts = 0;
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    harmless = harmless && child->harmless;
    usesPosition = usesPosition || child->usesPosition;
    if (child->rule == XPathRule::Token || child->rule == XPathRule::CharacterRun) continue;
    ++parts;
    effective = child->effective;
    type = child->type;
  }
  if (parts != 1) {
    effective = nullptr;
    type = Type::Unknown;
  }
}

using NodeMaker = XPathParseNode* (*)(Arena&);

template <class Node>
XPathParseNode* MakeIn(Arena& arena) {
  return arena.Make<Node>();
}

struct NodeClass {
  XPathRule rule;
  NodeMaker make;
};
constexpr NodeClass kNodeClasses[] = {
    {XPathRule::OrExpr, MakeIn<XPathLogicalNode>},
    {XPathRule::AndExpr, MakeIn<XPathLogicalNode>},
    {XPathRule::EqualityExpr, MakeIn<XPathComparisonNode>},
    {XPathRule::RelationalExpr, MakeIn<XPathComparisonNode>},
    {XPathRule::AdditiveExpr, MakeIn<XPathArithmeticNode>},
    {XPathRule::MultiplicativeExpr, MakeIn<XPathArithmeticNode>},
    {XPathRule::UnaryExpr, MakeIn<XPathUnaryNode>},
    {XPathRule::UnionExpr, MakeIn<XPathUnionNode>},
    {XPathRule::LocationPath, MakeIn<XPathLocationPathNode>},
    {XPathRule::RelativeLocationPath, MakeIn<XPathRelativePathNode>},
    {XPathRule::AbsoluteLocationPath, MakeIn<XPathAbsolutePathNode>},
    {XPathRule::RootPath, MakeIn<XPathRootPathNode>},
    {XPathRule::RootDescendantPath, MakeIn<XPathRootPathNode>},
    {XPathRule::FilterDescendantPath, MakeIn<XPathFilterPathNode>},
    {XPathRule::FilterChildPath, MakeIn<XPathFilterPathNode>},
    {XPathRule::Step, MakeIn<XPathStepNode>},
    {XPathRule::AxisName, MakeIn<XPathAxisNode>},
    {XPathRule::AbbreviatedAxis, MakeIn<XPathAxisNode>},
    {XPathRule::NodeTypeTest, MakeIn<XPathNodeTestNode>},
    {XPathRule::PITest, MakeIn<XPathNodeTestNode>},
    {XPathRule::NameTest, MakeIn<XPathNodeTestNode>},
    {XPathRule::FieldNameTest, MakeIn<XPathNodeTestNode>},
    {XPathRule::SelectorNameTest, MakeIn<XPathNodeTestNode>},
    {XPathRule::Predicate, MakeIn<XPathPredicateNode>},
    {XPathRule::FilterExpr, MakeIn<XPathFilterNode>},
    {XPathRule::PrimaryExpr, MakeIn<XPathPrimaryNode>},
    {XPathRule::VariableReference, MakeIn<XPathVariableNode>},
    {XPathRule::Literal, MakeIn<XPathLiteralNode>},
    {XPathRule::Number, MakeIn<XPathNumberNode>},
    {XPathRule::FunctionCall, MakeIn<XPathFunctionCallNode>},
    {XPathRule::Field, MakeIn<XPathIdentityNode>},
    {XPathRule::Selector, MakeIn<XPathIdentityNode>},
    {XPathRule::FieldPath, MakeIn<XPathIdentityPathNode>},
    {XPathRule::SelectorPath, MakeIn<XPathIdentityPathNode>},
};

// By the number of the rule.
constexpr auto kNodeMakers = [] {
  constexpr std::size_t kRules = std::max({
#define XPATH_RULE(number, name) std::size_t{number} + 1,
#include "syntax/xpathrule.def"
#undef XPATH_RULE
  });
  std::array<NodeMaker, kRules> makers{};
  makers.fill(MakeIn<XPathGenericNode>);
  for (const NodeClass& entry : kNodeClasses) {
    makers[static_cast<std::size_t>(entry.rule)] = entry.make;
  }
  return makers;
}();

}  // namespace

XPathParseNode* XPathParseTree::MakeNode(XPathRule rule) {
  XPathParseNode* node = kNodeMakers[static_cast<std::size_t>(rule)](arena_);
  node->rule = rule;
  return node;
}

}  // namespace kelmora
