// XPathParseTree: a parsed expression: its text, its nodes, and what is shared by them.
#pragma once

#include <string_view>
#include <vector>

#include "syntax/xpathparsenode.h"
#include "tqcore/arena.h"
#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"
#include "xpath/sharedhandle.h"

namespace kelmora {

class XPathParseTree final : public SharedCount {
 public:
  explicit XPathParseTree(const TQString& text) : text_(text) {}

  const TQString& Text() const { return text_; }
  // Of the rule's class. Those who evaluate the nodes implement it.
  XPathParseNode* MakeNode(XPathRule rule);
  Arena& GetArena() { return arena_; }

  // Sets the root and prepares every node below it. Walks with a stack on the heap. `nesting` is
  // the depth of nested expressions, and so of an evaluation's recursion.
  void Finish(XPathParseNode* root, int nesting);
  int Nesting() const { return nesting_; }
  const XPathParseNode* Root() const { return root_; }
  bool HasVariable() const { return hasVariable_; }
  // False when nothing but operators stands between variables and literals.
  bool ReadsContext() const { return readsContext_; }

  // Prefixes that steps refer to; the number stays valid as long as the tree.
  int AddPrefix(std::u16string_view prefix);
  const std::vector<std::u16string_view>& Prefixes() const { return prefixes_; }
  // A result per prefix for the given map; kept for the next evaluation with the same map.
  struct Binding {
    InternedURI uri = nullptr;
    bool bound = false;
  };
  struct Bindings final : SharedCount {
    PrefixMap map;
    std::vector<Binding> entries;
    bool allBound = true;
  };
  SharedHandle<const Bindings> ResolvePrefixes(const PrefixMap& map) const;

 private:
  Arena arena_;
  TQString text_;
  XPathParseNode* root_ = nullptr;
  bool hasVariable_ = false;
  bool readsContext_ = false;
  int nesting_ = 0;
  std::vector<std::u16string_view> prefixes_;
  mutable SharedHandle<const Bindings> bindings_;  // of the map that came last
};

}  // namespace kelmora
