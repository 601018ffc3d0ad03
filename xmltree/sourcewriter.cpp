// One walk by links: Start writes what stands in front of a node's children, End what stands behind
// them. What a start tag or a DOCTYPE shows in front, attributes and the external identifier, is
// written there at once and passed over among the children.
#include "xmltree/sourcewriter.h"

#include <algorithm>

#include "sourcewriterrun.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

// Written in the head of its parent.
bool StandsInHead(const XTreeNode& node) {
  return node.kind == XTreeKind::Attribute || node.kind == XTreeKind::ExternalID;
}

XTreeNode* SkipHead(XTreeNode* node) {
  while (node != nullptr && StandsInHead(*node)) node = node->next;
  return node;
}

bool IsDocument(const XTreeNode& node) {
  return node.kind == XTreeKind::Document || node.kind == XTreeKind::Entity ||
         node.kind == XTreeKind::DTDDocument;
}

bool IsCharacterData(const XTreeNode& node) {
  return node.kind == XTreeKind::Text || node.kind == XTreeKind::CData;
}

}  // namespace

void WriteSource(XTreeNode& node, TQString& text, int& cursor, int depth,
                 const SourceWriteOptions& options) {
  SourceWriter(text, cursor, depth, options).WriteTree(node);
}

void SourceWriter::WriteTree(XTreeNode& top) {
  XTreeNode* node = &top;
  while (true) {
    MarkStart(*node);
    XTreeNode* next = Start(*node);
    if (next != nullptr && node->kind == XTreeKind::Element) ++depth_;
    while (next == nullptr) {
      End(*node);
      MarkEnd(*node);
      if (node == &top) return;
      XTreeContainer& parent = *node->parent;
      if (IsDocument(parent)) Write(options_.newline);
      next = SkipHead(node->next);
      if (next == nullptr && parent.kind == XTreeKind::Element) --depth_;
      if (next == nullptr) node = &parent;
    }
    StartLine(*next);
    node = next;
  }
}

XTreeNode* SourceWriter::Start(XTreeNode& node) {
  switch (node.kind) {
    case XTreeKind::Document:
    case XTreeKind::Entity:
    case XTreeKind::DTDDocument:
      return node.FirstChild();
    case XTreeKind::XMLTag:
      WriteXmlTag(*node.AsContainer());
      return nullptr;
    case XTreeKind::Element:
      return StartElement(*node.AsContainer());
    case XTreeKind::Attribute:
      WriteAttribute(node);
      return nullptr;
    case XTreeKind::Text:
      Write(node.GetText());
      return nullptr;
    case XTreeKind::CData:
      Write(u"<![CDATA[");
      Write(node.GetText());
      Write(u"]]>");
      return nullptr;
    case XTreeKind::Comment:
      Write(u"<!--");
      Write(node.GetText());
      Write(u"-->");
      return nullptr;
    case XTreeKind::PI:
      Write(u"<?");
      Write(node.GetName());
      if (!node.GetText().empty()) Write(u" ");
      Write(node.GetText());
      Write(u"?>");
      return nullptr;
    case XTreeKind::DocType:
      return StartDocType(*node.AsContainer());
    case XTreeKind::ExternalID:
      Write(node.GetName());
      Write(u" ");
      Write(node.GetText());
      return nullptr;
    case XTreeKind::DTDElement:
      return StartDtdElement(static_cast<XTreeDTDElement&>(node));
    case XTreeKind::DTDAttlist:
      return StartAttlist(static_cast<XTreeDTDAttlist&>(node));
    case XTreeKind::DTDEntity:
      WriteDeclaration(u"<!ENTITY ", node);
      return nullptr;
    case XTreeKind::DTDNotation:
      WriteDeclaration(u"<!NOTATION ", node);
      return nullptr;
    case XTreeKind::Any:
      return nullptr;
  }
  return nullptr;
}

