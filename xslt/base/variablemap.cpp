// A list of cells that share their tails, like the environments of an interpreter: each scope is a
// pointer into it. From kIndexedSize cells on every cell has an index of all below it, a trie that
// shares all but one path with the one before: a persistent structure made by path copying
// (Driscoll, Sarnak, Sleator, Tarjan, "Making Data Structures Persistent", 1989) over the bits of
// hashes (Bagwell, "Ideal Hash Trees", 2001), with two branches a node.
//
// The trap is ownership. A link says by its lowest bit whether its holder frees the cell; a copy of
// a map borrows, so the frame that made it must go first. Nodes of tries are shared and counted;
// cells are not.
#include "xslt/variablemap.h"

#include <utility>

#include "base/sizepool.h"

namespace kelmora {

// One binding and those it hides or stands in front of.
struct VariableMap::Cell {
  static void* operator new(std::size_t size) { return SizePool::Allocate(size); }
  static void operator delete(void* cell, std::size_t size) noexcept { SizePool::Free(cell, size); }

  std::uint32_t hash = 0;  // 0 as long as no index needs it
  std::uint32_t size = 0;  // of the list from here on
  std::u16string_view name;
  Link next;
  TrieNode* index = nullptr;  // all cells from here on; null while the list is short
  XPathValue value;
};

// A binary trie over the bits of the hash, lowest first. A leaf holds a cell and no children. Cells
// of one hash hang in the leaf of the newest, found through the list below it.
struct VariableMap::TrieNode {
  std::uint32_t references = 1;
  const Cell* cell = nullptr;
  TrieNode* children[2] = {nullptr, nullptr};
};

namespace {

std::uint32_t HashOf(std::u16string_view name) {
  return static_cast<std::uint32_t>(HashText(name));
}

constexpr int Bit(std::uint32_t hash, int level) {
  return static_cast<int>(hash >> level & 1);
}

}  // namespace

VariableMap& VariableMap::operator=(const VariableMap& other) noexcept {
  const Link borrowed = other.head_ & ~kOwned;
  if (this == &other) return *this;
  Clear();
  head_ = borrowed;
  return *this;
}

VariableMap& VariableMap::operator=(VariableMap&& other) noexcept {
  std::swap(head_, other.head_);
  return *this;
}

void VariableMap::Clear() noexcept {
  while ((head_ & kOwned) != 0) {
    Cell* cell = CellOf(head_);
    head_ = cell->next;
    Release(cell->index);
    delete cell;
  }
  head_ = 0;
}

// Recurs no deeper than a hash has bits.
void VariableMap::Release(TrieNode* node) noexcept {
  if (node == nullptr || --node->references != 0) return;
  Release(node->children[0]);
  Release(node->children[1]);
  delete node;
}

const XPathValue* VariableMap::FindFrom(const Cell* cell, std::u16string_view name) {
  if (cell->index != nullptr) {
    const std::uint32_t hash = HashOf(name);
    const TrieNode* node = cell->index;
    for (int level = 0; node != nullptr && node->cell == nullptr; ++level) {
      node = node->children[Bit(hash, level)];
    }
    if (node == nullptr || node->cell->hash != hash) return nullptr;
    cell = node->cell;
  }
  // Few names, most of them of other lengths or beginnings: comparing them is cheaper than a hash.
  for (; cell != nullptr; cell = CellOf(cell->next)) {
    if (cell->name == name) return &cell->value;
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
  const Cell* next = CellOf(head_);
  auto* cell = new Cell{.size = next == nullptr ? 1 : next->size + 1,
                        .name = name,
                        .next = head_,
                        .value = std::move(value)};
  head_ = reinterpret_cast<Link>(cell) | kOwned;
  if (cell->size < kIndexedSize) return;
  if (cell->size == kIndexedSize) {
    for (Cell* at = cell; at != nullptr; at = CellOf(at->next)) at->hash = HashOf(at->name);
    cell->index = MakeIndex(cell);
  } else {
    cell->hash = HashOf(name);
    cell->index = Insert(next->index, cell);
  }
}

// The oldest cell goes in first, so that the newest of one hash stands in the leaf.
VariableMap::TrieNode* VariableMap::MakeIndex(const Cell* newest) {
  const Cell* cells[kIndexedSize];
  std::uint32_t count = 0;
  for (const Cell* cell = newest; cell != nullptr; cell = CellOf(cell->next)) {
    cells[count++] = cell;
  }
  TrieNode* index = nullptr;
  while (count > 0) {
    TrieNode* larger = Insert(index, cells[--count]);
    Release(index);
    index = larger;
  }
  return index;
}

}  // namespace kelmora
