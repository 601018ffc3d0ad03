// Parsing a text into an XTree by one of the document grammars: whole documents, and pieces of
// them that begin with any rule.
#pragma once

#include <memory>
#include <string_view>

#include "tqcore/tqstring.h"
#include "xmltree/documentkindtable.h"
#include "xmltree/loaderror.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

// Parses `text` by the grammar of `row` from `startRule`, or from the grammar's root rule when that
// is empty, and hangs the result under a root of `rootKind`, which must be a kind of container.
// With `normalize` the tree is tidied. Null when the text does not parse; `error` then says why and
// where. The views of the tree point into `text`, which must stay as it is for as long as the tree.
[[nodiscard]] std::unique_ptr<XTree> ParseXTree(const DocumentKindRow& row, const TQString& text,
                                                std::u16string_view startRule, XTreeKind rootKind,
                                                bool normalize, LoadError& error);

// The same for a piece of text that nobody else keeps: the tree holds a copy. Pieces are expected
// to be many and small; their trees share memory, which is free when the last of them is gone. Why
// a piece does not parse is nobody's question.
[[nodiscard]] std::unique_ptr<XTree> ParseFragment(const DocumentKindRow& row,
                                                   std::u16string_view text,
                                                   std::u16string_view startRule,
                                                   XTreeKind rootKind, bool normalize);

}  // namespace kelmora
