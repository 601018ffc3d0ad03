// Node tests, in two forms that must agree: the family of small objects that the plain axes ask,
// and StepTest, the test of a step as a record that the fast axes switch on.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathNodeTest {
 public:
  virtual ~XPathNodeTest() = default;
  virtual bool Test(const XPathNodeRef&) const { return true; }
};
using AnyNodeTest = XPathNodeTest;

class ElementTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override { return node.kind == XPathNodeRef::Element; }
};
class TextTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override { return node.kind == XPathNodeRef::Text; }
};
class AttributeTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override {
    return node.kind == XPathNodeRef::Attribute && node.Parent().kind == XPathNodeRef::Element;
  }
};
class NamespaceNodeTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override {
    return node.kind == XPathNodeRef::Namespace;
  }
};
class CommentTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override { return node.kind == XPathNodeRef::Comment; }
};
class PITest final : public XPathNodeTest {
 public:
  explicit PITest(std::u16string_view target) : target_(target) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::u16string_view target_;  // empty: every target
};
class DeclarationTest final : public XPathNodeTest {
 public:
  bool Test(const XPathNodeRef& node) const override {
    return node.kind == XPathNodeRef::Declaration ||
           node.Parent().kind == XPathNodeRef::Declaration;
  }
};
class LocalNameTest final : public XPathNodeTest {
 public:
  explicit LocalNameTest(std::u16string_view name) : name_(name) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::u16string_view name_;
};
class FullNameTest final : public XPathNodeTest {
 public:
  explicit FullNameTest(std::u16string_view name) : name_(name) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::u16string_view name_;
};
class NamespaceTest final : public XPathNodeTest {
 public:
  explicit NamespaceTest(InternedURI uri) : uri_(uri) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  InternedURI uri_;  // null: no namespace
};
class NotTest final : public XPathNodeTest {
 public:
  explicit NotTest(const XPathNodeTest& inner) : inner_(inner) {}
  bool Test(const XPathNodeRef& node) const override { return !inner_.Test(node); }

 private:
  const XPathNodeTest& inner_;
};
class AndTest final : public XPathNodeTest {
 public:
  explicit AndTest(std::vector<const XPathNodeTest*> tests) : tests_(std::move(tests)) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::vector<const XPathNodeTest*> tests_;
};
class OrTest final : public XPathNodeTest {
 public:
  explicit OrTest(std::vector<const XPathNodeTest*> tests) : tests_(std::move(tests)) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::vector<const XPathNodeTest*> tests_;
};
class MemberTest final : public XPathNodeTest {
 public:
  explicit MemberTest(std::vector<XPathNodeRef> nodes) : nodes_(std::move(nodes)) {}
  bool Test(const XPathNodeRef& node) const override;

 private:
  std::vector<XPathNodeRef> nodes_;
};

// The test of one step. Names and URIs are borrowed.
struct StepTest {
  enum Kind : std::uint8_t {
    None,     // no test at all: what the axis itself lets through
    AnyNode,  // always true
    Element,
    Text,
    Attribute,
    NamespaceNode,
    Comment,
    PI,            // with a non-empty `name`, only that target
    NotNamespace,  // anything but a namespace node
    Content,       // neither attribute nor namespace node
    Name,          // `name` as local name, in `uri`
    LocalName,     // `name` as local name of any node
    Namespace,     // any name in `uri`
  };

  Kind kind = None;
  InternedURI uri = nullptr;
  std::u16string_view name;

  bool Matches(const XPathNode& node) const;
  // Any name in no URI is no test at all.
  void SetUri(InternedURI resolved) {
    uri = resolved;
    if (kind == Namespace && resolved == nullptr) kind = None;
  }
};

// The object family's form of a StepTest. Keep it as long as the test is used.
class PlainTest {
 public:
  explicit PlainTest(const StepTest& test);
  const XPathNodeTest* Get() const { return test_; }

 private:
  std::vector<std::unique_ptr<XPathNodeTest>> owned_;
  const XPathNodeTest* test_ = nullptr;
};

// Kinds, as the fast forms ask for them.
inline bool IsDeclarationKind(const XPathNode& node) {
  return node.kind >= XPathNodeKind::XMLDeclaration;
}
inline bool IsDeclaration(const XPathNode& node) {
  return IsDeclarationKind(node) || (node.parent != nullptr && IsDeclarationKind(*node.parent));
}
inline bool IsElementAttribute(const XPathNode& node) {
  return node.kind == XPathNodeKind::Attribute && node.parent != nullptr &&
         node.parent->kind == XPathNodeKind::Element;
}
inline bool IsContentNode(const XPathNode& node) {
  return !IsDeclaration(node) && !IsElementAttribute(node);
}

// True when the part of the name behind its first ":" (all of it without one) equals `local`,
// which has none itself.
inline bool HasLocalName(const XPathNode& node, std::u16string_view local) {
  std::u16string_view name = node.GetName();
  if (name.size() == local.size()) return name == local;
  if (name.size() <= local.size()) return false;
  std::size_t colon = name.size() - local.size() - 1;
  return name[colon] == u':' && name.substr(colon + 1) == local && name.find(u':') == colon;
}

}  // namespace kelmora
