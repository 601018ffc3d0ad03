#include "nodes/xpathpathnodes.h"

#include <algorithm>

#include "nodes/xpathcontext.h"
#include "values/xpathcompare.h"

namespace kelmora {

bool AxisIsAllowed(Axis axis, const XPathContext& context, const XPathParseNode& node) {
  bool limited = context.evaluation->patternKind == kTemplatePattern && !context.inPredicate;
  if (!limited || axis == Axis::Attribute || axis == Axis::Child ||
      axis == Axis::DescendantOrSelf) {
    return true;
  }
  return context.Fail(XPathError::AxisNotAllowedInPattern, node);
}

bool TakeAxis(Axis axis, const StepTest& test, XPathContext& context, const XPathParseNode& node) {
  if (!AxisIsAllowed(axis, context, node)) return false;
  const XPathNodeList& input = context.Input().nodes;
  RunAxis(axis, test, input.data(), input.size(), context.OutputNodes());
  context.Swap();
  return true;
}

bool TakeDescendants(XPathContext& context, const XPathParseNode& node) {
  StepTest test;
  test.kind = StepTest::NotNamespace;
  return TakeAxis(Axis::DescendantOrSelf, test, context, node);
}

// --- paths ------------------------------------------------------------------------------------

void XPathLocationPathNode::Prepare(XPathParseTree&) {
  effective = this;
  path_ = firstChild->effective;
  type = Type::NodeSet;
  harmless = firstChild->harmless;
}

bool XPathLocationPathNode::Evaluate(XPathContext& context) const {
  if (!path_->Evaluate(context)) return false;
  context.evaluation->expression->OnLocationPath(context.Input());
  return true;
}

bool XPathLocationPathNode::EvaluateOperand(const XPathContext& context,
                                            XPathOperand& operand) const {
  if (!path_->EvaluateOperand(context, operand)) return false;
  context.evaluation->expression->OnLocationPath(*operand.value);
  return true;
}

bool XPathLocationPathNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  return path_->EvaluateBoolean(context, value);
}
bool XPathLocationPathNode::EvaluateNumber(const XPathContext& context, double& value) const {
  return path_->EvaluateNumber(context, value);
}
bool XPathLocationPathNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                         std::u16string_view& result) const {
  return path_->EvaluateText(context, scratch, result);
}
bool XPathLocationPathNode::CanVisit(const XPathContext& context) const {
  return path_->CanVisit(context);
}
bool XPathLocationPathNode::VisitNodes(const XPathContext& context, NodeVisitor& visitor) const {
  return path_->VisitNodes(context, visitor);
}
bool XPathLocationPathNode::CountNodes(const XPathContext& context, std::size_t& count) const {
  return path_->CountNodes(context, count);
}

const XPathStepNode* XPathLocationPathNode::OnlyStep() const {
  const XPathParseNode& path = *firstChild;
  if (path.rule != XPathRule::RelativeLocationPath || !path.HasOneChild()) return nullptr;
  const auto* step = static_cast<const XPathStepNode*>(path.firstChild);
  bool isPlain = step->GetForm() == XPathStepNode::Form::Full && !step->HasPredicates() &&
                 !step->Test().IsSkipped(step->GetAxis());
  return isPlain ? step : nullptr;
}

// --- paths that need no list ------------------------------------------------------------------

namespace {

class ExistenceVisitor final : public NodeVisitor {
 public:
  bool Visit(XPathNode&) override {
    found = true;
    return false;
  }
  bool found = false;
};

class CountVisitor final : public NodeVisitor {
 public:
  bool Visit(XPathNode&) override {
    ++count;
    return true;
  }
  std::size_t count = 0;
};

// Keeps the node that a sort would put first. In a loaded tree, nodes that come in document order
// bear rising stamps, so the first will do.
class FirstVisitor final : public NodeVisitor {
 public:
  explicit FirstVisitor(bool inOrder) : inOrder_(inOrder) {}
  bool Visit(XPathNode& node) override {
    if (first == nullptr || DocumentOrderLess(node, *first)) first = &node;
    return !inOrder_ || node.documentNumber <= 0;
  }
  XPathNode* first = nullptr;

 private:
  bool inOrder_;
};

}  // namespace

