#include "referenceevaluator.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

#include "axes/xpathaxis.h"
#include "nodes/xpathfunctioncall.h"
#include "tqcore/tqtext.h"
#include "values/xpathcompare.h"

namespace kelmora {
namespace {

using Kind = XPathNodeRef::Kind;

Kind KindOf(const XPathNode& node) {
  return XPathNodeRef::KindOf(&node);
}
bool IsDeclaration(const XPathNode& node) {
  return KindOf(node) == Kind::Declaration ||
         XPathNodeRef::KindOf(node.parent) == Kind::Declaration;
}
bool IsAttribute(const XPathNode& node) {
  return KindOf(node) == Kind::Attribute && XPathNodeRef::KindOf(node.parent) == Kind::Element;
}
bool IsContent(const XPathNode& node) {
  return !IsDeclaration(node) && !IsAttribute(node);
}
bool IsNeither(const XPathNode& node) {
  return !IsAttribute(node) && KindOf(node) != Kind::Namespace;
}

void Set(XPathValue& input, std::int32_t& size, XPathValue value) {
  input = std::move(value);
  size = static_cast<std::int32_t>(input.nodes.size());
}

void Sort(XPathValue& value) {
  if (value.kind != XPathValue::NodeSet) return;
  std::stable_sort(value.nodes.begin(), value.nodes.end(),
                   [](const XPathNodeRef& a, const XPathNodeRef& b) {
                     return DocumentOrderLess(*a.node, *b.node);
                   });
  for (std::size_t i = 0; i < value.nodes.size(); ++i) {
    value.nodes[i].position = static_cast<std::int32_t>(i) + 1;
  }
}

std::vector<XPathNode*> ChildrenOf(const XPathNode& node) {
  std::vector<XPathNode*> children;
  for (XPathNode* child = node.firstChild; child; child = child->next) children.push_back(child);
  return children;
}

// The node and what is below it, parents before children.
std::vector<XPathNode*> TreeOf(XPathNode* top) {
  std::vector<XPathNode*> order;
  std::vector<XPathNode*> open{top};
  while (!open.empty()) {
    XPathNode* node = open.back();
    open.pop_back();
    order.push_back(node);
    std::vector<XPathNode*> children = ChildrenOf(*node);
    open.insert(open.end(), children.rbegin(), children.rend());
  }
  return order;
}

// The siblings in front of the node and behind it.
std::pair<std::vector<XPathNode*>, std::vector<XPathNode*>> SiblingsOf(const XPathNode& node) {
  std::vector<XPathNode*> before;
  if (node.parent == nullptr) return {};
  std::vector<XPathNode*> all = ChildrenOf(*node.parent);
  auto at = std::find(all.begin(), all.end(), &node);
  if (at == all.end()) return {};  // a node of the namespace axis has no place among them
  before.assign(all.begin(), at);
  return {before, {at + 1, all.end()}};
}

std::vector<XPathNode*> AncestorsOf(const XPathNode& node) {
  std::vector<XPathNode*> ancestors;
  for (XPathNode* at = node.parent; at != nullptr; at = at->parent) ancestors.push_back(at);
  return ancestors;
}

// What is behind the node in document order but not below it, or what is in front of it but not
// above. A node of the namespace axis stands at the end of its element, or at its start.
std::vector<XPathNode*> OutsideOf(XPathNode* node, bool behind) {
  std::vector<XPathNode*> order = TreeOf(node->Root());
  std::vector<XPathNode*> found;
  auto at = std::find(order.begin(), order.end(), node);
  if (at == order.end()) {
    node = node->parent;
    at = std::find(order.begin(), order.end(), node);
  }
  if (behind) {
    found.assign(at + static_cast<std::ptrdiff_t>(TreeOf(node).size()), order.end());
  } else {
    std::vector<XPathNode*> above = AncestorsOf(*node);
    for (auto before = order.begin(); before != at; ++before) {
      if (std::find(above.begin(), above.end(), *before) == above.end()) found.push_back(*before);
    }
    std::reverse(found.begin(), found.end());
  }
  return found;
}

}  // namespace

std::vector<XPathNode*> ReferenceAxis(Axis axis, XPathNode* node) {
  std::vector<XPathNode*> visited;
  auto add = [&visited](const std::vector<XPathNode*>& nodes, auto passes) {
    for (XPathNode* at : nodes) {
      if (passes(*at)) visited.push_back(at);
    }
  };
  auto isNoDeclaration = [](const XPathNode& at) { return !IsDeclaration(at); };
  Kind kind = KindOf(*node);
  bool hasSiblings = kind != Kind::Root && kind != Kind::Attribute && kind != Kind::Declaration;
  std::vector<XPathNode*> below = TreeOf(node);
  below.erase(below.begin());
  switch (axis) {
    case Axis::Self:
      return {node};
    case Axis::Parent:
      if (node->parent != nullptr) add({node->parent}, isNoDeclaration);
      break;
    case Axis::AncestorOrSelf:
      add({node}, isNoDeclaration);
      [[fallthrough]];
    case Axis::Ancestor:
      add(AncestorsOf(*node), isNoDeclaration);
      break;
    case Axis::Attribute:
      add(ChildrenOf(*node), IsAttribute);
      break;
    case Axis::Child:
      add(ChildrenOf(*node), IsContent);
      break;
    case Axis::DescendantOrSelf:
      add({node}, isNoDeclaration);
      [[fallthrough]];
    case Axis::Descendant:
      add(below, IsContent);
      break;
    case Axis::Namespace:
      if (kind == Kind::Element) visited = node->NamespaceNodes();
      break;
    case Axis::FollowingSibling:
      if (hasSiblings) add(SiblingsOf(*node).second, isNoDeclaration);
      break;
    case Axis::PrecedingSibling:
      if (hasSiblings) add(SiblingsOf(*node).first, isNoDeclaration);
      std::reverse(visited.begin(), visited.end());
      break;
    case Axis::Following:
      add(OutsideOf(node, true), IsContent);
      break;
    case Axis::Preceding:
      add(OutsideOf(node, false), IsContent);
      break;
  }
  return visited;
}

// --- the walk of the tree ---------------------------------------------------------------------

using R = ReferenceEvaluator;

const R::Row R::kRows[] = {
    {XPathRule::OrExpr, &R::Operators},
    {XPathRule::AndExpr, &R::Operators},
    {XPathRule::EqualityExpr, &R::Operators},
    {XPathRule::RelationalExpr, &R::Operators},
    {XPathRule::AdditiveExpr, &R::Operators},
    {XPathRule::MultiplicativeExpr, &R::Operators},
    {XPathRule::NegationExpr, &R::Negation},
    {XPathRule::UnionExpr, &R::Union},
    {XPathRule::RelativeLocationPath, &R::RelativePath},
    {XPathRule::AbsoluteLocationPath, &R::AbsolutePath},
    {XPathRule::RootPath, &R::RootPath},
    {XPathRule::RootDescendantPath, &R::RootPath},
    {XPathRule::FilterDescendantPath, &R::FilterPath},
    {XPathRule::FilterChildPath, &R::FilterPath},
    {XPathRule::Step, &R::Step},
    {XPathRule::AxisName, &R::AxisName},
    {XPathRule::AbbreviatedAxis, &R::AxisName},
    {XPathRule::NodeTypeTest, &R::TypeTest},
    {XPathRule::PITest, &R::TypeTest},
    {XPathRule::NameTest, &R::NameTest},
    {XPathRule::FieldNameTest, &R::NameTest},
    {XPathRule::SelectorNameTest, &R::NameTest},
    {XPathRule::Predicate, &R::Predicate},
    {XPathRule::ParenExpr, &R::Parenthesis},
    {XPathRule::VariableReference, &R::Variable},
    {XPathRule::Literal, &R::Literal},
    {XPathRule::Number, &R::Number},
    {XPathRule::FunctionCall, &R::FunctionCall},
    {XPathRule::Field, &R::Identity},
    {XPathRule::Selector, &R::Identity},
    {XPathRule::FieldPath, &R::IdentityPath},
    {XPathRule::SelectorPath, &R::IdentityPath},
};

bool R::Evaluate(const XPathParseTree& tree, const XPathRequest& request, bool allowFragment,
                 XPathValue& result) {
  documentNode_ = request.documentNode;
  State state;
  if (request.inputNodes != nullptr) {
    state.input.nodes = *request.inputNodes;
  } else {
    state.input.nodes.emplace_back(request.contextNode, 1);
  }
  state.inputSize = static_cast<std::int32_t>(state.input.nodes.size());
  state.position = request.position;
  state.size = request.size;
  if (!Run(*tree.Root(), state)) return false;
  if (!allowFragment && state.isFromVariable && state.input.IsFragment()) {
    return Fail(XPathError::CannotUseFragment, *tree.Root());
  }
  result = state.input;
  return true;
}

bool R::Fail(XPathError code, const XPathParseNode& node, std::int32_t function) {
  errorCode = code;
  errorFunction = function;
  if (!hasPosition_) errorPosition = node.position;
  hasPosition_ = true;
  return false;
}

bool R::Run(const XPathParseNode& node, State& state) {
  for (const Row& row : kRows) {
    if (row.rule == node.rule) return (this->*row.evaluate)(node, state);
  }
  return Children(node, state);
}

bool R::Children(const XPathParseNode& node, State& state) {
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    if (!Run(*child, state)) return false;
  }
  return true;
}

