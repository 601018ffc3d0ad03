#include "result/starttags.h"

#include <functional>
#include <utility>

namespace kelmora {

namespace {

std::u16string_view UsedPrefix(const XPathNode& node) {
  return node.kind == XPathNodeKind::Namespace ? DeclaredPrefix(node) : node.GetPrefix();
}

// An attribute without a prefix has nothing to do with the default namespace.
bool Uses(const XPathNode& node, std::u16string_view prefix) {
  const bool mayUse = node.kind == XPathNodeKind::Namespace || !prefix.empty();
  return mayUse && UsedPrefix(node) == prefix;
}

bool MeansURI(const XPathNode& node, InternedURI uri) {
  if (node.kind != XPathNodeKind::Namespace) return SameURI(node.namespaceURI, uri);
  return node.GetValue() == (uri != nullptr ? uri->View() : std::u16string_view());
}

}  // namespace

XPathNode* StartTags::AddAttribute(XPathNode& parent, OwnedTree attribute) {
  if (!TakesAttributes(parent)) return AppendOrDrop(parent, std::move(attribute));
  // URIs of one text have several pointers; that of the scope stands for all under one prefix.
  const std::u16string_view prefix = attribute->GetPrefix();
  if (!prefix.empty() && attribute->namespaceURI != nullptr) {
    const InternedURI bound = parent.ScopeMap().Lookup(prefix);
    if (SameURI(bound, attribute->namespaceURI)) attribute->namespaceURI = bound;
  }
  XPathNode* present = FindAttribute(parent, attribute->namespaceURI, attribute->GetLocalName());
  if (present == nullptr) return AppendOrDrop(parent, std::move(attribute));
  present->SetOwnName(attribute->GetName());
  present->SetOwnValue(attribute->GetValue());
  if (indexed_ == &parent && !prefix.empty()) uses_[TQString(prefix)].push_back(present);
  while (XPathNode* child = present->firstChild) {
    present->RemoveChild(child);
    XPathNode::DeleteTree(child);
  }
  return present;
}

XPathNode* StartTags::AddDeclaration(XPathNode& parent, std::u16string_view prefix,
                                     InternedURI uri) {
  if (parent.kind != XPathNodeKind::Element) {
    return AppendOrDrop(parent, MakeDeclaration(prefix, uri));
  }
  if (!TakesAttributes(parent)) return nullptr;
  if (parent.GetPrefix() == prefix && !SameURI(parent.namespaceURI, uri)) return nullptr;
  const Use use = FindUse(parent, prefix, uri);
  if (use.isTaken) return nullptr;
  if (use.declaration != nullptr) return use.declaration;
  DeclareOn(parent, prefix, uri);
  return parent.lastChild;
}

XPathNode* StartTags::FindAttribute(XPathNode& element, InternedURI uri,
                                    std::u16string_view localName) {
  if (UpdateIndex(element)) {
    const auto found = attributes_.find(AttributeKey{uri, localName});
    return found != attributes_.end() ? *found : nullptr;
  }
  for (XPathNode* child = element.firstChild; child != nullptr && IsAttributeLike(*child);
       child = child->next) {
    if (child->kind == XPathNodeKind::Attribute && child->namespaceURI == uri &&
        child->GetLocalName() == localName) {
      return child;
    }
  }
  return nullptr;
}

StartTags::Use StartTags::FindUse(XPathNode& element, std::u16string_view prefix, InternedURI uri) {
  Use use;
  // A declaration decides alone. True when there is nothing more to look at.
  const auto look = [&](XPathNode* node) {
    if (!Uses(*node, prefix)) return false;
    const bool isDeclaration = node->kind == XPathNodeKind::Namespace;
    const bool isTaken = !MeansURI(*node, uri);
    if (isDeclaration) use = {isTaken, isTaken ? nullptr : node};
    use.isTaken = use.isTaken || isTaken;
    return isDeclaration;
  };
  if (UpdateIndex(element)) {
    const auto users = uses_.find(prefix);
    if (users == uses_.end()) return use;
    for (XPathNode* node : users->second) {
      if (look(node) || use.isTaken) break;
    }
    return use;
  }
  for (XPathNode* child = element.firstChild; child != nullptr && IsAttributeLike(*child);
       child = child->next) {
    if (look(child)) break;
  }
  return use;
}

bool StartTags::UpdateIndex(XPathNode& element) {
  if (indexed_ != &element) {
    int count = 0;
    for (const XPathNode* child = element.firstChild; child != nullptr; child = child->next) {
      if (++count > kIndexedChildren) break;
    }
    if (count <= kIndexedChildren) return false;
    attributes_.clear();
    uses_.clear();
    indexed_ = &element;
    lastIndexed_ = nullptr;
  }
  XPathNode* child = lastIndexed_ != nullptr ? lastIndexed_->next : element.firstChild;
  for (; child != nullptr && IsAttributeLike(*child); child = child->next) {
    lastIndexed_ = child;
    if (child->kind == XPathNodeKind::Attribute) attributes_.insert(child);  // the first one stays
    const std::u16string_view prefix = UsedPrefix(*child);
    if (!Uses(*child, prefix)) continue;
    std::vector<XPathNode*>& users = uses_[TQString(prefix)];
    users.push_back(child);
    if (child->kind == XPathNodeKind::Namespace) std::swap(users.front(), users.back());
  }
  return true;
}

std::size_t StartTags::AttributeHash::operator()(const AttributeKey& key) const {
  return HashName(key.localName, key.uri);
}

std::size_t StartTags::AttributeHash::operator()(const XPathNode* node) const {
  return (*this)(AttributeKey{node->namespaceURI, node->GetLocalName()});
}

bool StartTags::AttributeEqual::operator()(const AttributeKey& key, const XPathNode* node) const {
  return key.uri == node->namespaceURI && key.localName == node->GetLocalName();
}

bool StartTags::AttributeEqual::operator()(const XPathNode* a, const XPathNode* b) const {
  return (*this)(AttributeKey{a->namespaceURI, a->GetLocalName()}, b);
}

}  // namespace kelmora
