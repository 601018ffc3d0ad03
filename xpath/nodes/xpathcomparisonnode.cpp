// Comparisons. What the text tells of the operands decides how they run: numbers and strings are
// compared without values, and a simple path on one side is walked only until a node answers.

#include <cmath>
#include <iterator>

#include "nodes/xpathcontext.h"
#include "nodes/xpathoperatornodes.h"
#include "values/xpathcompare.h"

namespace kelmora {
namespace {

// The six operators: on values, on numbers, and the operator seen from the other side.
struct ComparisonRow {
  XPathOperator op;
  bool (*values)(const XPathValue& a, const XPathValue& b);
  bool (*numbers)(double a, double b);
  XPathOperator mirrored;
};
using Op = XPathOperator;
constexpr ComparisonRow kComparisons[] = {
    {Op::Equal, Equal, EqualNumbers, Op::Equal},
    {Op::NotEqual, NotEqual, NotEqualNumbers, Op::NotEqual},
    {Op::Less, Less, [](double a, double b) { return a < b; }, Op::Greater},
    {Op::LessOrEqual, LessOrEqual, [](double a, double b) { return a <= b; }, Op::GreaterOrEqual},
    {Op::Greater, Greater, [](double a, double b) { return a > b; }, Op::Less},
    {Op::GreaterOrEqual, GreaterOrEqual, [](double a, double b) { return a >= b; },
     Op::LessOrEqual},
};

const ComparisonRow& RowOf(XPathOperator op) {
  return kComparisons[static_cast<std::size_t>(op) - static_cast<std::size_t>(Op::Equal)];
}
static_assert([] {
  for (std::size_t i = 0; i < std::size(kComparisons); ++i) {
    if (kComparisons[i].op != static_cast<Op>(static_cast<std::size_t>(Op::Equal) + i))
      return false;
  }
  return true;
}());

bool IsEquality(XPathOperator op) {
  return op == XPathOperator::Equal || op == XPathOperator::NotEqual;
}

// Stops at the first node whose text stands in the relation to a string.
class TextVisitor final : public NodeVisitor {
 public:
  TextVisitor(XPathOperator op, std::u16string_view text)
      : wantsEqual_(op == XPathOperator::Equal), text_(text) {}
  bool Visit(XPathNode& node) override {
    found = (node.StringValue(scratch_) == text_) == wantsEqual_;
    return !found;
  }
  bool found = false;

 private:
  bool wantsEqual_;
  std::u16string_view text_;
  TQString scratch_;
};

// The same for a number, the node on the left. A node that is no number differs from every number.
class NumberVisitor final : public NodeVisitor {
 public:
  NumberVisitor(XPathOperator op, double number) : op_(op), number_(number) {}
  bool Visit(XPathNode& node) override {
    double value = TextToNumber(node.StringValue(scratch_));
    found = op_ == XPathOperator::NotEqual ? !(value == number_) && !std::isnan(number_)
                                           : RowOf(op_).numbers(value, number_);
    return !found;
  }
  bool found = false;

 private:
  XPathOperator op_;
  double number_;
  TQString scratch_;
};

// Compares the nodes of a path, on the left, with a value that is no node set. False when the path
// has to be made into a list.
bool CompareWalked(const XPathValueNode& path, const XPathContext& context, XPathOperator op,
                   const XPathValue& other, bool& value) {
  if (other.kind == XPathValue::String && IsEquality(op)) {
    TextVisitor visitor(op, other.string);
    if (!path.VisitNodes(context, visitor)) return false;
    value = visitor.found;
    return true;
  }
  if (other.kind == XPathValue::Boolean && IsEquality(op)) return false;
  NumberVisitor visitor(op, ToNumber(other));
  if (!path.VisitNodes(context, visitor)) return false;
  value = visitor.found;
  return true;
}

}  // namespace

void XPathComparisonNode::Prepare(XPathParseTree& tree) {
  effective = this;
  operands_.Prepare(*this, Type::Boolean, tree);
}

bool XPathComparisonNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  if (!CompareTypes(context, *operands_[0].node, operands_[1], value)) return false;
  for (int i = 2; i < operands_.Count(); ++i) {
    XPathOperand right;
    if (!OperandValue(*operands_[i].node, context, right)) return false;
    XPathValue left;
    left.SetBoolean(value);
    value = RowOf(operands_[i].op).values(left, *right.value);
  }
  return true;
}

// The first two operands.
bool XPathComparisonNode::CompareTypes(const XPathContext& context, const XPathParseNode& left,
                                       const XPathOperands::Operand& right, bool& value) const {
  const XPathParseNode& rightNode = *right.node;
  if (left.type == Type::Number && rightNode.type == Type::Number) {
    double a = 0;
    double b = 0;
    if (!OperandNumber(left, context, a) || !OperandNumber(rightNode, context, b)) return false;
    value = RowOf(right.op).numbers(a, b);
    return true;
  }
  if (IsEquality(right.op) && left.type == Type::String && rightNode.type == Type::String) {
    TQString scratchA;
    TQString scratchB;
    std::u16string_view a;
    std::u16string_view b;
    if (!OperandText(left, context, scratchA, a)) return false;
    if (!OperandText(rightNode, context, scratchB, b)) return false;
    value = (a == b) == (right.op == XPathOperator::Equal);
    return true;
  }
  XPathOperand a;
  XPathOperand b;
  // A path that can be walked has no effects, so it does not matter when it runs.
  if (left.type == Type::NodeSet && left.effective->CanVisit(context)) {
    if (IsEquality(right.op) && rightNode.type == Type::String) {
      TQString scratch;
      std::u16string_view wanted;
      if (!OperandText(rightNode, context, scratch, wanted)) return false;
      TextVisitor visitor(right.op, wanted);
      left.effective->VisitNodes(context, visitor);
      value = visitor.found;
      return true;
    }
    if (!OperandValue(rightNode, context, b)) return false;
    if (b.value->kind != XPathValue::NodeSet &&
        CompareWalked(*left.effective, context, right.op, *b.value, value)) {
      return true;
    }
    if (!OperandValue(left, context, a)) return false;
  } else {
    if (!OperandValue(left, context, a)) return false;
    if (rightNode.type == Type::NodeSet && a.value->kind != XPathValue::NodeSet &&
        CompareWalked(*rightNode.effective, context, RowOf(right.op).mirrored, *a.value, value)) {
      return true;
    }
    if (!OperandValue(rightNode, context, b)) return false;
  }
  value = RowOf(right.op).values(*a.value, *b.value);
  return true;
}

}  // namespace kelmora