// --- paths ------------------------------------------------------------------------------------

bool R::RelativePath(const XPathParseNode& node, State& state) {
  if (state.isFromVariable && state.input.IsFragment()) {
    return Fail(XPathError::CannotUseFragment, node);
  }
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    bool isBelow = child->rule == XPathRule::SeparatedStep && LeafText(*child) == u"//";
    if (isBelow && !DescendantStep(node, state)) return false;
    if (!Run(child->rule == XPathRule::SeparatedStep ? *child->lastChild : *child, state)) {
      return false;
    }
  }
  return true;
}

bool R::AbsolutePath(const XPathParseNode& node, State& state) {
  XPathValue root;
  XPathNode* top = documentNode_->Root();
  if (KindOf(*top) == Kind::Root) root.nodes.emplace_back(top, 1);
  Set(state.input, state.inputSize, root);
  return Children(node, state);
}

bool R::RootPath(const XPathParseNode& node, State& state) {
  if (node.rule == XPathRule::RootDescendantPath && !DescendantStep(node, state)) return false;
  state.axis = Axis::Child;
  return node.HasOneChild() || Run(*node.lastChild, state);
}

bool R::FilterPath(const XPathParseNode& node, State& state) {
  if (!Run(*node.firstChild, state)) return false;
  if (state.isFromVariable && state.input.IsFragment()) {
    return Fail(XPathError::CannotUseFragment, *node.lastChild);
  }
  if (node.rule == XPathRule::FilterDescendantPath && !DescendantStep(node, state)) return false;
  return Run(*node.lastChild, state);
}