void SourceWriter::End(XTreeNode& node) {
  switch (node.kind) {
    case XTreeKind::Element:
      return EndElement(*node.AsContainer());
    case XTreeKind::DocType:
      return Write(SkipHead(node.FirstChild()) != nullptr ? u"]>" : u">");
    case XTreeKind::DTDElement:
      return EndDtdElement(static_cast<XTreeDTDElement&>(node));
    case XTreeKind::DTDAttlist:
      return EndAttlist(static_cast<XTreeDTDAttlist&>(node));
    case XTreeKind::Document:
    case XTreeKind::Entity:
    case XTreeKind::DTDDocument:
    case XTreeKind::XMLTag:
    case XTreeKind::Attribute:
    case XTreeKind::Text:
    case XTreeKind::CData:
    case XTreeKind::Comment:
    case XTreeKind::PI:
    case XTreeKind::ExternalID:
    case XTreeKind::DTDEntity:
    case XTreeKind::DTDNotation:
    case XTreeKind::Any:
      return;
  }
}

// --- elements ------------------------------------------------------------------------------------

XTreeNode* SourceWriter::StartElement(XTreeContainer& element) {
  if (options_.pretty && preserved_ == nullptr && IsPreserved(element)) preserved_ = &element;
  Write(u"<");
  Write(element.name);
  XTreeNode* content = nullptr;
  for (XTreeNode* child = element.first; child != nullptr; child = child->next) {
    if (child->kind == XTreeKind::Attribute) {
      Write(u" ");
      WriteAttribute(*child);
    } else if (content == nullptr) {
      content = child;
    }
  }
  if (content == nullptr && element.text.empty() && options_.collapseEmpty) {
    Write(options_.spaceBeforeSlash ? u" />" : u"/>");
    return nullptr;
  }
  Write(u">");
  Write(element.text);
  return content;
}

void SourceWriter::EndElement(const XTreeContainer& element) {
  const XTreeNode* content = SkipHead(element.first);
  if (content != nullptr || !element.text.empty() || !options_.collapseEmpty) {
    while (content != nullptr && (IsCharacterData(*content) || StandsInHead(*content))) {
      content = content->next;
    }
    if (IsPretty() && content != nullptr) WriteIndent(depth_);
    Write(u"</");
    Write(element.name);
    Write(u">");
  }
  if (preserved_ == &element) preserved_ = nullptr;
}

// What pretty-printing puts in front of a child of an element.
void SourceWriter::StartLine(const XTreeNode& child) {
  const bool isContent = child.parent->kind == XTreeKind::Element && !IsCharacterData(child);
  if (isContent && IsPretty()) WriteIndent(depth_);
}

bool SourceWriter::IsPreserved(const XTreeNode& element) const {
  if (options_.preserveNames == nullptr) return false;
  return std::ranges::any_of(*options_.preserveNames,
                             [&](const TQString& name) { return name == element.GetName(); });
}

void SourceWriter::WriteXmlTag(const XTreeContainer& tag) {
  if (options_.omitDeclaration) return;
  Write(u"<?xml");
  for (const View name : {u"version", u"encoding", u"standalone"}) {
    for (XTreeNode* child = tag.first; child != nullptr; child = child->next) {
      if (child->kind != XTreeKind::Attribute || child->GetName() != name) continue;
      Write(u" ");
      WriteAttribute(*child);
    }
  }
  Write(u"?>");
}

void SourceWriter::WriteAttribute(XTreeNode& attribute) {
  MarkStart(attribute);
  Write(attribute.GetName());
  Write(u"=");
  WriteQuoted(attribute.GetText());
  MarkEnd(attribute);
}

// --- pieces --------------------------------------------------------------------------------------

void SourceWriter::WriteQuoted(View text) {
  const View quote = text.find(u'"') == View::npos ? u"\"" : u"'";
  Write(quote);
  Write(text);
  Write(quote);
}

void SourceWriter::WriteIndent(int depth) {
  Write(options_.newline);
  for (int level = 0; level < depth; ++level) Write(options_.indent);
}

void SourceWriter::MarkStart(XTreeNode& node) const {
  if (options_.recordPositions) node.sourceStart = cursor_;
}

void SourceWriter::MarkEnd(XTreeNode& node) const {
  if (options_.recordPositions) node.sourceEnd = cursor_;
}

}  // namespace kelmora
