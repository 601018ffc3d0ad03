// OutputSerializer turns a result tree into the text of the result, in one pass over the tree into
// one buffer: it chooses the method, and the writer of that method does the rest. Neither knows of
// encodings: no character reference is written for a character outside ASCII.
#pragma once

#include "output/outputmethod.h"
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
  void ClearText() { Text.Clear(); }
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
  const OutputMethod& ChooseMethod();

  TQString Text;
  XPathNode* ResultRoot = nullptr;
  struct OutputSettings Settings;
  TQString LineEnd = u"\n";
  TQString Encoding = u"UTF-8";
};

}  // namespace kelmora
