// VariableMap: variables or parameters in scope. A map is the head of a list of bindings, and
// binding a name puts a cell in front, so a scope costs what it binds and not what it inherits. A
// copy borrows: it sees what the original holds, and what it binds is its own. That fits the call
// stack, where a frame copies the maps of the frame below and goes first.
//
// From kIndexedSize bindings on each cell also holds the root of a trie over the hashes of the
// names below it, so that lookup stays logarithmic.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class VariableMap {
 public:
  static constexpr std::uint32_t kIndexedSize = 24;

  VariableMap() noexcept = default;
  // The copy must not be used when the original is gone or was cleared.
  VariableMap(const VariableMap& other) noexcept : head_(other.head_ & ~kOwned) {}
  VariableMap(VariableMap&& other) noexcept : head_(other.head_) { other.head_ = 0; }
  VariableMap& operator=(const VariableMap& other) noexcept;
  VariableMap& operator=(VariableMap&& other) noexcept;
  ~VariableMap() {
    if ((head_ & kOwned) != 0) Clear();
  }

  bool IsEmpty() const { return head_ == 0; }
  // The value lives as long as the map that it was bound in. Null when the name is not bound.
  const XPathValue* Find(std::u16string_view name) const {
    return head_ == 0 ? nullptr : FindFrom(CellOf(head_), name);
  }
  // The name is borrowed and must outlive the map and its copies. Names of the stylesheet and of
  // the command line do.
  void Bind(std::u16string_view name, XPathValue value);
  void Clear() noexcept;

 private:
  struct Cell;
  struct TrieNode;
  // The address of a cell or 0; the lowest bit tells that the holder of the link frees the cell.
  using Link = std::uintptr_t;
  static constexpr Link kOwned = 1;

  static Cell* CellOf(Link link) { return reinterpret_cast<Cell*>(link & ~kOwned); }
  static const XPathValue* FindFrom(const Cell* cell, std::u16string_view name);
  static void Release(TrieNode* node) noexcept;
  static TrieNode* Insert(const TrieNode* root, const Cell* cell);
  static TrieNode* MakeIndex(const Cell* newest);

  Link head_ = 0;
};

// The values of top-level variables or parameters. Names are borrowed as above; a value lives until
// its name is removed.
class GlobalMap {
 public:
  const XPathValue* Find(std::u16string_view name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
  }
  void Bind(std::u16string_view name, XPathValue value) {
    values_.insert_or_assign(name, static_cast<XPathValue&&>(value));
  }
  void Remove(std::u16string_view name) { values_.erase(name); }
  void Clear() { values_.clear(); }

 private:
  std::unordered_map<std::u16string_view, XPathValue, TextHash> values_;
};

}  // namespace kelmora
