// The axes by links, without sets and without lists of what to exclude.
//
// With one input node no axis can meet a node twice. With several, a node that was delivered bears
// a mark, and a second mark stops a walk where an earlier one has been: behind a sibling, an
// ancestor or a place in document order that was walked, everything has been walked, and below a
// node whose descendants were walked too. So the time is linear in the nodes met, however much the
// walks overlap. The walks are repeated at the end, to take the marks away.
//
// The preceding axis alone needs care, since it leaves out the ancestors of its start. In a tree,
// what the walks so far have not delivered in front of the latest start is exactly the ancestors
// of that start. A start in front of it adds nothing; a later one delivers what lies between the
// two, and those ancestors that are not its own.

#include "axes/xpathaxis.h"
#include "axes/xpathnodetest.h"
#include "values/xpathnodeset.h"

namespace kelmora {
namespace {

void ClearMark(XPathNode& node, NodeMark mark) {
  node.mark = static_cast<std::uint8_t>(node.mark & ~mark);
}

// A place on an axis that has a next place; the walks along siblings, ancestors and document order
// differ in nothing else.
XPathNode* NextPlace(Axis axis, XPathNode* node) {
  switch (axis) {
    case Axis::FollowingSibling:
      return node->next;
    case Axis::PrecedingSibling:
      return node->previous;
    case Axis::Following:
      return node->NextInDocument(true);
    case Axis::Preceding:
      return node->NextInDocument(false);
    default:
      return node->parent;
  }
}

// A node of the namespace axis has no place among the children. What precedes it is what precedes
// its element.
XPathNode* StartOfPreceding(XPathNode* node) {
  bool isLinked =
      node->previous != nullptr || node->parent == nullptr || node->parent->firstChild == node;
  return isLinked ? node : node->parent;
}

XPathNode* FirstPlace(Axis axis, const XPathNodeRef& start) {
  XPathNode* node = start.node;
  bool isSiblingAxis = axis == Axis::FollowingSibling || axis == Axis::PrecedingSibling;
  if (isSiblingAxis && (start.kind == XPathNodeRef::Root || start.kind == XPathNodeRef::Attribute ||
                        start.kind == XPathNodeRef::Declaration)) {
    return nullptr;
  }
  if (axis == Axis::AncestorOrSelf) return node;
  if (axis == Axis::Following) return node->NextSkippingChildren(nullptr);
  if (axis == Axis::Preceding) node = StartOfPreceding(node);
  return NextPlace(axis, node);
}

template <class Test>
class QuickAxis {
 public:
  QuickAxis(Axis axis, Test matches, bool severalInputs, XPathNodeList& output, std::size_t limit)
      : axis_(axis),
        matches_(matches),
        severalInputs_(severalInputs),
        output_(output),
        limit_(static_cast<std::int64_t>(
            limit < static_cast<std::size_t>(INT32_MAX) ? limit : std::size_t{INT32_MAX})) {}

  void RunFrom(const XPathNodeRef& start) {
    position_ = 0;
    XPathNode* node = start.node;
    switch (axis_) {
      case Axis::Self:
        Deliver(node);
        break;
      case Axis::Child:
        Children(node);
        break;
      case Axis::Attribute:
        Attributes(node);
        break;
      case Axis::Parent:
        if (node->parent != nullptr && !IsDeclaration(*node->parent)) DeliverNew(node->parent);
        break;
      case Axis::DescendantOrSelf:
        if (!IsDeclaration(*node)) DeliverNew(node);
        [[fallthrough]];
      case Axis::Descendant:
        Descendants(node);
        break;
      case Axis::Namespace:
        if (start.kind != XPathNodeRef::Element) break;
        for (XPathNode* at : node->NamespaceNodes()) DeliverNew(at);
        break;
      case Axis::Preceding:
        Preceding(StartOfPreceding(node));
        break;
      default:
        Places(start);
    }
  }

  void ChildrenBelow(XPathNode* top) {
    if (top->kind == XPathNodeKind::Namespace || IsDeclaration(*top)) return;
    XPathNode* at = top;
    while (at != nullptr) {
      bool hasChildren = at->firstChild != nullptr && !IsDeclarationKind(*at);
      if (hasChildren) {
        position_ = 0;
        Children(at);
        at = at->firstChild;
      } else {
        at = at->NextSkippingChildren(top);
      }
    }
  }

  void RemoveMarks(const XPathNodeRef* input, std::size_t count) {
    for (const XPathNodeRef& entry : output_) ClearMark(*entry.node, kDelivered);
    for (std::size_t i = 0; i < count; ++i) {
      if (axis_ == Axis::Descendant || axis_ == Axis::DescendantOrSelf) {
        UnmarkDescendants(input[i].node);
      } else if (IsPlaceAxis()) {
        XPathNode* at = FirstPlace(axis_, input[i]);
        for (; at != nullptr && (at->mark & kWalked); at = NextPlace(axis_, at)) {
          ClearMark(*at, kWalked);
        }
      }
    }
  }

 private:
  bool IsPlaceAxis() const {
    return axis_ != Axis::Self && axis_ != Axis::Child && axis_ != Axis::Attribute &&
           axis_ != Axis::Parent && axis_ != Axis::Namespace;
  }

  // False when no further node is wanted.
  bool Deliver(XPathNode* node) {
    if (!matches_(*node)) return true;
    Append(node);
    return position_ < limit_;
  }

  bool DeliverNew(XPathNode* node) {
    if (!severalInputs_) return Deliver(node);
    if (node->mark & kDelivered || !matches_(*node)) return true;
    node->mark |= kDelivered;
    Append(node);
    return true;
  }

  void Append(XPathNode* node) {
    constexpr std::size_t kFirstCapacity = 8;
    if (output_.capacity() == 0) output_.reserve(kFirstCapacity);
    output_.emplace_back(node, ++position_);
  }

