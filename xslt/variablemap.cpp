#include "xslt/variablemap.h"

#include <functional>
#include <utility>

namespace kelmora {

// One binding and those it hides or stands in front of.
struct VariableMap::Cell {
  std::uint32_t references = 1;
  std::uint32_t size = 1;  // of the list from here on
  std::size_t hash;
  std::u16string_view name;
  XPathValue value;
  Cell* next;
  TrieNode* index = nullptr;  // all cells from here on; null while the list is short
};

// A binary trie over the bits of the hash, lowest first. A leaf holds a cell and no children. Cells
// of one hash hang in the leaf of the newest, found through the list below it.
struct VariableMap::TrieNode {
  std::uint32_t references = 1;
  const Cell* cell = nullptr;
  TrieNode* children[2] = {nullptr, nullptr};
};

namespace {

std::size_t HashOf(std::u16string_view name) { return std::hash<std::u16string_view>()(name); }

constexpr int Bit(std::size_t hash, int level) { return static_cast<int>(hash >> level & 1); }

}  // namespace

VariableMap::VariableMap(const VariableMap& other) noexcept : head_(other.head_) {
  if (head_ != nullptr) ++head_->references;
}

VariableMap& VariableMap::operator=(const VariableMap& other) noexcept {
  if (other.head_ != nullptr) ++other.head_->references;
  Clear();
  head_ = other.head_;
  return *this;
}

VariableMap& VariableMap::operator=(VariableMap&& other) noexcept {
  std::swap(head_, other.head_);
  return *this;
}

void VariableMap::Clear() noexcept { Release(std::exchange(head_, nullptr)); }

void VariableMap::Release(Cell* cell) noexcept {
  while (cell != nullptr && --cell->references == 0) {
    Release(cell->index);
    Cell* next = cell->next;
    delete cell;
    cell = next;
  }
}

// Recurs no deeper than a hash has bits.
void VariableMap::Release(TrieNode* node) noexcept {
  if (node == nullptr || --node->references != 0) return;
  Release(node->children[0]);
  Release(node->children[1]);
  delete node;
}

const XPathValue* VariableMap::Find(std::u16string_view name) const {
  if (head_ == nullptr) return nullptr;
  const std::size_t hash = HashOf(name);
  const Cell* cell = head_;
  if (cell->index != nullptr) {
    const TrieNode* node = cell->index;
    for (int level = 0; node != nullptr && node->cell == nullptr; ++level) {
      node = node->children[Bit(hash, level)];
    }
    if (node == nullptr || node->cell->hash != hash) return nullptr;
    cell = node->cell;
  }
  for (; cell != nullptr; cell = cell->next) {
    if (cell->hash == hash && cell->name == name) return &cell->value;
  }
  return nullptr;
}

// A new root that holds `cell` too and shares all but one path with the old one.
VariableMap::TrieNode* VariableMap::Insert(const TrieNode* root, const Cell* cell) {
  auto* newRoot = new TrieNode;
  TrieNode* target = newRoot;
  const TrieNode* old = root;
  for (int level = 0;; ++level) {
    if (old == nullptr || (old->cell != nullptr && old->cell->hash == cell->hash)) {
      target->cell = cell;
      return newRoot;
    }
    // A leaf of another hash moves down until the two hashes part.
    const int side = Bit(cell->hash, level);
    const TrieNode* below = old->children[side];
    if (old->cell != nullptr) {
      const int oldSide = Bit(old->cell->hash, level);
      if (oldSide == side) {
        below = old;
      } else {
        target->children[oldSide] = new TrieNode;
        target->children[oldSide]->cell = old->cell;
      }
    } else {
      target->children[1 - side] = old->children[1 - side];
      if (target->children[1 - side] != nullptr) ++target->children[1 - side]->references;
    }
    target->children[side] = new TrieNode;
    target = target->children[side];
    old = below;
  }
}

void VariableMap::Bind(std::u16string_view name, XPathValue value) {
  head_ = new Cell{.hash = HashOf(name), .name = name, .value = std::move(value), .next = head_};
  if (head_->next != nullptr) head_->size = head_->next->size + 1;
  if (head_->size < kIndexedSize) return;
  if (head_->size > kIndexedSize) {
    head_->index = Insert(head_->next->index, head_);
    return;
  }
  // The first index: the oldest cell first, so that the newest of one hash stands in the leaf.
  const Cell* cells[kIndexedSize];
  std::uint32_t count = 0;
  for (const Cell* cell = head_; cell != nullptr; cell = cell->next) cells[count++] = cell;
  TrieNode* index = nullptr;
  while (count > 0) {
    TrieNode* larger = Insert(index, cells[--count]);
    Release(index);
    index = larger;
  }
  head_->index = index;
}

}  // namespace kelmora
