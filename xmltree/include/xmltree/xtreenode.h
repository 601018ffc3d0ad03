// XTree: the source tree of one text. It keeps what the file said: declarations, unexpanded
// references, attribute values as written.
//
// All nodes and all text of one tree belong to its XTree object and die with it; a node that is
// taken out of its parent stays allocated until then. Names and texts are views either into the
// parsed buffer, which the owner of the document keeps as long as the tree, or into the tree's
// arena. Nodes have no destructor and no virtual table: `kind` tells the class, and the operations
// of a class that has nothing to do return false, null or the empty text.
//
// Offsets count 16-bit units of the parsed buffer.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "tqcore/arena.h"
#include "tqcore/tqstring.h"

namespace kelmora {

enum class XTreeKind : std::uint8_t {
  Document = 0,
  Entity = 1,
  DTDDocument = 2,
  XMLTag = 3,
  Element = 4,
  Attribute = 5,
  Text = 6,
  CData = 7,
  Comment = 8,
  PI = 9,
  DocType = 10,
  ExternalID = 11,
  DTDElement = 12,
  DTDAttlist = 13,
  DTDEntity = 14,
  DTDNotation = 15,
  Any = 16,  // in operations that take a kind: every kind
};

struct XTreeContainer;
class XTree;

struct XTreeNode {
  XTreeContainer* parent = nullptr;  // null on a root
  XTreeNode* next = nullptr;         // siblings
  XTreeNode* previous = nullptr;
  std::int32_t sourceStart = -1;  // offset of the first unit, -1 when made by other means
  std::int32_t sourceEnd = -1;    // offset behind the last unit
  XTreeKind kind;
  std::uint8_t flags = 0;        // of Flag
  std::uint32_t childCount = 0;  // of a container; it stands here because here it costs no room

  // What the walk that made a tree found out on its way.
  enum Flag : std::uint8_t {
    Untidy = 1,  // a container that Normalize has something to do for
    // A root below which no attribute's name begins with "xmlns" or has kLongName units.
    PlainAttributes = 2,
  };
  static constexpr std::size_t kLongName = 14;

  explicit XTreeNode(XTreeKind nodeKind) : kind(nodeKind) {}

  XTreeKind GetKind() const { return kind; }
  const char16_t* GetTypeName() const;  // "XML-Document" and so on
  std::u16string_view GetName() const;
  std::u16string_view GetLocalName() const;  // behind the first ":"
  bool HasPrefix() const;
  std::u16string_view GetText() const;
  // The view must live as long as the tree: it points into the parsed buffer or the arena.
  void SetName(std::u16string_view name);
  void SetText(std::u16string_view text);

  bool CanHaveName() const;
  bool CanHaveText() const;  // a container only while it has no children
  bool CanHaveChildren() const;
  bool CanContain(XTreeKind child) const;

  XTreeContainer* AsContainer();  // null for a leaf
  const XTreeContainer* AsContainer() const;
  bool HasChildren() const;
  XTreeNode* FirstChild() const;  // null without children
  XTreeNode* FirstChildOfKind(XTreeKind kind) const;
  XTreeNode* NextOfKind(XTreeKind kind) const;  // the next sibling of that kind
  int CountChildren(XTreeKind kind) const;
  const XTreeNode* Root() const;

  // Tidies one node: attributes to the front, adjacent texts merged, an only text moved into the
  // element itself. `tree` owns the text that merging makes. NormalizeTree does it for the whole
  // subtree, without recursion. Both are linear.
  void Normalize(XTree& tree);
  void NormalizeTree(XTree& tree);
};

struct XTreeTextual : XTreeNode {
  using XTreeNode::XTreeNode;
  std::u16string_view text;
};
struct XTreeNamed : XTreeTextual {
  using XTreeTextual::XTreeTextual;
  std::u16string_view name;
};
struct XTreeContainer : XTreeNamed {
  using XTreeNamed::XTreeNamed;
  XTreeNode* first = nullptr;
  XTreeNode* last = nullptr;

