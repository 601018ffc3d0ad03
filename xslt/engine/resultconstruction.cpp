#include "engine/resultconstruction.h"

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

// The node whose value alone is the string value of `node`; null when texts may have to be joined.
// In a result, nodes of any kind can have children: xsl:copy puts its content under the copy.
const XPathNode* OnlyText(const XPathNode& node) {
  if (node.kind != XPathNodeKind::Element && node.kind != XPathNodeKind::Root) return &node;
  const XPathNode* only = nullptr;
  for (const XPathNode* child = node.firstChild; child != nullptr; child = child->next) {
    if (child->firstChild != nullptr || (child->IsText() && only != nullptr)) return nullptr;
    if (child->IsText()) only = child;
  }
  return only;
}

// All nodes of a result tree count alike in document order, so that a list of them keeps the order
// in which they were found. A copy comes with stamps unlike those of a node that was made.
void TakeStamps(XPathNode& top, const XPathNode& parent) {
  for (XPathNode* node = &top; node != nullptr;
       node = node->firstChild != nullptr ? node->firstChild : node->NextSkippingChildren(&top)) {
    node->documentNumber = parent.documentNumber;
    node->orderNumber = -1;
  }
}

}  // namespace

XPathNode* AppendOrDrop(XPathNode& parent, OwnedTree node) {
  if (!HasPlace(parent, *node)) return nullptr;
  TakeStamps(*node, parent);
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

namespace {

constexpr std::size_t kLongestJoined = 256;  // units; longer texts are worth a node

// The last child when a text may be added to it.
XPathNode* JoinableText(const XPathNode& parent, bool escapeOutput) {
  XPathNode* last = parent.lastChild;
  const bool isJoinable = last != nullptr && last->kind == XPathNodeKind::Text &&
                          last->escapeOutput == escapeOutput && last->firstChild == nullptr &&
                          last->GetValue().size() < kLongestJoined;
  return isJoinable ? last : nullptr;
}

}  // namespace

bool JoinText(XPathNode& parent, std::u16string_view text, bool escapeOutput) {
  XPathNode* last = JoinableText(parent, escapeOutput);
  if (last == nullptr || last->GetValue().size() + text.size() > kLongestJoined) return false;
  if (text.empty()) return true;
  const std::u16string_view present = last->GetValue();
  const auto length = static_cast<int>(present.size() + text.size());
  TQString joined;
  char16_t* units = joined.WriteBuffer(length);
  text.copy(units + present.copy(units, present.size()), text.size());
  joined.FinishWriting(length);
  last->SetOwnValue(std::move(joined));
  return true;
}

void AppendText(XPathNode& parent, const XPathNode& node, bool escapeOutput, bool joins) {
  OwnedTree text;
  TQString scratch;
  const bool mayJoin = joins && JoinableText(parent, escapeOutput) != nullptr;
  if (mayJoin && JoinText(parent, node.StringValue(scratch), escapeOutput)) return;
  const XPathNode* only = OnlyText(node);
  if (only != nullptr && only->source != nullptr && !only->HasOwnValue()) {
    text.reset(XPathNode::Make(XPathNodeKind::Text));  // shares the text of the document
    text->source = only->source;
  } else {
    text = MakeText(node.StringValue(scratch));  // exactly as long; the scratch has a wide margin
  }
  text->escapeOutput = escapeOutput;
  AppendResult(parent, std::move(text));
}

void AppendText(XPathNode& parent, const XPathValue& value, bool escapeOutput, bool joins) {
  if (value.kind == XPathValue::NodeSet && !value.nodes.empty()) {
    AppendText(parent, *FirstNode(value.nodes), escapeOutput, joins);
    return;
  }
  TQString scratch;
  const std::u16string_view view = TextOf(value, scratch);
  if (joins && JoinText(parent, view, escapeOutput)) return;
  OwnedTree text = MakeText(view);
  text->escapeOutput = escapeOutput;
  AppendResult(parent, std::move(text));
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

std::u16string_view DeclaredPrefix(const XPathNode& declaration) {
  return declaration.GetPrefix().empty() ? std::u16string_view() : declaration.GetLocalName();
}

bool TakesAttributes(const XPathNode& parent) {
  return parent.kind == XPathNodeKind::Element &&
         (parent.lastChild == nullptr || IsAttributeLike(*parent.lastChild));
}

XPathNode* BehindAttributes(const XPathNode& element) {
  XPathNode* child = element.firstChild;
  while (child != nullptr && IsAttributeLike(*child)) child = child->next;
  return child;
}

}  // namespace kelmora
