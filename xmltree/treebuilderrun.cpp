// One walk over the XTree makes the XPathNodes in document order, with a stack of levels in place
// of recursion. At each element the attributes come first; when the last of them is there, the
// namespaces of all are settled and what the DTD or schema supplies is added (FinishAttributes),
// and only then the content begins.
//
// A declaration may stand behind the attribute that uses it. So prefixes of attributes are looked
// up once, when all declarations of the element are known.
//
// Text with references is expanded as a whole. If markup comes out, it is parsed, and its nodes
// take the place of the text. They may hold references again: ExpansionBudget and kEntityNesting
// see to it that this ends.
#include "treebuilderrun.h"

#include <utility>

#include "declarationname.h"
#include "tqcore/processstate.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using Kind = XPathNodeKind;
using View = std::u16string_view;

// Counts the builds of all builders.
struct DocumentCounter {
  std::int32_t last = 0;
};

bool IsAttributeKind(Kind kind) {
  return kind == Kind::Attribute || kind == Kind::Namespace;
}

bool HasReference(View value) {
  return FindUnit(value, u'&') != View::npos;
}

// A text or CDATA section among the children, or a text of the element's own.
bool HasText(const XTreeNode& source) {
  return !source.GetText().empty() || source.FirstChildOfKind(XTreeKind::Text) != nullptr ||
         source.FirstChildOfKind(XTreeKind::CData) != nullptr;
}

}  // namespace

void ExpansionBudget::Check(std::int64_t units) const {
  if (units <= left) return;
  throw TQTreeLimitError{u"The entity references of the document expand to too much text"};
}

XPathTreeBuilder::Run::Run(XPathTreeBuilder& builder, TreeModel& model, std::int64_t documentUnits)
    : builder_(builder), model_(model) {
  budget_.AddInput(documentUnits);
  model_.budget = &budget_;
}

XPathTreeBuilder::Run::~Run() {
  model_.budget = nullptr;
  XPathNode::DeleteTree(root_);  // of a build that did not come to its end
}

XPathNode* XPathTreeBuilder::Run::Build(XTreeNode& source) {
  documentNumber_ = ++ProcessState::Of<DocumentCounter>().last;
  hasDeclarations_ = model_.HasDeclarations();
  Level top{nullptr, source.FirstChild()};
  root_ = top.node = MakeNode(source, top);
  NamespaceScope& scope = root_->OwnScope();
  scope.scopeMap = scope.attributeScopeMap = builder_.InitialScope();
  if (root_->kind == Kind::Attribute) {
    root_->namespaceURI = scope.attributeScopeMap.Lookup(root_->GetPrefix());
  }
  if (root_->kind == Kind::Attribute || root_->kind == Kind::Text) ExpandValue(*root_);
  Open(top);
  while (!levels_.empty()) {
    Level& level = levels_.back();
    if (level.next == nullptr) {
      if (level.attributesOpen) FinishAttributes(level);
      levels_.pop_back();
      continue;
    }
    XTreeNode& child = *level.next;
    level.next = child.next;
    if (level.attributesOpen && child.kind != XTreeKind::Attribute) FinishAttributes(level);
    BuildChild(child);
  }
  return std::exchange(root_, nullptr);
}

XPathNode* XPathTreeBuilder::Run::MakeStamped(XPathNodeKind kind, XTreeNode* source,
                                              XPathNode* parent) {
  XPathNode* node = XPathNode::Make(kind);
  node->source = source;
  node->parent = parent;
  node->orderNumber = ++builder_.stamp_;
  node->documentNumber = documentNumber_;
  return node;
}

XPathNode* XPathTreeBuilder::Run::MakeNode(XTreeNode& source, const Level& level) {
  XPathNode* node = MakeStamped(NodeKindOf(source), &source, level.node);
  node->synthetic = level.entityDepth > 0;
  return node;
}