  void AppendChild(XTreeNode* child);
  void InsertChild(XTreeNode* before, XTreeNode* child);  // null: at the end
  void EraseChild(XTreeNode* child);                      // unlinks; the tree frees it later
  // Moves the children of `kind` from `start` on in front of an insertion point, which begins at
  // `start` and, without a `stopKind`, stays there. With one it walks along with the search until
  // it stands on a child of `stopKind`. Linear.
  void GroupChildren(XTreeKind kind, XTreeNode* start, XTreeKind stopKind = XTreeKind::Any);
};

struct XTreeText final : XTreeTextual {
  XTreeText() : XTreeTextual(XTreeKind::Text) {}
};
struct XTreeCData final : XTreeTextual {
  XTreeCData() : XTreeTextual(XTreeKind::CData) {}
};
struct XTreeComment final : XTreeTextual {
  XTreeComment() : XTreeTextual(XTreeKind::Comment) {}
};
struct XTreeAttribute final : XTreeNamed {
  XTreeAttribute() : XTreeNamed(XTreeKind::Attribute) {}
};
struct XTreePI final : XTreeNamed {
  XTreePI() : XTreeNamed(XTreeKind::PI) {}
};
struct XTreeDocument final : XTreeContainer {
  XTreeDocument() : XTreeContainer(XTreeKind::Document) {}
};
struct XTreeEntity final : XTreeContainer {
  XTreeEntity() : XTreeContainer(XTreeKind::Entity) {}
};
struct XTreeDTDDocument final : XTreeContainer {
  XTreeDTDDocument() : XTreeContainer(XTreeKind::DTDDocument) {}
};
struct XTreeXMLTag final : XTreeContainer {  // named "XML"
  XTreeXMLTag() : XTreeContainer(XTreeKind::XMLTag) { name = u"XML"; }
};
struct XTreeElement final : XTreeContainer {
  XTreeElement() : XTreeContainer(XTreeKind::Element) {}
};
struct XTreeDocType final : XTreeContainer {
  XTreeDocType() : XTreeContainer(XTreeKind::DocType) {}
};
struct XTreeExternalID final : XTreeContainer {
  XTreeExternalID() : XTreeContainer(XTreeKind::ExternalID) {}
};
struct XTreeDTDEntity final : XTreeContainer {
  XTreeDTDEntity() : XTreeContainer(XTreeKind::DTDEntity) {}
};
struct XTreeDTDNotation final : XTreeContainer {
  XTreeDTDNotation() : XTreeContainer(XTreeKind::DTDNotation) {}
};

// One node of an element declaration: the declaration itself, a group or a name in a group.
struct XTreeDTDElement final : XTreeContainer {
  enum Item : std::int32_t { PCDATA, Mixed, Sequence, Choice, Empty, AnyContent, PERef, SubName };
  enum Repeat : std::int32_t { Once, Optional, OneOrMore, ZeroOrMore };  // "", "?", "+", "*"
  XTreeDTDElement() : XTreeContainer(XTreeKind::DTDElement) {}
  std::int32_t item = PCDATA;
  std::int32_t repeat = Once;
};

// An attribute list, or one item of an attribute definition as its child.
struct XTreeDTDAttlist final : XTreeContainer {
  enum Item : std::int32_t {
    List,
    AttributeName,
    TypeCDATA,
    TypeID,
    TypeIDREF,
    TypeIDREFS,
    TypeENTITY,
    TypeENTITIES,
    TypeNMTOKEN,
    TypeNMTOKENS,
    TypeNOTATION,
    TypeEnumeration,
    TypePERef,
    EnumerationName,
    Required,
    Implied,
    Fixed,
    DefaultValue,
    Unformatted,
  };
  XTreeDTDAttlist() : XTreeContainer(XTreeKind::DTDAttlist) {}
  std::int32_t item = List;
};

// Only the three textual leaves have no name, and every node has room for a text.
inline std::u16string_view XTreeNode::GetName() const {
  const bool nameless =
      kind == XTreeKind::Text || kind == XTreeKind::CData || kind == XTreeKind::Comment;
  return nameless ? std::u16string_view{} : static_cast<const XTreeNamed*>(this)->name;
}
inline std::u16string_view XTreeNode::GetText() const {
  return static_cast<const XTreeTextual*>(this)->text;
}
inline XTreeContainer* XTreeNode::AsContainer() {
  return CanHaveChildren() ? static_cast<XTreeContainer*>(this) : nullptr;
}
inline const XTreeContainer* XTreeNode::AsContainer() const {
  return CanHaveChildren() ? static_cast<const XTreeContainer*>(this) : nullptr;
}
inline XTreeNode* XTreeNode::FirstChild() const {
  return CanHaveChildren() ? static_cast<const XTreeContainer*>(this)->first : nullptr;
}
inline bool XTreeNode::HasChildren() const {
  return FirstChild() != nullptr;
}
inline void XTreeContainer::AppendChild(XTreeNode* child) {
  child->parent = this;
  child->previous = last;
  (last != nullptr ? last->next : first) = child;
  last = child;
  ++childCount;
}
inline bool XTreeNode::CanHaveChildren() const {
  return kind <= XTreeKind::Element || kind >= XTreeKind::DocType;
}

// Owner of the nodes and of the made text of one tree. Many small trees that die together can share
// one arena.
class XTree {
 public:
  XTree() : XTree(std::make_shared<Arena>()) {}
  explicit XTree(std::shared_ptr<Arena> arena) : arena_(std::move(arena)) {}

  template <class Node>
  Node* Make() {
    return arena_->Make<Node>();
  }
  XTreeNode* MakeOfKind(XTreeKind kind);  // null for XTreeKind::Any
  // A copy of the text that lives as long as the tree, with a 0 behind it.
  std::u16string_view Keep(std::u16string_view text) { return arena_->Keep(text); }

  XTreeContainer* root = nullptr;

 private:
  std::shared_ptr<Arena> arena_;
};

}  // namespace kelmora
