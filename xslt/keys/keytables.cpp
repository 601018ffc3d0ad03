#include "keys/keytables.h"

namespace kelmora {

void KeyTables::Index(XPathNode* root) {
  for (auto& [name, table] : tables_) {
    if (table.IsInUse()) table.Index(root, *processor_);
  }
}

void KeyTables::Forget(const XPathNode& root) {
  for (auto& [name, table] : tables_) table.Forget(root);
}

bool KeyTables::HasKey(std::u16string_view expandedName) const {
  return tables_.contains(expandedName);
}

const XPathNodeList* KeyTables::Lookup(std::u16string_view expandedName, XPathNode* root,
                                       std::u16string_view value) {
  const auto found = tables_.find(expandedName);
  if (found == tables_.end()) return nullptr;
  found->second.Index(root, *processor_);
  return found->second.Lookup(root, value);
}

}  // namespace kelmora
