#include "nodes/xpathquickpath.h"

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

class XPathQuickPath::Walk {
 public:
  Walk(const XPathQuickPath& path, const XPathContext& context, NodeVisitor& visitor)
      : path_(path), bindings_(context.evaluation->bindings), visitor_(visitor) {}

  // The nodes of the steps from `index` on. Recurs once for each step.
  bool From(XPathNode* node, int index) {
    if (index == path_.count_) return visitor_.Visit(*node);
    Position at{index, 0};
    switch (path_.steps_[index].axis) {
      case Axis::Self:
        return Take(node, at) != Flow::Stop;
      case Axis::Parent:
        return node->parent == nullptr || TakeAncestor(node->parent, at) != Flow::Stop;
      case Axis::AncestorOrSelf:
        return Ancestors(node, at);
      case Axis::Ancestor:
        return Ancestors(node->parent, at);
      case Axis::Attribute:
        return node->kind != XPathNodeKind::Element || Attributes(node, at);
      case Axis::Child:
        return Children(node, at);
      case Axis::Descendant:
        return Descendants(node, at);
      default:
        return Siblings(node, at);
    }
  }

 private:
  enum class Flow { GoOn, StepIsDone, Stop };
  struct Position {
    int step;
    std::int32_t met;  // nodes of the step that passed its test
  };

  // A node on the axis of the step: goes on from it if it passes.
  Flow Take(XPathNode* node, Position& at) {
    const Step& step = path_.steps_[at.step];
    if (!Matches(step, *node)) return Flow::GoOn;
    std::int32_t onlyIndex = step.onlyIndex;
    if (onlyIndex != 0 && ++at.met != onlyIndex) return Flow::GoOn;
    if (!From(node, at.step + 1)) return Flow::Stop;
    return onlyIndex != 0 ? Flow::StepIsDone : Flow::GoOn;
  }
  bool Matches(const Step& step, const XPathNode& node) const {
    if (step.prefixNumber < 0) return step.test.Matches(node);
    StepTest test = step.test;
    test.SetUri(bindings_->entries[static_cast<std::size_t>(step.prefixNumber)].uri);
    return test.Matches(node);
  }
  Flow TakeAncestor(XPathNode* node, Position& at) {
    return IsDeclaration(*node) ? Flow::GoOn : Take(node, at);
  }

  bool Ancestors(XPathNode* node, Position& at) {
    Flow flow = Flow::GoOn;
    for (; node != nullptr && flow == Flow::GoOn; node = node->parent) {
      flow = TakeAncestor(node, at);
    }
    return flow != Flow::Stop;
  }

  bool Attributes(XPathNode* top, Position& at) {
    Flow flow = Flow::GoOn;
    for (XPathNode* node = top->firstChild; node && flow == Flow::GoOn; node = node->next) {
      if (node->kind == XPathNodeKind::Attribute) {
        flow = Take(node, at);
      } else if (node->kind != XPathNodeKind::Namespace) {
        break;  // they stand in front
      }
    }
    return flow != Flow::Stop;
  }

  bool Children(XPathNode* top, Position& at) {
    if (IsDeclarationKind(*top)) return true;
    Flow flow = Flow::GoOn;
    for (XPathNode* node = top->firstChild; node && flow == Flow::GoOn; node = node->next) {
      if (!IsDeclarationKind(*node) && !IsElementAttribute(*node)) flow = Take(node, at);
    }
    return flow != Flow::Stop;
  }

  bool Siblings(XPathNode* start, Position& at) {
    if (start->kind == XPathNodeKind::Root || start->kind == XPathNodeKind::Attribute ||
        IsDeclarationKind(*start)) {
      return true;
    }
    bool forward = path_.steps_[at.step].axis == Axis::FollowingSibling;
    XPathNode* node = forward ? start->next : start->previous;
    Flow flow = Flow::GoOn;
    for (; node && flow == Flow::GoOn; node = forward ? node->next : node->previous) {
      if (!IsDeclaration(*node)) flow = Take(node, at);
    }
    return flow != Flow::Stop;
  }

  bool Descendants(XPathNode* top, Position& at) {
    Flow flow = Flow::GoOn;
    XPathNode* node = IsDeclarationKind(*top) ? nullptr : top->firstChild;
    while (node != nullptr && flow == Flow::GoOn) {
      if (!IsDeclarationKind(*node) && !IsElementAttribute(*node)) flow = Take(node, at);
      bool goesBelow = node->firstChild != nullptr && !IsDeclarationKind(*node);
      node = goesBelow ? node->firstChild : node->NextSkippingChildren(top);
    }
    return flow != Flow::Stop;
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
