// XPathNode: one node of the data model that XPath and XSLT read. Trees of it stand beside the
// XTree of a loaded document and take names and values from there; result trees and result tree
// fragments are made of the same nodes, without sources and with names and values of their own.
//
// Nodes come from one pool and go back to it with DeleteTree; a tree owns its nodes. A tree with
// sources must not outlive the XTree that it reads. Walking is by links; no operation recurs.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "xmltree/prefixmap.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

enum class XPathNodeKind : std::int8_t {
  Root = 0,
  Element = 1,
  Text = 2,
  Attribute = 3,
  Namespace = 4,  // a declaration attribute, or a node of the namespace axis
  PI = 5,
  CData = 6,
  Comment = 7,
  XMLDeclaration = 8,
  DocType = 9,
  ExternalID = 10,
  DTDElement = 11,
  DTDAttlist = 12,
  DTDEntity = 13,
  DTDNotation = 14,
};

XPathNodeKind NodeKindOf(const XTreeNode& source);  // attributes named xmlns are Namespace

// The prefixes in scope for element names and, without the empty prefix, for attribute names.
struct NamespaceScope {
  PrefixMap scopeMap;
  PrefixMap attributeScopeMap;
  std::uint32_t references = 1;  // nodes that hold it; counted by XPathNode alone
};

struct XPathNode {
  XTreeNode* source = nullptr;  // not owned; null on result nodes
  XPathNode* parent = nullptr;
  XPathNode* firstChild = nullptr;  // attributes and declarations first, then content
  XPathNode* lastChild = nullptr;
  XPathNode* next = nullptr;  // siblings
  XPathNode* previous = nullptr;
  InternedURI namespaceURI = nullptr;  // null: no namespace
  std::int32_t orderNumber = -1;       // place in its tree; -1: not stamped
  std::int32_t documentNumber = -1;    // number of the build that made the tree
  XPathNodeKind kind = XPathNodeKind::Root;
  bool escapeOutput = true;  // false on a result text with output escaping disabled
  bool synthetic = false;    // came out of a re-parsed entity value
  std::uint8_t mark = 0;     // scratch for set operations; 0 outside of them

  // --- name and value ------------------------------------------------------------------------
  // The views live until the own name or value changes, or the node or its source dies.
  std::u16string_view GetName() const;       // own name, else the source's; roots and texts: empty
  std::u16string_view GetLocalName() const;  // behind the first ":"
  std::u16string_view GetPrefix() const;     // before it, empty without one
  std::u16string_view GetValue() const;      // own value, else the source's text, else empty
  bool HasOwnName() const { return hasOwnName_; }
  bool HasOwnValue() const { return hasOwnValue_; }
  void SetOwnName(TQString name);
  void SetOwnValue(TQString value);
  // The text of all descendant text and CDATA nodes for roots and elements, else GetValue.
  // A view when no text has to be joined, else `scratch`, filled.
  std::u16string_view StringValue(TQString& scratch) const;

  // --- scope ---------------------------------------------------------------------------------
  // The maps in force: the node's own or those of the nearest ancestor that has some. The map of
  // an attribute is the one without the empty prefix. Never null: without any, an empty map.
  const PrefixMap& ScopeMap() const;
  const PrefixMap& AttributeScopeMap() const;
  // The scope is held by pointer; nodes that declare nothing share their parent's. A scope lives as
  // long as any node that holds it, and a change by its owner shows in all of them.
  const NamespaceScope* Scope() const { return scope_; }
  void ShareScope(const XPathNode& other);  // takes the scope object in force at another node
  NamespaceScope& OwnScope();               // makes a copy of the present scope unless own already
  bool HasOwnScope() const { return ownsScope_; }
  InternedURI BaseURI() const;  // of the node's document or entity; may be null
  void SetBaseURI(InternedURI uri);
  InternedURI OwnBaseURI() const;

  // --- tree ----------------------------------------------------------------------------------
  bool IsText() const { return kind == XPathNodeKind::Text || kind == XPathNodeKind::CData; }
  XPathNode* Root();  // walks up
  const XPathNode* Root() const;
  void AppendChild(XPathNode* child);  // sets `parent`; checks nothing
  void InsertChild(XPathNode* before, XPathNode* child);
  void RemoveChild(XPathNode* child);  // unlinks and clears its `parent`; the caller owns it
  // Document order without recursion: first child, next sibling, next sibling of an ancestor.
  // Backward: the last descendant of the previous sibling, else the parent. Attributes and
  // declarations count as children here. Null at the end.
  XPathNode* NextInDocument(bool forward) const;
  // The next node in document order behind this node's subtree, not leaving `top`'s subtree.
  XPathNode* NextSkippingChildren(const XPathNode* top) const;
  // Nodes of the namespace axis of an element, made at the first request and owned by the node.
  const std::vector<XPathNode*>& NamespaceNodes();

  // From 1 on in the order of asking, so that a run that is repeated gives the same ones. It stays
  // with the node, and none gets it after that. For nodes without a stamp.
  std::int64_t NumberOfItsOwn() const;

  static XPathNode* Make(XPathNodeKind kind);
  // A copy with `parent` set but not linked into it; with `deep` the children are copied too.
  // Stamps are 0. An element shares `parent`'s scope when `other` shares the same one and `deep`
  // is false, else it gets maps of its own.
  static XPathNode* Copy(const XPathNode& other, bool deep, XPathNode* parent);
  static void DeleteTree(XPathNode* root);  // null is allowed; unlinks nothing

 private:
  friend class XPathNodePool;
  XPathNode() = default;
  ~XPathNode() = default;

  NamespaceScope* ScopeInForce() const;  // never null
  void DropScope();
  void TakeScope(NamespaceScope* scope);
  static XPathNode* CopyNode(const XPathNode& other, bool deep, XPathNode* parent);

  bool hasOwnName_ = false;
  bool hasOwnValue_ = false;
  bool ownsScope_ = false;
  mutable bool hasRareFields_ = false;  // base URI and others, kept by the pool
  NamespaceScope* scope_ = nullptr;
  TQString ownName_;
  TQString ownValue_;
};
static_assert(sizeof(void*) != 8 || sizeof(XPathNode) == 96);

inline std::u16string_view XPathNode::GetName() const {
  if (hasOwnName_) return ownName_.View();
  const bool nameless = kind == XPathNodeKind::Text || kind == XPathNodeKind::Root ||
                        kind == XPathNodeKind::Comment || source == nullptr;
  return nameless ? std::u16string_view{} : source->GetName();
}
inline std::u16string_view XPathNode::GetValue() const {
  if (hasOwnValue_) return ownValue_.View();
  return source != nullptr ? source->GetText() : std::u16string_view{};
}

// Compares document number, then order number; that is the whole of document order.
inline bool DocumentOrderLess(const XPathNode& a, const XPathNode& b) {
  return a.documentNumber != b.documentNumber ? a.documentNumber < b.documentNumber
                                              : a.orderNumber < b.orderNumber;
}

// Thrown when a tree would take a shape that the data model does not have. The code is always 1.
struct TQXTreeException {
  int code;
};

}  // namespace kelmora
