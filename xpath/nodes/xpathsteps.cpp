// Steps and predicates.
//
// A step without predicates runs its axis once for all input nodes. One with predicates runs once
// for each, since position() and last() are counted for each; what comes out of all is sorted and
// numbered anew. All input nodes share one set of lists, an axis stops early where a predicate [n]
// can keep nothing that lies behind, and where no predicate asks for positions the step may run
// over the nodes of all inputs at once.

#include <algorithm>
#include <cmath>

#include "nodes/xpathcontext.h"
#include "nodes/xpathfunctioncall.h"
#include "nodes/xpathpathnodes.h"
#include "nodes/xpathprimarynodes.h"
#include "values/xpathnodeset.h"

namespace kelmora {

// --- steps ------------------------------------------------------------------------------------

void XPathStepNode::Prepare(XPathParseTree& tree) {
  type = Type::Unknown;
  harmless = true;
  const XPathParseNode& body = *firstChild;
  if (body.rule == XPathRule::AbbreviatedStep) {
    form_ = LeafText(body) == u"." ? Form::Self : Form::Parent;
    axis_ = form_ == Form::Self ? Axis::Self : Axis::Parent;
    return;
  }
  const XPathParseNode* axis = body.firstChild->firstChild;
  if (axis->rule == XPathRule::NamedAxis) axis = axis->firstChild;
  axis_ = static_cast<const XPathAxisNode*>(axis)->GetAxis();
  const XPathParseNode* test = body.firstChild->nextSibling;
  test_ = static_cast<const XPathNodeTestNode*>(test->firstChild);

  int count = 0;
  for (const XPathParseNode* child = test->nextSibling; child; child = child->nextSibling) ++count;
  auto* predicates = static_cast<const XPathPredicateNode**>(
      tree.GetArena().Allocate(static_cast<std::size_t>(count) * sizeof(void*), alignof(void*)));
  for (const XPathParseNode* child = test->nextSibling; child; child = child->nextSibling) {
    predicates[predicateCount_++] = static_cast<const XPathPredicateNode*>(child);
    harmless = harmless && child->harmless;
  }
  predicates_ = predicates;
  // Without a run of the axis, the predicates see the size of the input that the step began with.
  bool skipsAxis = test_->IsSkipped(axis_);
  usesPosition = skipsAxis && predicateCount_ != 0;
  filtersByNode_ = predicateCount_ != 0 && !skipsAxis;
  for (int i = 0; i < predicateCount_; ++i) {
    filtersByNode_ = filtersByNode_ && predicates_[i]->FiltersByNode();
  }
}

std::int32_t XPathStepNode::OnlyIndex() const {
  return predicateCount_ == 1 ? predicates_[0]->OnlyIndex() : 0;
}

bool XPathStepNode::Evaluate(XPathContext& context) const {
  if (form_ == Form::Self) return true;
  if (form_ == Form::Parent) {
    StepTest test;
    test.kind = StepTest::Content;
    return TakeAxis(Axis::Parent, test, context, *this);
  }
  if (predicateCount_ == 0) return test_->EvaluateOn(axis_, context);
  return CanFilterTogether(context) ? EvaluateTogether(context, axis_) : EvaluateForEach(context);
}

// From one node, or where the order of delivery does not show in the end, "//" and a child step are
// one walk.
bool XPathStepNode::EvaluateBelow(XPathContext& context) const {
  const XPathNodeList& input = context.Input().nodes;
  if (form_ == Form::Full && axis_ == Axis::Child) {
    if (predicateCount_ == 0 && input.size() == 1) {
      StepTest test;
      if (!test_->Resolve(axis_, context, test)) return false;
      RunChildrenBelow(test, input.front(), context.OutputNodes());
      context.Swap();
      return true;
    }
    // Stamps make the sorted order the same from whatever order before.
    bool allStamped = std::all_of(input.begin(), input.end(), [](const XPathNodeRef& entry) {
      return entry.node->documentNumber > 0;
    });
    if (allStamped && harmless && filtersByNode_ && context.StepsCannotFail()) {
      return EvaluateTogether(context, Axis::Descendant);
    }
  }
  return TakeDescendants(context, *this) && Evaluate(context);
}

// Predicates that look at the node alone may run over the nodes of all inputs at once. Where they
// can fail or have an effect, their order must stay as it is for each input in turn.
bool XPathStepNode::CanFilterTogether(const XPathContext& context) const {
  if (!filtersByNode_) return false;
  if (harmless && context.StepsCannotFail()) return true;
  return predicateCount_ == 1 && (axis_ == Axis::Child || axis_ == Axis::Attribute);
}

bool XPathStepNode::EvaluateTogether(XPathContext& context, Axis axis) const {
  const XPathNodeList& input = context.Input().nodes;
  XPathNodeList& output = context.OutputNodes();
  if (!input.empty()) {
    StepTest test;
    if (!test_->Resolve(axis_, context, test)) return false;
    if (!AxisIsAllowed(axis_, context, *test_)) return false;
    RunAxis(axis, test, input.data(), input.size(), output);
    NodeSetLease scratch(context);
    if (!output.empty() && !FilterOne(context, 0, output, scratch.value.nodes)) return false;
  }
  if (context.Swap()) context.SortInput();
  return true;
}

bool XPathStepNode::EvaluateForEach(XPathContext& context) const {
  const XPathNodeList& input = context.Input().nodes;
  XPathNodeList& output = context.OutputNodes();
  bool skipsAxis = test_->IsSkipped(axis_);
  StepTest test;
  if (!input.empty() && !skipsAxis) {
    if (!test_->Resolve(axis_, context, test)) return false;
    if (!AxisIsAllowed(axis_, context, *test_)) return false;
  }
  std::size_t limit = kNoLimit;
  if (std::int32_t index = predicates_[0]->OnlyIndex(); index != 0 && !skipsAxis) {
    limit = static_cast<std::size_t>(index);
  }
  NodeSetLease foundLease(context);
  NodeSetLease scratchLease(context);
  XPathNodeList& found = foundLease.value.nodes;
  for (const XPathNodeRef& node : input) {
    found.clear();
    // Without an axis run the size is still that of the input as a whole.
    std::int32_t size = context.inputSize;
    if (skipsAxis) {
      found.push_back(node);
    } else {
      RunAxis(axis_, test, &node, 1, found, limit);
      size = static_cast<std::int32_t>(found.size());
    }
    if (found.empty()) continue;
    if (!FilterOne(context, size, found, scratchLease.value.nodes)) return false;
    output.insert(output.end(), found.begin(), found.end());
  }
  bool canMeetTwice = axis_ != Axis::Child && axis_ != Axis::Attribute && axis_ != Axis::Self &&
                      axis_ != Axis::Namespace;
  if (canMeetTwice && input.size() > 1) RemoveDuplicates(output);
  if (context.Swap()) context.SortInput();
  return true;
}

bool XPathStepNode::FilterOne(const XPathContext& step, std::int32_t size, XPathNodeList& found,
                              XPathNodeList& scratch) const {
  for (int i = 0; i < predicateCount_; ++i) {
    scratch.clear();
    if (!predicates_[i]->Filter(step, size, found, scratch)) return false;
    found.swap(scratch);
    size = static_cast<std::int32_t>(found.size());
  }
  return true;
}

// --- predicates -------------------------------------------------------------------------------

void XPathPredicateNode::Prepare(XPathParseTree&) {
  effective = this;
  type = Type::NodeSet;
  expression_ = firstChild->nextSibling;
  harmless = expression_->harmless;
  usesPosition = expression_->usesPosition;
  const XPathParseNode& runs = *expression_->effective;
  if (runs.rule == XPathRule::Number) {
    double number = static_cast<const XPathNumberNode&>(runs).Number();
    constexpr double kMostNodes = 0x7FFFFFFF;
    if (number >= 1 && number <= kMostNodes && number == std::trunc(number)) {
      onlyIndex_ = static_cast<std::int32_t>(number);
    }
  } else if (runs.rule == XPathRule::FunctionCall) {
    isLast_ = static_cast<const XPathFunctionCallNode&>(runs).IsPlainCallOf(XPathFunction::last);
  }
}

bool XPathPredicateNode::FiltersByNode() const {
  bool isIndex = expression_->type == Type::Number || expression_->type == Type::Unknown;
  return !isIndex && !expression_->usesPosition;
}

bool XPathPredicateNode::Evaluate(XPathContext& context) const {
  if (context.InputIsRefusedFragment()) {
    return context.Fail(XPathError::CannotUseFragment, *this);
  }
  if (context.Input().kind != XPathValue::NodeSet) {
    return context.Fail(XPathError::NotANodeSet, *this);
  }
  if (!Filter(context, context.inputSize, context.Input().nodes, context.OutputNodes())) {
    return false;
  }
  context.Swap();
  return true;
}

bool XPathPredicateNode::Filter(const XPathContext& context, std::int32_t size,
                                const XPathNodeList& input, XPathNodeList& output) const {
  std::size_t only = static_cast<std::size_t>(isLast_ ? size : onlyIndex_);
  if (isLast_ || onlyIndex_ != 0) {
    if (only >= 1 && only <= input.size()) output.emplace_back(input[only - 1].node, 1);
    return true;
  }
  XPathContext inner(context);
  inner.inPredicate = true;
  inner.size = size;
  inner.inputSize = size;
  NodeSetLease lease(context);
  XPathValue& single = lease.value;
  single.nodes.resize(1);
  inner.BorrowInput(single);
  std::int32_t index = 0;
  for (const XPathNodeRef& node : input) {
    single.nodes[0] = node;
    inner.position = node.position;
    bool keeps = false;
    if (!Keeps(inner, ++index, keeps)) return false;
    if (keeps) {
      output.push_back(node);
      output.back().position = static_cast<std::int32_t>(output.size());
    }
  }
  return true;
}

bool XPathPredicateNode::Keeps(const XPathContext& inner, std::int32_t index, bool& keeps) const {
  switch (expression_->type) {
    case Type::Boolean:
    case Type::NodeSet:
    case Type::String:
      return OperandBoolean(*expression_, inner, keeps);
    case Type::Number: {
      double number = 0;
      if (!OperandNumber(*expression_, inner, number)) return false;
      keeps = number == index;
      return true;
    }
    case Type::Unknown:
      break;
  }
  XPathOperand operand;
  if (!OperandValue(*expression_, inner, operand)) return false;
  const XPathValue& value = *operand.value;
  keeps = value.kind == XPathValue::Number ? value.number == index : ToBoolean(value);
  return true;
}

}  // namespace kelmora
