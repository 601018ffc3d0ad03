// A weight-balanced binary tree whose nodes are shared between maps. A change copies the nodes from
// the root down to the place of change, as far as anyone else holds them; nodes that this map alone
// holds are changed in place. Entries lie beside the nodes, so that copying a node copies no text.
//
// Weights (1 + number of nodes) of siblings differ at most by the factor 3, which bounds the depth
// by log(n) / log(4/3) and makes recursion along a path harmless.
// The factors are those for which Hirai and Yamamoto, "Balancing weight-balanced trees" (2011),
// prove the rotations right.
#include "xmltree/prefixmap.h"

#include <new>
#include <utility>

#include "slabpool.h"

namespace kelmora {

struct PrefixMap::Node {
  struct SharedEntry {
    Entry entry;
    std::uint32_t references = 1;
  };

  SharedEntry* shared;
  Node* left = nullptr;
  Node* right = nullptr;
  std::int32_t size = 1;
  mutable std::uint32_t references = 1;

  static constexpr int kWeightFactor = 3;    // between siblings
  static constexpr int kRotationFactor = 2;  // from here on one rotation is not enough

  static SlabPool& Nodes() {
    static SlabPool& pool = *new SlabPool(sizeof(Node), alignof(Node));
    return pool;
  }
  static SlabPool& Entries() {
    static SlabPool& pool = *new SlabPool(sizeof(SharedEntry), alignof(SharedEntry));
    return pool;
  }

  static int Weight(const Node* node) { return node == nullptr ? 1 : node->size + 1; }
  void Measure() { size = Weight(left) + Weight(right) - 1; }

  static Node* Hold(Node* node) {
    if (node != nullptr) ++node->references;
    return node;
  }
  static void DropEntry(SharedEntry* shared) {
    if (--shared->references != 0) return;
    shared->~SharedEntry();
    Entries().Give(shared);
  }
  static void Drop(Node* node) {
    while (node != nullptr && --node->references == 0) {
      Drop(node->left);
      Node* rest = node->right;
      DropEntry(node->shared);
      Nodes().Give(node);
      node = rest;
    }
  }

  static Node* Make(SharedEntry* shared) { return new (Nodes().Take()) Node{shared}; }
  // The node itself if the caller alone holds it, else a copy, for the caller's reference.
  static Node* Own(Node* node) {
    if (node->references == 1) return node;
    --node->references;
    ++node->shared->references;
    Node* copy = Make(node->shared);
    copy->left = Hold(node->left);
    copy->right = Hold(node->right);
    copy->size = node->size;
    return copy;
  }

  // The rotations and Balance work on owned nodes and give back the owned node in their place.
  static Node* RotateLeft(Node* node) {
    Node* top = Own(node->right);
    node->right = top->left;
    top->left = node;
    node->Measure();
    top->Measure();
    return top;
  }
  static Node* RotateRight(Node* node) {
    Node* top = Own(node->left);
    node->left = top->right;
    top->right = node;
    node->Measure();
    top->Measure();
    return top;
  }
  static Node* Balance(Node* node) {
    if (Weight(node->right) > kWeightFactor * Weight(node->left)) {
      node->right = Own(node->right);
      if (Weight(node->right->left) >= kRotationFactor * Weight(node->right->right)) {
        node->right = RotateRight(node->right);
      }
      return RotateLeft(node);
    }
    if (Weight(node->left) > kWeightFactor * Weight(node->right)) {
      node->left = Own(node->left);
      if (Weight(node->left->right) >= kRotationFactor * Weight(node->left->left)) {
        node->left = RotateLeft(node->left);
      }
      return RotateRight(node);
    }
    node->Measure();
    return node;
  }

  static Node* Insert(Node* node, SharedEntry* shared) {
    if (node == nullptr) return Make(shared);
    node = Own(node);
    const auto order = shared->entry.prefix.View().compare(node->shared->entry.prefix.View());
    if (order == 0) {
      DropEntry(node->shared);
      node->shared = shared;
      return node;
    }
    Node*& side = order < 0 ? node->left : node->right;
    side = Insert(side, shared);
    return Balance(node);
  }
};

namespace {
// Nodes that one change can take: the path, and what a double rotation touches beside it.
constexpr std::size_t kMostCopies = 3 * 80;
}  // namespace

PrefixMap::PrefixMap(const PrefixMap& other) noexcept : root_(Node::Hold(other.root_)) {}
PrefixMap::PrefixMap(PrefixMap&& other) noexcept : root_(std::exchange(other.root_, nullptr)) {}
PrefixMap& PrefixMap::operator=(PrefixMap other) noexcept {
  std::swap(root_, other.root_);
  return *this;
}
PrefixMap::~PrefixMap() {
  Node::Drop(root_);
}

const PrefixMap::Entry* PrefixMap::Find(std::u16string_view prefix) const {
  const Node* node = root_;
  while (node != nullptr) {
    const auto order = prefix.compare(node->shared->entry.prefix.View());
    if (order == 0) return &node->shared->entry;
    node = order < 0 ? node->left : node->right;
  }
  return nullptr;
}

InternedURI PrefixMap::Lookup(std::u16string_view prefix) const {
  const Entry* entry = Find(prefix);
  return entry != nullptr ? entry->uri : nullptr;
}

void PrefixMap::Set(std::u16string_view prefix, InternedURI uri) {
  const Entry* present = Find(prefix);
  if (present != nullptr && present->uri == uri) return;
  // With the memory at hand a change cannot stop half-way and leave counts that are wrong.
  Node::Nodes().Reserve(kMostCopies);
  auto* shared = new (Node::Entries().Take()) Node::SharedEntry{{TQString(prefix), uri}};
  root_ = Node::Insert(root_, shared);
}

int PrefixMap::Size() const {
  return root_ != nullptr ? root_->size : 0;
}

PrefixMap::Iterator PrefixMap::begin() const {
  Iterator iterator;
  iterator.Descend(root_);
  return iterator;
}

void PrefixMap::Iterator::Descend(const Node* node) {
  for (; node != nullptr; node = node->left) path_[depth_++] = node;
}

const PrefixMap::Entry& PrefixMap::Iterator::operator*() const {
  return path_[depth_ - 1]->shared->entry;
}

PrefixMap::Iterator& PrefixMap::Iterator::operator++() {
  Descend(path_[--depth_]->right);
  return *this;
}

}  // namespace kelmora
