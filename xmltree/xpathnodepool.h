// XPathNodePool: the memory of all XPathNodes, and the fields that few nodes have.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "slabpool.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class XPathNodePool {
 public:
  struct RareFields {
    InternedURI baseURI = nullptr;
    bool hasNamespaceNodes = false;
    std::vector<XPathNode*> namespaceNodes;  // owned
    std::int64_t number = 0;                 // see XPathNode::NumberOfItsOwn; 0: not asked for yet
  };

  static XPathNodePool& Instance();

  XPathNode* Make() { return new (nodes_.Take()) XPathNode; }
  // One node; its children and its place in a tree are the caller's business.
  void Delete(XPathNode* node);

  RareFields* FindRare(const XPathNode& node);  // null for a node without
  RareFields& MakeRare(const XPathNode& node);

  NamespaceScope* CopyScope(const NamespaceScope& scope);
  void DeleteScope(NamespaceScope* scope);
  // What is in force where nothing was declared. It is never changed or deleted.
  NamespaceScope* EmptyScope() { return &emptyScope_; }

 private:
  void DeleteRare(const XPathNode& node);

  SlabPool nodes_{sizeof(XPathNode), alignof(XPathNode)};
  SlabPool scopes_{sizeof(NamespaceScope), alignof(NamespaceScope)};
  std::unordered_map<const XPathNode*, RareFields> rare_;
  NamespaceScope emptyScope_;
};

}  // namespace kelmora
