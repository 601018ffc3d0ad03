// Writes an XTree back as XML source. The error report counts lines and characters in it.
#pragma once

#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

struct SourceWriteOptions {
  bool skipMarked = false;  // reserved for marked nodes
  TQString indent;          // one level of indentation
  bool collapseEmpty = true;
  bool spaceBeforeSlash = true;
  TQString newline = u"\n";
  const std::vector<TQString>* preserveNames = nullptr;  // no pretty-printing inside these
  bool pretty = false;
  bool recordPositions = false;  // each node stores the offsets that it was written at
  bool omitDeclaration = false;
};

// Appends to `text` at `cursor` and moves `cursor`. `depth` is the present nesting. Linear.
void WriteSource(XTreeNode& node, TQString& text, int& cursor, int depth,
                 const SourceWriteOptions& options);

}  // namespace kelmora
