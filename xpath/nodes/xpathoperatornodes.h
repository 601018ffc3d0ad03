// The nodes of operators. One node holds all operands of its level, so a long sum is one loop. A
// level with one operand is no operator: whoever runs it runs the operand.
#pragma once

#include <cstdint>

#include "nodes/xpathvaluenode.h"

namespace kelmora {

class XPathStepNode;

enum class XPathOperator : std::uint8_t {
  Or,
  And,
  Equal,
  NotEqual,
  Less,
  LessOrEqual,
  Greater,
  GreaterOrEqual,
  Add,
  Subtract,
  Multiply,
  Divide,
  Modulo,
  Union,
};

// The operands of a node, from the left. Each is seen from the unchanged context, so that none
// sees the steps of another.
class XPathOperands {
 public:
  struct Operand {
    const XPathParseNode* node;
    XPathOperator op;  // in front of the operand
  };

  // Lists the operands of `owner` and sets what they tell of it; `type` is that of its result.
  void Prepare(XPathParseNode& owner, XPathParseNode::Type type, XPathParseTree& tree);

  const Operand* begin() const { return first_; }
  const Operand* end() const { return first_ + count_; }
  const Operand& operator[](int index) const { return first_[index]; }
  int Count() const { return count_; }

 private:
  const Operand* first_ = nullptr;
  int count_ = 0;
};

// or, and. All operands are evaluated, so that an error in a later one shows.
class XPathLogicalNode final : public XPathScalarNode {
 public:
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  XPathOperands operands_;
};

// = != < <= > >=
class XPathComparisonNode final : public XPathScalarNode {
 public:
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  bool CompareTypes(const XPathContext& context, const XPathParseNode& left,
                    const XPathOperands::Operand& right, bool& value) const;

  XPathOperands operands_;
};

// + - * div mod
class XPathArithmeticNode final : public XPathScalarNode {
 public:
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  XPathOperands operands_;
};

// Each operand must be a node set. The union is in document order.
class XPathUnionNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  // For operands that are single steps: all run from the one node of the input into one list.
  bool EvaluateSteps(XPathContext& context) const;
  static const XPathStepNode* OnlyStepOf(const XPathParseNode& operand);

  XPathOperands operands_;
  bool areSteps_ = false;
};

// A union, or a row of minus signs in front of one.
class XPathUnaryNode final : public XPathScalarNode {
 public:
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  const XPathParseNode* operand_ = nullptr;
  bool oddSigns_ = false;
};

}  // namespace kelmora
