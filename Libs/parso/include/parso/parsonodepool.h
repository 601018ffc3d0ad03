// ParsoNodePool: the memory of the nodes of one tree.
#pragma once

#include "tqcore/slablist.h"

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
  ParsoNode* Reuse();
  void AddSlab();

  SlabList slabs_;
  ParsoNode* next_ = nullptr;  // the first node of the last slab that was never handed out
  ParsoNode* end_ = nullptr;
  ParsoNode* free_ = nullptr;  // chained by ParsoNode::next
};

}  // namespace kelmora
