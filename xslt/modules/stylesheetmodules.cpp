// The two ways in which one stylesheet names another differ in when they act. xsl:import runs as an
// instruction and pushes the other's element; xsl:include changes the tree before anything runs:
// copies of the other's children take its place, and imports among them go to the imports in front.
//
// The trap is that a loaded tree serves all that name it. So it is copied and never moved, a copy
// takes the document number of where it goes, and keeps the base URI of where it came from, which
// relative names in it and messages about it need. Index, checks and keys know trees and nodes by
// address: what is replaced must be forgotten there before it is deleted.
#include "modules/stylesheetmodules.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "checks/elementdispatcher.h"
#include "engine/instruction.h"
#include "engine/kepttrees.h"
#include "keys/keytables.h"
#include "names/stylesheetindex.h"
#include "names/xsltnames.h"
#include "tqcore/tqtext.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

bool IsXslText(const XPathNode* node) {
  return node != nullptr && XsltElementNames::Code(node) == XsltElement::Text;
}

XPathNode* BehindImports(XPathNode* element, const StylesheetIndex& index) {
  XPathNode* place = FirstContent(element);
  for (XPathNode* child = place; child != nullptr; child = child->next) {
    if (index.Code(child) == XsltElement::Import) place = child->next;
  }
  return place;
}

// The first child of code 29, else the first that is no declaration, comment or the like.
XPathNode* StylesheetElementOf(XPathNode* root) {
  XPathNode* top = nullptr;
  for (XPathNode* child = root->firstChild; child != nullptr; child = child->next) {
    if (XsltElementNames::Code(child) == XsltElement::Stylesheet) return child;
    const XPathNodeRef::Kind kind = XPathNodeRef::KindOf(child);
    if (top == nullptr && (kind == XPathNodeRef::Element || kind == XPathNodeRef::Text)) {
      top = child;
    }
  }
  return top;
}

// The name that a file has whichever way it is reached; a name that is no file stays as it is.
TQString FileIdentity(const TQString& path) {
  std::error_code error;
  const std::filesystem::path file = std::filesystem::canonical(ToNative(path), error);
  return error ? path : FromNative(file.native());
}

}  // namespace

void StripSpace(XPathNode* root) {
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

TQString ResolveHref(const XPathNode* baseNode, std::u16string_view href) {
  TQString path(href);
  if (!path.IsRelativePath(false)) return path;
  const InternedURI base = baseNode->BaseURI();
  return path.ResolveRelativePath(base != nullptr ? *base : TQString(), TQString());
}

StylesheetModules::~StylesheetModules() {
  for (const auto& [path, tree] : LoadedTrees) XPathNode::DeleteTree(tree);
}

void StylesheetModules::BeginRun() {
  documentTrees_.clear();
  OpenStylesheets.clear();
}

void StylesheetModules::Open(const XPathNode* stylesheetElement) {
  const InternedURI file = stylesheetElement->BaseURI();
  OpenStylesheets.push_back(file != nullptr ? FileIdentity(*file) : TQString());
}

XPathNode* StylesheetModules::LoadTree(const TQString& path) {
  const auto known = LoadedTrees.find(path.View());
  if (known != LoadedTrees.end()) return known->second;
  XPathNode* root = BuildTree(processor_->LoadExternalDocument(path), path);
  if (root == nullptr) return nullptr;
  LoadedTrees.emplace(path, root);
  processor_->Keys->Index(root);
  return root;
}

XPathNode* StylesheetModules::LoadDocumentTree(const TQString& uri) {
  XTreeNode* source = processor_->LoadExternalDocument(uri);
  if (source == nullptr) return nullptr;
  XPathNode*& root = documentTrees_[source];
  if (root == nullptr) {
    root = BuildTree(source, uri);
    processor_->Kept->KeepFragment(root);
  }
  return root;
}

// The tree without white space; null without a source.
XPathNode* StylesheetModules::BuildTree(XTreeNode* source, const TQString& path) {
  if (source == nullptr) return nullptr;
  const std::unique_ptr<TreeModel> model = processor_->NewModel();
  XPathNode* root = processor_->TreeBuilder->Build(*source, *model, true, path);
  if (root == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  StripSpace(root);
  return root;
}

void StylesheetModules::CheckNotOpen(const TQString& path, XPathNode* element) const {
  if (std::ranges::find(OpenStylesheets, FileIdentity(path)) != OpenStylesheets.end()) {
    throw TQXSLTError(XsltCode::RecursiveInclude, element);
  }
}

// A stylesheet whose includes are being replaced.
struct StylesheetModules::IncludeLevel {
  XPathNode* element;
  XPathNode* child;              // the next one to be looked at
  bool seenOther = false;        // something else than imports and includes
  XPathNode* include = nullptr;  // the one whose stylesheet is the level above
};

// Includes may be nested as deep as there are files, so the open ones stand on a stack of their
// own.
void StylesheetModules::ExpandIncludes(XPathNode* element) {
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
    const XsltElement code = processor_->Index->Code(child);
    if (code == XsltElement::Include) {
      replaces = true;
      level.include = child;
      XPathNode* top = OpenInclude(child);
      if (top != nullptr) {
        levels.push_back({top, FirstContent(top)});
      } else {
        ReplaceInclude(level, nullptr);
      }
    } else if (code == XsltElement::Import) {
      if (level.seenOther) throw TQXSLTError(XsltCode::ImportNotFirst, child);
    } else if (child->kind == XPathNodeKind::Element || child->IsText()) {
      level.seenOther = true;
    }
  }
  if (replaces) TreeHasChanged(*element->Root());
}

// document('') shows the tree. An imported one was indexed by the keys in use when it was loaded.
void StylesheetModules::TreeHasChanged(XPathNode& root) {
  processor_->TreeBuilder->Restamp(root);
  processor_->ForgetUniverse(root);
  processor_->Keys->Forget(root);
}

// The element whose children an include brings in, entered in OpenStylesheets; null without one.
XPathNode* StylesheetModules::OpenInclude(XPathNode* include) {
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
void StylesheetModules::ReplaceInclude(IncludeLevel& level, XPathNode* top) {
  XPathNode* element = level.element;
  XPathNode* include = std::exchange(level.include, nullptr);
  XPathNode* behindImports = nullptr;
  XPathNode* child = top != nullptr ? FirstContent(top) : nullptr;
  for (; child != nullptr; child = child->next) {
    const bool isImport = processor_->Index->Code(child) == XsltElement::Import;
    if (isImport && behindImports == nullptr)
      behindImports = BehindImports(element, *processor_->Index);
    XPathNode* copy = XPathNode::Copy(*child, true, element);
    if (copy->OwnBaseURI() == nullptr) copy->SetBaseURI(top->Root()->OwnBaseURI());
    element->InsertChild(isImport ? behindImports : include, copy);
    processor_->Dispatcher->Validate(XsltElement::Stylesheet, copy);
    if (copy->kind == XPathNodeKind::Element && !isImport) level.seenOther = true;
  }
  element->RemoveChild(include);
  processor_->Index->Forget(include);
  XPathNode::DeleteTree(include);
}

}  // namespace kelmora
