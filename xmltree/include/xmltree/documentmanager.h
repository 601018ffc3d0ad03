// DocumentManager owns a record for each thing that was loaded: the document with its text, and
// the tree. Both live until the record is removed or the manager dies.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "xmltree/loadeddocument.h"

namespace kelmora {

struct LoadRecord {
  std::unique_ptr<XTree> tree;
  std::unique_ptr<LoadedDocument> document;
  TQString path;
  const char16_t* lineEnd = u"\r\n";
  std::optional<GrammarKind> kind;  // none until a load sets it
  bool cached = false;              // the name is one of the program's own files

  XTreeNode* Root() const { return tree ? tree->root : nullptr; }
};

class DocumentManager {
 public:
  explicit DocumentManager(const DocumentKindTable& kinds);
  ~DocumentManager();

  const DocumentKindTable& Kinds() const { return kinds_; }
  std::unique_ptr<LoadedDocument> CreateDocument() const;
  // Takes over a record with its document, also after a failed load. The record's path and tree
  // must not change from then on.
  LoadRecord* AdoptRecord(std::unique_ptr<LoadRecord> record);
  const DocumentKindRow* RowFor(GrammarKind kind) const { return kinds_.Find(kind); }
  // The first record whose load of exactly this path with that kind gave a tree; null without one.
  LoadRecord* FindByPath(std::u16string_view path, GrammarKind kind) const;
  LoadRecord* FindByRoot(const XTreeNode* root) const;
  void RemoveRecord(LoadRecord* record);
  void ClearAll();

 private:
  const DocumentKindTable& kinds_;
  std::unordered_map<const LoadRecord*, std::unique_ptr<LoadRecord>> records_;
  std::unordered_map<const XTreeNode*, LoadRecord*> byRoot_;
  std::unordered_map<std::u16string_view, std::vector<LoadRecord*>, TextHash> byPath_;
};

}  // namespace kelmora
