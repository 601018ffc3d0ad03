// A path as a chain of walks: each node that a step meets is handed to the next step at once, and
// the last one shows its nodes to the visitor. So no list is made, and a visitor that has what it
// wanted ends all walks.
//
// What such a walk gives up is what lists are for: dropping nodes that are met twice, and sorting.
// Judge keeps account, while the steps are added, of what the walk can promise all the same: that
// no node is met twice, that nodes come in document order, and whether that depends on stamps.

#include "nodes/xpathquickpath.h"

#include "axes/xpathaxiswalk.h"
#include "nodes/xpathcontext.h"
#include "nodes/xpathpathnodes.h"

namespace kelmora {

bool XPathQuickPath::Add(const XPathStepNode& step, bool descendantBefore) {
  using Form = XPathStepNode::Form;
  if (step.GetForm() == Form::Self) return !descendantBefore;
  if (count_ == kMostSteps) return false;
  Step added{step.GetAxis(), 0, -1, StepTest()};
  added.test.kind = StepTest::Content;
  if (step.GetForm() == Form::Full) {
    const XPathNodeTestNode& test = step.Test();
    added.onlyIndex = step.OnlyIndex();
    if (step.HasPredicates() && (added.onlyIndex == 0 || descendantBefore)) return false;
    if (test.IsSkipped(added.axis)) return !step.HasPredicates() && !descendantBefore;
    added.test = test.TestWithoutUri(added.axis);
    added.prefixNumber = test.PrefixNumber(added.axis);
  }
  if (descendantBefore) {
    // The children of a node and of its descendants are its descendants.
    if (added.axis != Axis::Child) return false;
    added.axis = Axis::Descendant;
    reordersUnstamped_ = true;
  }
  switch (added.axis) {
    case Axis::Following:
    case Axis::Preceding:
    case Axis::Namespace:
    case Axis::DescendantOrSelf:
      return false;
    default:
      break;
  }
  Judge(added);
  steps_[count_++] = added;
  return true;
}

// What the step does to the properties of the walk.
void XPathQuickPath::Judge(const Step& step) {
  bool isReverse = false;
  switch (step.axis) {
    case Axis::Self:
    case Axis::Attribute:
      break;
    case Axis::Parent:
    case Axis::FollowingSibling:
      meetsOnce_ = meetsOnce_ && atMostOne_;  // several nodes may lead to the same ones
      break;
    case Axis::Child:
      inOrder_ = inOrder_ && !mayNest_;
      break;
    case Axis::Descendant:
      meetsOnce_ = meetsOnce_ && !mayNest_;
      break;
    default:
      isReverse = true;
      meetsOnce_ = meetsOnce_ && atMostOne_;
  }
  bool isSingle = step.onlyIndex != 0 || step.axis == Axis::Self || step.axis == Axis::Parent;
  bool sortsResult = step.axis == Axis::PrecedingSibling || step.axis == Axis::AncestorOrSelf;
  needsStamps_ = needsStamps_ || (step.onlyIndex != 0 && sortsResult);
  reordersUnstamped_ = reordersUnstamped_ || step.onlyIndex != 0;
  mayNest_ =
      mayNest_ || (!isSingle && (step.axis == Axis::Descendant || step.axis == Axis::Ancestor ||
                                 step.axis == Axis::AncestorOrSelf));
  inOrder_ = inOrder_ && meetsOnce_ && !(isReverse && !(isSingle && atMostOne_));
  atMostOne_ = atMostOne_ && isSingle;
}

// The nodes of the steps from one on, from one node. Recurs once for each step.
class XPathQuickPath::Walk {
 public:
  Walk(const XPathQuickPath& path, const XPathContext& context, NodeVisitor& visitor)
      : path_(path), bindings_(context.evaluation->bindings), visitor_(visitor) {}

  // False when the visitor stopped.
  bool From(XPathNode* node, int index) {
    if (index == path_.count_) return visitor_.Visit(*node);
    OneStep step(*this, index);
    WalkAxis(path_.steps_[index].axis, node, step);
    return !step.stopped;
  }

 private:
  // Goes on from each node of the step that passes.
  class OneStep {
   public:
    OneStep(Walk& walk, int index) : walk_(walk), step_(walk.path_.steps_[index]), index_(index) {}
    bool Take(XPathNode* node) {
      if (!walk_.Matches(step_, *node)) return true;
      if (step_.onlyIndex != 0 && ++met_ != step_.onlyIndex) return true;
      stopped = !walk_.From(node, index_ + 1);
      return !stopped && step_.onlyIndex == 0;
    }
    static bool Enter(XPathNode*) { return true; }

    bool stopped = false;

   private:
    Walk& walk_;
    const Step& step_;
    int index_;
    std::int32_t met_ = 0;  // nodes that passed the test
  };

  bool Matches(const Step& step, const XPathNode& node) const {
    if (step.prefixNumber < 0) return step.test.Matches(node);
    StepTest test = step.test;
    test.SetUri(bindings_->entries[static_cast<std::size_t>(step.prefixNumber)].uri);
    return test.Matches(node);
  }

  const XPathQuickPath& path_;
  const XPathParseTree::Bindings* bindings_;
  NodeVisitor& visitor_;
};

bool XPathQuickPath::Visit(const XPathContext& context, XPathNode* start,
                           NodeVisitor& visitor) const {
  return Walk(*this, context, visitor).From(start, 0);
}

}  // namespace kelmora
