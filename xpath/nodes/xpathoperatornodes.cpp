// Operators that make a truth value or a number, and the union of node sets.
//
// An operand is asked for its value in the kind that the operator needs, so a sum of paths or a
// condition of three comparisons makes no XPathValue at all. The trap is the order in which things
// fail: every operand is evaluated, from the left, though the value may be settled before. Leaving
// one out is right only where it is harmless: it can neither fail nor call the host.

#include "nodes/xpathoperatornodes.h"

#include <algorithm>
#include <iterator>

#include "nodes/xpathcontext.h"
#include "nodes/xpathpathnodes.h"
#include "syntax/xpathparsetree.h"
#include "values/xpathcompare.h"
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
  if (op == XPathOperator::Add) return a + b;
  if (op == XPathOperator::Subtract) return a - b;
  if (op == XPathOperator::Multiply) return a * b;
  if (op == XPathOperator::Divide) return a / b;
  return Modulo(a, b);
}

}  // namespace

void XPathOperands::Prepare(XPathParseNode& owner, XPathParseNode::Type type,
                            XPathParseTree& tree) {
  int count = 0;
  for (const XPathParseNode* child = owner.firstChild; child; child = child->nextSibling) ++count;
  auto* operands = static_cast<Operand*>(tree.GetArena().Allocate(
      static_cast<std::size_t>(count) * sizeof(Operand), alignof(Operand)));
  owner.harmless = true;
  for (const XPathParseNode* child = owner.firstChild; child; child = child->nextSibling) {
    Operand operand{child, XPathOperator::Or};
    if (child != owner.firstChild) {
      const XPathParseNode* tail =
          child->rule == XPathRule::MultiplicativeTail ? child->firstChild : child;
      operand = {tail->lastChild, OperatorOf(LeafText(*tail))};
    }
    owner.harmless = owner.harmless && operand.node->harmless;
    owner.usesPosition = owner.usesPosition || operand.node->usesPosition;
    operands[count_++] = operand;
  }
  first_ = operands;
  owner.type = count == 1 ? owner.firstChild->type : type;
  if (count == 1) owner.effective = owner.firstChild->effective;
}

// --- or, and ----------------------------------------------------------------------------------

void XPathLogicalNode::Prepare(XPathParseTree& tree) {
  effective = this;
  operands_.Prepare(*this, Type::Boolean, tree);
}

bool XPathLogicalNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  if (!OperandBoolean(*operands_[0].node, context, value)) return false;
  bool stepsCannotFail = context.StepsCannotFail();
  for (int i = 1; i < operands_.Count(); ++i) {
    bool decided = value == (operands_[i].op == XPathOperator::Or);
    if (decided && stepsCannotFail && operands_[i].node->harmless) continue;
    bool next = false;
    if (!OperandBoolean(*operands_[i].node, context, next)) return false;
    if (!decided) value = next;
  }
  return true;
}

// --- arithmetic -------------------------------------------------------------------------------

void XPathArithmeticNode::Prepare(XPathParseTree& tree) {
  effective = this;
  operands_.Prepare(*this, Type::Number, tree);
}

bool XPathArithmeticNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (!OperandNumber(*operands_[0].node, context, value)) return false;
  for (int i = 1; i < operands_.Count(); ++i) {
    double right = 0;
    if (!OperandNumber(*operands_[i].node, context, right)) return false;
    value = Calculate(operands_[i].op, value, right);
  }
  return true;
}

// --- minus signs ------------------------------------------------------------------------------

void XPathUnaryNode::Prepare(XPathParseTree&) {
  const XPathParseNode& child = *firstChild;
  operand_ = &child;
  if (child.rule == XPathRule::NegationExpr) {
    const auto* inner = static_cast<const XPathUnaryNode*>(child.lastChild);
    operand_ = inner->operand_;
    oddSigns_ = !inner->oddSigns_;
  }
  bool negates = operand_ != &child;
  effective = negates ? this : child.effective;
  type = negates ? Type::Number : child.type;
  harmless = operand_->harmless;
  usesPosition = operand_->usesPosition;
}

bool XPathUnaryNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (!OperandNumber(*operand_, context, value)) return false;
  if (oddSigns_) value = -value;
  return true;
}

// --- union ------------------------------------------------------------------------------------

void XPathUnionNode::Prepare(XPathParseTree& tree) {
  effective = this;
  operands_.Prepare(*this, Type::NodeSet, tree);
  areSteps_ = true;
  for (const XPathOperands::Operand& operand : operands_) {
    areSteps_ = areSteps_ && OnlyStepOf(*operand.node) != nullptr;
    if (operands_.Count() > 1) harmless = harmless && operand.node->type == Type::NodeSet;
  }
}

const XPathStepNode* XPathUnionNode::OnlyStepOf(const XPathParseNode& operand) {
  const XPathParseNode& top = *operand.effective;
  if (top.rule != XPathRule::LocationPath) return nullptr;
  return static_cast<const XPathLocationPathNode&>(top).OnlyStep();
}

bool XPathUnionNode::EvaluateSteps(XPathContext& context) const {
  const XPathNodeList& input = context.Input().nodes;
  XPathNodeList& output = context.OutputNodes();
  for (const XPathOperands::Operand& operand : operands_) {
    const XPathStepNode& step = *OnlyStepOf(*operand.node);
    StepTest test;
    if (!step.Test().Resolve(step.GetAxis(), context, test)) return false;
    if (!AxisIsAllowed(step.GetAxis(), context, step.Test())) return false;
    RunAxis(step.GetAxis(), test, input.data(), input.size(), output);
  }
  RemoveDuplicates(output);
  if (context.Swap()) context.SortInput();
  return true;
}

bool XPathUnionNode::Evaluate(XPathContext& context) const {
  bool startsFromOneNode = context.Input().kind == XPathValue::NodeSet &&
                           context.Input().nodes.size() == 1 && !context.InputIsRefusedFragment();
  if (areSteps_ && startsFromOneNode) return EvaluateSteps(context);
  XPathNodeList all;
  for (const XPathOperands::Operand& item : operands_) {
    XPathOperand operand;
    if (!OperandValue(*item.node, context, operand)) return false;
    if (operand.value->kind != XPathValue::NodeSet) {
      return context.Fail(XPathError::NotANodeSet, *this);
    }
    all.insert(all.end(), operand.value->nodes.begin(), operand.value->nodes.end());
  }
  RemoveDuplicates(all);
  context.Output().SetNodes(std::move(all));
  if (context.Swap()) context.SortInput();
  return true;
}

}  // namespace kelmora
