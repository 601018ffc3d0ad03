#include "parso/parsonode.h"

#include <new>
#include <vector>

#include "tqcore/tqexcept.h"

namespace kelmora {

std::int32_t ParsoNode::ChildCount() const {
  std::int32_t count = 0;
  for (const ParsoNode* child = firstChild; child != nullptr; child = child->next) ++count;
  return count;
}

ParsoNode* ParsoNode::FindByRule(const ParsoRule* wanted, int depth) {
  for (ParsoNode* node = this; node != nullptr; node = node->next) {
    if (node->rule == wanted) return node;
    if (depth == 0 || node->firstChild == nullptr) continue;
    if (ParsoNode* found = node->firstChild->FindByRule(wanted, depth - 1)) return found;
  }
  return nullptr;
}

bool ParsoNode::Remove(const ParsoNode* target) {
  std::vector<ParsoNode*> parents = {this};
  for (std::size_t i = 0; i < parents.size(); ++i) {
    for (ParsoNode** link = &parents[i]->firstChild; *link != nullptr; link = &(*link)->next) {
      if (*link == target) {
        *link = target->next;
        return true;
      }
      if ((*link)->firstChild != nullptr) parents.push_back(*link);
    }
  }
  return false;
}

void ParsoNodePool::Release(ParsoNode* node) {
  while (node != nullptr) {
    // The children go in front of the siblings, so that one chain holds all that is left to do.
    if (ParsoNode* child = node->firstChild) {
      ParsoNode* last = child;
      while (last->next != nullptr) last = last->next;
      last->next = node->next;
      node->next = child;
    }
    ParsoNode* following = node->next;
    node->next = free_;
    free_ = node;
    node = following;
  }
}

ParsoNode* ParsoNodePool::Reuse() {
  ParsoNode* node = free_;
  free_ = node->next;
  return new (node) ParsoNode;
}

void ParsoNodePool::AddSlab() {
  try {
    const SlabList::Slab slab = slabs_.Add();
    next_ = reinterpret_cast<ParsoNode*>(slab.begin);
    end_ = next_ + slab.bytes / sizeof(ParsoNode);
  } catch (const std::bad_alloc&) {
    throw TQExcept(kAllocationFailed, __LINE__, u"parsonode.cpp");
  }
}

}  // namespace kelmora
