// The pattern is matched from its last step upwards: a step of the child or attribute axis delivers
// a node exactly when its parent is among the step's input. The input of the first step is the
// universe, which holds every node but attributes, namespace nodes and declarations, so any parent
// will do.

#include "xpath/simplepattern.h"

#include "axes/xpathnodetest.h"
#include "nodes/xpathpathnodes.h"

namespace kelmora {
namespace {

using Form = XPathNodeTestNode::Form;

bool MakeStep(const XPathStepNode& step, bool descendantBefore, const PrefixMap& prefixMap,
              SimpleStep& made) {
  if (step.GetForm() != XPathStepNode::Form::Full || step.HasPredicates()) return false;
  made.isAttribute = step.GetAxis() == Axis::Attribute;
  if (!made.isAttribute && step.GetAxis() != Axis::Child) return false;
  made.descendantBefore = descendantBefore;
  const XPathNodeTestNode& test = step.Test();
  Form form = test.GetForm();
  bool isName = form == Form::Any || form == Form::AnyInPrefix || form == Form::Name;
  if (made.isAttribute && !isName) return false;
  made.test = test.TestWithoutUri(step.GetAxis());
  if (test.PrefixNumber(step.GetAxis()) < 0) return true;
  made.test.uri = prefixMap.Lookup(test.Prefix());
  return test.Prefix().empty() || made.test.uri != nullptr;
}

// Nodes that patterns run from: no attribute, no declaration. In a result, texts and comments can
// have children.
bool CanBeInput(const XPathNode& node) {
  return node.kind < XPathNodeKind::XMLDeclaration && node.kind != XPathNodeKind::Attribute &&
         node.kind != XPathNodeKind::Namespace;
}

// The node is one that the axis of the step gives to its parent.
bool Passes(const SimpleStep& step, const XPathNode& node) {
  bool isOnAxis = step.isAttribute
                      ? IsElementAttribute(node)
                      : node.parent != nullptr && CanBeInput(*node.parent) && IsContentNode(node);
  return isOnAxis && step.test.Matches(node);
}

}  // namespace

std::optional<SimplePattern> SimplePattern::Classify(const XPathParseNodeRef& tree,
                                                     const PrefixMap& prefixMap) {
  if (!tree) return std::nullopt;
  const XPathParseNode& top = *tree->Root()->effective;
  if (top.rule != XPathRule::LocationPath) return std::nullopt;
  SimplePattern pattern;
  pattern.tree_ = tree;
  const XPathParseNode& body = *top.firstChild;
  const XPathRelativePathNode* path = nullptr;
  bool descendantFirst = false;
  if (body.rule == XPathRule::AbsoluteLocationPath) {
    const auto& fromRoot = static_cast<const XPathRootPathNode&>(*body.firstChild);
    path = fromRoot.Path();
    if (path == nullptr) return pattern;
    descendantFirst = fromRoot.IsDescendant();
    pattern.fromRoot_ = !descendantFirst;  // "//a" is any a
  } else {
    path = static_cast<const XPathRelativePathNode*>(&body);
  }
  for (int i = 0; i < path->StepCount(); ++i) {
    const XPathRelativePathNode::PathStep& step = path->Steps()[i];
    SimpleStep made;
    if (!MakeStep(*step.step, step.descendantBefore, prefixMap, made)) return std::nullopt;
    pattern.steps_.push_back(made);
  }
  return pattern;
}

bool SimplePattern::Matches(const XPathNode* node) const {
  if (steps_.empty()) return node->kind == XPathNodeKind::Root;
  if (!Passes(steps_.back(), *node)) return false;
  // `place` is the innermost node that the next step may take; the step in front of a "//" may
  // take any node above. Taking the nearest one leaves most room for the steps further out.
  const XPathNode* place = node->parent;
  bool mayClimb = steps_.back().descendantBefore;
  std::size_t open = steps_.size() - 1;     // steps not taken yet
  std::size_t restart = 0;                  // the state to return to: behind the last "//"
  const XPathNode* restartPlace = nullptr;  // null: there was no "//" so far
  for (;;) {
    if (mayClimb) {
      restart = open;
      restartPlace = place;
      mayClimb = false;
    }
    if (open == 0) {
      if (!fromRoot_ || place->kind == XPathNodeKind::Root) return true;
    } else if (Passes(steps_[open - 1], *place)) {
      --open;
      mayClimb = steps_[open].descendantBefore;
      place = place->parent;
      continue;
    }
    // Start anew one level above the last place that could be climbed from.
    if (restartPlace == nullptr || restartPlace->parent == nullptr) return false;
    restartPlace = restartPlace->parent;
    place = restartPlace;
    open = restart;
  }
}

}  // namespace kelmora
