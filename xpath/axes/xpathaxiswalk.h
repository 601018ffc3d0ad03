// The walk of an axis from one node by links: the one place that says what an axis visits and in
// which order.
//
// A visitor is told of each node by Take, and false ends the walk. Before the walk goes on from a
// place, Enter is asked: false says that all behind it is known already, since an earlier walk was
// here. A place is a node below which a descendant walk goes, or a node that the walks along
// siblings, ancestors and document order come to, whether the axis yields it or not. Visitors that
// walk from one node alone let Enter say yes.
#pragma once

#include <optional>

#include "axes/xpathnodetest.h"
#include "syntax/xpathaxisnames.h"

namespace kelmora {

// A node of the namespace axis has no place among the children. What precedes it is what precedes
// its element.
inline XPathNode* StartOfPreceding(XPathNode* node) {
  bool isLinked =
      node->previous != nullptr || node->parent == nullptr || node->parent->firstChild == node;
  return isLinked ? node : node->parent;
}

template <class Visitor>
void WalkChildren(XPathNode* top, Visitor& visitor) {
  if (IsDeclarationKind(*top)) return;
  XPathNode* at = top->firstChild;
  if (top->kind == XPathNodeKind::Element) {
    while (at != nullptr && at->kind == XPathNodeKind::Attribute) at = at->next;
  }
  for (; at != nullptr; at = at->next) {
    if (IsDeclarationKind(*at) || IsElementAttribute(*at)) continue;
    if (!visitor.Take(at)) return;
  }
}

// Attributes and declarations stand in front of the content.
template <class Visitor>
void WalkAttributes(XPathNode* top, Visitor& visitor) {
  if (top->kind != XPathNodeKind::Element) return;
  for (XPathNode* at = top->firstChild; at != nullptr; at = at->next) {
    if (at->kind == XPathNodeKind::Namespace) continue;
    if (at->kind != XPathNodeKind::Attribute || !visitor.Take(at)) return;
  }
}

template <class Visitor>
void WalkDescendants(XPathNode* top, Visitor& visitor) {
  auto goesBelow = [&visitor](XPathNode* node) {
    return node->firstChild != nullptr && !IsDeclarationKind(*node) && visitor.Enter(node);
  };
  if (!goesBelow(top)) return;
  XPathNode* at = top->firstChild;
  for (;;) {
    if (!IsDeclarationKind(*at) && !IsElementAttribute(*at) && !visitor.Take(at)) return;
    if (goesBelow(at)) {
      at = at->firstChild;
      continue;
    }
    while (at->next == nullptr) {
      at = at->parent;
      if (at == top) return;
    }
    at = at->next;
  }
}

// The walks along siblings and ancestors and behind the node, from `at` on by `next`.
template <class Visitor, class Next>
void WalkPlaces(XPathNode* at, Visitor& visitor, Next next) {
  for (; at != nullptr; at = next(at)) {
    if (!visitor.Enter(at)) return;
    if (!IsDeclaration(*at) && !visitor.Take(at)) return;
  }
}

// Leaves out the ancestors of the start. When Enter ended the walk, the result is the next of them
// that it would have met, which may be null.
template <class Visitor>
std::optional<XPathNode*> WalkPreceding(XPathNode* start, Visitor& visitor) {
  XPathNode* ancestor = start->parent;
  for (XPathNode* at = start->NextInDocument(false); at; at = at->NextInDocument(false)) {
    if (!visitor.Enter(at)) return ancestor;
    if (at == ancestor) {
      ancestor = at->parent;
    } else if (IsContentNode(*at) && !visitor.Take(at)) {
      break;
    }
  }
  return std::nullopt;
}

template <class Visitor>
void WalkAxis(Axis axis, XPathNode* start, Visitor& visitor) {
  auto parentOf = [](XPathNode* node) { return node->parent; };
  bool hasSiblings = start->kind != XPathNodeKind::Root &&
                     start->kind != XPathNodeKind::Attribute && !IsDeclarationKind(*start);
  switch (axis) {
    case Axis::Self:
      visitor.Take(start);
      return;
    case Axis::Child:
      return WalkChildren(start, visitor);
    case Axis::Attribute:
      return WalkAttributes(start, visitor);
    case Axis::Parent:
      if (start->parent != nullptr && !IsDeclaration(*start->parent)) visitor.Take(start->parent);
      return;
    case Axis::Ancestor:
      return WalkPlaces(start->parent, visitor, parentOf);
    case Axis::AncestorOrSelf:
      return WalkPlaces(start, visitor, parentOf);
    case Axis::DescendantOrSelf:
      if (!IsDeclaration(*start) && !visitor.Take(start)) return;
      return WalkDescendants(start, visitor);
    case Axis::Descendant:
      return WalkDescendants(start, visitor);
    case Axis::FollowingSibling:
      if (!hasSiblings) return;
      return WalkPlaces(start->next, visitor, [](XPathNode* node) { return node->next; });
    case Axis::PrecedingSibling:
      if (!hasSiblings) return;
      return WalkPlaces(start->previous, visitor, [](XPathNode* node) { return node->previous; });
    case Axis::Following: {
      auto next = [](XPathNode* node) { return node->NextInDocument(true); };
      for (XPathNode* at = start->NextSkippingChildren(nullptr); at; at = next(at)) {
        if (!visitor.Enter(at)) return;
        if (IsContentNode(*at) && !visitor.Take(at)) return;
      }
      return;
    }
    case Axis::Preceding:
      WalkPreceding(StartOfPreceding(start), visitor);
      return;
    case Axis::Namespace:
      if (start->kind != XPathNodeKind::Element) return;
      for (XPathNode* at : start->NamespaceNodes()) {
        if (!visitor.Take(at)) return;
      }
  }
}

}  // namespace kelmora
