// The text is made in one pass over the tree into one buffer. The writers walk by the links of the
// nodes, with a stack on the heap for what an open element has to remember, since a result may be
// nested deeper than the machine stack allows. The trap: whether an element's content is indented
// depends on all its children, so it is found out once, when the element is opened.
#include "output/outputserializer.h"

#include <algorithm>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

const XPathNode* FirstElement(const XPathNode& root) {
  const XPathNode* node = root.firstChild;
  while (node != nullptr && node->kind != XPathNodeKind::Element) node = node->next;
  return node;
}

}  // namespace

void OutputSerializer::ClearText() {
  Text.Clear();
  Cursor = 0;
  PendingLength = 0;
}

void OutputSerializer::FlushPending() {
  Text.AppendAt(std::u16string_view(Pending, PendingLength), Cursor, kGrowth);
  PendingLength = 0;
}

void OutputSerializer::WriteLong(std::u16string_view text) {
  FlushPending();
  if (text.size() > kPendingSize) {
    Text.AppendAt(text, Cursor, kGrowth);
  } else {
    Write(text);
  }
}

const TQString& OutputSerializer::Serialize(const struct OutputSettings& settings) {
  if (ResultRoot == nullptr) return Text;
  ClearText();
  Settings = settings;
  ChooseMethod();
  CollectCdataNames();
  Depth = 0;
  BlockContext = true;
  AtStart = true;
  NeedMeta = false;
  Indent = Settings.IndentGiven ? Settings.Indent : IsHtml;

  if (IsXml && !(Settings.OmitDeclarationGiven && Settings.OmitDeclaration)) WriteDeclaration();
  if (!IsText) WriteDoctype();
  if (IsXml) WriteXml(*ResultRoot);
  if (IsHtml) WriteHtml(*ResultRoot);
  if (IsText) WriteText(*ResultRoot);
  FlushPending();
  return Text;
}

void OutputSerializer::ChooseMethod() {
  IsXml = IsHtml = IsText = false;
  if (Settings.MethodGiven) {
    IsXml = EqualsIgnoringAsciiCase(Settings.Method, u"xml");
    IsHtml = EqualsIgnoringAsciiCase(Settings.Method, u"html");
    IsText = EqualsIgnoringAsciiCase(Settings.Method, u"text");
    if (IsXml || IsHtml || IsText) return;
  }
  const XPathNode* first = FirstElement(*ResultRoot);
  if (first == nullptr) {
    IsXml = true;
    Settings.SetMethod(u"xml");
    return;
  }
  bool textInFront = false;
  for (const XPathNode* node = first->previous; node != nullptr; node = node->previous) {
    if (node->kind == XPathNodeKind::Text && !IsBlank(node->GetValue())) textInFront = true;
  }
  IsHtml = !textInFront && first->namespaceURI == nullptr &&
           EqualsIgnoringAsciiCase(first->GetLocalName(), u"html");
  IsXml = !IsHtml;
  if (IsHtml) Settings.SetMethod(u"html");
}

std::u16string_view OutputSerializer::ShownEncoding() const {
  return Settings.EncodingGiven ? Settings.Encoding : Encoding;
}

void OutputSerializer::WriteDeclaration() {
  Write(u"<?xml version=\"1.0\" encoding=\"");
  Write(ShownEncoding());
  Write(u"\"");
  if (Settings.StandaloneGiven) {
    Write(Settings.Standalone ? u" standalone=\"yes\"" : u" standalone=\"no\"");
  }
  Write(u"?>");
  if (Indent) LineBreak();
}

// The identifiers go out as they stand, and no break follows.
void OutputSerializer::WriteDoctype() {
  if (!Settings.DoctypeSystemGiven && !(IsHtml && Settings.DoctypePublicGiven)) return;
  const XPathNode* first = FirstElement(*ResultRoot);
  if (first == nullptr) return;
  Write(u"<!DOCTYPE ");
  Write(IsHtml ? u"HTML" : first->GetName());
  if (Settings.DoctypePublicGiven) {
    Write(u" PUBLIC \"");
    Write(Settings.DoctypePublic);
    if (Settings.DoctypeSystemGiven) {
      Write(u"\" \"");
      Write(Settings.DoctypeSystem);
    }
  } else {
    Write(u" SYSTEM \"");
    Write(Settings.DoctypeSystem);
  }
  Write(u"\">");
}

void OutputSerializer::WriteText(const XPathNode& top) {
  const XPathNode* node = &top;
  while (node != nullptr) {
    if (node->kind == XPathNodeKind::Text) Write(node->GetValue());
    const bool descends = node->kind == XPathNodeKind::Root || node->kind == XPathNodeKind::Element;
    node = descends && node->firstChild != nullptr ? node->firstChild
                                                   : node->NextSkippingChildren(&top);
  }
}

void OutputSerializer::LineBreak() {
  if (AtStart) {
    AtStart = false;
    return;
  }
  Write(LineEnd);
}

void OutputSerializer::Tabs(int count) {
  static constexpr std::u16string_view kTabs = u"\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
  while (count > 0) {
    const int piece = std::min(count, static_cast<int>(kTabs.size()));
    Write(kTabs.substr(0, static_cast<std::size_t>(piece)));
    count -= piece;
  }
}

}  // namespace kelmora
