#include "result/literalinstruction.h"

#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

// From `node` on, the first sibling that runs: attributes of XSLT do not, but for attribute sets.
XPathNode* SkipXsltAttributes(XPathNode* node) {
  while (node != nullptr && node->kind == XPathNodeKind::Attribute &&
         node->namespaceURI != nullptr && IsXsltURI(node->namespaceURI) &&
         !NamesAttributeSets(*node)) {
    node = NextContent(node);
  }
  return node;
}

}  // namespace

bool LiteralInstruction::Execute() {
  XPathNode* node = Begin();
  if (ElementCode == XsltElement::PreserveSpace || ElementCode == XsltElement::StripSpace) {
    return true;
  }
  TemplateFrame& frame = Frame();
  if (Record != nullptr) {
    const auto& record = static_cast<const LiteralRecord&>(*Record);
    if (!record.ExcludedPrefixes.empty()) AddTo(frame.ExcludedURIs, record.ExcludedPrefixes);
    if (!record.ExtensionPrefixes.empty()) AddTo(frame.ExtensionURIs, record.ExtensionPrefixes);
  }
  if (node->namespaceURI != nullptr && Contains(frame.ExtensionURIs, node->namespaceURI)) {
    IsExtension = true;
    RunFallback(*node);
    return true;
  }

  const bool isLeaf = node->firstChild == nullptr;
  const bool isJoined = isLeaf && node->IsText() && JoinsTexts() &&
                        JoinText(*OutputNode, node->GetValue(), node->escapeOutput);
  if (isJoined) return true;
  CopyResultNode(*node, !isLeaf, true);
  if (node->kind != XPathNodeKind::Element) return true;
  if (XPathNode* next = SkipXsltAttributes(FirstLiteral(node))) PushChild(next);
  return true;
}

void LiteralInstruction::RunFallback(const XPathNode& element) {
  for (XPathNode* child = FirstContent(&element); child != nullptr; child = NextContent(child)) {
    if (CodeOf(child) == XsltElement::Fallback) {
      PushChild(child);
      return;
    }
  }
}

bool LiteralInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  XPathNode* next =
      cursor != nullptr && !IsExtension ? SkipXsltAttributes(NextContent(cursor)) : nullptr;
  if (next != nullptr) {
    PushChild(next);
  } else {
    EndChildren();
  }
  return true;
}

}  // namespace kelmora