bool XPathQuickNode::CanVisit(const XPathContext& context) const {
  bool canVisit = isQuick_ && context.StepsCannotFail() && !context.InputIsRefusedFragment() &&
                  context.Input().kind == XPathValue::NodeSet;
  if (!canVisit || !quickPath_.NeedsStamps()) return canVisit;
  XPathNodeRef own;
  return AreStamped(StartsOf(context, own));
}

bool XPathQuickNode::AreStamped(const Starts& starts) {
  return std::all_of(starts.first, starts.first + starts.count,
                     [](const XPathNodeRef& start) { return start.node->documentNumber > 0; });
}

bool XPathQuickNode::VisitNodes(const XPathContext& context, NodeVisitor& visitor) const {
  if (!CanVisit(context)) return false;
  XPathNodeRef own;
  Starts starts = StartsOf(context, own);
  for (std::size_t i = 0; i < starts.count; ++i) {
    if (!quickPath_.Visit(context, starts.first[i].node, visitor)) break;
  }
  return true;
}

bool XPathQuickNode::CountNodes(const XPathContext& context, std::size_t& count) const {
  XPathNodeRef own;
  if (!quickPath_.MeetsOnce() || !CanVisit(context) || StartsOf(context, own).count > 1) {
    return false;
  }
  CountVisitor visitor;
  VisitNodes(context, visitor);
  count = visitor.count;
  return true;
}

bool XPathQuickNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  ExistenceVisitor visitor;
  if (!VisitNodes(context, visitor)) return XPathValueNode::EvaluateBoolean(context, value);
  value = visitor.found;
  return true;
}

bool XPathQuickNode::FindFirst(const XPathContext& context, XPathNode*& first) const {
  if (!CanVisit(context)) return false;
  XPathNodeRef own;
  Starts starts = StartsOf(context, own);
  // Of nodes without stamps the first is the one that is delivered first.
  if (quickPath_.ReordersUnstamped() && !AreStamped(starts)) return false;
  FirstVisitor visitor(quickPath_.IsInOrder() && starts.count == 1);
  VisitNodes(context, visitor);
  first = visitor.first;
  return true;
}

bool XPathQuickNode::EvaluateNumber(const XPathContext& context, double& value) const {
  XPathNode* first = nullptr;
  if (!FindFirst(context, first)) return XPathValueNode::EvaluateNumber(context, value);
  value = first != nullptr ? NodeNumber(*first) : TextToNumber({});
  return true;
}

bool XPathQuickNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                  std::u16string_view& result) const {
  XPathNode* first = nullptr;
  if (!FindFirst(context, first)) return XPathValueNode::EvaluateText(context, scratch, result);
  result = first != nullptr ? first->StringValue(scratch) : std::u16string_view();
  return true;
}

// --- relative and absolute paths --------------------------------------------------------------

void XPathRelativePathNode::Prepare(XPathParseTree& tree) {
  effective = this;
  type = Type::NodeSet;
  harmless = true;
  isQuick_ = true;
  int count = 0;
  for (const XPathParseNode* child = firstChild; child; child = child->nextSibling) ++count;
  auto* steps = static_cast<PathStep*>(tree.GetArena().Allocate(
      static_cast<std::size_t>(count) * sizeof(PathStep), alignof(PathStep)));
  for (const XPathParseNode* child = firstChild; child; child = child->nextSibling) {
    bool separated = child != firstChild;
    const auto* step = static_cast<const XPathStepNode*>(separated ? child->lastChild : child);
    bool descendantBefore = separated && LeafText(*child) == u"//";
    steps[stepCount_++] = {step, descendantBefore};
    harmless = harmless && step->harmless;
    usesPosition = usesPosition || step->usesPosition;
    isQuick_ = isQuick_ && quickPath_.Add(*step, descendantBefore);
  }
  steps_ = steps;
}

bool XPathRelativePathNode::Evaluate(XPathContext& context) const {
  return EvaluateFrom(context, false);
}

