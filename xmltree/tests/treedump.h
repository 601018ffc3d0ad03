// What the tests of the trees share: one-line dumps, and a model that is made of a few tables.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "xmltree/documentkindtable.h"
#include "xmltree/fragmentparser.h"
#include "xmltree/xpathtreebuilder.h"

namespace kelmora {

template <class... Parts>
std::string Join(const Parts&... parts) {
  std::string result;
  ((result += parts), ...);
  return result;
}

const DocumentKindTable& Kinds();

// A text with its tree; the tree is null when the text does not parse.
struct ParsedText {
  TQString text;
  std::unique_ptr<XTree> tree;
  LoadError error;
};
std::unique_ptr<ParsedText> ParseText(std::u16string_view text, GrammarKind kind = GrammarKind::XML,
                                      bool normalize = true);

// Elements are <name 'own text' children>, attributes @name=value, texts 'text', CDATA sections
// [text], comments !text, processing instructions ?name:text; all else is its kind's number with
// name, item, repeat and text as far as they are there, and its children in brackets.
std::string Dump(const XTreeNode& node);
// The same of the data model: namespaces as {uri}, declarations #name=value, "~" in front of what
// came out of an entity.
std::string Dump(const XPathNode& node);

struct FakeDeclaration final : ElementDeclaration {
  std::vector<DefaultedAttribute> attributes;
  TQString text;
  bool GetDefaults(std::vector<DefaultedAttribute>& found, TQString& foundText) override;
};

struct FakeModel final : TreeModel {
  bool AttachSchema(XTreeNode&, bool, std::u16string_view url, XPathTreeBuilder&) override {
    attachedUrl = url;
    return false;
  }
  bool ExpandEntityReferences(std::u16string_view text, TQString& out) override;
  std::unique_ptr<XTree> ParseContent(std::u16string_view text) override;
  ElementDeclaration* FindDeclaration(std::u16string_view name, InternedURI,
                                      ElementDeclaration*) override;
  bool HasDeclarations() const override { return !declarations.empty(); }

  std::map<TQString, TQString, TextLess> entities{
      {u"lt", u"&#60;"}, {u"amp", u"&#38;"}, {u"gt", u">"}};
  std::map<TQString, FakeDeclaration, TextLess> declarations;
  TQString attachedUrl;
};

// Owner of an XPathNode tree.
struct TreeDeleter {
  void operator()(XPathNode* root) const { XPathNode::DeleteTree(root); }
};
using OwnedTree = std::unique_ptr<XPathNode, TreeDeleter>;

}  // namespace kelmora