bool R::DescendantStep(const XPathParseNode& node, State& state) {
  return RunAxis(
      Axis::DescendantOrSelf, [](const XPathNode& at) { return KindOf(at) != Kind::Namespace; },
      node, state);
}

bool R::Step(const XPathParseNode& node, State& state) {
  const XPathParseNode& body = *node.firstChild;
  if (body.rule == XPathRule::AbbreviatedStep) {
    return LeafText(body) == u"." || RunAxis(Axis::Parent, IsNeither, node, state);
  }
  if (body.lastChild->rule != XPathRule::Predicate) return Children(body, state);
  XPathValue result;
  std::set<const XPathNode*> met;
  for (const XPathNodeRef& entry : state.input.nodes) {
    State single = state;
    single.input = XPathValue();
    single.input.nodes = {entry};
    single.size = 0;
    if (!Children(body, single)) return false;
    for (const XPathNodeRef& found : single.input.nodes) {
      if (met.insert(found.node).second) result.nodes.push_back(found);
    }
  }
  Set(state.input, state.inputSize, result);
  Sort(state.input);
  return true;
}

bool R::AxisName(const XPathParseNode& node, State& state) {
  std::u16string_view name = LeafText(node);
  state.axis = name == u"@" ? Axis::Attribute : Axis::Child;
  for (const AxisNameRow& row : kAxisNames) {
    if (row.name == name) state.axis = row.axis;
  }
  return true;
}

