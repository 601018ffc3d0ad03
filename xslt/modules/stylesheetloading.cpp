// Loading of stylesheets and documents during a run. xsl:include is done by surgery: its element
// gives way to copies of what the named stylesheet holds, before any child of the including element
// runs. Copies keep the sources of the nodes that they were made of, so errors in them name the
// file that they stood in.
#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "checks/elementdispatcher.h"
#include "engine/instruction.h"
#include "engine/universes.h"
#include "keys/keytable.h"
#include "tqcore/tqtext.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

namespace {

bool IsXslText(const XPathNode* node) {
  return node != nullptr && XsltElementNames::Code(node) == ElementCode::Text;
}

XPathNode* BehindImports(XPathNode* element, const ElementDispatcher& dispatcher) {
  XPathNode* place = FirstContent(element);
  for (XPathNode* child = place; child != nullptr; child = child->next) {
    if (dispatcher.Code(child) == ElementCode::Import) place = child->next;
  }
  return place;
}

}  // namespace

// Text nodes alone: a CDATA section keeps its white space.
void XSLTProcessorBase::StripSpace(XPathNode* root) {
  XPathNode* node = root;
  while (node != nullptr) {
    XPathNode* next =
        node->firstChild != nullptr ? node->firstChild : node->NextSkippingChildren(root);
    if (node->kind == XPathNodeKind::Text && IsBlank(node->GetValue()) &&
        !IsXslText(node->parent)) {
      node->parent->RemoveChild(node);
      XPathNode::DeleteTree(node);
    }
    node = next;
  }
}

TQString XSLTProcessorBase::ResolveHref(const XPathNode* baseNode, std::u16string_view href) {
  TQString path(href);
  if (!path.IsRelativePath(false)) return path;
  const InternedURI base = baseNode->BaseURI();
  return path.ResolveRelativePath(base != nullptr ? *base : TQString(), TQString());
}

XPathNode* XSLTProcessorBase::LoadTree(const TQString& path) {
  const auto known = LoadedTrees.find(path.View());
  if (known != LoadedTrees.end()) return known->second;
  XPathNode* root = BuildTree(LoadExternalDocument(path), path);
  if (root == nullptr) return nullptr;
  LoadedTrees.emplace(path, root);
  for (const auto& [name, table] : Keys) {
    if (table->IsInUse()) table->Index(root, *this);
  }
  return root;
}

XPathNode* XSLTProcessorBase::LoadDocumentTree(const TQString& uri) {
  XTreeNode* source = LoadExternalDocument(uri);
  if (source == nullptr) return nullptr;
  XPathNode*& root = documentTrees_[source];
  if (root == nullptr) {
    root = BuildTree(source, uri);
    KeepFragment(root);
  }
  return root;
}

