#include "xpathnodepool.h"

#include <utility>

namespace kelmora {

XPathNodePool& XPathNodePool::Instance() {
  static XPathNodePool& pool = *new XPathNodePool;
  return pool;
}

void XPathNodePool::Delete(XPathNode* node) {
  if (node->hasOwnName_) node->ownName_.Clear();
  if (node->hasOwnValue_) node->ownValue_.Clear();
  if (node->hasRareFields_) DeleteRare(*node);
  node->DropScope();
  nodes_.Give(node);
}

XPathNodePool::RareFields* XPathNodePool::FindRare(const XPathNode& node) {
  return node.hasRareFields_ ? &rare_.find(&node)->second : nullptr;
}

XPathNodePool::RareFields& XPathNodePool::MakeRare(const XPathNode& node) {
  RareFields& fields = rare_[&node];
  node.hasRareFields_ = true;
  return fields;
}

void XPathNodePool::DeleteRare(const XPathNode& node) {
  const auto entry = rare_.find(&node);
  const std::vector<XPathNode*> namespaceNodes = std::move(entry->second.namespaceNodes);
  rare_.erase(entry);
  for (XPathNode* namespaceNode : namespaceNodes) Delete(namespaceNode);
}

NamespaceScope* XPathNodePool::CopyScope(const NamespaceScope& scope) {
  return new (scopes_.Take()) NamespaceScope{scope.scopeMap, scope.attributeScopeMap};
}

void XPathNodePool::DeleteScope(NamespaceScope* scope) {
  scope->~NamespaceScope();
  scopes_.Give(scope);
}

}  // namespace kelmora
