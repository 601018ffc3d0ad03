// The nodes of operators. One node holds all operands of its level, so a long sum is one loop.
#pragma once

#include <cstdint>

#include "syntax/xpathparsenode.h"
#include "values/xpathcompare.h"

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

class XPathOperatorNode : public XPathParseNode {
 public:
  // Each operand runs in a private copy of the context, so that none sees the steps of another;
  // the values are combined from the left.
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

 protected:
  struct Operand {
    const XPathParseNode* node;
    XPathOperator op;  // in front of the operand
  };
  ~XPathOperatorNode() = default;

  // `left` becomes the value of the two.
  virtual bool Combine(const XPathContext& context, XPathOperator op, XPathValue& left,
                       const XPathValue& right) const = 0;
  virtual Type ResultType() const = 0;
  // Looks at the first operand before the second runs.
  virtual bool AcceptFirst(const XPathContext& context, const XPathValue& value) const {
    static_cast<void>(context);
    static_cast<void>(value);
    return true;
  }
  // The nodes to run: the effective ones.
  const Operand* operands_ = nullptr;
  int operandCount_ = 0;

 private:
  bool EvaluatePlain(XPathContext& context) const;
};

// or, and. All operands are evaluated, so that an error in a later one shows.
class XPathLogicalNode final : public XPathOperatorNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;

 private:
  bool Combine(const XPathContext& context, XPathOperator op, XPathValue& left,
               const XPathValue& right) const override;
  Type ResultType() const override { return Type::Boolean; }
};

// = != < <= > >=
class XPathComparisonNode final : public XPathOperatorNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;

 private:
  bool Combine(const XPathContext& context, XPathOperator op, XPathValue& left,
               const XPathValue& right) const override;
  Type ResultType() const override { return Type::Boolean; }
  bool CompareTypes(const XPathContext& context, const XPathParseNode& left, const Operand& right,
                    bool& value) const;
};

// + - * div mod
class XPathArithmeticNode final : public XPathOperatorNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;

 private:
  bool Combine(const XPathContext& context, XPathOperator op, XPathValue& left,
               const XPathValue& right) const override;
  Type ResultType() const override { return Type::Number; }
};

// Each operand must be a node set. The union is in document order.
class XPathUnionNode final : public XPathOperatorNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  // For operands that are single steps: all run from the one node of the input into one list.
  bool EvaluateSteps(XPathContext& context) const;
  static const XPathStepNode* OnlyStepOf(const XPathParseNode& operand);

  bool areSteps_ = false;
  bool Combine(const XPathContext& context, XPathOperator op, XPathValue& left,
               const XPathValue& right) const override;
  Type ResultType() const override { return Type::NodeSet; }
  bool AcceptFirst(const XPathContext& context, const XPathValue& value) const override;
};

// A union, or a row of minus signs in front of one.
class XPathUnaryNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  const XPathParseNode* operand_ = nullptr;
  bool negates_ = false;  // there is a sign at all, so the value is a number
  bool oddSigns_ = false;
};

}  // namespace kelmora
