// OutputSerializer turns a result tree into the text of the result, as xml, html or text. It knows
// nothing of encodings: no character reference is written for a character outside ASCII.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_set>

#include "output/outputsettings.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class OutputSerializer {
 public:
  OutputSerializer() = default;
  OutputSerializer(const OutputSerializer&) = delete;
  OutputSerializer& operator=(const OutputSerializer&) = delete;

  void SetResultRoot(XPathNode* root) { ResultRoot = root; }  // borrowed; null: nothing to write
  void ClearText();
  void SetLineEnd(TQString text) { LineEnd = static_cast<TQString&&>(text); }
  // The name that the declaration and the META element show when the settings give none.
  void SetEncoding(TQString name) { Encoding = static_cast<TQString&&>(name); }
  // The copy of the settings that the last Serialize worked with, the chosen method among them.
  const struct OutputSettings& OutputSettings() const { return Settings; }

  // Writes the tree and returns the text, which lives until the next ClearText or Serialize.
  // Without a result root the text stays as it is. Linear in tree and text; neither recurs nor
  // allocates for a node. A text beyond 2^31-1 units, or exhausted memory, raises TQExcept.
  const TQString& Serialize(const struct OutputSettings& settings);

 private:
  void ChooseMethod();
  void WriteDeclaration();
  void WriteDoctype();

  void WriteXml(const XPathNode& top);
  const XPathNode* StartXml(const XPathNode& node, bool breakHere);
  void EndXml(const XPathNode& node, bool breakHere);

  void WriteHtml(const XPathNode& top);
  const XPathNode* StartHtml(const XPathNode& node, bool escapeText, unsigned& traits);
  const XPathNode* StartHtmlElement(const XPathNode& element, unsigned& traits);
  void EndHtml(const XPathNode& node, unsigned traits);
  void EndHtmlElement(const XPathNode& element, unsigned traits, bool lastWasText);
  void WriteHtmlAttribute(const XPathNode& attribute);
  void WriteUri(std::u16string_view value);
  void WriteMeta();

  void WriteText(const XPathNode& top);

  // What the xml and the html writer share.
  void WriteCharacterData(const XPathNode& node, bool escape);
  void CollectCdataNames();
  bool IsCdataElement(const XPathNode& element);
  void WriteComment(const XPathNode& comment);
  void WriteNamespace(const XPathNode& declaration);
  void EscapeText(std::u16string_view value, bool quoted, bool encodeBreaks, bool escapeAmp);
  void LineBreak();
  void Tabs(int count);
  void Write(std::u16string_view text) {
    if (text.size() > kPendingSize - PendingLength) return WriteLong(text);
    PendingLength += text.copy(Pending + PendingLength, text.size());
  }
  void WriteLong(std::u16string_view text);
  void FlushPending();
  std::u16string_view ShownEncoding() const;

  static constexpr int kGrowth = 16000;  // units
  static constexpr std::size_t kPendingSize = 2048;

  TQString Text;
  int Cursor = 0;  // length of Text
  // Most pieces are a few units long; they gather here on their way to Text.
  char16_t Pending[kPendingSize];
  std::size_t PendingLength = 0;
  XPathNode* ResultRoot = nullptr;
  struct OutputSettings Settings;
  bool IsHtml = false;
  bool IsXml = true;
  bool IsText = false;
  int Depth = 0;             // of indentation, in tabs
  bool Indent = false;       // indentation is on
  bool BlockContext = true;  // html: the element last started or ended is a block element
  TQString Scratch;          // working copy of a value
  bool AtStart = true;       // the next LineBreak writes nothing
  bool NeedMeta = false;     // an html head waits for its META element
  TQString LineEnd = u"\n";
  TQString Encoding = u"UTF-8";
  std::unordered_set<std::u16string_view> CdataNames;  // the names in Settings.CdataElements
};

}  // namespace kelmora
