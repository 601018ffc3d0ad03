// The report of a failed transformation: where, what, and the frames that were active. The place is
// only worked out here: it counts in the document as written back from its tree, not in the file.
#include <algorithm>

#include "driver.h"
#include "xmltree/sourcewriter.h"

namespace kelmora {

namespace {

struct ErrorLocation {
  TQString file;
  int line = 1;
  int character = 0;
};

// Counts back from the unit at `offset` down to the unit 1. What lies beyond the end of the text
// counts as characters, so that the two numbers are always a distance that can be walked. An offset
// below 1 is the start of the first line.
void CountLineAndCharacter(std::u16string_view text, int offset, ErrorLocation& location) {
  const int end = static_cast<int>(text.size());
  if (offset >= end) location.character = offset - end + 1;
  for (int i = std::min(offset, end - 1); i >= 1; --i) {
    const char16_t unit = text[static_cast<std::size_t>(i)];
    if (unit == u'\r' || unit == u'\n') {
      ++location.line;
    } else if (location.line == 1) {
      ++location.character;
    }
  }
}

ErrorLocation LocateError(const XPathNode& node) {
  ErrorLocation location;
  if (const InternedURI file = node.BaseURI()) location.file = *file;
  XTreeNode* root = node.source;
  while (root->parent != nullptr) root = root->parent;
  TQString text;
  int length = 0;
  WriteSource(*root, text, length, 0, SourceWriteOptions());
  CountLineAndCharacter(text, node.source->sourceStart, location);
  return location;
}

}  // namespace

void Driver::ReportError(const TQXSLTError& error) const {
  if (error.Node() != nullptr && error.Node()->source != nullptr) {
    const ErrorLocation location = LocateError(*error.Node());
    WriteLine(Console::Stream::kError,
              TQString::Format(u"Error in %s at line %d character %d",
                               {location.file, location.line, location.character}));
  }
  WriteLine(Console::Stream::kError, error.Text());
  WriteLine(Console::Stream::kError, u"XSLT stack dump");
  Console::NewLineAndFlush(Console::Stream::kError);
  const std::vector<TemplateFrame*>& callStack = Processor->CallStack();
  for (auto frame = callStack.rbegin(); frame != callStack.rend(); ++frame) {
    const XPathNode* node =
        (*frame)->CallingNode != nullptr ? (*frame)->CallingNode : (*frame)->CurrentNode;
    if (node != nullptr) WriteLine(Console::Stream::kError, node->GetName());
  }
}

}  // namespace kelmora
