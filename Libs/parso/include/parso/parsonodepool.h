// ParsoNodePool: the memory of the nodes of one tree.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

namespace kelmora {

struct ParsoNode;

class ParsoNodePool {
 public:
  ParsoNodePool() = default;
  ParsoNodePool(const ParsoNodePool&) = delete;
  ParsoNodePool& operator=(const ParsoNodePool&) = delete;

  // A node with all fields as constructed. Throws TQExcept -1001 when memory is out.
  ParsoNode* Take();
  // Gives back the node, its children and its following siblings, for Take to hand out again.
  // Null does nothing.
  void Release(ParsoNode* node);

 private:
  // Bytes. Each slab is twice as big as the one before; the largest is a huge page where the
  // system has such, since touching a page for the first time costs more than filling it.
  static constexpr std::size_t kFirstSlab = std::size_t{1} << 13;
  static constexpr std::size_t kLargestSlab = std::size_t{1} << 21;

  struct FreeSlab {
    void operator()(std::byte* slab) const { std::free(slab); }
  };
  using Slab = std::unique_ptr<std::byte[], FreeSlab>;

  ParsoNode* Reuse();
  void AddSlab();

  std::vector<Slab> slabs_;
  ParsoNode* next_ = nullptr;  // the first node of the last slab that was never handed out
  ParsoNode* end_ = nullptr;
  ParsoNode* free_ = nullptr;  // chained by ParsoNode::next
  std::size_t slabBytes_ = kFirstSlab;
};

}  // namespace kelmora
