// The axes, node by node as they are defined. The fast forms must deliver the same.

#include <unordered_set>

#include "axes/xpathaxis.h"
#include "axes/xpathnodetest.h"
#include "values/xpathnodeset.h"

namespace kelmora {
namespace {

bool IsDeclaration(const XPathNodeRef& node) {
  return DeclarationTest().Test(node);
}

bool IsContent(const XPathNodeRef& node) {
  return !IsDeclaration(node) && !AttributeTest().Test(node);
}

class PlainAxis {
 public:
  PlainAxis(Axis axis, const XPathNodeTest* test, std::size_t inputCount, XPathNodeList& output)
      : axis_(axis), test_(test), output_(output) {
    switch (axis) {
      case Axis::Child:
      case Axis::Attribute:
      case Axis::Self:
        break;
      case Axis::Descendant:
      case Axis::DescendantOrSelf:
        dropsDuplicates_ = inputCount > 1;
        break;
      default:
        dropsDuplicates_ = true;
    }
  }

  void RunFrom(const XPathNodeRef& node) {
    position_ = 0;
    XPathNode* start = node.node;
    bool hasSiblings = node.kind != XPathNodeRef::Root && node.kind != XPathNodeRef::Attribute &&
                       node.kind != XPathNodeRef::Declaration;
    switch (axis_) {
      case Axis::Self:
        Deliver(start);
        break;
      case Axis::Parent:
        if (start->parent != nullptr) DeliverAncestor(start->parent);
        break;
      case Axis::AncestorOrSelf:
        DeliverAncestor(start);
        [[fallthrough]];
      case Axis::Ancestor:
        for (XPathNode* at = start->parent; at; at = at->parent) DeliverAncestor(at);
        break;
      case Axis::Attribute:
        for (XPathNode* at = start->firstChild; at; at = at->next) {
          if (AttributeTest().Test(XPathNodeRef(at))) Deliver(at);
        }
        break;
      case Axis::Child:
        for (XPathNode* at = start->firstChild; at; at = at->next) {
          if (IsContent(XPathNodeRef(at))) Deliver(at);
        }
        break;
      case Axis::DescendantOrSelf:
        if (!IsDeclaration(node)) Deliver(start);
        [[fallthrough]];
      case Axis::Descendant:
        for (const XPathNodeRef& at : DescendantsOf(start)) {
          if (IsContent(at)) Deliver(at.node);
        }
        break;
      case Axis::Namespace:
        if (node.kind != XPathNodeRef::Element) break;
        for (XPathNode* at : start->NamespaceNodes()) Deliver(at);
        break;
      case Axis::FollowingSibling:
        for (XPathNode* at = hasSiblings ? start->next : nullptr; at; at = at->next) {
          if (!IsDeclaration(XPathNodeRef(at))) Deliver(at);
        }
        break;
      case Axis::PrecedingSibling:
        for (XPathNode* at = hasSiblings ? start->previous : nullptr; at; at = at->previous) {
          if (!IsDeclaration(XPathNodeRef(at))) Deliver(at);
        }
        break;
      case Axis::Following:
        DeliverOutside(start, true, MemberTest(DescendantsOf(start)));
        break;
      case Axis::Preceding:
        DeliverOutside(start, false, MemberTest(AncestorsOf(start)));
        break;
    }
  }

 private:
  void Deliver(XPathNode* node) {
    XPathNodeRef entry(node);
    if (test_ != nullptr && !test_->Test(entry)) return;
    if (dropsDuplicates_ && !met_.insert(node).second) return;
    entry.position = ++position_;
    output_.push_back(entry);
  }

  void DeliverAncestor(XPathNode* node) {
    if (!IsDeclaration(XPathNodeRef(node))) Deliver(node);
  }

  void DeliverOutside(XPathNode* start, bool forward, const MemberTest& excluded) {
    for (XPathNode* at = start->NextInDocument(forward); at; at = at->NextInDocument(forward)) {
      XPathNodeRef entry(at);
      if (IsContent(entry) && !excluded.Test(entry)) Deliver(at);
    }
  }

  static XPathNodeList DescendantsOf(XPathNode* top) {
    XPathNodeList list;
    XPathNode* behind = top->NextSkippingChildren(nullptr);
    for (XPathNode* at = top->NextInDocument(true); at != behind; at = at->NextInDocument(true)) {
      list.emplace_back(at);
    }
    return list;
  }

  static XPathNodeList AncestorsOf(XPathNode* node) {
    XPathNodeList list;
    for (XPathNode* at = node->parent; at != nullptr; at = at->parent) list.emplace_back(at);
    return list;
  }

  Axis axis_;
  const XPathNodeTest* test_;
  XPathNodeList& output_;
  bool dropsDuplicates_ = false;
  std::unordered_set<const XPathNode*> met_;
  std::int32_t position_ = 0;
};

}  // namespace

void RunPlainAxis(Axis axis, const XPathNodeTest* test, const XPathNodeList& input,
                  XPathNodeList& output) {
  PlainAxis run(axis, test, input.size(), output);
  for (const XPathNodeRef& node : input) run.RunFrom(node);
  if (axis == Axis::AncestorOrSelf || axis == Axis::PrecedingSibling) {
    SortByReverseDocumentOrder(output);
  }
}

}  // namespace kelmora