bool XPathRelativePathNode::EvaluateFrom(XPathContext& context, bool descendantFirst) const {
  if (context.InputIsRefusedFragment()) {
    return context.Fail(XPathError::CannotUseFragment, *this);
  }
  for (int i = 0; i < stepCount_; ++i) {
    bool below = steps_[i].descendantBefore || (i == 0 && descendantFirst);
    const XPathStepNode& step = *steps_[i].step;
    if (!(below ? step.EvaluateBelow(context) : step.Evaluate(context))) return false;
  }
  return true;
}

bool XPathRelativePathNode::EvaluateOperand(const XPathContext& context,
                                            XPathOperand& operand) const {
  bool isSelf = stepCount_ == 1 && steps_[0].step->GetForm() == XPathStepNode::Form::Self;
  if (!isSelf || context.InputIsRefusedFragment()) {
    return XPathValueNode::EvaluateOperand(context, operand);
  }
  operand.value = &context.Input();
  return true;
}

XPathQuickNode::Starts XPathRelativePathNode::StartsOf(const XPathContext& context,
                                                       XPathNodeRef&) const {
  return {context.Input().nodes.data(), context.Input().nodes.size()};
}

void XPathRootPathNode::Prepare(XPathParseTree&) {
  type = Type::NodeSet;
  if (!HasOneChild()) path_ = static_cast<const XPathRelativePathNode*>(lastChild);
  harmless = path_ == nullptr || path_->harmless;
  usesPosition = path_ != nullptr && path_->usesPosition;
}

bool XPathRootPathNode::Evaluate(XPathContext& context) const {
  return path_ == nullptr || path_->EvaluateFrom(context, IsDescendant());
}

void XPathAbsolutePathNode::Prepare(XPathParseTree&) {
  effective = this;
  type = Type::NodeSet;
  harmless = firstChild->harmless;
  usesPosition = firstChild->usesPosition;
  isQuick_ = true;
  const auto& fromRoot = static_cast<const XPathRootPathNode&>(*firstChild);
  const XPathRelativePathNode* path = fromRoot.Path();
  for (int i = 0; path != nullptr && i < path->StepCount(); ++i) {
    bool descendantBefore =
        path->Steps()[i].descendantBefore || (i == 0 && fromRoot.IsDescendant());
    isQuick_ = isQuick_ && quickPath_.Add(*path->Steps()[i].step, descendantBefore);
  }
}

bool XPathAbsolutePathNode::Evaluate(XPathContext& context) const {
  XPathValue& output = context.Output();
  output.Clear();
  if (XPathNode* root = context.evaluation->Root()) output.nodes.emplace_back(root, 1);
  context.Swap();
  return static_cast<const XPathRootPathNode&>(*firstChild).Evaluate(context);
}

XPathQuickNode::Starts XPathAbsolutePathNode::StartsOf(const XPathContext& context,
                                                       XPathNodeRef& own) const {
  own = XPathNodeRef(context.evaluation->Root(), 1);
  return {&own, own.node != nullptr ? std::size_t{1} : 0};
}

void XPathFilterPathNode::Prepare(XPathParseTree&) {
  effective = this;
  type = Type::Unknown;  // "." behind a string leaves the string
  harmless = firstChild->harmless && lastChild->harmless;
  usesPosition = firstChild->usesPosition || lastChild->usesPosition;
  if (firstChild->type == Type::NodeSet) type = Type::NodeSet;
}

bool XPathFilterPathNode::Evaluate(XPathContext& context) const {
  if (!Run(*firstChild, context)) return false;
  const auto& path = static_cast<const XPathRelativePathNode&>(*lastChild);
  return path.EvaluateFrom(context, rule == XPathRule::FilterDescendantPath);
}

void XPathFilterNode::Prepare(XPathParseTree&) {
  const XPathParseNode& primary = *firstChild;
  effective = HasOneChild() ? primary.effective : this;
  type = HasOneChild() ? primary.type : Type::NodeSet;
  harmless = primary.harmless && (HasOneChild() || primary.type == Type::NodeSet);
  // A primary in brackets may leave the size of the input as it was.
  usesPosition = primary.usesPosition || (!HasOneChild() && primary.effective == &primary);
  for (const XPathParseNode* child = primary.nextSibling; child; child = child->nextSibling) {
    harmless = harmless && child->harmless;
  }
}

