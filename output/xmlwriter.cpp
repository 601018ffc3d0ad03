// The xml writer. Two things are decided for the children of a node together: whether each stands
// on a line of its own (BreakHere) and whether it is indented (IndentHere). In an element both go
// by Indent, and both are off as soon as one child is text; so one flag, `breakHere`, is enough.
// It is found out once, when the element is opened, since it depends on all the children.
#include "escape.h"
#include "resultnodes.h"
#include "resultwalk.h"
#include "resultwriter.h"

namespace kelmora {

namespace {

class XmlWriter final : public ResultWriter {
 public:
  using Level = bool;  // breakHere

  explicit XmlWriter(const WriterInput& input) : ResultWriter(input) {}

  void WriteAll(const XPathNode& root) {
    if (!(Settings.OmitDeclarationGiven && Settings.OmitDeclaration)) WriteDeclaration();
    const XPathNode* first = FirstElement(root);
    if (Settings.DoctypeSystemGiven && first != nullptr) WriteDoctype(first->GetName());
    WalkResult(root, *this, Indent);
    Finish();
  }

  const XPathNode* Start(const XPathNode& node, bool breakHere, bool& inner);
  void End(const XPathNode& node, bool inner);

 private:
  void WriteDeclaration();
  const XPathNode* StartElement(const XPathNode& element, bool breakHere);
  void WriteAttribute(const XPathNode& attribute);
};

// The version is always 1.0, whatever the settings say.
void XmlWriter::WriteDeclaration() {
  Write(u"<?xml version=\"1.0\" encoding=\"");
  Write(ShownEncoding());
  Write(u"\"");
  if (Settings.StandaloneGiven) {
    Write(Settings.Standalone ? u" standalone=\"yes\"" : u" standalone=\"no\"");
  }
  Write(u"?>");
  if (Indent) LineBreak();
}

const XPathNode* XmlWriter::Start(const XPathNode& node, bool breakHere, bool& inner) {
  switch (node.kind) {
    case XPathNodeKind::Element: {
      const XPathNode* content = StartElement(node, breakHere);
      if (content != nullptr) inner = Indent && !HasTextChild(node);
      return content;
    }
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      WriteCharacterData(node, node.escapeOutput);
      return nullptr;
    case XPathNodeKind::Attribute:
      WriteAttribute(node);
      return nullptr;
    case XPathNodeKind::Namespace:
      if (node.parent->kind == XPathNodeKind::Element) WriteNamespace(node);
      return nullptr;
    case XPathNodeKind::PI:
      WriteInstruction(node, u"?>", breakHere);
      return nullptr;
    case XPathNodeKind::Comment:
      WriteComment(node, breakHere);
      return nullptr;
    case XPathNodeKind::Root:
    case XPathNodeKind::XMLDeclaration:
    case XPathNodeKind::DocType:
    case XPathNodeKind::ExternalID:
    case XPathNodeKind::DTDElement:
    case XPathNodeKind::DTDAttlist:
    case XPathNodeKind::DTDEntity:
    case XPathNodeKind::DTDNotation:
      // They have no tags and pass on what holds for themselves.
      inner = breakHere && !HasTextChild(node);
      return node.firstChild;
  }
  return nullptr;
}

const XPathNode* XmlWriter::StartElement(const XPathNode& element, bool breakHere) {
  if (breakHere) {
    LineBreak();
    Tabs(Depth);
  }
  Write(u"<");
  Write(element.GetName());
  const XPathNode* child = element.firstChild;
  for (; child != nullptr && IsAttributeOrNamespace(*child); child = child->next) {
    if (child->kind == XPathNodeKind::Attribute) {
      WriteAttribute(*child);
    } else {
      WriteNamespace(*child);
    }
  }
  if (child == nullptr) {
    Write(u"/>");
    return nullptr;
  }
  Write(u">");
  ++Depth;
  return child;
}

void XmlWriter::End(const XPathNode& node, bool inner) {
  if (node.kind != XPathNodeKind::Element) return;
  --Depth;
  if (inner) {
    LineBreak();
    Tabs(Depth);
  }
  Write(u"</");
  Write(node.GetName());
  Write(u">");
}

void XmlWriter::WriteAttribute(const XPathNode& attribute) {
  Write(u" ");
  Write(attribute.GetName());
  Write(u"=\"");
  EscapeText(attribute.GetValue(), kXmlAttributeEscapes);
  Write(u"\"");
}

}  // namespace

void WriteXml(const WriterInput& input) {
  XmlWriter(input).WriteAll(input.root);
}

}  // namespace kelmora
