#include "xmltree/documentmanager.h"

#include <utility>

namespace kelmora {

DocumentManager::DocumentManager(const DocumentKindTable& kinds) : kinds_(kinds) {}
DocumentManager::~DocumentManager() = default;

std::unique_ptr<LoadedDocument> DocumentManager::CreateDocument() const {
  return std::make_unique<LoadedDocument>(kinds_);
}

LoadRecord* DocumentManager::AdoptRecord(std::unique_ptr<LoadRecord> record) {
  LoadRecord* adopted = record.get();
  records_.emplace(adopted, std::move(record));
  if (const XTreeNode* root = adopted->Root()) {
    byRoot_.emplace(root, adopted);
    byPath_[adopted->path.View()].push_back(adopted);
  }
  return adopted;
}

LoadRecord* DocumentManager::FindByPath(std::u16string_view path, GrammarKind kind) const {
  const auto loads = byPath_.find(path);
  if (loads == byPath_.end()) return nullptr;
  for (LoadRecord* record : loads->second) {
    if (record->kind == kind) return record;
  }
  return nullptr;
}

LoadRecord* DocumentManager::FindByRoot(const XTreeNode* root) const {
  const auto record = byRoot_.find(root);
  return record != byRoot_.end() ? record->second : nullptr;
}

void DocumentManager::RemoveRecord(LoadRecord* record) {
  if (const XTreeNode* root = record->Root()) {
    byRoot_.erase(root);
    // The index points into the path of a record, so its entry is made anew for those that stay.
    auto loads = byPath_.extract(record->path.View());
    std::erase(loads.mapped(), record);
    if (!loads.mapped().empty()) {
      byPath_.emplace(loads.mapped().front()->path.View(), std::move(loads.mapped()));
    }
  }
  records_.erase(record);
}

void DocumentManager::ClearAll() {
  byPath_.clear();
  byRoot_.clear();
  records_.clear();
}

}  // namespace kelmora