bool R::RunAxis(Axis axis, const NodeTest& test, const XPathParseNode& node, State& state) {
  bool isLimited = host_.patternKind == kTemplatePattern && !state.inPredicate;
  if (isLimited && axis != Axis::Attribute && axis != Axis::Child &&
      axis != Axis::DescendantOrSelf) {
    return Fail(XPathError::AxisNotAllowedInPattern, node);
  }
  bool isDescendantAxis = axis == Axis::Descendant || axis == Axis::DescendantOrSelf;
  bool dropsDuplicates = axis != Axis::Child && axis != Axis::Attribute && axis != Axis::Self &&
                         !(isDescendantAxis && state.input.nodes.size() == 1);
  XPathValue output;
  std::set<const XPathNode*> met;
  for (const XPathNodeRef& entry : state.input.nodes) {
    std::int32_t position = 0;
    for (XPathNode* at : ReferenceAxis(axis, entry.node)) {
      if (!test(*at) || (dropsDuplicates && !met.insert(at).second)) continue;
      output.nodes.emplace_back(at, ++position);
    }
  }
  if (axis == Axis::AncestorOrSelf || axis == Axis::PrecedingSibling) {
    std::stable_sort(output.nodes.begin(), output.nodes.end(),
                     [](const XPathNodeRef& a, const XPathNodeRef& b) {
                       return DocumentOrderLess(*b.node, *a.node);
                     });
  }
  Set(state.input, state.inputSize, output);
  return true;
}

// --- node tests -------------------------------------------------------------------------------

bool R::TypeTest(const XPathParseNode& node, State& state) {
  std::u16string_view type = LeafText(node);
  NodeTest test;
  if (node.rule == XPathRule::PITest) {
    const XPathParseNode& quoted = *node.firstChild->nextSibling->nextSibling->firstChild;
    std::u16string_view target = quoted.firstChild->nextSibling->text;
    if (quoted.firstChild->nextSibling == quoted.lastChild) target = {};
    test = [target](const XPathNode& at) {
      return KindOf(at) == Kind::PI && (target.empty() || at.GetName() == target);
    };
  } else if (type == u"node") {
    switch (state.axis) {
      case Axis::Self:
        return true;  // skipped: the input stays
      case Axis::AncestorOrSelf:
      case Axis::DescendantOrSelf:
        test = [](const XPathNode& at) { return KindOf(at) != Kind::Namespace; };
        break;
      case Axis::Attribute:
        test = IsAttribute;
        break;
      case Axis::Namespace:
        test = [](const XPathNode& at) { return KindOf(at) == Kind::Namespace; };
        break;
      case Axis::Parent:
        test = [](const XPathNode&) { return true; };
        break;
      default:
        test = IsNeither;
    }
  } else {
    Kind kind = type == u"comment" ? Kind::Comment : type == u"text" ? Kind::Text : Kind::PI;
    test = [kind](const XPathNode& at) { return KindOf(at) == kind; };
  }
  return RunAxis(state.axis, test, node, state);
}

bool R::NameTest(const XPathParseNode& node, State& state) {
  const XPathParseNode& name = *node.firstChild;
  Axis axis = state.axis;
  if (name.rule == XPathRule::Token) {
    return RunAxis(
        axis,
        [axis](const XPathNode& at) {
          if (axis == Axis::Attribute) return IsAttribute(at);
          return KindOf(at) == (axis == Axis::Namespace ? Kind::Namespace : Kind::Element);
        },
        node, state);
  }
  bool isWildcard = name.lastChild->rule == XPathRule::Token;
  ParsedName parts = isWildcard ? ParsedName{LeafText(*name.firstChild), {}, true} : NameOf(name);
  InternedURI uri = nullptr;
  if (parts.hasPrefix || axis != Axis::Attribute) {
    const PrefixMap::Entry* entry = host_.prefixMap->Find(parts.prefix);
    if (entry == nullptr && parts.hasPrefix) return Fail(XPathError::InvalidPrefix, node);
    uri = entry != nullptr ? entry->uri : nullptr;
  }
  NodeTest test = [=](const XPathNode& at) {
    if (isWildcard && uri == nullptr) return true;  // no test at all
    std::u16string_view full = at.GetName();
    std::size_t colon = full.find(u':');
    std::u16string_view local = colon == std::u16string_view::npos ? full : full.substr(colon + 1);
    bool hasName = isWildcard || local == parts.local;
    if (axis == Axis::Namespace && !isWildcard) return hasName;
    return hasName && (KindOf(at) == Kind::Element || KindOf(at) == Kind::Attribute) &&
           at.namespaceURI == uri;
  };
  return RunAxis(axis, test, node, state);
}

