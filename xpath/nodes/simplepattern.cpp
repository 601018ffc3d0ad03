// The pattern is matched from its last step upwards: a step of the child or attribute axis delivers
// a node exactly when its parent is among the step's input. The input of the first step is the
// universe, which holds every node but attributes, namespace nodes and declarations, so any parent
// that a root or element can be will do.

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
  if (made.isAttribute && form != Form::Any && form != Form::AnyInPrefix && form != Form::Name) {
    return false;
  }
  made.name = test.LocalName();
  switch (form) {
    case Form::Comment:
      made.test = SimpleStep::AnyComment;
      return true;
    case Form::Text:
      made.test = SimpleStep::AnyText;
      return true;
    case Form::AnyPI:
    case Form::NamedPI:
      made.test = SimpleStep::AnyPI;
      return true;
    case Form::Node:
      made.test = SimpleStep::AnyNode;
      return true;
    case Form::Any:
      made.test = SimpleStep::AnyName;
      return true;
    case Form::AnyInPrefix:
    case Form::Name:
      break;
  }
  made.test = form == Form::Name ? SimpleStep::Name : SimpleStep::Namespace;
  if (test.Prefix().empty()) {
    made.uri = made.isAttribute ? nullptr : prefixMap.Lookup(u"");
    return true;
  }
  made.uri = prefixMap.Lookup(test.Prefix());
  return made.uri != nullptr;
}

// The node lies on the axis of the step, and its parent can be an input at all.
bool LiesOnAxis(const SimpleStep& step, const XPathNode& node) {
  if (node.parent == nullptr) return false;
  if (step.isAttribute) {
    return node.kind == XPathNodeKind::Attribute && node.parent->kind == XPathNodeKind::Element;
  }
  switch (node.kind) {
    case XPathNodeKind::Element:
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
    case XPathNodeKind::PI:
    case XPathNodeKind::Comment:
      return node.parent->kind == XPathNodeKind::Element ||
             node.parent->kind == XPathNodeKind::Root;
    default:
      return false;
  }
}

bool Passes(const SimpleStep& step, const XPathNode& node) {
  if (!LiesOnAxis(step, node)) return false;
  bool hasName = node.kind == XPathNodeKind::Element || node.kind == XPathNodeKind::Attribute;
  switch (step.test) {
    case SimpleStep::Name:
      return hasName && node.namespaceURI == step.uri && HasLocalName(node, step.name);
    case SimpleStep::Namespace:
      return hasName && node.namespaceURI == step.uri;
    case SimpleStep::AnyName:
      return hasName;
    case SimpleStep::AnyText:
      return node.IsText();
    case SimpleStep::AnyComment:
      return node.kind == XPathNodeKind::Comment;
    case SimpleStep::AnyPI:
      return node.kind == XPathNodeKind::PI && (step.name.empty() || node.GetName() == step.name);
    case SimpleStep::AnyNode:
      return true;
  }
  return false;
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
