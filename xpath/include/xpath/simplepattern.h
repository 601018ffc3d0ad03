// SimplePattern: a template pattern that can be tested on one node by walking up its parents.
//
// The answer is exactly that of a search for the node in the result of the evaluated pattern, run
// with the universe of the node's tree ("//node()" and the root) as input. A pattern is simple when
//   - it is a location path of steps on the child and attribute axes, with "/" or "//" between:
//     then whether a step delivers a node hangs on the node's ancestors and siblings alone;
//   - every prefix is bound, and its predicates are harmless (no variable, no function that can
//     fail or ask the host): then nothing tells how often, when and in which order they ran, and
//     leaving some out hides no error;
//   - no predicate holds a path from the root: each test would climb there, and nothing else in a
//     test needs the root.
// All others run as the query that defines them.
//
// Positions are those among the siblings that the step delivers, as in the query, which runs a step
// with predicates once for each parent. Verdicts are remembered for each node, so all tests of a
// pattern together cost at most what the query costs: one evaluation of the predicates for each
// node, or for the children of each parent, and one climb through each node for each "//". They
// hold as long as the trees stay as they are.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "xpath/steptest.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

class PatternMemory;
class XPathStepNode;

struct SimpleStep {
  StepTest test;
  bool isAttribute = false;             // on the attribute axis, else on the child axis
  bool descendantBefore = false;        // "//" stands in front of the step
  const XPathStepNode* node = nullptr;  // with the predicates; null without
};

class SimplePattern {
 public:
  enum class Predicates : std::uint8_t { Refused, Tested };

  // None for a tree of another form. The parse tree is shared; the map is not kept.
  static std::optional<SimplePattern> Classify(const XPathParseNodeRef& tree,
                                               const PrefixMap& prefixMap, Predicates predicates);
  SimplePattern(SimplePattern&&) noexcept;
  SimplePattern& operator=(SimplePattern&&) noexcept;
  ~SimplePattern();

  bool Matches(XPathNode* node) const;

  // What can match at all, for an index of rules: the root alone ("/"), or nodes that pass the
  // test of the last step.
  bool IsRoot() const { return steps_.empty(); }
  const SimpleStep& LastStep() const { return steps_.back(); }  // not for IsRoot()
  // True when the last step's test is the whole pattern.
  bool IsSingleStep() const {
    return steps_.size() == 1 && !fromRoot_ && steps_.front().node == nullptr;
  }

 private:
  SimplePattern();

  bool AddStep(const XPathStepNode& step, bool descendantBefore, const PrefixMap& prefixMap,
               Predicates predicates);
  // Steps that no "//" parts, from the one at `last` up: false when they do not lead to `place`.
  // Else `place` becomes the node that they start from, and `last` their first step.
  bool TakeSteps(std::size_t& last, XPathNode*& place) const;
  // A verdict of PatternMemory on `place` or on the nearest node above at which the steps up to
  // `last` are taken, for all nodes between; then goes on as TakeSteps.
  enum class Climb : std::uint8_t { Matches, Fails, Open };
  Climb ClimbTo(std::size_t& last, XPathNode*& place) const;

  XPathParseNodeRef tree_;
  std::vector<SimpleStep> steps_;
  bool fromRoot_ = false;                  // the first step starts at the root
  std::unique_ptr<PatternMemory> memory_;  // null when every test is a walk of a step's length
};

}  // namespace kelmora
