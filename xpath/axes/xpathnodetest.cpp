#include "axes/xpathnodetest.h"

#include <algorithm>

namespace kelmora {

bool PITest::Test(const XPathNodeRef& node) const {
  return node.kind == XPathNodeRef::PI && (target_.empty() || FullNameTest(target_).Test(node));
}

bool LocalNameTest::Test(const XPathNodeRef& node) const {
  return node.node->GetLocalName() == name_;
}

bool FullNameTest::Test(const XPathNodeRef& node) const {
  return node.node->GetName() == name_;
}

bool NamespaceTest::Test(const XPathNodeRef& node) const {
  return (node.kind == XPathNodeRef::Element || node.kind == XPathNodeRef::Attribute) &&
         node.node->namespaceURI == uri_;
}

bool AndTest::Test(const XPathNodeRef& node) const {
  return std::all_of(tests_.begin(), tests_.end(),
                     [&node](const XPathNodeTest* test) { return test->Test(node); });
}

bool OrTest::Test(const XPathNodeRef& node) const {
  return std::any_of(tests_.begin(), tests_.end(),
                     [&node](const XPathNodeTest* test) { return test->Test(node); });
}

bool MemberTest::Test(const XPathNodeRef& node) const {
  return std::any_of(nodes_.begin(), nodes_.end(),
                     [&node](const XPathNodeRef& member) { return member.node == node.node; });
}

bool StepTest::Matches(const XPathNode& node) const {
  switch (kind) {
    case None:
    case AnyNode:
      return true;
    case Element:
      return node.kind == XPathNodeKind::Element;
    case Text:
      return node.IsText();
    case Attribute:
      return node.kind == XPathNodeKind::Attribute && node.parent != nullptr &&
             node.parent->kind == XPathNodeKind::Element;
    case NamespaceNode:
      return node.kind == XPathNodeKind::Namespace;
    case Comment:
      return node.kind == XPathNodeKind::Comment;
    case PI:
      return node.kind == XPathNodeKind::PI && (name.empty() || node.GetName() == name);
    case NotNamespace:
      return node.kind != XPathNodeKind::Namespace;
    case Content:
      if (node.kind == XPathNodeKind::Attribute) {
        return node.parent == nullptr || node.parent->kind != XPathNodeKind::Element;
      }
      return node.kind != XPathNodeKind::Namespace;
    case Name:
      if (node.kind != XPathNodeKind::Element && node.kind != XPathNodeKind::Attribute) {
        return false;
      }
      return node.namespaceURI == uri && HasLocalName(node, name);
    case LocalName:
      return HasLocalName(node, name);
    case Namespace:
      if (node.kind != XPathNodeKind::Element && node.kind != XPathNodeKind::Attribute) {
        return false;
      }
      return node.namespaceURI == uri;
  }
  return false;
}

PlainTest::PlainTest(const StepTest& test) {
  auto own = [this](std::unique_ptr<XPathNodeTest> made) {
    owned_.push_back(std::move(made));
    return owned_.back().get();
  };
  switch (test.kind) {
    case StepTest::None:
      break;
    case StepTest::AnyNode:
      test_ = own(std::make_unique<AnyNodeTest>());
      break;
    case StepTest::Element:
      test_ = own(std::make_unique<ElementTest>());
      break;
    case StepTest::Text:
      test_ = own(std::make_unique<TextTest>());
      break;
    case StepTest::Attribute:
      test_ = own(std::make_unique<AttributeTest>());
      break;
    case StepTest::NamespaceNode:
      test_ = own(std::make_unique<NamespaceNodeTest>());
      break;
    case StepTest::Comment:
      test_ = own(std::make_unique<CommentTest>());
      break;
    case StepTest::PI:
      test_ = own(std::make_unique<PITest>(test.name));
      break;
    case StepTest::NotNamespace: {
      const XPathNodeTest* inner = own(std::make_unique<NamespaceNodeTest>());
      test_ = own(std::make_unique<NotTest>(*inner));
      break;
    }
    case StepTest::Content: {
      std::vector<const XPathNodeTest*> either{own(std::make_unique<AttributeTest>()),
                                               own(std::make_unique<NamespaceNodeTest>())};
      const XPathNodeTest* inner = own(std::make_unique<OrTest>(std::move(either)));
      test_ = own(std::make_unique<NotTest>(*inner));
      break;
    }
    case StepTest::Name: {
      std::vector<const XPathNodeTest*> both{own(std::make_unique<LocalNameTest>(test.name)),
                                             own(std::make_unique<NamespaceTest>(test.uri))};
      test_ = own(std::make_unique<AndTest>(std::move(both)));
      break;
    }
    case StepTest::LocalName:
      test_ = own(std::make_unique<LocalNameTest>(test.name));
      break;
    case StepTest::Namespace:
      test_ = own(std::make_unique<NamespaceTest>(test.uri));
      break;
  }
}

}  // namespace kelmora
