// Tidying an XTree: attributes to the front, adjacent texts merged, and a text that is an element's
// whole content moved into the element.
//
// Texts that stand side by side in the source are one stretch of the parsed buffer, so that merging
// them only widens a view. Where something was left out between them, as the blanks between two
// parameter entity references are, a run is joined once, in the tree's own memory.
#include <cstring>

#include "xmltree/xtreenode.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kSectionStart = u"<![";

bool MergesTexts(XTreeKind kind) {
  return kind == XTreeKind::Element || kind == XTreeKind::DTDDocument ||
         kind == XTreeKind::DocType || kind == XTreeKind::DTDAttlist;
}

// A text behind `text` that is merged into it: a marked section stays by itself.
XTreeText* MergePartner(const XTreeText& text) {
  if (text.next == nullptr || text.next->kind != XTreeKind::Text) return nullptr;
  auto* partner = static_cast<XTreeText*>(text.next);
  const bool apart =
      text.text.starts_with(kSectionStart) || partner->text.starts_with(kSectionStart);
  return apart ? nullptr : partner;
}

View JoinRun(const XTreeText& head, XTree& tree) {
  std::u16string joined(head.text);
  const XTreeNode* text = head.next;
  for (; text != nullptr && text->kind == XTreeKind::Text; text = text->next) {
    if (text->GetText().starts_with(kSectionStart)) break;
    joined += text->GetText();
  }
  return tree.Keep(joined);
}

void MergeTexts(XTreeContainer& container, XTree& tree) {
  for (XTreeNode* child = container.first; child != nullptr; child = child->next) {
    if (child->kind != XTreeKind::Text) continue;
    auto& head = static_cast<XTreeText&>(*child);
    while (XTreeText* partner = MergePartner(head)) {
      if (head.text.data() + head.text.size() == partner->text.data()) {
        head.text = View(head.text.data(), head.text.size() + partner->text.size());
        container.EraseChild(partner);
        continue;
      }
      head.text = JoinRun(head, tree);
      while (XTreeText* joined = MergePartner(head)) container.EraseChild(joined);
    }
  }
}

// An external entity that is text alone keeps the text as a child.
void SettleOwnText(XTreeContainer& container, XTree& tree) {
  XTreeNode* first = container.first;
  if (first == nullptr || container.kind == XTreeKind::Entity) return;
  if (container.text.empty()) {
    if (container.childCount != 1 || first->kind != XTreeKind::Text) return;
    container.text = first->GetText();
    container.EraseChild(first);
    return;
  }
  if (first->kind == XTreeKind::Text) {
    std::u16string joined(container.text);
    joined += first->GetText();
    first->SetText(tree.Keep(joined));
  } else {
    auto* text = tree.Make<XTreeText>();
    text->text = container.text;
    container.InsertChild(first, text);
  }
  container.text = {};
}

}  // namespace

void XTreeNode::Normalize(XTree& tree) {
  XTreeContainer* container = AsContainer();
  if (container == nullptr || container->first == nullptr) return;
  const bool isDtd = kind == XTreeKind::DTDDocument || kind == XTreeKind::DocType;
  if (kind == XTreeKind::DocType) {
    container->GroupChildren(XTreeKind::ExternalID, container->first);
  }
  if (!isDtd) container->GroupChildren(XTreeKind::Attribute, container->first);
  if (MergesTexts(kind)) MergeTexts(*container, tree);
  if (!isDtd) SettleOwnText(*container, tree);
  if (kind == XTreeKind::Document || kind == XTreeKind::Entity || kind == XTreeKind::DTDDocument) {
    container->GroupChildren(XTreeKind::XMLTag, container->first);
  }
  if (kind == XTreeKind::Document || kind == XTreeKind::Entity) {
    container->GroupChildren(XTreeKind::DocType, container->first, XTreeKind::Element);
  }
}

void XTreeNode::NormalizeTree(XTree& tree) {
  XTreeNode* node = this;
  while (true) {
    node->Normalize(tree);
    if (XTreeNode* child = node->FirstChild()) {
      node = child;
      continue;
    }
    while (node != this && node->next == nullptr) node = node->parent;
    if (node == this) return;
    node = node->next;
  }
}

}  // namespace kelmora
