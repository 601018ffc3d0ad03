// ResultWriter: what the writers of all methods share: the text that they append to, breaks and
// tabs, escaped values, and the nodes that every method writes alike. A writer is made for one
// result, in the function that the row of its method names, and goes over the tree by WalkResult.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_set>

#include "output/outputsettings.h"
#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

// What a writer gets; it borrows all of it.
struct WriterInput {
  const XPathNode& root;
  const OutputSettings& settings;
  bool indent;                   // of the settings, else of the method
  std::u16string_view lineEnd;   // for breaks; those of texts stay
  std::u16string_view encoding;  // the name to show when the settings give none
  TQString& text;                // empty at first; complete when the writer returns
};

// void WriteXml(const WriterInput& input); and so on.
#define METHOD(writer, name, indents) void writer(const WriterInput& input);
#include "outputmethods.def"
#undef METHOD

class ResultWriter {
 public:
  ResultWriter(const ResultWriter&) = delete;
  ResultWriter& operator=(const ResultWriter&) = delete;

 protected:
  explicit ResultWriter(const WriterInput& input);
  ~ResultWriter() = default;

  // Everything written is in the text behind this only.
  void Finish();

  void Write(std::u16string_view text) {
    if (text.size() > kPendingSize - pendingLength_) return WriteLong(text);
    pendingLength_ += text.copy(pending_ + pendingLength_, text.size());
  }
  void LineBreak();  // the first one of a result is not written
  void Tabs(int count);

  void WriteDoctype(std::u16string_view name);
  // Text and CDATA nodes. `escape` plays no part in an element of cdata-section-elements.
  void WriteCharacterData(const XPathNode& node, bool escape);
  // `onLine`: tabs in front and a break behind.
  void WriteComment(const XPathNode& comment, bool onLine);
  void WriteInstruction(const XPathNode& instruction, std::u16string_view end, bool onLine);
  void WriteNamespace(const XPathNode& declaration);
  // `classes` of escape.h.
  void EscapeText(std::u16string_view value, unsigned classes);

  std::u16string_view ShownEncoding() const;

  const OutputSettings& Settings;
  const bool Indent;
  int Depth = 0;  // of indentation, in tabs

 private:
  void CollectCdataNames();
  bool IsCdataElement(const XPathNode& element);
  void WriteLong(std::u16string_view text);
  void FlushPending();

  static constexpr int kGrowth = 16000;  // units
  static constexpr std::size_t kPendingSize = 2048;

  TQString& Text;
  int Cursor = 0;  // length of Text
  std::size_t pendingLength_ = 0;
  bool AtStart = true;  // the next LineBreak writes nothing
  TQString Scratch;     // working copy of a value
  const std::u16string_view LineEnd;
  const std::u16string_view Encoding;
  std::unordered_set<std::u16string_view, TextHash> CdataNames;  // in Settings.CdataElements
  // Most pieces are a few units long; they gather here on their way to Text.
  char16_t pending_[kPendingSize];
};

}  // namespace kelmora
