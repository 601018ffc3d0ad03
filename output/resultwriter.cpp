#include "resultwriter.h"

#include <algorithm>

#include "escape.h"
#include "tqcore/tqtext.h"

namespace kelmora {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the pending units are written first
ResultWriter::ResultWriter(const WriterInput& input)
    : Settings(input.settings),
      Indent(input.indent),
      Text(input.text),
      LineEnd(input.lineEnd),
      Encoding(input.encoding) {
  CollectCdataNames();
}

// --------------------------------------------------------------------------------------- the text

void ResultWriter::Finish() {
  FlushPending();
}

void ResultWriter::FlushPending() {
  Text.AppendAt(std::u16string_view(pending_, pendingLength_), Cursor, kGrowth);
  pendingLength_ = 0;
}

void ResultWriter::WriteLong(std::u16string_view text) {
  FlushPending();
  if (text.size() > kPendingSize) {
    Text.AppendAt(text, Cursor, kGrowth);
  } else {
    Write(text);
  }
}

void ResultWriter::LineBreak() {
  if (AtStart) {
    AtStart = false;
    return;
  }
  Write(LineEnd);
}

void ResultWriter::Tabs(int count) {
  static constexpr std::u16string_view kTabs = u"\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";
  while (count > 0) {
    const int piece = std::min(count, static_cast<int>(kTabs.size()));
    Write(kTabs.substr(0, static_cast<std::size_t>(piece)));
    count -= piece;
  }
}

void ResultWriter::EscapeText(std::u16string_view value, unsigned classes) {
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

std::u16string_view ResultWriter::ShownEncoding() const {
  return Settings.EncodingGiven ? Settings.Encoding.View() : Encoding;
}

// -------------------------------------------------------------------------------------- the nodes

// The identifiers go out as they stand, and no break follows.
void ResultWriter::WriteDoctype(std::u16string_view name) {
  Write(u"<!DOCTYPE ");
  Write(name);
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

void ResultWriter::CollectCdataNames() {
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
bool ResultWriter::IsCdataElement(const XPathNode& element) {
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

void ResultWriter::WriteCharacterData(const XPathNode& node, bool escape) {
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
    EscapeText(value, kTextEscapes);
  } else {
    Write(value);
  }
}

void ResultWriter::WriteComment(const XPathNode& comment, bool onLine) {
  if (onLine) Tabs(Depth);
  Write(u"<!--");
  EscapeText(comment.GetValue(), kTextEscapes);
  Write(u"-->");
  if (onLine) LineBreak();
}

// The value is not escaped, and the blank stands also in front of an empty one.
void ResultWriter::WriteInstruction(const XPathNode& instruction, std::u16string_view end,
                                    bool onLine) {
  if (onLine) Tabs(Depth);
  Write(u"<?");
  Write(instruction.GetName());
  Write(u" ");
  Write(instruction.GetValue());
  Write(end);
  if (onLine) LineBreak();
}

void ResultWriter::WriteNamespace(const XPathNode& declaration) {
  Write(u" ");
  Write(declaration.GetName());
  Write(u"=\"");
  Scratch = declaration.GetValue();
  Scratch.EscapeUrl();
  Write(Scratch);
  Write(u"\"");
}

}  // namespace kelmora