// The tree without white space; null without a source.
XPathNode* XSLTProcessorBase::BuildTree(XTreeNode* source, const TQString& path) {
  if (source == nullptr) return nullptr;
  const std::unique_ptr<TreeModel> model = NewModel();
  XPathNode* root = TreeBuilder->Build(*source, *model, true, path);
  if (root == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  StripSpace(root);
  return root;
}

XPathNode* XSLTProcessorBase::StylesheetElementOf(XPathNode* root) {
  XPathNode* top = nullptr;
  for (XPathNode* child = root->firstChild; child != nullptr; child = child->next) {
    if (XsltElementNames::Code(child) == ElementCode::Stylesheet) return child;
    const XPathNodeRef::Kind kind = XPathNodeRef::KindOf(child);
    if (top == nullptr && (kind == XPathNodeRef::Element || kind == XPathNodeRef::Text)) {
      top = child;
    }
  }
  return top;
}

// The name that a file has whichever way it is reached; a name that is no file stays as it is.
TQString XSLTProcessorBase::FileIdentity(const TQString& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(ToNative(path), error);
  return error ? path : FromNative(file.native());
}

void XSLTProcessorBase::CheckNotOpen(const TQString& path, XPathNode* element) const {
  if (std::ranges::find(OpenStylesheets, FileIdentity(path)) != OpenStylesheets.end()) {
    throw TQXSLTError(XsltCode::RecursiveInclude, element);
  }
}

// A stylesheet whose includes are being replaced.
struct XSLTProcessorBase::IncludeLevel {
  XPathNode* element;
  XPathNode* child;              // the next one to be looked at
  bool seenOther = false;        // something else than imports and includes
  XPathNode* include = nullptr;  // the one whose stylesheet is the level above
};

// Includes may be nested as deep as there are files, so the open ones stand on a stack of their
// own.
void XSLTProcessorBase::ExpandIncludes(XPathNode* element) {
  std::vector<IncludeLevel> levels{{element, FirstContent(element)}};
  bool replaces = false;
  while (true) {
    IncludeLevel& level = levels.back();
    XPathNode* child = level.child;
    if (child == nullptr) {
      XPathNode* included = level.element;
      levels.pop_back();
      if (levels.empty()) break;
      OpenStylesheets.pop_back();
      ReplaceInclude(levels.back(), included);
      continue;
    }
    level.child = child->next;
    const std::int32_t code = Dispatcher->Code(child);
    if (code == ElementCode::Include) {
      replaces = true;
      level.include = child;
      XPathNode* top = OpenInclude(child);
      if (top != nullptr) {
        levels.push_back({top, FirstContent(top)});
      } else {
        ReplaceInclude(level, nullptr);
      }
    } else if (code == ElementCode::Import) {
      if (level.seenOther) throw TQXSLTError(XsltCode::ImportNotFirst, child);
    } else if (child->kind == XPathNodeKind::Element || child->IsText()) {
      level.seenOther = true;
    }
  }
  if (replaces) TreeHasChanged(*element->Root());
}

// document('') shows the tree. An imported one was indexed by the keys in use when it was loaded.
void XSLTProcessorBase::TreeHasChanged(XPathNode& root) {
  TreeBuilder->Restamp(root);
  universes_->Forget(root);
  for (const auto& [name, table] : Keys) table->Forget(root);
}

// The element whose children an include brings in, entered in OpenStylesheets; null without one.
XPathNode* XSLTProcessorBase::OpenInclude(XPathNode* include) {
  XPathNode* href = FindAttribute(include, u"href");
  if (href == nullptr) throw TQXSLTError(XsltCode::HrefExpected, include);
  const TQString path = ResolveHref(include, href->GetValue());
  CheckNotOpen(path, include);
  XPathNode* tree = LoadTree(path);
  if (tree == nullptr) throw TQXSLTError(XsltCode::IncludeFailed, href);
  XPathNode* top = StylesheetElementOf(tree);
  if (top != nullptr) OpenStylesheets.push_back(FileIdentity(path));
  return top;
}

// Copies of the children of `top` come in front of the include; imports go behind the last import
// of the element that they come into.
void XSLTProcessorBase::ReplaceInclude(IncludeLevel& level, XPathNode* top) {
  XPathNode* element = level.element;
  XPathNode* include = std::exchange(level.include, nullptr);
  XPathNode* behindImports = nullptr;
  XPathNode* child = top != nullptr ? FirstContent(top) : nullptr;
  for (; child != nullptr; child = child->next) {
    const bool isImport = Dispatcher->Code(child) == ElementCode::Import;
    if (isImport && behindImports == nullptr) behindImports = BehindImports(element, *Dispatcher);
    XPathNode* copy = XPathNode::Copy(*child, true, element);
    if (copy->OwnBaseURI() == nullptr) copy->SetBaseURI(top->Root()->OwnBaseURI());
    element->InsertChild(isImport ? behindImports : include, copy);
    Dispatcher->Validate(ElementCode::Stylesheet, copy);
    if (copy->kind == XPathNodeKind::Element && !isImport) level.seenOther = true;
  }
  element->RemoveChild(include);
  Dispatcher->Forget(include);
  XPathNode::DeleteTree(include);
}

}  // namespace kelmora
