// Text, CDATA sections and escaped values, as the xml and the html writer share them.
#include "escape.h"
#include "output/outputserializer.h"
#include "tqcore/tqtext.h"

namespace kelmora {

void OutputSerializer::CollectCdataNames() {
  CdataNames.clear();
  if (!Settings.CdataElementsGiven) return;
  std::u16string_view rest = Settings.CdataElements.View();
  while (true) {
    const std::size_t start = rest.find_first_not_of(kXmlSpaces);
    if (start == std::u16string_view::npos) return;
    rest.remove_prefix(start);
    const std::u16string_view name = rest.substr(0, rest.find_first_of(kXmlSpaces));
    CdataNames.insert(name);
    rest.remove_prefix(name.size());
  }
}

// The names are "uri:local", or the name alone for an element in no namespace.
bool OutputSerializer::IsCdataElement(const XPathNode& element) {
  if (element.namespaceURI == nullptr) {
    const std::u16string_view name = element.GetName();
    return PrefixOf(name).empty() && CdataNames.contains(name);
  }
  int length = 0;
  Scratch.AppendAt(element.namespaceURI->View(), length, 0);
  Scratch.AppendUnitAt(u':', length, 0);
  Scratch.AppendAt(element.GetLocalName(), length, 0);
  return CdataNames.contains(Scratch.View());
}

void OutputSerializer::WriteCharacterData(const XPathNode& node, bool escape) {
  std::u16string_view value = node.GetValue();
  if (!CdataNames.empty() && node.parent != nullptr && IsCdataElement(*node.parent)) {
    constexpr std::u16string_view kSectionEnd = u"]]>";
    Write(u"<![CDATA[");
    for (std::size_t end; (end = value.find(kSectionEnd)) != std::u16string_view::npos;) {
      Write(value.substr(0, end));
      Write(u"]]]]><![CDATA[>");
      value.remove_prefix(end + kSectionEnd.size());
    }
    Write(value);
    Write(kSectionEnd);
    return;
  }
  if (escape) {
    EscapeText(value, false, false, true);
  } else {
    Write(value);
  }
}

void OutputSerializer::EscapeText(std::u16string_view value, bool quoted, bool encodeBreaks,
                                  bool escapeAmp) {
  unsigned classes = EscapeAngle;
  if (quoted) classes |= EscapeQuote;
  if (encodeBreaks) classes |= EscapeBreak;
  if (escapeAmp) classes |= EscapeAmp;
  std::size_t start = 0;
  while (true) {
    const std::size_t found = FindEscapable(value, start, classes);
    if (found > start) Write(value.substr(start, found - start));
    if (found == value.size()) return;
    const std::u16string_view reference = EntityReference(value[found]);
    Write(reference.empty() ? u"&#xA;" : reference);
    const bool isPair = value.substr(found).starts_with(u"\r\n");
    start = found + (isPair ? 2 : 1);
  }
}

void OutputSerializer::WriteComment(const XPathNode& comment) {
  Write(u"<!--");
  EscapeText(comment.GetValue(), false, false, true);
  Write(u"-->");
}

void OutputSerializer::WriteNamespace(const XPathNode& declaration) {
  Write(u" ");
  Write(declaration.GetName());
  Write(u"=\"");
  Scratch = declaration.GetValue();
  Scratch.EscapeUrl();
  Write(Scratch);
  Write(u"\"");
}

}  // namespace kelmora
