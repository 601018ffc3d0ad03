// VariableMap: variables or parameters in scope. A map is a value that copies in constant time: it
// is the head of an immutable, shared list, and binding a name puts a cell in front. So a scope
// costs what it binds, not what it inherits. From kIndexedSize bindings on each cell also holds the
// root of a trie over the hashes of the names below it, so that lookup stays logarithmic.
//
// Names are borrowed: they must outlive every map that holds them. Names of the stylesheet and of
// the command line do, since both outlive the frames.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>

#include "tqcore/tqstring.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class VariableMap {
 public:
  static constexpr std::uint32_t kIndexedSize = 24;

  VariableMap() noexcept = default;
  VariableMap(const VariableMap& other) noexcept;
  VariableMap(VariableMap&& other) noexcept : head_(other.head_) { other.head_ = nullptr; }
  VariableMap& operator=(const VariableMap& other) noexcept;
  VariableMap& operator=(VariableMap&& other) noexcept;
  ~VariableMap() { Clear(); }

  bool IsEmpty() const { return head_ == nullptr; }
  // The value lives as long as any map that holds it. Null when the name is not bound.
  const XPathValue* Find(std::u16string_view name) const;
  void Bind(std::u16string_view name, XPathValue value);
  void Clear() noexcept;

 private:
  struct Cell;
  struct TrieNode;
  static void Release(Cell* cell) noexcept;
  static void Release(TrieNode* node) noexcept;
  static TrieNode* Insert(const TrieNode* root, const Cell* cell);

  Cell* head_ = nullptr;
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
  std::unordered_map<std::u16string_view, XPathValue> values_;
};

}  // namespace kelmora
