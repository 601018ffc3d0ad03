// StylesheetModules: the files that stylesheets are made of, and the documents of document().
//
// A stylesheet is loaded once a process, whatever imports or includes it. xsl:include is done by
// surgery: its element gives way to copies of what the named stylesheet holds, before any child of
// the including element runs. Copies keep the sources of the nodes that they were made of, so
// errors in them name the file that they stood in.
//
// This room holds the stylesheet as a whole: its files, imports, includes and top-level elements,
// and the built-in rules.
#pragma once

#include <string_view>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class XSLTProcessorBase;

// Deletes the white space text nodes outside of xsl:text. A CDATA section keeps its white space.
void StripSpace(XPathNode* root);
// The absolute form of `href` as an element or attribute of the stylesheet names it.
TQString ResolveHref(const XPathNode* baseNode, std::u16string_view href);

class StylesheetModules {
 public:
  explicit StylesheetModules(XSLTProcessorBase* processor) : processor_(processor) {}
  ~StylesheetModules();
  StylesheetModules(const StylesheetModules&) = delete;
  StylesheetModules& operator=(const StylesheetModules&) = delete;

  void BeginRun();

  // The tree of a stylesheet by its absolute path; null when it cannot be read. Keys that are in
  // use index it.
  XPathNode* LoadTree(const TQString& path);
  // The tree of a document, without white space, kept to the end of the run; null when it cannot be
  // read.
  XPathNode* LoadDocumentTree(const TQString& uri);

  // The xsl:stylesheet elements in work stand in a list for the recursion test, which raises code
  // 45 at `element` for a file that is open.
  void Open(const XPathNode* stylesheetElement);
  void Close() { OpenStylesheets.pop_back(); }
  void CheckNotOpen(const TQString& path, XPathNode* element) const;

  // Replaces the xsl:include children of a xsl:stylesheet element by what they name.
  void ExpandIncludes(XPathNode* element);

 private:
  struct IncludeLevel;

  XPathNode* BuildTree(XTreeNode* source, const TQString& path);
  void TreeHasChanged(XPathNode& root);
  XPathNode* OpenInclude(XPathNode* include);
  void ReplaceInclude(IncludeLevel& level, XPathNode* top);

  XSLTProcessorBase* processor_;
  std::unordered_map<TQString, XPathNode*, TextHash, TextEqual> LoadedTrees;  // owned
  std::unordered_map<const XTreeNode*, XPathNode*> documentTrees_;  // kept fragments of the run
  std::vector<TQString> OpenStylesheets;                            // the identities of their files
};

}  // namespace kelmora
