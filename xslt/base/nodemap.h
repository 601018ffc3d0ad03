// NodeMap: a flat hash map from node pointers to small values, for what stands beside a tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kelmora {

struct XPathNode;

template <class Value>
class NodeMap {
 public:
  // Null when the node has no entry. The pointer lives until the next insertion.
  const Value* Find(const XPathNode* node) const {
    if (slots_.empty()) return nullptr;
    for (std::size_t at = Home(node);; at = (at + 1) & Mask()) {
      if (slots_[at].node == node) return &slots_[at].value;
      if (slots_[at].node == nullptr) return nullptr;
    }
  }
  Value* Find(const XPathNode* node) {
    return const_cast<Value*>(static_cast<const NodeMap*>(this)->Find(node));
  }
  // The node's value, a new one when it has none.
  Value& operator[](const XPathNode* node) {
    if (Value* found = Find(node)) return *found;
    if ((count_ + 1) * 4 > slots_.size() * 3) Grow();
    ++count_;
    Slot& slot = FreeSlot(node);
    slot.node = node;
    return slot.value;
  }
  void Clear() {
    slots_.clear();
    count_ = 0;
  }
  std::size_t Size() const { return count_; }

 private:
  struct Slot {
    const XPathNode* node = nullptr;
    Value value{};
  };
  static constexpr std::size_t kFirstSize = 64;  // a power of two, as all sizes

  std::size_t Mask() const { return slots_.size() - 1; }
  std::size_t Home(const XPathNode* node) const {
    // Nodes lie in a pool at multiples of 8; the multiplication spreads what is left.
    const auto address = reinterpret_cast<std::uintptr_t>(node) >> 3;
    return static_cast<std::size_t>((address * 0x9E3779B97F4A7C15u) >> 32) & Mask();
  }
  Slot& FreeSlot(const XPathNode* node) {
    std::size_t at = Home(node);
    while (slots_[at].node != nullptr) at = (at + 1) & Mask();
    return slots_[at];
  }
  void Grow() {
    std::vector<Slot> old(slots_.empty() ? kFirstSize : slots_.size() * 2);
    old.swap(slots_);
    for (Slot& slot : old) {
      if (slot.node == nullptr) continue;
      Slot& place = FreeSlot(slot.node);
      place.node = slot.node;
      place.value = static_cast<Value&&>(slot.value);
    }
  }

  std::vector<Slot> slots_;
  std::size_t count_ = 0;
};

}  // namespace kelmora