  void Children(XPathNode* top) {
    if (IsDeclarationKind(*top)) return;
    XPathNode* at = top->firstChild;
    if (top->kind == XPathNodeKind::Element) {
      while (at != nullptr && at->kind == XPathNodeKind::Attribute) at = at->next;
    }
    for (; at != nullptr; at = at->next) {
      if (IsDeclarationKind(*at) || IsElementAttribute(*at)) continue;
      if (!Deliver(at)) return;
    }
  }

  void Attributes(XPathNode* top) {
    if (top->kind != XPathNodeKind::Element) return;
    for (XPathNode* at = top->firstChild; at != nullptr; at = at->next) {
      if (at->kind == XPathNodeKind::Namespace) continue;
      if (at->kind != XPathNodeKind::Attribute || !Deliver(at)) return;
    }
  }

  // True when the walk has to go below the node.
  bool GoesBelow(XPathNode* node) {
    if (node->firstChild == nullptr || IsDeclarationKind(*node)) return false;
    if (!severalInputs_) return true;
    if (node->mark & kWalked) return false;
    node->mark |= kWalked;
    return true;
  }

  void Descendants(XPathNode* top) {
    if (!GoesBelow(top)) return;
    XPathNode* at = top->firstChild;
    for (;;) {
      if (!IsDeclarationKind(*at) && !IsElementAttribute(*at) && !DeliverNew(at)) return;
      if (GoesBelow(at)) {
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

  static void UnmarkDescendants(XPathNode* top) {
    if (!(top->mark & kWalked)) return;
    ClearMark(*top, kWalked);
    XPathNode* at = top->firstChild;
    for (;;) {
      if (at->mark & kWalked) {
        ClearMark(*at, kWalked);
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

  void Places(const XPathNodeRef& start) {
    for (XPathNode* at = FirstPlace(axis_, start); at; at = NextPlace(axis_, at)) {
      if (severalInputs_) {
        if (at->mark & kWalked) return;
        at->mark |= kWalked;
      }
      if (IsDeclaration(*at)) continue;
      if (axis_ == Axis::Following && IsElementAttribute(*at)) continue;
      if (!DeliverNew(at)) return;
    }
  }

  void Preceding(XPathNode* start) {
    if (start->mark & kWalked) return;
    XPathNode* ancestor = start->parent;  // the next one that the walk will meet
    XPathNode* at = start->NextInDocument(false);
    for (; at != nullptr; at = at->NextInDocument(false)) {
      if (severalInputs_) {
        if (at->mark & kWalked) break;
        at->mark |= kWalked;
      }
      if (at == ancestor) {
        ancestor = at->parent;
      } else if (!IsDeclaration(*at) && !IsElementAttribute(*at) && !DeliverNew(at)) {
        return;
      }
    }
    if (!severalInputs_) return;
    XPathNode*& latest = LatestStart(start, at != nullptr);
    if (at != nullptr) {  // where an earlier walk has been
      for (XPathNode* left = latest->parent; left != ancestor; left = left->parent) {
        if (!IsDeclaration(*left)) DeliverNew(left);
      }
    }
    latest = start;
  }

  // Of the tree of `start`. A walk that stopped early has met a tree that has an entry.
  XPathNode*& LatestStart(XPathNode* start, bool hasEntry) {
    if (hasEntry && latestStarts_.size() == 1) return latestStarts_.front();
    const XPathNode* root = start->Root();
    for (XPathNode*& latest : latestStarts_) {
      if (latest->Root() == root) return latest;
    }
    latestStarts_.push_back(start);
    return latestStarts_.back();
  }

  Axis axis_;
  Test matches_;
  bool severalInputs_;
  XPathNodeList& output_;
  std::int64_t limit_;
  std::int32_t position_ = 0;
  std::vector<XPathNode*> latestStarts_;  // of the preceding axis, one for each tree
};

// Calls `run` with a function for the test. The commonest tests have one of their own.
template <class Runner>
void WithTest(const StepTest& test, Runner run) {
  switch (test.kind) {
    case StepTest::Name:
      run([uri = test.uri, name = test.name](const XPathNode& node) {
        return (node.kind == XPathNodeKind::Element || node.kind == XPathNodeKind::Attribute) &&
               node.namespaceURI == uri && HasLocalName(node, name);
      });
      break;
    case StepTest::Element:
      run([](const XPathNode& node) { return node.kind == XPathNodeKind::Element; });
      break;
    default:
      run([&test](const XPathNode& node) { return test.Matches(node); });
  }
}

}  // namespace

void RunQuickAxis(Axis axis, const StepTest& test, const XPathNodeRef* input, std::size_t count,
                  XPathNodeList& output, std::size_t limit) {
  if (count == 0) return;
  // These two are sorted at the end. Nodes of a loaded tree are met in that order anyway; others
  // may bear any numbers, so all must be there.
  bool sorts = axis == Axis::AncestorOrSelf || axis == Axis::PrecedingSibling;
  if (sorts && input[0].node->documentNumber <= 0) limit = kNoLimit;
  WithTest(test, [&](auto matches) {
    QuickAxis run(axis, matches, count > 1, output, limit);
    for (std::size_t i = 0; i < count; ++i) run.RunFrom(input[i]);
    if (count > 1) run.RemoveMarks(input, count);
  });
  if (sorts) SortByReverseDocumentOrder(output);
}

void RunChildrenBelow(const StepTest& test, const XPathNodeRef& start, XPathNodeList& output) {
  WithTest(test, [&](auto matches) {
    QuickAxis(Axis::Child, matches, false, output, kNoLimit).ChildrenBelow(start.node);
  });
}

}  // namespace kelmora
