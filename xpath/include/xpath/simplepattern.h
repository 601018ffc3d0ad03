// SimplePattern: a template pattern that can be tested on one node by walking up its parents.
//
// The answer is exactly that of a search for the node in the result of the evaluated pattern, run
// with the universe of the node's tree ("//node()" and the root) as input. Only patterns whose
// evaluation cannot fail are classified, so a caller may skip the evaluation without losing an
// error.
#pragma once

#include <optional>
#include <vector>

#include "xpath/steptest.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

struct SimpleStep {
  StepTest test;
  bool isAttribute = false;       // on the attribute axis, else on the child axis
  bool descendantBefore = false;  // "//" stands in front of the step
};

class SimplePattern {
 public:
  // None for a tree of another form: a predicate, a function, "|", ".", an axis other than child
  // and attribute, or a prefix that `prefixMap` does not bind to a URI. The parse tree is shared;
  // the map is not kept.
  static std::optional<SimplePattern> Classify(const XPathParseNodeRef& tree,
                                               const PrefixMap& prefixMap);

  // Costs the steps of the pattern, with "//" at most the depth of the node.
  bool Matches(const XPathNode* node) const;

  // What can match at all, for an index of rules: the root alone ("/"), or nodes that pass the
  // test of the last step.
  bool IsRoot() const { return steps_.empty(); }
  const SimpleStep& LastStep() const { return steps_.back(); }  // not for IsRoot()
  // True when the last step's test is the whole pattern.
  bool IsSingleStep() const { return steps_.size() == 1 && !fromRoot_; }

 private:
  XPathParseNodeRef tree_;
  std::vector<SimpleStep> steps_;
  bool fromRoot_ = false;  // the first step starts at the root
};

}  // namespace kelmora