bool XPathFilterNode::Evaluate(XPathContext& context) const {
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    if (!Run(*child, context)) return false;
  }
  return true;
}

// --- axes and tests ---------------------------------------------------------------------------

void XPathAxisNode::Prepare(XPathParseTree&) {
  harmless = true;
  std::u16string_view name = LeafText(*this);
  if (rule == XPathRule::AbbreviatedAxis) {
    axis_ = name == u"@" ? Axis::Attribute : Axis::Child;
    return;
  }
  for (const AxisNameRow& row : kAxisNames) {
    if (row.name == name) axis_ = row.axis;
  }
}

void XPathNodeTestNode::Prepare(XPathParseTree& tree) {
  harmless = true;
  if (rule == XPathRule::NodeTypeTest) {
    std::u16string_view word = LeafText(*this);
    form_ = word == u"comment" ? Form::Comment
            : word == u"text"  ? Form::Text
            : word == u"node"  ? Form::Node
                               : Form::AnyPI;
    return;
  }
  if (rule == XPathRule::PITest) {
    form_ = Form::NamedPI;
    const XPathParseNode& quoted = *firstChild->nextSibling->nextSibling->firstChild;
    const XPathParseNode& inside = *quoted.firstChild->nextSibling;
    if (inside.rule == XPathRule::CharacterRun) name_ = inside.text;
    return;
  }
  const XPathParseNode& name = *firstChild;
  if (name.rule == XPathRule::Token) {
    form_ = Form::Any;
    return;
  }
  bool wildcard = name.rule == XPathRule::PrefixWildcard ||
                  name.rule == XPathRule::FieldPrefixWildcard ||
                  name.rule == XPathRule::SelectorPrefixWildcard;
  if (wildcard) {
    form_ = Form::AnyInPrefix;
    prefix_ = LeafText(*name.firstChild);
  } else {
    form_ = Form::Name;
    ParsedName parts = NameOf(name);
    name_ = parts.local;
    prefix_ = parts.prefix;
  }
  prefixNumber_ = tree.AddPrefix(prefix_);
}

StepTest XPathNodeTestNode::TestWithoutUri(Axis axis) const {
  StepTest test;
  test.name = name_;
  switch (form_) {
    case Form::Comment:
      test.kind = StepTest::Comment;
      break;
    case Form::Text:
      test.kind = StepTest::Text;
      break;
    case Form::AnyPI:
    case Form::NamedPI:
      test.kind = StepTest::PI;
      break;
    case Form::Node:
      test.kind = NodeKindTest(axis);
      break;
    case Form::Any:
      test.kind = axis == Axis::Attribute   ? StepTest::Attribute
                  : axis == Axis::Namespace ? StepTest::NamespaceNode
                                            : StepTest::Element;
      break;
    case Form::AnyInPrefix:
      test.kind = StepTest::Namespace;
      break;
    case Form::Name:
      test.kind = axis == Axis::Namespace ? StepTest::LocalName : StepTest::Name;
      break;
  }
  return test;
}

// The test for node().
StepTest::Kind XPathNodeTestNode::NodeKindTest(Axis axis) {
  switch (axis) {
    case Axis::AncestorOrSelf:
    case Axis::DescendantOrSelf:
      return StepTest::NotNamespace;
    case Axis::Attribute:
      return StepTest::Attribute;
    case Axis::Namespace:
      return StepTest::NamespaceNode;
    case Axis::Parent:
      return StepTest::AnyNode;
    default:
      return StepTest::Content;
  }
}

bool XPathNodeTestNode::Resolve(Axis axis, const XPathContext& context, StepTest& test) const {
  test = TestWithoutUri(axis);
  int number = PrefixNumber(axis);
  if (number < 0) return true;
  const auto& binding = context.evaluation->bindings->entries[static_cast<std::size_t>(number)];
  if (!prefix_.empty() && !binding.bound) return context.Fail(XPathError::InvalidPrefix, *this);
  test.SetUri(binding.uri);
  return true;
}

bool XPathNodeTestNode::EvaluateOn(Axis axis, XPathContext& context) const {
  if (IsSkipped(axis)) return true;
  StepTest test;
  return Resolve(axis, context, test) && TakeAxis(axis, test, context, *this);
}

}  // namespace kelmora
