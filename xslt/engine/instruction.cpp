#include "engine/instruction.h"

#include <cstddef>

#include "names/stylesheetindex.h"

namespace kelmora {

bool Instruction::Resume() {
  Finish();
  return true;
}

XPathNode* Instruction::Begin() {
  TemplateFrame& frame = Frame();
  frame.Resumed = true;
  frame.CallingNode = frame.LastFinished = frame.CurrentNode;
  frame.CurrentNode = nullptr;
  return frame.CallingNode;
}

TemplateFrame* Instruction::PushChild(XPathNode* node) {
  TemplateFrame& frame = Frame();
  auto* child = new TemplateFrame(&frame, OutputNode);
  child->CurrentNode = node;
  frame.Cursor = node;
  Processor->PushFrame(child);
  return child;
}

TemplateFrame* Instruction::PushChild(XPathNode* node, XPathNode* fragment) {
  TemplateFrame* child = PushChild(node);
  child->OutputParent = fragment;
  child->InFragment = true;
  return child;
}

void Instruction::RunChildren() {
  if (XPathNode* first = FirstContent(Frame().CallingNode)) PushChild(first);
}

bool Instruction::NextChild() {
  XPathNode* cursor = Frame().Cursor;
  XPathNode* next = cursor != nullptr ? NextContent(cursor) : nullptr;
  if (next != nullptr) {
    PushChild(next);
  } else {
    EndChildren();
  }
  return true;
}

void Instruction::EndChildren() {
  Frame().Cursor = nullptr;
  Finish();
}

void Instruction::Finish() {
  XPathNode* finished = Frame().CallingNode;
  Processor->PopFrame();
  if (!Processor->CallStack().empty()) Frame().LastFinished = finished;
}

XPathNode* Instruction::MakeFragmentRoot() const {
  XPathNode* root = XPathNode::Make(XPathNodeKind::Root);
  NamespaceScope& scope = root->OwnScope();
  scope.scopeMap = OutputNode->ScopeMap();
  scope.attributeScopeMap = OutputNode->AttributeScopeMap();
  return root;
}

XsltElement Instruction::CodeOf(const XPathNode* node) const {
  return Processor->Index->Code(node);
}

namespace {

bool IsAside(const XPathNode& node) {  // runs nowhere
  return node.kind == XPathNodeKind::Namespace || node.kind == XPathNodeKind::PI ||
         node.kind == XPathNodeKind::Comment;
}

}  // namespace

XPathNode* FirstContent(const XPathNode* node) {
  XPathNode* child = node->firstChild;
  while (child != nullptr && (child->kind == XPathNodeKind::Attribute || IsAside(*child))) {
    child = child->next;
  }
  return child;
}

XPathNode* FirstLiteral(const XPathNode* node) {
  XPathNode* child = node->firstChild;
  while (child != nullptr && IsAside(*child)) child = child->next;
  return child;
}

XPathNode* NextContent(const XPathNode* node) {
  XPathNode* sibling = node->next;
  while (sibling != nullptr && IsAside(*sibling)) sibling = sibling->next;
  return sibling;
}

bool IsWithin(const XPathNode* ancestor, const XPathNode* node) {
  for (const XPathNode* up = node->parent; up != nullptr; up = up->parent) {
    if (up == ancestor) return true;
  }
  return false;
}

XPathNode* FindAttribute(const XPathNode* node, std::u16string_view localName) {
  for (XPathNode* child = node->firstChild; child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Attribute && child->namespaceURI == nullptr &&
        child->GetLocalName() == localName) {
      return child;
    }
  }
  return nullptr;
}

}  // namespace kelmora
