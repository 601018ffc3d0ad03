// The html writer. Breaks stand around block elements. BlockContext is one flag for the whole run
// and no stack: behind an element it tells whether that element, not its parent, is a block, and
// the next decision reads what the last element left.
#include <cstdint>
#include <vector>

#include "escape.h"
#include "htmlnames.h"
#include "output/outputserializer.h"
#include "resultnodes.h"

namespace kelmora {

void OutputSerializer::WriteHtml(const XPathNode& top) {
  std::vector<std::uint8_t> open;  // traits of the nodes whose content is being written
  const XPathNode* node = &top;
  while (true) {
    const bool inRaw = !open.empty() && (open.back() & HtmlRaw) != 0;
    unsigned traits = 0;
    if (const XPathNode* content = StartHtml(*node, !inRaw, traits)) {
      open.push_back(static_cast<std::uint8_t>(traits));
      node = content;
      continue;
    }
    while (node != &top && node->next == nullptr) {
      node = node->parent;
      EndHtml(*node, open.back());
      open.pop_back();
    }
    if (node == &top) return;
    node = node->next;
  }
}

// Writes a leaf whole; of an element the start tag, or all of it when it has no content. Returns
// the first child that is still to be written, null without one, and the element's traits.
const XPathNode* OutputSerializer::StartHtml(const XPathNode& node, bool escapeText,
                                             unsigned& traits) {
  const bool onLine = Indent && BlockContext;
  switch (node.kind) {
    case XPathNodeKind::Element:
      return StartHtmlElement(node, traits);
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      WriteCharacterData(node, escapeText && node.escapeOutput);
      return nullptr;
    case XPathNodeKind::Attribute:
      WriteHtmlAttribute(node);
      return nullptr;
    case XPathNodeKind::Namespace:  // that of an element is part of its tag
      return nullptr;
    case XPathNodeKind::PI:
      if (onLine) Tabs(Depth);
      Write(u"<?");
      Write(node.GetName());
      Write(u" ");
      Write(node.GetValue());
      Write(u">");
      if (onLine) LineBreak();
      return nullptr;
    case XPathNodeKind::Comment:
      if (onLine) Tabs(Depth);
      WriteComment(node);
      if (onLine) LineBreak();
      return nullptr;
    case XPathNodeKind::XMLDeclaration:
      return nullptr;
    case XPathNodeKind::Root:
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

const XPathNode* OutputSerializer::StartHtmlElement(const XPathNode& element, unsigned& traits) {
  const std::u16string_view name = element.GetName();
  traits = HtmlElementTraits(name);
  const bool isBlock = (traits & HtmlBlock) != 0;
  const bool breakBefore = BlockContext && isBlock && Indent && !HasTextChild(element);
  BlockContext = isBlock;
  if (breakBefore) {
    LineBreak();
    Tabs(Depth);
  }
  Write(u"<");
  Write(name);
  if ((traits & HtmlHead) != 0) NeedMeta = true;

  const XPathNode* child = element.firstChild;
  for (; child != nullptr && IsAttributeOrNamespace(*child); child = child->next) {
    if (child->kind == XPathNodeKind::Attribute) {
      WriteHtmlAttribute(*child);
    } else {
      WriteNamespace(*child);
    }
  }
  if (child != nullptr) {
    Write(u">");
    WriteMeta();
    ++Depth;
    return child;
  }
  if ((traits & HtmlNonEmpty) != 0) {
    Write(u">");
    WriteMeta();
    EndHtmlElement(element, traits, false);
  } else {
    Write((traits & HtmlEmpty) != 0 ? u">" : u" />");
  }
  return nullptr;
}

void OutputSerializer::EndHtml(const XPathNode& node, unsigned traits) {
  if (node.kind != XPathNodeKind::Element) return;
  --Depth;
  EndHtmlElement(node, traits, node.lastChild->kind == XPathNodeKind::Text);
}

void OutputSerializer::EndHtmlElement(const XPathNode& element, unsigned traits, bool lastWasText) {
  if ((traits & HtmlEmpty) == 0) {
    const bool breakEnd = BlockContext && !lastWasText && Indent;
    if (breakEnd) {
      LineBreak();
      Tabs(Depth);
    }
    Write(u"</");
    Write(element.GetName());
    Write(u">");
  }
  BlockContext = (traits & HtmlBlock) != 0;
}

void OutputSerializer::WriteHtmlAttribute(const XPathNode& attribute) {
  const std::u16string_view name = attribute.GetName();
  const std::u16string_view value = attribute.GetValue();
  const unsigned traits = HtmlAttributeTraits(name);
  Write(u" ");
  Write(name);
  if ((traits & HtmlBoolean) != 0) return;
  Write(u"=\"");
  if ((traits & HtmlUri) != 0 && IsPrintableAscii(value)) {
    WriteUri(value);
  } else {
    EscapeText(value, true, false, false);
  }
  Write(u"\"");
}

// What it escapes includes all that an attribute value must not hold.
void OutputSerializer::WriteUri(std::u16string_view value) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  std::size_t start = 0;
  while (true) {
    const std::size_t found = FindEscapable(value, start, EscapeURL);
    Write(value.substr(start, found - start));
    if (found == value.size()) return;
    const char16_t unit = value[found];
    const char16_t escaped[] = {u'%', kDigits[unit >> 4], kDigits[unit & 0xF]};
    Write(std::u16string_view(escaped, 3));
    start = found + 1;
  }
}

void OutputSerializer::WriteMeta() {
  if (!NeedMeta) return;
  NeedMeta = false;
  if (Indent) {
    LineBreak();
    Tabs(Depth + 1);
  }
  Write(u"<META http-equiv=\"Content-Type\" content=\"text/html; charset=");
  Write(ShownEncoding());
  Write(u"\">");
}

}  // namespace kelmora