// --- predicates and primaries -----------------------------------------------------------------

bool R::Predicate(const XPathParseNode& node, State& state) {
  if (state.isFromVariable && state.input.IsFragment()) {
    return Fail(XPathError::CannotUseFragment, node);
  }
  if (state.input.kind != XPathValue::NodeSet) return Fail(XPathError::NotANodeSet, node);
  State inner = state;
  inner.inPredicate = true;
  inner.size = state.inputSize;
  XPathValue kept;
  std::int32_t index = 0;
  for (const XPathNodeRef& entry : state.input.nodes) {
    State one = inner;
    one.input = XPathValue();
    one.input.nodes = {entry};
    one.position = entry.position;
    ++index;
    if (!Run(*node.firstChild->nextSibling, one)) return false;
    const XPathValue& value = one.input;
    bool keeps = value.kind == XPathValue::Number ? value.number == index : ToBoolean(value);
    if (keeps) kept.nodes.emplace_back(entry.node, static_cast<int>(kept.nodes.size()) + 1);
  }
  Set(state.input, state.inputSize, kept);
  return true;
}

bool R::Parenthesis(const XPathParseNode& node, State& state) {
  if (!Children(node, state)) return false;
  Sort(state.input);
  return true;
}

bool R::Variable(const XPathParseNode& node, State& state) {
  ParsedName name = NameOf(*node.lastChild);
  TQString key(name.local);
  if (name.hasPrefix) {
    InternedURI uri = host_.prefixMap->Lookup(name.prefix);
    key = (uri != nullptr && !uri->IsEmpty() ? *uri : TQString(name.prefix)) + u":" + key;
  }
  const XPathValue* value = host_.variables->Find(key);
  if (value == nullptr) {
    missingVariable = key;
    return Fail(XPathError::InvalidVariableReference, node);
  }
  Set(state.input, state.inputSize, *value);
  if (value->IsFragment()) state.isFromVariable = true;
  return true;
}

bool R::Literal(const XPathParseNode& node, State& state) {
  const XPathParseNode& quoted = *node.firstChild;
  bool isEmpty = quoted.firstChild->nextSibling == quoted.lastChild;
  XPathValue value;
  value.SetString(isEmpty ? std::u16string_view() : quoted.firstChild->nextSibling->text);
  Set(state.input, state.inputSize, value);
  return true;
}

bool R::Number(const XPathParseNode& node, State& state) {
  std::u16string text;
  std::vector<const XPathParseNode*> open{&node};
  while (!open.empty()) {
    const XPathParseNode* at = open.back();
    open.pop_back();
    if (at->firstChild == nullptr) text += at->text;
    if (at->nextSibling != nullptr && at != &node) open.push_back(at->nextSibling);
    if (at->firstChild != nullptr) open.push_back(at->firstChild);
  }
  XPathValue value;
  value.SetNumber(text == u"NaN" ? std::nan("") : ParseDouble(text, nullptr));
  Set(state.input, state.inputSize, value);
  return true;
}

// --- operators --------------------------------------------------------------------------------

bool R::Negation(const XPathParseNode& node, State& state) {
  if (!Run(*node.lastChild, state)) return false;
  XPathValue value;
  value.SetNumber(-ToNumber(state.input));
  Set(state.input, state.inputSize, value);
  return true;
}

