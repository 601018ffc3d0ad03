// XPathTreeBuilder makes XPathNode trees out of XTrees: entity references are expanded, defaults
// of a DTD or schema added, namespaces resolved. One builder lives as long as the program and
// serves every source document, stylesheet and document() result.
#pragma once

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

inline constexpr std::u16string_view kXmlNamespace = u"http://www.w3.org/XML/1998/namespace";
// Texts of entities that hold references to entities that are markup again nest no deeper.
inline constexpr int kEntityNesting = 64;

class XPathTreeBuilder {
 public:
  XPathTreeBuilder();
  ~XPathTreeBuilder();
  XPathTreeBuilder(const XPathTreeBuilder&) = delete;
  XPathTreeBuilder& operator=(const XPathTreeBuilder&) = delete;

  // The root node of a new tree, owned by the caller; DeleteTree frees it. With `attachModel` the
  // model first reads what the document refers to. `url`, when not empty, becomes the base URI.
  // Linear in the source and in what its entities expand to; depth costs heap, not stack.
  // Throws TQXTreeException for a tree of a shape that the data model does not have, and
  // TQTreeLimitError when entities nest deeper than kEntityNesting or expand beyond
  // ExpansionBudget. Nothing of the tree is left then.
  XPathNode* Build(XTreeNode& xtreeRoot, TreeModel& model, bool attachModel,
                   std::u16string_view url);

  // Gives the nodes of a tree that was changed after its build new order numbers, and all of them
  // the document number of the root. Linear.
  void Restamp(XPathNode& root);

  // The one pointer that stands for this URI; it lives as long as the builder.
  InternedURI InternURI(std::u16string_view text);
  InternedURI XmlURI() const { return xmlURI_; }

  // --- namespaces of a tree that no XPathNodes are made of, such as a schema -------------------
  // The tree must stay as it is, and may die only with the builder. CollectDeclarations puts every
  // declaration of the tree into one map, of a prefix the last one in document order, and keeps it
  // under `root`.
  void CollectDeclarations(const XTreeNode& root);
  // The map kept under `node`, else the prefixes in force there. Linear over all nodes asked.
  const PrefixMap& ScopeAt(const XTreeNode& node);

 private:
  class Run;  // the state of one build

  PrefixMap InitialScope() const;
  void DeclareIn(PrefixMap& map, const XTreeNode& attribute);

  InternedURI xmlURI_ = nullptr;
  std::int32_t stamp_ = 0;  // runs on over all builds
  std::unordered_map<std::u16string_view, std::unique_ptr<const TQString>, TextHash>
      uris_;                                                   // by own text
  std::vector<std::unique_ptr<XTree>> entityTrees_;            // parsed out of entity values
  std::unordered_map<const XTreeNode*, PrefixMap> collected_;  // by CollectDeclarations
  std::unordered_map<const XTreeNode*, PrefixMap> scopes_;     // by ScopeAt
};

}  // namespace kelmora
