// The html writer. Breaks stand around block elements. BlockContext is one flag for the whole run
// and no stack: behind an element it tells whether that element, not its parent, is a block, and
// the next decision reads what the last element left.
#include <cstdint>

#include "escape.h"
#include "htmlnames.h"
#include "resultnodes.h"
#include "resultwalk.h"
#include "resultwriter.h"

namespace kelmora {

namespace {

class HtmlWriter final : public ResultWriter {
 public:
  using Level = std::uint8_t;  // traits of the element, 0 of another node, whose children they are

  explicit HtmlWriter(const WriterInput& input) : ResultWriter(input) {}

  void WriteAll(const XPathNode& root) {
    const bool hasIdentifier = Settings.DoctypeSystemGiven || Settings.DoctypePublicGiven;
    if (hasIdentifier && FirstElement(root) != nullptr) WriteDoctype(u"HTML");
    WalkResult(root, *this, Level());
    Finish();
  }

  const XPathNode* Start(const XPathNode& node, Level outer, Level& traits);
  void End(const XPathNode& node, Level traits);

 private:
  const XPathNode* StartElement(const XPathNode& element, unsigned traits);
  void EndElement(const XPathNode& element, unsigned traits, bool lastWasText);
  void WriteAttribute(const XPathNode& attribute);
  void WriteUri(std::u16string_view value);
  void WriteMeta();

  bool BlockContext = true;  // the element last started or ended is a block element
  bool NeedMeta = false;     // a head waits for its META element
};

const XPathNode* HtmlWriter::Start(const XPathNode& node, Level outer, Level& traits) {
  const bool onLine = Indent && BlockContext;
  switch (node.kind) {
    case XPathNodeKind::Element:
      traits = static_cast<Level>(HtmlElementTraits(node.GetName()));
      return StartElement(node, traits);
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      WriteCharacterData(node, node.escapeOutput && (outer & HtmlRaw) == 0);
      return nullptr;
    case XPathNodeKind::Attribute:
      WriteAttribute(node);
      return nullptr;
    case XPathNodeKind::Namespace:  // that of an element is part of its tag
      return nullptr;
    case XPathNodeKind::PI:
      WriteInstruction(node, u">", onLine);
      return nullptr;
    case XPathNodeKind::Comment:
      WriteComment(node, onLine);
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

const XPathNode* HtmlWriter::StartElement(const XPathNode& element, unsigned traits) {
  const bool isBlock = (traits & HtmlBlock) != 0;
  const bool breakBefore = BlockContext && isBlock && Indent && !HasTextChild(element);
  BlockContext = isBlock;
  if (breakBefore) {
    LineBreak();
    Tabs(Depth);
  }
  Write(u"<");
  Write(element.GetName());
  if ((traits & HtmlHead) != 0) NeedMeta = true;

  const XPathNode* child = element.firstChild;
  for (; child != nullptr && IsAttributeOrNamespace(*child); child = child->next) {
    if (child->kind == XPathNodeKind::Attribute) {
      WriteAttribute(*child);
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
    EndElement(element, traits, false);
  } else {
    Write((traits & HtmlEmpty) != 0 ? u">" : u" />");
  }
  return nullptr;
}

void HtmlWriter::End(const XPathNode& node, Level traits) {
  if (node.kind != XPathNodeKind::Element) return;
  --Depth;
  EndElement(node, traits, node.lastChild->kind == XPathNodeKind::Text);
}

void HtmlWriter::EndElement(const XPathNode& element, unsigned traits, bool lastWasText) {
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

void HtmlWriter::WriteAttribute(const XPathNode& attribute) {
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
    EscapeText(value, kHtmlAttributeEscapes);
  }
  Write(u"\"");
}

// What it escapes includes all that an attribute value must not hold.
void HtmlWriter::WriteUri(std::u16string_view value) {
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

void HtmlWriter::WriteMeta() {
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

}  // namespace

void WriteHtml(const WriterInput& input) {
  HtmlWriter(input).WriteAll(input.root);
}

}  // namespace kelmora