void XPathTreeBuilder::Run::Append(XPathNode* parent, XPathNode* child) {
  if (IsAttributeKind(child->kind)) {
    const XPathNode* last = parent->lastChild;
    const bool fits =
        parent->kind != Kind::Root && (last == nullptr || IsAttributeKind(last->kind));
    if (!fits) {
      XPathNode::DeleteTree(child);
      throw TQXTreeException{1};
    }
  }
  parent->AppendChild(child);
}

void XPathTreeBuilder::Run::BuildChild(XTreeNode& source) {
  Level& level = levels_.back();
  switch (source.kind) {
    case XTreeKind::Text:
      return BuildText(source);
    case XTreeKind::Element:
      return BuildElement(source, level);
    case XTreeKind::Attribute: {
      XPathNode* node = MakeNode(source, level);
      Append(level.node, node);
      if (node->kind == Kind::Namespace) {
        return Declare(*level.node, node->GetName(), node->GetValue());
      }
      if (source.HasPrefix()) level.prefixedAttributes = true;
      return ExpandValue(*node);
    }
    case XTreeKind::Document:
    case XTreeKind::Entity:
    case XTreeKind::DTDDocument:
    case XTreeKind::XMLTag:
    case XTreeKind::CData:
    case XTreeKind::Comment:
    case XTreeKind::PI:
    case XTreeKind::DocType:
    case XTreeKind::ExternalID:
    case XTreeKind::DTDElement:
    case XTreeKind::DTDAttlist:
    case XTreeKind::DTDEntity:
    case XTreeKind::DTDNotation:
    case XTreeKind::Any: {
      Level inner{MakeNode(source, level), source.FirstChild(), nullptr, level.entityDepth};
      Append(level.node, inner.node);
      Open(inner);
    }
  }
}

// Begins the children of a node, and with them those of an element that has only a text of its own.
void XPathTreeBuilder::Run::Open(const Level& level) {
  if (level.node->kind != Kind::Element) {
    if (level.next != nullptr) levels_.push_back(level);
    return;
  }
  ResolveElement(*level.node);
  levels_.push_back(level);
  if (level.next != nullptr || level.node->source->GetText().empty()) return;
  FinishAttributes(levels_.back());
  BuildText(*level.node->source);
}

void XPathTreeBuilder::Run::BuildText(XTreeNode& source) {
  const Level& level = levels_.back();
  XPathNode* text = MakeStamped(Kind::Text, &source, level.node);
  text->synthetic = level.entityDepth > 0;
  level.node->AppendChild(text);
  ExpandText(text);
}

void XPathTreeBuilder::Run::BuildElement(XTreeNode& source, const Level& level) {
  Level inner{MakeNode(source, level), source.FirstChild(), level.declaration, level.entityDepth};
  Append(level.node, inner.node);
  inner.node->ShareScope(*level.node);
  Open(inner);
}

// --- namespaces ----------------------------------------------------------------------------------

void XPathTreeBuilder::Run::ResolveElement(XPathNode& element) {
  const View name = element.GetName();
  if (name.empty()) return;
  const View prefix = PrefixOf(name);
  const PrefixMap& map = element.Scope()->scopeMap;
  if (!hasLast_ || prefix != lastPrefix_ || !map.SharesWith(lastMap_)) {
    lastMap_ = map;
    lastPrefix_ = prefix;
    lastURI_ = map.Lookup(prefix);
    hasLast_ = true;
  }
  element.namespaceURI = lastURI_;
}

