#include "xmltree/xpathtreebuilder.h"

#include <algorithm>
#include <utility>

#include "declarationname.h"
#include "treebuilderrun.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kXmlPrefix = u"xml";

}  // namespace

XPathTreeBuilder::XPathTreeBuilder() {
  xmlURI_ = InternURI(kXmlNamespace);
}
XPathTreeBuilder::~XPathTreeBuilder() = default;

void XPathTreeBuilder::Restamp(XPathNode& root) {
  for (XPathNode* node = &root; node != nullptr; node = node->NextInDocument(true)) {
    node->orderNumber = ++stamp_;
    node->documentNumber = root.documentNumber;
  }
}

InternedURI XPathTreeBuilder::InternURI(View text) {
  const auto present = uris_.find(text);
  if (present != uris_.end()) return present->second.get();
  auto uri = std::make_unique<const TQString>(text);
  const View key = *uri;
  return uris_.emplace(key, std::move(uri)).first->second.get();
}

XPathNode* XPathTreeBuilder::Build(XTreeNode& xtreeRoot, TreeModel& model, bool attachModel,
                                   View url) {
  Run run(*this, model, std::max(xtreeRoot.sourceEnd, 0));
  // A model that cannot read what the document names keeps its error; the tree is built without.
  if (attachModel) static_cast<void>(model.AttachSchema(xtreeRoot, false, url, *this));
  XPathNode* root = run.Build(xtreeRoot);
  const bool hasPlace =
      root->kind != XPathNodeKind::Text && root->kind != XPathNodeKind::Attribute &&
      root->kind != XPathNodeKind::Namespace && root->kind != XPathNodeKind::Comment;
  if (!url.empty() && hasPlace) root->SetBaseURI(InternURI(url));
  return root;
}

PrefixMap XPathTreeBuilder::InitialScope() const {
  PrefixMap map;
  map.Set(kXmlPrefix, xmlURI_);
  return map;
}

// --- namespaces of an XTree ----------------------------------------------------------------------

void XPathTreeBuilder::DeclareIn(PrefixMap& map, const XTreeNode& attribute) {
  const View name = attribute.GetName();
  if (!IsDeclarationName(name)) return;
  const View value = attribute.GetText();
  map.Set(DeclaredPrefix(name), value.empty() ? nullptr : InternURI(value));
}

void XPathTreeBuilder::CollectDeclarations(const XTreeNode& root) {
  PrefixMap map = InitialScope();
  const XTreeNode* node = &root;
  while (node != nullptr) {
    if (node->kind == XTreeKind::Attribute) DeclareIn(map, *node);
    if (const XTreeNode* child = node->FirstChild()) {
      node = child;
      continue;
    }
    while (node != &root && node->next == nullptr) node = node->parent;
    node = node != &root ? node->next : nullptr;
  }
  collected_[&root] = std::move(map);
}

const PrefixMap& XPathTreeBuilder::ScopeAt(const XTreeNode& node) {
  const auto collected = collected_.find(&node);
  if (collected != collected_.end()) return collected->second;
  // Up to a node whose scope is known, then down again; what was on the way is known from then on.
  std::vector<const XTreeNode*> way;
  const XTreeNode* known = &node;
  while (known != nullptr && !scopes_.contains(known)) {
    way.push_back(known);
    known = known->parent;
  }
  PrefixMap map = known != nullptr ? scopes_.find(known)->second : InitialScope();
  for (auto place = way.rbegin(); place != way.rend(); ++place) {
    for (const XTreeNode* attribute = (*place)->FirstChildOfKind(XTreeKind::Attribute);
         attribute != nullptr; attribute = attribute->NextOfKind(XTreeKind::Attribute)) {
      if ((*place)->kind == XTreeKind::Element) DeclareIn(map, *attribute);
    }
    scopes_[*place] = map;
  }
  return scopes_.find(&node)->second;
}

}  // namespace kelmora