namespace {

void Combine(std::u16string_view op, XPathValue& left, const XPathValue& right) {
  double a = ToNumber(left);
  double b = ToNumber(right);
  if (op == u"or") {
    left.SetBoolean(ToBoolean(left) || ToBoolean(right));
  } else if (op == u"and") {
    left.SetBoolean(ToBoolean(left) && ToBoolean(right));
  } else if (op == u"+") {
    left.SetNumber(a + b);
  } else if (op == u"-") {
    left.SetNumber(a - b);
  } else if (op == u"*") {
    left.SetNumber(a * b);
  } else if (op == u"div") {
    left.SetNumber(a / b);
  } else if (op == u"mod") {
    left.SetNumber(Modulo(a, b));
  } else {
    left.SetBoolean(ReferenceCompare(op, left, right));
  }
}

template <class Holds>
bool AnyNode(const XPathValue& set, Holds holds) {
  return std::any_of(set.nodes.begin(), set.nodes.end(), [&](const XPathNodeRef& entry) {
    XPathValue single;
    single.nodes.push_back(entry);
    return holds(single);
  });
}

bool ReferenceEquality(const XPathValue& a, const XPathValue& b, bool equal) {
  using V = XPathValue;
  if (b.kind == V::NodeSet && a.kind != V::NodeSet) return ReferenceEquality(b, a, equal);
  const auto sameText = [](const V& left, const V& right) {
    return ToString(left) == ToString(right);
  };
  if (a.kind == V::NodeSet && b.kind == V::NodeSet) {
    return AnyNode(a, [&](const V& left) {
      return AnyNode(b, [&](const V& right) { return sameText(left, right) == equal; });
    });
  }
  if (a.kind == V::NodeSet && b.kind == V::Number) {
    if (std::isnan(b.number)) return false;
    return AnyNode(a, [&](const V& node) { return (ToNumber(node) == b.number) == equal; });
  }
  if (a.kind == V::NodeSet && b.kind == V::String) {
    return AnyNode(a, [&](const V& node) { return sameText(node, b) == equal; });
  }
  if (a.kind == V::Boolean || b.kind == V::Boolean) return (ToBoolean(a) == ToBoolean(b)) == equal;
  if (a.kind == V::Number || b.kind == V::Number) {
    const double left = ToNumber(a);
    const double right = ToNumber(b);
    const bool bothNumbers = a.kind == V::Number && b.kind == V::Number;
    const bool eitherIsNaN = std::isnan(left) || std::isnan(right);
    if (eitherIsNaN && bothNumbers) return false;
    if (eitherIsNaN) return !equal && std::isnan(left) != std::isnan(right);
    return (left == right) == equal;
  }
  return sameText(a, b) == equal;
}

}  // namespace

bool ReferenceCompare(std::u16string_view op, const XPathValue& a, const XPathValue& b) {
  if (op == u"=" || op == u"!=") return ReferenceEquality(a, b, op == u"=");
  if (a.kind == XPathValue::NodeSet) {
    return AnyNode(a, [&](const XPathValue& node) {
      XPathValue number;
      number.SetNumber(ToNumber(node));
      return ReferenceCompare(op, number, b);
    });
  }
  if (b.kind == XPathValue::NodeSet) {
    return AnyNode(b, [&](const XPathValue& node) {
      XPathValue number;
      number.SetNumber(ToNumber(node));
      return ReferenceCompare(op, a, number);
    });
  }
  double left = ToNumber(a);
  double right = ToNumber(b);
  if (op == u"<") return left < right;
  if (op == u"<=") return left <= right;
  return op == u">" ? left > right : left >= right;
}

bool R::Operators(const XPathParseNode& node, State& state) {
  if (node.HasOneChild()) return Run(*node.firstChild, state);
  State left = state;
  if (!Run(*node.firstChild, left)) return false;
  for (const XPathParseNode* tail = node.firstChild->nextSibling; tail; tail = tail->nextSibling) {
    bool isNested = tail->rule == XPathRule::MultiplicativeTail;
    State right = state;
    if (!Run(*(isNested ? tail->firstChild : tail)->lastChild, right)) return false;
    Combine(LeafText(*tail), left.input, right.input);
  }
  Set(state.input, state.inputSize, left.input);
  return true;
}

