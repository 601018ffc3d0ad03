// PrefixMap: the prefixes in force at a place, each with its interned namespace URI. The empty
// prefix is the default namespace; it sorts first. A null URI is a legal entry: it is what a
// declaration with an empty value leaves.
//
// A PrefixMap is a value that copies in constant time: maps share an immutable balanced tree, and
// Set makes O(log n) new nodes. So every element can have its map, and a document with 100,000
// declarations, nested or side by side, costs n log n. Iteration is in ascending order of the
// prefixes' 16-bit units. A prefix lives as long as any map that holds it; copy it to keep it.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"

namespace kelmora {

using InternedURI = const TQString*;  // two URIs of one builder are equal when their pointers are

class PrefixMap {
 public:
  struct Entry {
    TQString prefix;
    InternedURI uri = nullptr;
  };

  PrefixMap() noexcept = default;
  PrefixMap(const PrefixMap& other) noexcept;
  PrefixMap(PrefixMap&& other) noexcept;
  PrefixMap& operator=(PrefixMap other) noexcept;
  ~PrefixMap();

  // Null when the map does not hold the prefix. The entry lives as long as a map that holds it.
  const Entry* Find(std::u16string_view prefix) const;
  // The bound URI, null for an absent prefix and for an entry with a null URI alike.
  InternedURI Lookup(std::u16string_view prefix) const;
  void Set(std::u16string_view prefix, InternedURI uri);  // inserts or overwrites
  bool IsEmpty() const { return root_ == nullptr; }
  int Size() const;
  // True when both maps are the very same object or copies of one another.
  bool SharesWith(const PrefixMap& other) const { return root_ == other.root_; }

  class Iterator;
  Iterator begin() const;
  Iterator end() const;

 private:
  struct Node;
  Node* root_ = nullptr;
};

class PrefixMap::Iterator {
 public:
  const Entry& operator*() const;
  const Entry* operator->() const { return &**this; }
  Iterator& operator++();
  bool operator!=(const Iterator& other) const { return depth_ != other.depth_; }

 private:
  friend class PrefixMap;
  static constexpr int kMaxDepth = 80;  // a balanced tree of 2^31 entries is no deeper
  Iterator() noexcept {}                // leaves the path as it is
  void Descend(const Node* node);

  const Node* path_[kMaxDepth];
  int depth_ = 0;
};

inline PrefixMap::Iterator PrefixMap::end() const {
  return {};
}

}  // namespace kelmora
