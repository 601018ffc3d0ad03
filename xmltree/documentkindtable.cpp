#include "xmltree/documentkindtable.h"

namespace kelmora {

bool DocumentKindTable::Fill(bool stopOnFailure, TQString& errorText) {
  filled_ = true;
  for (std::uint32_t kind = 0; stopOnFailure && kind < kGrammarKindCount; ++kind) {
    if (Find(kind) != nullptr) continue;
    errorText = KindFileName(static_cast<GrammarKind>(kind));
    return false;
  }
  return true;
}

const DocumentKindRow* DocumentKindTable::Find(std::uint32_t kind) const {
  if (!filled_ || kind >= kGrammarKindCount) return nullptr;
  if (tried_[kind]) return rows_[kind].get();
  tried_[kind] = true;
  auto grammar = std::make_unique<ParsoGrammar>(KindFileName(static_cast<GrammarKind>(kind)));
  if (!grammar->valid) return nullptr;
  const GrammarRuleTable rules(*grammar);
  rows_[kind] =
      std::make_unique<DocumentKindRow>(DocumentKindRow{kind, std::move(grammar), rules, true});
  return rows_[kind].get();
}

}  // namespace kelmora
