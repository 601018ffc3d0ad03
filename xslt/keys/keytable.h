// KeyTable: all xsl:key elements of one name. Their match texts are joined with " | ", and so are
// their use texts: two keys of one name share both.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "base/expressiontext.h"
#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XSLTProcessorBase;

class KeyTable {
 public:
  // `scopeNode` is the xsl:key element; that of the first call gives the prefixes of all
  // expressions. An element that comes again as a copy of an included one is already in.
  void Add(XPathNode* scopeNode, std::u16string_view match, std::u16string_view use);
  // Evaluates the key over the tree of `root` unless that was done. Raises what the expressions
  // raise. A null root is none.
  void Index(XPathNode* root, XSLTProcessorBase& processor);
  void Forget(const XPathNode& root) { Indexes.erase(&root); }  // its nodes are not what they were
  // A key() has asked. Before that no tree is indexed: the variables of `use` may not exist yet.
  bool IsInUse() const { return !Indexes.empty(); }
  // The nodes of that value in index order, each once; null without one. `root` must be indexed.
  const XPathNodeList* Lookup(XPathNode* root, std::u16string_view value) const;

 private:
  using ValueIndex = std::unordered_map<TQString, XPathNodeList, TextHash, TextEqual>;

  void Fill(ValueIndex& index, XPathNode* root, XSLTProcessorBase& processor);
  static void Enter(ValueIndex& index, std::u16string_view value, XPathNode* node);

  ExpressionText Match;  // all texts, joined
  ExpressionText Use;
  XPathNode* ScopeNode = nullptr;
  std::unordered_map<const XPathNode*, std::unique_ptr<ValueIndex>> Indexes;
  std::unordered_set<const XTreeNode*> sources_;  // of the elements that are in
};

}  // namespace kelmora
