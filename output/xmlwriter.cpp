// The xml writer. Two things are decided for the children of a node together: whether each stands
// on a line of its own (BreakHere) and whether it is indented (IndentHere). In an element both go
// by Indent, and both are off as soon as one child is text; so one flag, `breakHere`, is enough.
#include <vector>

#include "output/outputserializer.h"
#include "resultnodes.h"

namespace kelmora {

void OutputSerializer::WriteXml(const XPathNode& top) {
  std::vector<bool> outer;  // breakHere of the children of each open node's parent
  bool breakHere = Indent;
  const XPathNode* node = &top;
  while (true) {
    if (const XPathNode* content = StartXml(*node, breakHere)) {
      outer.push_back(breakHere);
      // A root only passes on what holds for itself; it has no tags to come back for.
      const bool allowed = node->kind == XPathNodeKind::Element ? Indent : breakHere;
      breakHere = allowed && !HasTextChild(*node);
      node = content;
      continue;
    }
    while (node != &top && node->next == nullptr) {
      node = node->parent;
      EndXml(*node, breakHere);
      breakHere = outer.back();
      outer.pop_back();
    }
    if (node == &top) return;
    node = node->next;
  }
}

// Writes a leaf whole; of an element the start tag, or all of it when it has no content. Returns
// the first child that is still to be written, null without one.
const XPathNode* OutputSerializer::StartXml(const XPathNode& node, bool breakHere) {
  switch (node.kind) {
    case XPathNodeKind::Element: {
      if (breakHere) {
        LineBreak();
        Tabs(Depth);
      }
      Write(u"<");
      Write(node.GetName());
      const XPathNode* child = node.firstChild;
      for (; child != nullptr && IsAttributeOrNamespace(*child); child = child->next) {
        StartXml(*child, false);
      }
      if (child == nullptr) {
        Write(u"/>");
        return nullptr;
      }
      Write(u">");
      ++Depth;
      return child;
    }
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      WriteCharacterData(node, node.escapeOutput);
      return nullptr;
    case XPathNodeKind::Attribute:
      Write(u" ");
      Write(node.GetName());
      Write(u"=\"");
      EscapeText(node.GetValue(), true, true, true);
      Write(u"\"");
      return nullptr;
    case XPathNodeKind::Namespace:
      if (node.parent->kind == XPathNodeKind::Element) WriteNamespace(node);
      return nullptr;
    case XPathNodeKind::PI:
      if (breakHere) Tabs(Depth);
      Write(u"<?");
      Write(node.GetName());
      Write(u" ");
      Write(node.GetValue());
      Write(u"?>");
      if (breakHere) LineBreak();
      return nullptr;
    case XPathNodeKind::Comment:
      if (breakHere) Tabs(Depth);
      WriteComment(node);
      if (breakHere) LineBreak();
      return nullptr;
    case XPathNodeKind::Root:
    case XPathNodeKind::XMLDeclaration:
    case XPathNodeKind::DocType:
    case XPathNodeKind::ExternalID:
    case XPathNodeKind::DTDElement:
    case XPathNodeKind::DTDAttlist:
    case XPathNodeKind::DTDEntity:
    case XPathNodeKind::DTDNotation:
      return node.firstChild;
  }
  return nullptr;
}

// `breakHere` is that of the node's children.
void OutputSerializer::EndXml(const XPathNode& node, bool breakHere) {
  if (node.kind != XPathNodeKind::Element) return;
  --Depth;
  if (breakHere) {
    LineBreak();
    Tabs(Depth);
  }
  Write(u"</");
  Write(node.GetName());
  Write(u">");
}

}  // namespace kelmora
