#include "syntax/xpathparsenode.h"

#include <algorithm>
#include <array>
#include <memory>

#include "nodes/xpathcontext.h"
#include "nodes/xpathidentitynodes.h"
#include "nodes/xpathoperatornodes.h"
#include "nodes/xpathpathnodes.h"
#include "nodes/xpathprimarynodes.h"

namespace kelmora {

void XPathParseNode::AddChild(XPathParseNode* child, std::int8_t asRole) {
  if (child == nullptr) return;
  if (position < 0) position = child->position;
  child->role = asRole;
  if (lastChild != nullptr) {
    lastChild->nextSibling = child;
  } else {
    firstChild = child;
  }
  lastChild = child;
}

bool XPathParseNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  operand.own = copy.TakeInput();
  operand.value = &operand.own;
  return true;
}

bool XPathParseNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  value = ToBoolean(copy.Input());
  return true;
}

bool XPathParseNode::EvaluateNumber(const XPathContext& context, double& value) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  value = ToNumber(copy.Input());
  return true;
}

bool XPathParseNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                  std::u16string_view& result) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  // The value dies with the copy: only text of a document may be handed out as it stands.
  result = TextOf(copy.Input(), scratch);
  if (copy.Input().kind == XPathValue::String) {
    scratch = copy.TakeInput().string;
    result = scratch;
  }
  return true;
}

bool XPathParseNode::CanVisit(const XPathContext&) const {
  return false;
}
bool XPathParseNode::VisitNodes(const XPathContext&, NodeVisitor&) const {
  return false;
}
bool XPathParseNode::CountNodes(const XPathContext&, std::size_t&) const {
  return false;
}

bool XPathGenericNode::Evaluate(XPathContext& context) const {
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    if (!Run(*child, context)) return false;
  }
  return true;
}

void XPathGenericNode::Prepare(XPathParseTree&) {
  effective = this;
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
    effective = this;
    type = Type::Unknown;
  }
}

namespace {

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

void XPathParseTree::Finish(XPathParseNode* root, int nesting) {
  root_ = root;
  nesting_ = nesting;
  std::vector<XPathParseNode*> order{root};  // parents before children
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (XPathParseNode* child = order[i]->firstChild; child; child = child->nextSibling) {
      order.push_back(child);
    }
  }
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    (*node)->Prepare(*this);
    const XPathRule rule = (*node)->rule;
    hasVariable_ = hasVariable_ || rule == XPathRule::VariableReference;
    readsContext_ = readsContext_ || rule == XPathRule::RelativeLocationPath ||
                    rule == XPathRule::AbsoluteLocationPath || rule == XPathRule::FunctionCall ||
                    rule == XPathRule::Predicate || rule == XPathRule::FieldPath ||
                    rule == XPathRule::SelectorPath;
  }
}

int XPathParseTree::AddPrefix(std::u16string_view prefix) {
  for (std::size_t i = 0; i < prefixes_.size(); ++i) {
    if (prefixes_[i] == prefix) return static_cast<int>(i);
  }
  prefixes_.push_back(prefix);
  return static_cast<int>(prefixes_.size()) - 1;
}

SharedHandle<const XPathParseTree::Bindings> XPathParseTree::ResolvePrefixes(
    const PrefixMap& map) const {
  if (bindings_ && bindings_->map.SharesWith(map)) return bindings_;
  auto bindings = std::make_unique<Bindings>();
  bindings->map = map;
  for (std::u16string_view prefix : prefixes_) {
    const PrefixMap::Entry* entry = map.Find(prefix);
    bindings->entries.push_back({entry ? entry->uri : nullptr, entry != nullptr});
    // The empty prefix needs no binding.
    if (entry == nullptr && !prefix.empty()) bindings->allBound = false;
  }
  bindings_ = SharedHandle<const Bindings>(bindings.release());
  return bindings_;
}

std::u16string_view LeafText(const XPathParseNode& node) {
  const XPathParseNode* at = &node;
  while (at->firstChild != nullptr) at = at->firstChild;
  return at->text;
}

ParsedName NameOf(const XPathParseNode& qualifiedName) {
  const XPathParseNode& name = *qualifiedName.firstChild;
  bool prefixed = name.rule == XPathRule::PrefixedName ||
                  name.rule == XPathRule::FieldPrefixedName ||
                  name.rule == XPathRule::SelectorPrefixedName;
  if (!prefixed) return {{}, LeafText(name), false};
  return {LeafText(*name.firstChild), LeafText(*name.lastChild), true};
}

}  // namespace kelmora
