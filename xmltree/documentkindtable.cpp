#include "xmltree/documentkindtable.h"

namespace kelmora {

bool DocumentKindTable::Fill(bool stopOnFailure, TQString& errorText) {
  filled_ = true;
  for (std::uint32_t i = 0; stopOnFailure && i < kGrammarKindCount; ++i) {
    const auto kind = static_cast<GrammarKind>(i);
    if (Find(kind) != nullptr) continue;
    errorText = KindFileName(kind);
    return false;
  }
  return true;
}

const DocumentKindRow* DocumentKindTable::Find(GrammarKind kind) const {
  if (!filled_) return nullptr;
  const auto index = static_cast<std::size_t>(kind);
  if (tried_[index]) return rows_[index].get();
  tried_[index] = true;
  auto grammar = std::make_unique<ParsoGrammar>();
  if (!grammar->InitCompiled(KindFileName(kind))) return nullptr;
  const GrammarRuleTable rules(*grammar);
  rows_[index] =
      std::make_unique<DocumentKindRow>(DocumentKindRow{kind, std::move(grammar), rules, true});
  return rows_[index].get();
}

}  // namespace kelmora