bool R::Union(const XPathParseNode& node, State& state) {
  if (node.HasOneChild()) return Run(*node.firstChild, state);
  XPathValue all;
  std::set<const XPathNode*> met;
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    State operand = state;
    if (!Run(child == node.firstChild ? *child : *child->lastChild, operand)) return false;
    if (operand.input.kind != XPathValue::NodeSet) return Fail(XPathError::NotANodeSet, node);
    for (const XPathNodeRef& entry : operand.input.nodes) {
      if (met.insert(entry.node).second) all.nodes.push_back(entry);
    }
  }
  Set(state.input, state.inputSize, all);
  Sort(state.input);
  return true;
}

// --- functions --------------------------------------------------------------------------------

bool R::FunctionCall(const XPathParseNode& node, State& state) {
  ParsedName name = NameOf(*node.firstChild->firstChild);
  const XPathFunctionRow* row = FindFunction(name.local);
  auto number = [row] { return row != nullptr ? static_cast<std::int32_t>(row->function) : -1; };
  if (name.hasPrefix) {
    if (host_.prefixMap->Find(name.prefix) == nullptr) return Fail(XPathError::InvalidPrefix, node);
    return Fail(XPathError::FunctionNotInNamespace, node, number());
  }
  if (row == nullptr || row->called == XPathFunctionRow::Called::Uncalled) {
    return Fail(XPathError::UnknownFunction, node);
  }
  std::vector<const XPathParseNode*> arguments;
  const XPathParseNode& list = *node.firstChild->nextSibling->nextSibling;
  if (list.rule == XPathRule::Arguments) {
    for (const XPathParseNode* child = list.firstChild; child; child = child->nextSibling) {
      arguments.push_back(child->lastChild);
    }
  }
  std::int32_t reported =
      row->function == XPathFunction::not_ ? static_cast<int>(XPathFunction::boolean) : number();
  const auto count = static_cast<std::int32_t>(arguments.size());
  if (count < row->fewest) return Fail(XPathError::TooFewParameters, node, reported);
  if (row->most >= 0 && count > row->most)
    return Fail(XPathError::TooManyParameters, node, reported);

  struct Arguments final : XPathVariables {
    std::map<TQString, XPathValue, TextLess> values;
    const XPathValue* Find(std::u16string_view key) const override {
      auto found = values.find(key);
      return found == values.end() ? nullptr : &found->second;
    }
  } values;
  TQString text(name.local);
  text += u'(';
  for (std::int32_t i = 0; i < count; ++i) {
    State argument = state;
    if (!Run(*arguments[static_cast<std::size_t>(i)], argument)) return false;
    TQString variable = u"v" + NumberToText(i);
    text += i == 0 ? TQString(u"$") + variable : u", $" + variable;
    values.values[variable] = argument.input;
  }
  text += u')';
  XPathError code = XPathError::None;
  std::int32_t function = -1;
  XPathValue value;
  XPathRequest request{documentNode_, documentNode_, &state.input.nodes, state.position,
                       state.size};
  if (!host_.run(code, function, text, values, request, value)) return Fail(code, node, function);
  Set(state.input, state.inputSize, value);
  return true;
}

// --- the paths of identity constraints --------------------------------------------------------

bool R::Identity(const XPathParseNode& node, State& state) {
  XPathValue all;
  std::set<const XPathNode*> met;
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    State path = state;
    if (!Run(child == node.firstChild ? *child : *child->lastChild, path)) return false;
    for (const XPathNodeRef& entry : path.input.nodes) {
      if (child == node.firstChild || met.count(entry.node) == 0) all.nodes.push_back(entry);
      met.insert(entry.node);
    }
  }
  Set(state.input, state.inputSize, all);
  return true;
}

bool R::IdentityPath(const XPathParseNode& node, State& state) {
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    if (LeafText(*child) == u".//") {
      if (!DescendantStep(node, state)) return false;
      continue;
    }
    const XPathParseNode* test = child;
    state.axis = LeafText(*child) == u"@" ? Axis::Attribute : Axis::Child;
    while (test != nullptr && test->rule != XPathRule::FieldNameTest &&
           test->rule != XPathRule::SelectorNameTest) {
      const bool isSeparated = test->rule == XPathRule::FieldSeparatedStep;
      test = isSeparated ? test->firstChild : test->lastChild;
    }
    if (test != nullptr && !Run(*test, state)) return false;
  }
  return true;
}

}  // namespace kelmora
