#include "resultconstruction.h"

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

bool HasPlace(const XPathNode& parent, const XPathNode& node) {
  if (IsAttributeLike(parent)) return node.IsText();
  if (!IsAttributeLike(node)) return true;
  if (parent.kind == XPathNodeKind::Root && node.kind == XPathNodeKind::Attribute) return false;
  return parent.lastChild == nullptr || IsAttributeLike(*parent.lastChild);
}

// The first node in document order, wherever that stands in the list.
const XPathNode* FirstNode(const XPathNodeList& nodes) {
  const XPathNode* first = nodes.front().node;
  for (const XPathNodeRef& entry : nodes) {
    if (DocumentOrderLess(*entry.node, *first)) first = entry.node;
  }
  return first;
}

// The node whose value alone is the string value of `node`; null when texts have to be joined.
const XPathNode* OnlyText(const XPathNode& node) {
  if (node.kind != XPathNodeKind::Element && node.kind != XPathNodeKind::Root) return &node;
  const XPathNode* child = BehindAttributes(node);
  return child != nullptr && child->next == nullptr && child->IsText() ? child : nullptr;
}

}  // namespace

XPathNode* AppendOrDrop(XPathNode& parent, OwnedTree node) {
  if (!HasPlace(parent, *node)) return nullptr;
  node->documentNumber = parent.documentNumber;
  parent.AppendChild(node.get());
  return node.release();
}

XPathNode* AppendResult(XPathNode& parent, OwnedTree node) {
  XPathNode* appended = AppendOrDrop(parent, std::move(node));
  if (appended == nullptr) throw TQXTreeException{1};
  return appended;
}

OwnedTree MakeResultNode(XPathNodeKind kind, TQString name, TQString value) {
  OwnedTree node(XPathNode::Make(kind));
  node->SetOwnName(std::move(name));
  node->SetOwnValue(std::move(value));
  return node;
}

OwnedTree ShallowCopy(const XPathNode& node) {
  OwnedTree copy(XPathNode::Make(node.kind));
  copy->source = node.source;
  copy->namespaceURI = node.namespaceURI;
  copy->escapeOutput = node.escapeOutput;
  copy->synthetic = node.synthetic;
  copy->orderNumber = 0;
  copy->documentNumber = 0;
  copy->SetBaseURI(node.OwnBaseURI());
  if (node.HasOwnName()) copy->SetOwnName(node.GetName());
  if (node.HasOwnValue()) copy->SetOwnValue(node.GetValue());
  return copy;
}

OwnedTree MakeText(TQString value) {
  OwnedTree text(XPathNode::Make(XPathNodeKind::Text));
  text->SetOwnValue(std::move(value));
  return text;
}

OwnedTree MakeText(const XPathValue& value) {
  if (value.kind == XPathValue::NodeSet && !value.nodes.empty()) {
    const XPathNode* node = FirstNode(value.nodes);
    const XPathNode* text = OnlyText(*node);
    if (text != nullptr && text->source != nullptr && !text->HasOwnValue()) {
      OwnedTree shared(XPathNode::Make(XPathNodeKind::Text));
      shared->source = text->source;
      return shared;
    }
    TQString scratch;
    const std::u16string_view view = node->StringValue(scratch);
    return MakeText(scratch.IsEmpty() ? TQString(view) : std::move(scratch));
  }
  return MakeText(ToString(value));
}

OwnedTree MakeDeclaration(std::u16string_view prefix, InternedURI uri) {
  TQString name(u"xmlns");
  if (!prefix.empty()) {
    name += u':';
    name += prefix;
  }
  return MakeResultNode(XPathNodeKind::Namespace, std::move(name),
                        uri != nullptr ? *uri : TQString());
}

void DeclareOn(XPathNode& element, std::u16string_view prefix, InternedURI uri) {
  AppendResult(element, MakeDeclaration(prefix, uri));
  NamespaceScope& scope = element.OwnScope();
  scope.scopeMap.Set(prefix, uri);
  if (!prefix.empty()) scope.attributeScopeMap.Set(prefix, uri);
}

XPathNode* BehindAttributes(const XPathNode& element) {
  XPathNode* child = element.firstChild;
  while (child != nullptr && IsAttributeLike(*child)) child = child->next;
  return child;
}

}  // namespace kelmora
