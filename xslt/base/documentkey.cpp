#include "base/documentkey.h"

namespace kelmora {

DocumentKey DocumentKeys::KeyOf(const XPathNode* node) {
  if (IsStamped(node)) return DocumentKeyOf(node);
  const XPathNode* at = node;
  for (int level = 0; level < kFreeLevels && at->parent != nullptr; ++level) at = at->parent;
  if (at->parent == nullptr) return DocumentKeyOf(at);

  const XPathNode* const first = at;
  auto known = keys_.end();
  for (; at->parent != nullptr; at = at->parent) {
    known = keys_.find(at);
    if (known != keys_.end()) break;
  }
  const DocumentKey key = known != keys_.end() ? known->second : DocumentKeyOf(at);
  for (const XPathNode* climbed = first; climbed != at; climbed = climbed->parent) {
    keys_.emplace(climbed, key);
  }
  return key;
}

}  // namespace kelmora
