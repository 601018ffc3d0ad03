// The node of the data model in three parts: what it reads from its source or has of its own, the
// scope of prefixes, and the links. Scopes are counted and shared: an element that declares nothing
// points to the scope of its parent, and only OwnScope, before a change, makes a copy. What few
// nodes have, a base URI and the nodes of the namespace axis, lies in the pool beside them.
//
// Every walk goes by the links, so depth costs no stack; DeleteTree even keeps its list of what is
// left in the links of the nodes that go.
//
// The trap: an own scope may be shared downwards, so a change by its owner shows in all that share
// it. Who needs another one below takes OwnScope there first.
#include "xmltree/xpathnode.h"

#include <array>
#include <utility>

#include "declarationname.h"
#include "tqcore/processstate.h"
#include "tqcore/tqtext.h"
#include "xpathnodepool.h"

namespace kelmora {
namespace {

using Kind = XPathNodeKind;

constexpr int kTextMargin = 1024;  // units that a joined text grows by at least

// By XTreeKind; an attribute may be a declaration instead.
constexpr std::array<Kind, 16> kKindOfSource{
    Kind::Root,       Kind::Root,       Kind::Root,      Kind::XMLDeclaration,
    Kind::Element,    Kind::Attribute,  Kind::Text,      Kind::CData,
    Kind::Comment,    Kind::PI,         Kind::DocType,   Kind::ExternalID,
    Kind::DTDElement, Kind::DTDAttlist, Kind::DTDEntity, Kind::DTDNotation,
};

// Calls `take` with each text that belongs to the string value of `top`, in order. What a DOCTYPE
// holds does not.
template <class Take>
void ForEachText(const XPathNode& top, Take take) {
  const XPathNode* node = top.firstChild;
  while (node != nullptr) {
    if (node->IsText()) take(node->GetValue());
    const XPathNode* child = node->kind == Kind::DocType ? nullptr : node->firstChild;
    node = child != nullptr ? child : node->NextSkippingChildren(&top);
  }
}

}  // namespace

XPathNodeKind NodeKindOf(const XTreeNode& source) {
  const Kind kind = kKindOfSource[static_cast<std::size_t>(source.kind)];
  if (kind != Kind::Attribute) return kind;
  return IsDeclarationName(source.GetName()) ? Kind::Namespace : kind;
}

// --- name and value ------------------------------------------------------------------------------

std::u16string_view XPathNode::GetLocalName() const {
  return LocalPartOf(GetName());
}

std::u16string_view XPathNode::GetPrefix() const {
  return PrefixOf(GetName());
}

void XPathNode::SetOwnName(TQString name) {
  ownName_ = std::move(name);
  hasOwnName_ = true;
}

void XPathNode::SetOwnValue(TQString value) {
  ownValue_ = std::move(value);
  hasOwnValue_ = true;
}

std::u16string_view XPathNode::StringValue(TQString& scratch) const {
  if (kind != Kind::Root && kind != Kind::Element) return GetValue();
  std::u16string_view only;
  int cursor = 0;
  ForEachText(*this, [&](std::u16string_view text) {
    if (text.empty()) return;
    if (only.empty() && cursor == 0) {
      only = text;
      return;
    }
    if (cursor == 0) scratch.AppendAt(only, cursor, kTextMargin);
    scratch.AppendAt(text, cursor, kTextMargin);
  });
  return cursor == 0 ? only : scratch.View();
}

// --- scope ---------------------------------------------------------------------------------------

NamespaceScope* XPathNode::ScopeInForce() const {
  const XPathNode* node = this;
  while (node != nullptr && node->scope_ == nullptr) node = node->parent;
  return node != nullptr ? node->scope_ : XPathNodePool::Instance().EmptyScope();
}

const PrefixMap& XPathNode::ScopeMap() const {
  const NamespaceScope* scope = ScopeInForce();
  return kind == Kind::Attribute ? scope->attributeScopeMap : scope->scopeMap;
}

const PrefixMap& XPathNode::AttributeScopeMap() const {
  return ScopeInForce()->attributeScopeMap;
}

void XPathNode::DropScope() {
  if (scope_ != nullptr && --scope_->references == 0) {
    XPathNodePool::Instance().DeleteScope(scope_);
  }
  scope_ = nullptr;
  ownsScope_ = false;
}

void XPathNode::TakeScope(NamespaceScope* scope) {
  ++scope->references;
  DropScope();
  scope_ = scope;
}

void XPathNode::ShareScope(const XPathNode& other) {
  TakeScope(other.ScopeInForce());
}

NamespaceScope& XPathNode::OwnScope() {
  if (!ownsScope_) {
    NamespaceScope* own = XPathNodePool::Instance().CopyScope(*ScopeInForce());
    DropScope();
    scope_ = own;
    ownsScope_ = true;
  }
  return *scope_;
}

void XPathNode::SetBaseURI(InternedURI uri) {
  if (uri == nullptr && !hasRareFields_) return;
  XPathNodePool::Instance().MakeRare(*this).baseURI = uri;
}

InternedURI XPathNode::OwnBaseURI() const {
  const auto* rare = XPathNodePool::Instance().FindRare(*this);
  return rare != nullptr ? rare->baseURI : nullptr;
}

InternedURI XPathNode::BaseURI() const {
  for (const XPathNode* node = this; node != nullptr; node = node->parent) {
    const bool asksParent = node->kind == Kind::Text || node->kind == Kind::Attribute ||
                            node->kind == Kind::Namespace || node->kind == Kind::Comment;
    if (asksParent) continue;
    if (const InternedURI uri = node->OwnBaseURI()) return uri;
  }
  return nullptr;
}

const std::vector<XPathNode*>& XPathNode::NamespaceNodes() {
  auto& rare = XPathNodePool::Instance().MakeRare(*this);
  if (!rare.hasNamespaceNodes) {
    rare.hasNamespaceNodes = true;
    for (const PrefixMap::Entry& entry : ScopeMap()) {
      if (entry.uri == nullptr || entry.uri->IsEmpty()) continue;
      XPathNode* node = Make(Kind::Namespace);
      rare.namespaceNodes.push_back(node);
      node->SetOwnName(entry.prefix);
      node->SetOwnValue(*entry.uri);
      node->parent = this;
    }
  }
  return rare.namespaceNodes;
}

// --- tree ----------------------------------------------------------------------------------------

const XPathNode* XPathNode::Root() const {
  const XPathNode* node = this;
  while (node->parent != nullptr) node = node->parent;
  return node;
}

XPathNode* XPathNode::Root() {
  return const_cast<XPathNode*>(std::as_const(*this).Root());
}

void XPathNode::AppendChild(XPathNode* child) {
  InsertChild(nullptr, child);
}

void XPathNode::InsertChild(XPathNode* before, XPathNode* child) {
  child->parent = this;
  child->next = before;
  child->previous = before != nullptr ? before->previous : lastChild;
  (child->previous != nullptr ? child->previous->next : firstChild) = child;
  (before != nullptr ? before->previous : lastChild) = child;
}

void XPathNode::RemoveChild(XPathNode* child) {
  (child->previous != nullptr ? child->previous->next : firstChild) = child->next;
  (child->next != nullptr ? child->next->previous : lastChild) = child->previous;
  child->parent = child->next = child->previous = nullptr;
}

XPathNode* XPathNode::NextInDocument(bool forward) const {
  if (forward) return firstChild != nullptr ? firstChild : NextSkippingChildren(nullptr);
  if (previous == nullptr) return parent;
  XPathNode* node = previous;
  while (node->lastChild != nullptr) node = node->lastChild;
  return node;
}

XPathNode* XPathNode::NextSkippingChildren(const XPathNode* top) const {
  for (const XPathNode* node = this; node != nullptr && node != top; node = node->parent) {
    if (node->next != nullptr) return node->next;
  }
  return nullptr;
}

XPathNode* XPathNode::Make(XPathNodeKind kind) {
  XPathNode* node = XPathNodePool::Instance().Make();
  node->kind = kind;
  return node;
}

XPathNode* XPathNode::CopyNode(const XPathNode& other, bool deep, XPathNode* parent) {
  XPathNode* copy = Make(other.kind);
  copy->source = other.source;
  copy->parent = parent;
  copy->namespaceURI = other.namespaceURI;
  copy->orderNumber = copy->documentNumber = 0;
  copy->escapeOutput = other.escapeOutput;
  copy->synthetic = other.synthetic;
  if (other.hasOwnName_) copy->SetOwnName(other.ownName_);
  if (other.hasOwnValue_) copy->SetOwnValue(other.ownValue_);
  copy->SetBaseURI(other.OwnBaseURI());
  if (other.kind != Kind::Element) return copy;
  NamespaceScope* scope = other.ScopeInForce();
  if (!deep && parent != nullptr && scope == parent->ScopeInForce()) {
    copy->TakeScope(scope);
  } else {
    copy->scope_ = XPathNodePool::Instance().CopyScope(*scope);
    copy->ownsScope_ = true;
  }
  return copy;
}

XPathNode* XPathNode::Copy(const XPathNode& other, bool deep, XPathNode* parent) {
  XPathNode* top = CopyNode(other, deep, parent);
  if (!deep) return top;
  XPathNode* under = top;  // copy of the parent of `node`
  const XPathNode* node = other.firstChild;
  while (node != nullptr) {
    XPathNode* copy = CopyNode(*node, deep, under);
    under->AppendChild(copy);
    if (node->firstChild != nullptr) {
      under = copy;
      node = node->firstChild;
      continue;
    }
    while (node != &other && node->next == nullptr) {
      node = node->parent;
      if (node != &other) under = under->parent;
    }
    node = node != &other ? node->next : nullptr;
  }
  return top;
}

// The list of what is still to be deleted runs through the nodes themselves: the children of the
// node at its head are put in front of the rest.
std::int64_t XPathNode::NumberOfItsOwn() const {
  struct LastNumber {
    std::int64_t value = 0;
  };
  std::int64_t& number = XPathNodePool::Instance().MakeRare(*this).number;
  if (number == 0) number = ++ProcessState::Of<LastNumber>().value;
  return number;
}

void XPathNode::DeleteTree(XPathNode* root) {
  if (root == nullptr) return;
  XPathNodePool& pool = XPathNodePool::Instance();
  root->next = nullptr;
  while (root != nullptr) {
    XPathNode* rest = root->next;
    if (root->firstChild != nullptr) {
      root->lastChild->next = rest;
      rest = root->firstChild;
    }
    pool.Delete(root);
    root = rest;
  }
}

}  // namespace kelmora
