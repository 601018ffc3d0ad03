#include "nodes/xpathoperatornodes.h"

#include <algorithm>

#include "nodes/xpathcontext.h"
#include "nodes/xpathpathnodes.h"
#include "values/xpathnodeset.h"

namespace kelmora {
namespace {

struct OperatorRow {
  std::u16string_view token;
  XPathOperator op;
};
constexpr OperatorRow kOperators[] = {
    {u"or", XPathOperator::Or},      {u"and", XPathOperator::And},
    {u"=", XPathOperator::Equal},    {u"!=", XPathOperator::NotEqual},
    {u"<", XPathOperator::Less},     {u"<=", XPathOperator::LessOrEqual},
    {u">", XPathOperator::Greater},  {u">=", XPathOperator::GreaterOrEqual},
    {u"+", XPathOperator::Add},      {u"-", XPathOperator::Subtract},
    {u"*", XPathOperator::Multiply}, {u"div", XPathOperator::Divide},
    {u"mod", XPathOperator::Modulo}, {u"|", XPathOperator::Union},
};

XPathOperator OperatorOf(std::u16string_view token) {
  return std::find_if(std::begin(kOperators), std::end(kOperators),
                      [token](const OperatorRow& row) { return row.token == token; })
      ->op;
}

double Calculate(XPathOperator op, double a, double b) {
  switch (op) {
    case XPathOperator::Add:
      return a + b;
    case XPathOperator::Subtract:
      return a - b;
    case XPathOperator::Multiply:
      return a * b;
    case XPathOperator::Divide:
      return a / b;
    default:
      return Modulo(a, b);
  }
}

}  // namespace

// --- what the operators share -----------------------------------------------------------------

void XPathOperatorNode::Prepare(XPathParseTree& tree) {
  int count = 0;
  for (const XPathParseNode* child = firstChild; child; child = child->nextSibling) ++count;
  auto* operands = static_cast<Operand*>(tree.GetArena().Allocate(
      static_cast<std::size_t>(count) * sizeof(Operand), alignof(Operand)));
  harmless = true;
  bool allSets = true;
  for (const XPathParseNode* child = firstChild; child; child = child->nextSibling) {
    Operand operand{child, XPathOperator::Or};
    if (child != firstChild) {
      const XPathParseNode* tail =
          child->rule == XPathRule::MultiplicativeTail ? child->firstChild : child;
      operand = {tail->lastChild, OperatorOf(LeafText(*tail))};
    }
    harmless = harmless && operand.node->harmless;
    usesPosition = usesPosition || operand.node->usesPosition;
    allSets = allSets && operand.node->type == Type::NodeSet;
    operands[operandCount_++] = operand;
  }
  operands_ = operands;
  bool passesOn = count == 1;
  effective = passesOn ? firstChild->effective : this;
  type = passesOn ? firstChild->type : ResultType();
  if (type == Type::NodeSet && !passesOn && !allSets) harmless = false;
}

bool XPathOperatorNode::EvaluatePlain(XPathContext& context) const {
  XPathValue left;
  for (int i = 0; i < operandCount_; ++i) {
    XPathContext operand(context);
    if (!Run(*operands_[i].node, operand)) return false;
    if (i == 0) {
      left = operand.TakeInput();
      if (!AcceptFirst(context, left)) return false;
    } else if (!Combine(context, operands_[i].op, left, operand.Input())) {
      return false;
    }
  }
  context.Output() = std::move(left);
  context.Swap();
  return true;
}

bool XPathOperatorNode::Evaluate(XPathContext& context) const {
  return operandCount_ == 1 ? Run(*firstChild, context) : EvaluatePlain(context);
}

// --- or, and ----------------------------------------------------------------------------------

bool XPathLogicalNode::Combine(const XPathContext&, XPathOperator op, XPathValue& left,
                               const XPathValue& right) const {
  bool a = ToBoolean(left);
  bool b = ToBoolean(right);
  left.SetBoolean(op == XPathOperator::Or ? a || b : a && b);
  return true;
}

bool XPathLogicalNode::Evaluate(XPathContext& context) const {
  if (operandCount_ == 1 || context.IsPlain()) return XPathOperatorNode::Evaluate(context);
  bool value = false;
  if (!EvaluateBoolean(context, value)) return false;
  context.Output().SetBoolean(value);
  context.Swap();
  return true;
}

bool XPathLogicalNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  bool value = false;
  if (!EvaluateBoolean(context, value)) return false;
  operand.own.SetBoolean(value);
  return true;
}

bool XPathLogicalNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  if (!OperandBoolean(*operands_[0].node, context, value)) return false;
  bool stepsCannotFail = context.StepsCannotFail();
  for (int i = 1; i < operandCount_; ++i) {
    bool decided = value == (operands_[i].op == XPathOperator::Or);
    if (decided && stepsCannotFail && operands_[i].node->harmless) continue;
    bool next = false;
    if (!OperandBoolean(*operands_[i].node, context, next)) return false;
    if (!decided) value = next;
  }
  return true;
}

// --- arithmetic -------------------------------------------------------------------------------