// `declaration` is "xmlns" or begins with "xmlns:".
void XPathTreeBuilder::Run::Declare(XPathNode& element, View declaration, View value) {
  const View bound = DeclaredPrefix(declaration);
  const InternedURI uri = value.empty() ? nullptr : builder_.InternURI(value);
  // Maps that only this element holds are changed in place, so the ones held elsewhere let go.
  lastMap_ = {};
  hasLast_ = false;
  NamespaceScope& scope = element.OwnScope();
  const bool sameMaps = scope.attributeScopeMap.SharesWith(scope.scopeMap);
  if (sameMaps && !bound.empty()) {
    scope.attributeScopeMap = {};
    scope.scopeMap.Set(bound, uri);
    scope.attributeScopeMap = scope.scopeMap;
  } else {
    scope.scopeMap.Set(bound, uri);
    if (!bound.empty()) scope.attributeScopeMap.Set(bound, uri);
  }
  if (!element.GetName().empty() && element.GetPrefix() == bound) element.namespaceURI = uri;
}

void XPathTreeBuilder::Run::ResolveAttributes(XPathNode& element) {
  const PrefixMap& map = element.AttributeScopeMap();
  for (XPathNode* node = element.firstChild; node != nullptr; node = node->next) {
    if (node->kind != Kind::Attribute) continue;
    const View prefix = node->GetPrefix();
    if (!prefix.empty()) node->namespaceURI = map.Lookup(prefix);
  }
}

// --- references ----------------------------------------------------------------------------------

bool XPathTreeBuilder::Run::ExpandReferences(View value, TQString& out) {
  if (!model_.ExpandEntityReferences(value, out)) return false;
  budget_.Spend(out.Length());
  return true;
}

void XPathTreeBuilder::Run::ExpandValue(XPathNode& node) {
  const View value = node.GetValue();
  if (!HasReference(value) || !ExpandReferences(value, expanded_)) return;
  expanded_.DecodeCharacterReferences();
  if (expanded_ != value) node.SetOwnValue(expanded_);
}

// `text` is the last child of its parent.
void XPathTreeBuilder::Run::ExpandText(XPathNode* text) {
  const View value = text->GetValue();
  if (!HasReference(value) || !ExpandReferences(value, expanded_)) return;
  const View expanded = expanded_;
  if (expanded.find(u'<') != View::npos && expanded.find(u'>') != View::npos) {
    if (auto content = model_.ParseContent(expanded)) {
      return SpliceContent(text, std::move(content));
    }
  } else {
    expanded_.DecodeCharacterReferences();
  }
  text->SetOwnValue(expanded_);
}

// The children of the content stand in for the text. What they declare they declare themselves, and
// declarations of the parent's own content do not reach into them.
void XPathTreeBuilder::Run::SpliceContent(XPathNode* text, std::unique_ptr<XTree> content) {
  XTreeContainer& holder = *content->root;
  XPathNode* parent = text->parent;
  const int depth = levels_.back().entityDepth + 1;
  if (depth > kEntityNesting) {
    throw TQTreeLimitError{
        TQString::Format(u"Entity references are nested more than %d deep", {kEntityNesting})};
  }
  holder.parent = parent->source->AsContainer();
  parent->RemoveChild(text);
  XPathNode::DeleteTree(text);
  builder_.entityTrees_.push_back(std::move(content));
  levels_.push_back({parent, holder.first, nullptr, depth, false});
  if (holder.first == nullptr && !holder.text.empty()) BuildText(holder);
}

// --- defaults ------------------------------------------------------------------------------------

void XPathTreeBuilder::Run::FinishAttributes(Level& level) {
  level.attributesOpen = false;
  XPathNode& element = *level.node;
  if (level.prefixedAttributes) ResolveAttributes(element);
  if (!hasDeclarations_ || element.kind != Kind::Element) return;
  level.declaration =
      model_.FindDeclaration(element.GetName(), element.namespaceURI, level.declaration);
  if (level.declaration == nullptr) return;
  defaults_.clear();
  defaultText_.Clear();
  if (!level.declaration->GetDefaults(defaults_, defaultText_)) return;
  RemovePresent(element);
  AddDefaults(element);
  if (defaultText_.IsEmpty() || HasText(*element.source)) return;
  XPathNode* text = AppendDefault(element, Kind::Text, std::move(defaultText_));
  ExpandValue(*text);
}

}  // namespace kelmora
