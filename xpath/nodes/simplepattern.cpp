// The pattern is matched from its last step upwards: a step of the child or attribute axis delivers
// a node exactly when its parent is among the step's input, and its predicates hold among the
// siblings that pass the test. The input of the first step is the universe, which holds every node
// but attributes, namespace nodes and declarations, so any parent will do.
//
// The step in front of a "//" may take any node above. Taking the nearest one leaves most room for
// the steps further out: all that they could take from a place higher up they can take from it.
// So the nodes that a climb passes on its way share the verdict to which it leads.

#include "xpath/simplepattern.h"

#include "axes/xpathnodetest.h"
#include "nodes/patternmemory.h"
#include "nodes/xpathpathnodes.h"

namespace kelmora {
namespace {

using Form = XPathNodeTestNode::Form;

// Nodes that patterns run from: no attribute, no declaration. In a result, texts and comments can
// have children.
bool CanBeInput(const XPathNode& node) {
  return node.kind < XPathNodeKind::XMLDeclaration && node.kind != XPathNodeKind::Attribute &&
         node.kind != XPathNodeKind::Namespace;
}

// The node is one that the axis of the step gives to its parent, and passes the test.
bool Passes(const SimpleStep& step, const XPathNode& node) {
  bool isOnAxis = step.isAttribute
                      ? IsElementAttribute(node)
                      : node.parent != nullptr && CanBeInput(*node.parent) && IsContentNode(node);
  return isOnAxis && step.test.Matches(node);
}

bool HasRootPath(const XPathParseNode& top) {
  std::vector<const XPathParseNode*> open{&top};
  while (!open.empty()) {
    const XPathParseNode* node = open.back();
    open.pop_back();
    if (node->rule == XPathRule::AbsoluteLocationPath) return true;
    for (const XPathParseNode* child = node->firstChild; child; child = child->nextSibling) {
      open.push_back(child);
    }
  }
  return false;
}

}  // namespace

SimplePattern::SimplePattern() = default;
SimplePattern::SimplePattern(SimplePattern&&) noexcept = default;
SimplePattern& SimplePattern::operator=(SimplePattern&&) noexcept = default;
SimplePattern::~SimplePattern() = default;

bool SimplePattern::AddStep(const XPathStepNode& step, bool descendantBefore,
                            const PrefixMap& prefixMap, Predicates predicates) {
  if (step.GetForm() != XPathStepNode::Form::Full) return false;
  SimpleStep made;
  made.isAttribute = step.GetAxis() == Axis::Attribute;
  if (!made.isAttribute && step.GetAxis() != Axis::Child) return false;
  made.descendantBefore = descendantBefore;
  if (step.HasPredicates()) {
    if (predicates == Predicates::Refused || !step.harmless || HasRootPath(step)) return false;
    made.node = &step;
  }
  const XPathNodeTestNode& test = step.Test();
  Form form = test.GetForm();
  bool isName = form == Form::Any || form == Form::AnyInPrefix || form == Form::Name;
  if (made.isAttribute && !isName) return false;
  made.test = test.TestWithoutUri(step.GetAxis());
  if (test.PrefixNumber(step.GetAxis()) >= 0) {
    made.test.uri = prefixMap.Lookup(test.Prefix());
    if (!test.Prefix().empty() && made.test.uri == nullptr) return false;
  }
  steps_.push_back(made);
  return true;
}

std::optional<SimplePattern> SimplePattern::Classify(const XPathParseNodeRef& tree,
                                                     const PrefixMap& prefixMap,
                                                     Predicates predicates) {
  if (!tree) return std::nullopt;
  const XPathParseNode& top = *tree->Root()->effective;
  if (top.rule != XPathRule::LocationPath) return std::nullopt;
  SimplePattern pattern;
  pattern.tree_ = tree;
  const XPathParseNode& body = *top.firstChild;
  const XPathRelativePathNode* path = nullptr;
  if (body.rule == XPathRule::AbsoluteLocationPath) {
    const auto& fromRoot = static_cast<const XPathRootPathNode&>(*body.firstChild);
    path = fromRoot.Path();
    if (path == nullptr) return pattern;
    pattern.fromRoot_ = !fromRoot.IsDescendant();  // "//a" is any a
  } else {
    path = static_cast<const XPathRelativePathNode*>(&body);
  }
  bool remembers = false;
  for (int i = 0; i < path->StepCount(); ++i) {
    const XPathRelativePathNode::PathStep& step = path->Steps()[i];
    if (!pattern.AddStep(*step.step, step.descendantBefore, prefixMap, predicates)) {
      return std::nullopt;
    }
    remembers = remembers || step.descendantBefore || step.step->HasPredicates();
  }
  if (remembers) {
    if (!tree->ResolvePrefixes(prefixMap)->allBound) return std::nullopt;
    pattern.memory_ = std::make_unique<PatternMemory>(tree, prefixMap, pattern.steps_.size());
  }
  return pattern;
}

// Names come before predicates, which cost more.
bool SimplePattern::TakeSteps(std::size_t& last, XPathNode*& place) const {
  XPathNode* at = place;
  std::size_t first = last;
  bool hasPredicates = false;
  for (;; --first) {
    const SimpleStep& step = steps_[first];
    if (!Passes(step, *at)) return false;
    hasPredicates = hasPredicates || step.node != nullptr;
    at = at->parent;
    if (first == 0 || step.descendantBefore) break;
  }
  if (first == 0 && fromRoot_ && at->kind != XPathNodeKind::Root) return false;
  if (hasPredicates) {
    XPathNode* node = place;
    for (std::size_t index = last + 1; index-- > first; node = node->parent) {
      const SimpleStep& step = steps_[index];
      if (step.node != nullptr && !memory_->PassesPredicates(index, step, node)) return false;
    }
  }
  last = first;
  place = at;
  return true;
}

SimplePattern::Climb SimplePattern::ClimbTo(std::size_t& last, XPathNode*& place) const {
  const std::size_t index = last;
  XPathNode* const start = place;
  for (XPathNode* at = start; at != nullptr; at = at->parent) {
    const Verdict known = memory_->FindAbove(index, *at);
    if (known != Verdict::Unknown) {
      memory_->NoteClimb(index, start, at);
      return known == Verdict::Yes ? Climb::Matches : Climb::Fails;
    }
    place = at;
    if (TakeSteps(last, place)) {
      memory_->NoteClimb(index, start, at->parent);
      return Climb::Open;
    }
  }
  memory_->NoteClimb(index, start, nullptr);
  return Climb::Fails;
}

bool SimplePattern::Matches(XPathNode* node) const {
  if (steps_.empty()) return node->kind == XPathNodeKind::Root;
  std::size_t first = steps_.size() - 1;
  XPathNode* place = node;
  if (!TakeSteps(first, place)) return false;
  Climb climb = Climb::Open;
  while (first != 0 && climb == Climb::Open) {
    --first;
    climb = ClimbTo(first, place);
  }
  const bool matches = climb != Climb::Fails;
  if (memory_ != nullptr) memory_->EndClimbs(matches);
  return matches;
}

}  // namespace kelmora
