// DocumentKindTable: one row for each grammar of documents that could be loaded.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>

#include "parso/grammarruletable.h"
#include "parso/parsogrammar.h"
#include "tqcore/tqstring.h"

namespace kelmora {

struct DocumentKindRow {
  GrammarKind kind;
  std::unique_ptr<ParsoGrammar> grammar;
  GrammarRuleTable rules;
  bool cached = true;
};

class DocumentKindTable {
 public:
  // Makes the rows of the kinds 0 to 5 available. A grammar is compiled when its row is first asked
  // for; the two kinds without a grammar file get no row. With `stopOnFailure` the first of those
  // ends the fill with false and its file name in `errorText`.
  bool Fill(bool stopOnFailure, TQString& errorText);
  // Null for a kind without a row. The row lives as long as the table.
  const DocumentKindRow* Find(GrammarKind kind) const;

 private:
  mutable std::array<std::unique_ptr<DocumentKindRow>, kGrammarKindCount> rows_;
  mutable std::bitset<kGrammarKindCount> tried_;
  bool filled_ = false;
};

}  // namespace kelmora
