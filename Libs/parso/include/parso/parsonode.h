// ParsoNode and ParsoTree: what a parse yields.
//
// A node is a range of the parsed text and the rule that took it. The text is not copied: it must
// outlive the tree. Nodes lie in the slabs of the tree's pool; no node is freed by itself.
#pragma once

#include <cstdint>
#include <new>
#include <string_view>

#include "parso/parsonodepool.h"
#include "parso/parsorule.h"

namespace kelmora {

struct ParsoNode {
  static constexpr std::uint32_t kLineBits = (1u << 30) - 1;  // a count of lines wraps round there

  ParsoNode* next = nullptr;  // sibling
  ParsoNode* firstChild = nullptr;
  const ParsoRule* rule = nullptr;
  const char16_t* text = nullptr;  // start of the range, in the caller's buffer
  std::int32_t length = 0;         // 16-bit units
  std::uint32_t line : 30 = 0;     // 1 is the first; 0 where nobody counted
  bool matched : 1 = false;        // the last match of this node succeeded
  bool crSeen : 1 = false;         // the last unit that a stop scan passed was CR

  std::u16string_view Text() const { return {text, static_cast<std::size_t>(length)}; }
  GrammarRule Rule() const { return rule != nullptr ? rule->grammarRule : GrammarRule::None; }

  // Length of the chain of children: linear.
  std::int32_t ChildCount() const;
  // The first node of `wanted` among this node and its following siblings and, `depth` levels
  // deep, what lies below them; a node's children come before its next sibling. Null without one.
  // Recursion goes `depth` deep and no deeper.
  ParsoNode* FindByRule(const ParsoRule* wanted, int depth);
  // Unlinks `target` from wherever it hangs below this node; false when it hangs elsewhere. The
  // search goes level by level, so that a target near the top is found without walking what lies
  // deeper. The target's memory stays with the tree.
  bool Remove(const ParsoNode* target);
};
static_assert(sizeof(ParsoNode) == 40);

// Owner of a parsed tree. It lives on its own once taken from the parser; freeing it costs the
// slabs, not the nodes.
struct ParsoTree {
  ParsoNodePool pool;
  ParsoNode* root = nullptr;
};

inline ParsoNode* ParsoNodePool::Take() {
  if (free_ != nullptr) return Reuse();
  if (next_ == end_) AddSlab();
  return new (next_++) ParsoNode;
}

}  // namespace kelmora