bool XPathArithmeticNode::Combine(const XPathContext&, XPathOperator op, XPathValue& left,
                                  const XPathValue& right) const {
  left.SetNumber(Calculate(op, ToNumber(left), ToNumber(right)));
  return true;
}

bool XPathArithmeticNode::Evaluate(XPathContext& context) const {
  if (operandCount_ == 1 || context.IsPlain()) return XPathOperatorNode::Evaluate(context);
  double value = 0;
  if (!EvaluateNumber(context, value)) return false;
  context.Output().SetNumber(value);
  context.Swap();
  return true;
}

bool XPathArithmeticNode::EvaluateOperand(const XPathContext& context,
                                          XPathOperand& operand) const {
  double value = 0;
  if (!EvaluateNumber(context, value)) return false;
  operand.own.SetNumber(value);
  return true;
}

bool XPathArithmeticNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (!OperandNumber(*operands_[0].node, context, value)) return false;
  for (int i = 1; i < operandCount_; ++i) {
    double right = 0;
    if (!OperandNumber(*operands_[i].node, context, right)) return false;
    value = Calculate(operands_[i].op, value, right);
  }
  return true;
}

// --- minus signs ------------------------------------------------------------------------------

void XPathUnaryNode::Prepare(XPathParseTree&) {
  const XPathParseNode& child = *firstChild;
  if (child.rule != XPathRule::NegationExpr) {
    effective = child.effective;
    type = child.type;
    harmless = child.harmless;
    usesPosition = child.usesPosition;
    operand_ = &child;
    return;
  }
  negates_ = true;
  effective = this;
  type = Type::Number;
  const auto* inner = static_cast<const XPathUnaryNode*>(child.lastChild);
  operand_ = inner->operand_;
  oddSigns_ = !inner->oddSigns_;
  harmless = operand_->harmless;
  usesPosition = operand_->usesPosition;
}

bool XPathUnaryNode::Evaluate(XPathContext& context) const {
  if (!negates_) return Run(*operand_, context);
  double value = 0;
  if (!EvaluateNumber(context, value)) return false;
  context.Output().SetNumber(value);
  context.Swap();
  return true;
}

bool XPathUnaryNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  double value = 0;
  if (!EvaluateNumber(context, value)) return false;
  operand.own.SetNumber(value);
  return true;
}

bool XPathUnaryNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (!OperandNumber(*operand_, context, value)) return false;
  if (oddSigns_) value = -value;
  return true;
}

// --- union ------------------------------------------------------------------------------------

bool XPathUnionNode::AcceptFirst(const XPathContext& context, const XPathValue& value) const {
  return value.kind == XPathValue::NodeSet || context.Fail(XPathError::NotANodeSet, *this);
}

// Only the first operand must be a node set. Another one that is none has no nodes to give.
bool XPathUnionNode::Combine(const XPathContext&, XPathOperator, XPathValue& left,
                             const XPathValue& right) const {
  left.nodes.insert(left.nodes.end(), right.nodes.begin(), right.nodes.end());
  return true;
}

void XPathUnionNode::Prepare(XPathParseTree& tree) {
  XPathOperatorNode::Prepare(tree);
  areSteps_ = std::all_of(operands_, operands_ + operandCount_, [](const Operand& operand) {
    return OnlyStepOf(*operand.node) != nullptr;
  });
}

const XPathStepNode* XPathUnionNode::OnlyStepOf(const XPathParseNode& operand) {
  const XPathParseNode& top = *operand.effective;
  if (top.rule != XPathRule::LocationPath) return nullptr;
  return static_cast<const XPathLocationPathNode&>(top).OnlyStep();
}

bool XPathUnionNode::EvaluateSteps(XPathContext& context) const {
  const XPathNodeList& input = context.Input().nodes;
  XPathNodeList& output = context.OutputNodes();
  for (int i = 0; i < operandCount_; ++i) {
    const XPathStepNode& step = *OnlyStepOf(*operands_[i].node);
    StepTest test;
    if (!step.Test().Resolve(step.GetAxis(), context, test)) return false;
    if (!AxisIsAllowed(step.GetAxis(), context, step.Test())) return false;
    RunQuickAxis(step.GetAxis(), test, input.data(), input.size(), output);
  }
  RemoveDuplicates(output);
  if (context.Swap()) context.SortInput();
  return true;
}

bool XPathUnionNode::Evaluate(XPathContext& context) const {
  if (operandCount_ == 1) return Run(*firstChild, context);
  bool startsFromOneNode = context.Input().kind == XPathValue::NodeSet &&
                           context.Input().nodes.size() == 1 && !context.InputIsRefusedFragment();
  if (areSteps_ && startsFromOneNode && !context.IsPlain()) return EvaluateSteps(context);
  XPathValue all;
  for (int i = 0; i < operandCount_; ++i) {
    XPathOperand operand;
    if (!OperandValue(*operands_[i].node, context, operand)) return false;
    if (!AcceptFirst(context, *operand.value)) return false;
    Combine(context, operands_[i].op, all, *operand.value);
  }
  RemoveDuplicates(all.nodes);
  context.Output() = std::move(all);
  if (context.Swap()) context.SortInput();
  return true;
}

}  // namespace kelmora
