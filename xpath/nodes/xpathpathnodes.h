// The nodes of location paths: paths, steps, their axes and tests, and predicates.
#pragma once

#include <cstdint>

#include "axes/xpathaxis.h"
#include "nodes/xpathquickpath.h"
#include "nodes/xpathvaluenode.h"

namespace kelmora {

class XPathStepNode;

// Calls the expression's OnLocationPath behind its path.
class XPathLocationPathNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  bool CanVisit(const XPathContext& context) const override;
  bool VisitNodes(const XPathContext& context, NodeVisitor& visitor) const override;
  bool CountNodes(const XPathContext& context, std::size_t& count) const override;
  void Prepare(XPathParseTree& tree) override;
  // The step of a path that is one step without predicates along an axis; null for all others.
  const XPathStepNode* OnlyStep() const;

 private:
  const XPathValueNode* path_ = nullptr;
};

// A path that, when its steps are simple, needs no list for a value of another kind.
class XPathQuickNode : public XPathValueNode {
 public:
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  bool CanVisit(const XPathContext& context) const override;
  bool VisitNodes(const XPathContext& context, NodeVisitor& visitor) const override;
  bool CountNodes(const XPathContext& context, std::size_t& count) const override;

 protected:
  struct Starts {
    const XPathNodeRef* first;
    std::size_t count;
  };
  ~XPathQuickNode() = default;
  // Where the path starts; `own` serves for a start that no list holds.
  virtual Starts StartsOf(const XPathContext& context, XPathNodeRef& own) const = 0;

  XPathQuickPath quickPath_;
  bool isQuick_ = false;

 private:
  static bool AreStamped(const Starts& starts);
  // The first node in document order, null for an empty set. False when a list has to tell.
  bool FindFirst(const XPathContext& context, XPathNode*& first) const;
};

class XPathAxisNode final : public XPathParseNode {
 public:
  void Prepare(XPathParseTree& tree) override;
  Axis GetAxis() const { return axis_; }

 private:
  Axis axis_ = Axis::Child;
};

// One of the three node tests.
class XPathNodeTestNode final : public XPathParseNode {
 public:
  // Runs the axis with it, from the input to the input.
  bool EvaluateOn(Axis axis, XPathContext& context) const;
  void Prepare(XPathParseTree& tree) override;

  enum class Form : std::uint8_t { Comment, Text, AnyPI, Node, NamedPI, Any, AnyInPrefix, Name };
  Form GetForm() const { return form_; }
  std::u16string_view LocalName() const { return name_; }
  std::u16string_view Prefix() const { return prefix_; }

  // self::node() runs no axis at all.
  bool IsSkipped(Axis axis) const { return form_ == Form::Node && axis == Axis::Self; }
  // What the text alone decides of the test, and the number of the prefix that gives its URI, -1
  // for a test without one.
  StepTest TestWithoutUri(Axis axis) const;
  int PrefixNumber(Axis axis) const {
    return prefix_.empty() && axis == Axis::Attribute ? -1 : prefixNumber_;
  }
  // False for a prefix without a binding. Not for a test that is skipped.
  bool Resolve(Axis axis, const XPathContext& context, StepTest& test) const;

 private:
  static StepTest::Kind NodeKindTest(Axis axis);

  Form form_ = Form::Node;
  std::u16string_view name_;
  std::u16string_view prefix_;
  int prefixNumber_ = -1;  // -1: the name has none and needs none
};

class XPathPredicateNode final : public XPathValueNode {
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
  // Whether a node passes depends on the node alone, not on its place among the others.
  bool FiltersByNode() const;

 private:
  bool Keeps(const XPathContext& inner, std::int32_t index, bool& keeps) const;

  const XPathParseNode* expression_ = nullptr;
  std::int32_t onlyIndex_ = 0;
  bool isLast_ = false;  // [last()]
};

// A step, in full or "." or "..".
class XPathStepNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const;
  void Prepare(XPathParseTree& tree) override;

  enum class Form : std::uint8_t { Full, Self, Parent };
  Form GetForm() const { return form_; }
  Axis GetAxis() const { return axis_; }
  const XPathNodeTestNode& Test() const { return *test_; }  // of a full step
  bool HasPredicates() const { return predicateCount_ != 0; }
  std::int32_t OnlyIndex() const;  // n when [n] is the only predicate, else 0

  // The step with the "//" in front of it. False for an error.
  bool EvaluateBelow(XPathContext& context) const;

 private:
  bool EvaluateForEach(XPathContext& context) const;
  bool EvaluateTogether(XPathContext& context, Axis axis) const;
  bool CanFilterTogether(const XPathContext& context) const;
  bool FilterOne(const XPathContext& step, std::int32_t size, XPathNodeList& found,
                 XPathNodeList& scratch) const;

  Form form_ = Form::Full;
  Axis axis_ = Axis::Child;
  const XPathNodeTestNode* test_ = nullptr;
  const XPathPredicateNode* const* predicates_ = nullptr;
  int predicateCount_ = 0;
  bool filtersByNode_ = false;  // no predicate asks for positions
};

// Steps with "/" or "//" between them.
class XPathRelativePathNode final : public XPathQuickNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  void Prepare(XPathParseTree& tree) override;

  // With `descendantFirst` a "//" stands in front of the first step too.
  bool EvaluateFrom(XPathContext& context, bool descendantFirst) const;

  struct PathStep {
    const XPathStepNode* step;
    bool descendantBefore;
  };
  const PathStep* Steps() const { return steps_; }
  int StepCount() const { return stepCount_; }

 private:
  Starts StartsOf(const XPathContext& context, XPathNodeRef& own) const override;

  const PathStep* steps_ = nullptr;
  int stepCount_ = 0;
};

// "/" or "//" with the path behind it, from the root in the input.
class XPathRootPathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const;
  void Prepare(XPathParseTree& tree) override;
  const XPathRelativePathNode* Path() const { return path_; }  // null for "/" alone
  bool IsDescendant() const { return rule == XPathRule::RootDescendantPath; }

 private:
  const XPathRelativePathNode* path_ = nullptr;
};

class XPathAbsolutePathNode final : public XPathQuickNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;

 private:
  Starts StartsOf(const XPathContext& context, XPathNodeRef& own) const override;
};

// A filter with a path behind it.
class XPathFilterPathNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// A primary with its predicates.
class XPathFilterNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// False, with error 12 at `node`, for an axis that a template pattern may not use here.
bool AxisIsAllowed(Axis axis, const XPathContext& context, const XPathParseNode& node);
// The step of an axis: checks the axis limit of patterns, runs the axis on the input and makes what
// it delivers the input.
bool TakeAxis(Axis axis, const StepTest& test, XPathContext& context, const XPathParseNode& node);
// One descendant-or-self::node() step, as "//" stands for.
bool TakeDescendants(XPathContext& context, const XPathParseNode& node);

}  // namespace kelmora
