// The nodes of location paths: paths, steps, their axes and tests, and predicates.
#pragma once

#include <cstdint>

#include "xpathaxis.h"
#include "xpathnodetest.h"
#include "xpathparsenode.h"

namespace kelmora {

// Calls the expression's OnLocationPath behind its path.
class XPathLocationPathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  void Prepare(XPathParseTree& tree) override;
};

class XPathAxisNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
  Axis GetAxis() const { return axis_; }

 private:
  Axis axis_ = Axis::Child;
};

// One of the three node tests. Evaluation runs the axis of the context with it.
class XPathNodeTestNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

  enum class Form : std::uint8_t { Comment, Text, AnyPI, Node, NamedPI, Any, AnyInPrefix, Name };
  Form GetForm() const { return form_; }
  std::u16string_view LocalName() const { return name_; }
  std::u16string_view Prefix() const { return prefix_; }

  // self::node() runs no axis at all.
  bool IsSkipped(Axis axis) const { return form_ == Form::Node && axis == Axis::Self; }
  // False for a prefix without a binding. Not for a test that is skipped.
  bool Resolve(Axis axis, const XPathContext& context, StepTest& test) const;

 private:
  Form form_ = Form::Node;
  std::u16string_view name_;
  std::u16string_view prefix_;
  int prefixNumber_ = -1;  // -1: the name has none and needs none
};

class XPathPredicateNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

  // Keeps the nodes that pass, numbered from 1. `size` is what last() returns; `context` lends
  // everything else. The lists must not be the same.
  bool Filter(const XPathContext& context, std::int32_t size, const XPathNodeList& input,
              XPathNodeList& output) const;
  // The number n of a predicate [n], 0 for every other one. At most node n passes, so whoever
  // makes the list may stop there.
  std::int32_t OnlyIndex() const { return onlyIndex_; }
  const XPathParseNode& Expression() const { return *expression_; }

 private:
  bool Keeps(const XPathContext& inner, std::int32_t index, bool& keeps) const;
  bool EvaluatePlain(XPathContext& context) const;

  const XPathParseNode* expression_ = nullptr;
  std::int32_t onlyIndex_ = 0;
  bool isLast_ = false;  // [last()]
};

// A step, in full or "." or "..".
class XPathStepNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

  enum class Form : std::uint8_t { Full, Self, Parent };
  Form GetForm() const { return form_; }
  Axis GetAxis() const { return axis_; }
  const XPathNodeTestNode& Test() const { return *test_; }  // of a full step
  bool HasPredicates() const { return predicateCount_ != 0; }

 private:
  bool EvaluatePlain(XPathContext& context) const;
  bool EvaluateForEach(XPathContext& context) const;
  bool FilterOne(const XPathContext& step, std::int32_t size, XPathNodeList& found,
                 XPathNodeList& scratch) const;

  Form form_ = Form::Full;
  Axis axis_ = Axis::Child;
  const XPathNodeTestNode* test_ = nullptr;
  const XPathPredicateNode* const* predicates_ = nullptr;
  int predicateCount_ = 0;
};

// Steps with "/" or "//" between them.
class XPathRelativePathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  void Prepare(XPathParseTree& tree) override;

  struct PathStep {
    const XPathStepNode* step;
    bool descendantBefore;
  };
  const PathStep* Steps() const { return steps_; }
  int StepCount() const { return stepCount_; }

 private:
  const PathStep* steps_ = nullptr;
  int stepCount_ = 0;
};

// "/" or "//" with the path behind it, from the root in the input.
class XPathRootPathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
  const XPathRelativePathNode* Path() const { return path_; }  // null for "/" alone
  bool IsDescendant() const { return rule == XPathRule::RootDescendantPath; }

 private:
  const XPathRelativePathNode* path_ = nullptr;
};

class XPathAbsolutePathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// A filter with a path behind it.
class XPathFilterPathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// A primary with its predicates.
class XPathFilterNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// False, with error 12 at `node`, for an axis that a template pattern may not use here.
bool AxisIsAllowed(Axis axis, const XPathContext& context, const XPathParseNode& node);
// Checks the axis limit of patterns and runs the axis from the input to the output. The caller
// swaps.
bool RunAxis(Axis axis, const StepTest& test, XPathContext& context, const XPathParseNode& node);
// One descendant-or-self::node() step, as "//" stands for.
bool RunDescendantStep(XPathContext& context, const XPathParseNode& node);

}  // namespace kelmora
