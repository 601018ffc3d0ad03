#include "xpathquickpath.h"

#include "xpathcontext.h"
#include "xpathpathnodes.h"

namespace kelmora {

bool XPathQuickPath::Add(const XPathStepNode& step, bool descendantBefore) {
  if (step.GetForm() == XPathStepNode::Form::Self) return !descendantBefore;
  if (count_ == kMostSteps || step.HasPredicates()) return false;
  Axis axis = step.GetAxis();
  if (descendantBefore) {
    // Below a start, the children of it and of its descendants are its descendants.
    if (axis != Axis::Child) return false;
    axis = Axis::Descendant;
  }
  if (axis != Axis::Child && axis != Axis::Attribute && axis != Axis::Parent &&
      axis != Axis::Descendant) {
    return false;
  }
  // Upwards first, then downwards, and below a descendant step only attributes: then the walk
  // meets nodes in order. A second descendant step meets some of them twice.
  Axis last = count_ == 0 ? Axis::Parent : steps_[count_ - 1].axis;
  if (axis == Axis::Parent && last != Axis::Parent) meetsOnce_ = false;
  if (axis == Axis::Descendant && goesDeep_) meetsOnce_ = false;
  if (goesDeep_ && axis != Axis::Attribute) inOrder_ = false;
  inOrder_ = inOrder_ && meetsOnce_;
  goesDeep_ = goesDeep_ || axis == Axis::Descendant;
  bool isFull = step.GetForm() == XPathStepNode::Form::Full;
  steps_[count_++] = {axis, isFull ? &step.Test() : nullptr};
  return true;
}

class XPathQuickPath::Walk {
 public:
  Walk(const XPathQuickPath& path, const XPathContext& context, NodeVisitor& visitor)
      : path_(path), visitor_(visitor) {
    for (int i = 0; i < path.count_; ++i) {
      tests_[i].kind = StepTest::Content;
      if (path.steps_[i].test == nullptr) continue;
      path.steps_[i].test->Resolve(path.steps_[i].axis, context, tests_[i]);
    }
  }

  // Recurs once for each step.
  bool From(XPathNode* node, int index) {
    if (index == path_.count_) return visitor_.Visit(*node);
    const StepTest& test = tests_[index];
    switch (path_.steps_[index].axis) {
      case Axis::Parent: {
        XPathNode* parent = node->parent;
        if (parent == nullptr || IsDeclaration(*parent) || !test.Matches(*parent)) return true;
        return From(parent, index + 1);
      }
      case Axis::Attribute:
        if (node->kind != XPathNodeKind::Element) return true;
        for (XPathNode* at = node->firstChild; at && IsInStartTag(*at); at = at->next) {
          if (at->kind == XPathNodeKind::Attribute && test.Matches(*at) && !From(at, index + 1)) {
            return false;
          }
        }
        return true;
      case Axis::Child:
        for (XPathNode* at = node->firstChild; at != nullptr; at = at->next) {
          if (IsContentNode(*at) && test.Matches(*at) && !From(at, index + 1)) return false;
        }
        return true;
      default:
        return Descendants(node, index);
    }
  }

 private:
  static bool IsInStartTag(const XPathNode& node) {
    return node.kind == XPathNodeKind::Attribute || node.kind == XPathNodeKind::Namespace;
  }

  bool Descendants(XPathNode* top, int index) {
    XPathNode* at = top->firstChild;
    while (at != nullptr) {
      if (IsContentNode(*at) && tests_[index].Matches(*at) && !From(at, index + 1)) return false;
      bool goesBelow = at->firstChild != nullptr && !IsDeclarationKind(*at);
      at = goesBelow ? at->firstChild : at->NextSkippingChildren(top);
    }
    return true;
  }

  const XPathQuickPath& path_;
  NodeVisitor& visitor_;
  StepTest tests_[kMostSteps];
};

bool XPathQuickPath::Visit(const XPathContext& context, XPathNode* start,
                           NodeVisitor& visitor) const {
  return Walk(*this, context, visitor).From(start, 0);
}

}  // namespace kelmora
