// The lists that axes make, without sets and without lists of what to exclude.
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

#include <vector>

#include "axes/xpathaxiswalk.h"
#include "values/xpathnodeset.h"

namespace kelmora {
namespace {

void ClearMark(XPathNode& node, NodeMark mark) {
  node.mark = static_cast<std::uint8_t>(node.mark & ~mark);
}

void Append(XPathNodeList& output, XPathNode* node, std::int32_t position) {
  constexpr std::size_t kFirstCapacity = 8;
  if (output.capacity() == 0) output.reserve(kFirstCapacity);
  output.emplace_back(node, position);
}

// Lists what one input node leads to.
template <class Test>
class OneStart {
 public:
  OneStart(Test matches, XPathNodeList& output, std::size_t limit)
      : matches_(matches),
        output_(output),
        limit_(static_cast<std::int64_t>(
            limit < static_cast<std::size_t>(INT32_MAX) ? limit : std::size_t{INT32_MAX})) {}

  bool Take(XPathNode* node) {
    if (!matches_(*node)) return true;
    Append(output_, node, ++position_);
    return position_ < limit_;
  }
  bool Enter(XPathNode*) const { return true; }
  void StartAnew() { position_ = 0; }

 private:
  Test matches_;
  XPathNodeList& output_;
  std::int64_t limit_;
  std::int32_t position_ = 0;
};

// Lists what several lead to, each node once.
template <class Test>
class ManyStarts {
 public:
  ManyStarts(Test matches, XPathNodeList& output) : matches_(matches), output_(output) {}

  bool Take(XPathNode* node) {
    if (node->mark & kDelivered || !matches_(*node)) return true;
    node->mark |= kDelivered;
    Append(output_, node, ++position_);
    return true;
  }
  bool Enter(XPathNode* node) const {
    if (node->mark & kWalked) return false;
    node->mark |= kWalked;
    return true;
  }

  void Run(Axis axis, XPathNode* start) {
    position_ = 0;
    if (axis == Axis::Preceding) {
      RunPreceding(StartOfPreceding(start));
    } else {
      WalkAxis(axis, start, *this);
    }
  }

 private:
  void RunPreceding(XPathNode* start) {
    if (start->mark & kWalked) return;
    std::optional<XPathNode*> ancestor = WalkPreceding(start, *this);
    XPathNode*& latest = LatestStart(start, ancestor.has_value());
    if (ancestor.has_value()) {  // where an earlier walk has been
      for (XPathNode* left = latest->parent; left != *ancestor; left = left->parent) {
        if (!IsDeclaration(*left)) Take(left);
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

  Test matches_;
  XPathNodeList& output_;
  std::int32_t position_ = 0;
  std::vector<XPathNode*> latestStarts_;  // of the preceding axis, one for each tree
};

// Follows the marks of a walk and takes them away.
class MarkRemover {
 public:
  static bool Take(XPathNode*) { return true; }
  static bool Enter(XPathNode* node) {
    if (!(node->mark & kWalked)) return false;
    ClearMark(*node, kWalked);
    return true;
  }
};

// Calls `run` with a function for the test. The commonest tests have one of their own.
template <class Runner>
void WithTest(const StepTest& test, Runner run) {
  if (test.kind == StepTest::Name) {
    run([uri = test.uri, name = test.name](const XPathNode& node) {
      return HasExpandedName(node, uri, name);
    });
  } else if (test.kind == StepTest::Element) {
    run([](const XPathNode& node) { return node.kind == XPathNodeKind::Element; });
  } else {
    run([&test](const XPathNode& node) { return test.Matches(node); });
  }
}

// From distinct nodes these meet no node twice.
bool MeetsOnce(Axis axis) {
  return axis == Axis::Child || axis == Axis::Attribute || axis == Axis::Self;
}

void RunFromMany(Axis axis, const StepTest& test, const XPathNodeRef* input, std::size_t count,
                 XPathNodeList& output) {
  std::size_t first = output.size();
  WithTest(test, [&](auto matches) {
    ManyStarts many(matches, output);
    for (std::size_t i = 0; i < count; ++i) many.Run(axis, input[i].node);
  });
  for (std::size_t i = first; i < output.size(); ++i) ClearMark(*output[i].node, kDelivered);
  MarkRemover remover;
  for (std::size_t i = 0; i < count; ++i) WalkAxis(axis, input[i].node, remover);
}

}  // namespace

void RunAxis(Axis axis, const StepTest& test, const XPathNodeRef* input, std::size_t count,
             XPathNodeList& output, std::size_t limit) {
  if (count == 0) return;
  // These two are sorted at the end. Nodes of a loaded tree are met in that order anyway; others
  // may bear any numbers, so all must be there.
  bool sorts = axis == Axis::AncestorOrSelf || axis == Axis::PrecedingSibling;
  if (sorts && input[0].node->documentNumber <= 0) limit = kNoLimit;
  if (count > 1 && !MeetsOnce(axis)) {
    RunFromMany(axis, test, input, count, output);
  } else {
    WithTest(test, [&](auto matches) {
      OneStart one(matches, output, count == 1 ? limit : kNoLimit);
      for (std::size_t i = 0; i < count; ++i) {
        one.StartAnew();
        WalkAxis(axis, input[i].node, one);
      }
    });
  }
  if (sorts) SortByReverseDocumentOrder(output);
}

void RunChildrenBelow(const StepTest& test, const XPathNodeRef& start, XPathNodeList& output) {
  XPathNode* top = start.node;
  if (top->kind == XPathNodeKind::Namespace || IsDeclaration(*top)) return;
  WithTest(test, [&](auto matches) {
    OneStart one(matches, output, kNoLimit);
    XPathNode* at = top;
    while (at != nullptr) {
      bool hasChildren = at->firstChild != nullptr && !IsDeclarationKind(*at);
      if (hasChildren) {
        one.StartAnew();
        WalkChildren(at, one);
        at = at->firstChild;
      } else {
        at = at->NextSkippingChildren(top);
      }
    }
  });
}

}  // namespace kelmora
