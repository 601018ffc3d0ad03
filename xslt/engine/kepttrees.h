// KeptTrees: what must outlive the instruction that made it and lives to the end of the run:
// fragments in variables, trees of document(), and URIs that result nodes point to.
#pragma once

#include <deque>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class KeptTrees {
 public:
  KeptTrees() = default;
  ~KeptTrees() {
    for (XPathNode* root : KeptFragments) XPathNode::DeleteTree(root);
  }
  KeptTrees(const KeptTrees&) = delete;
  KeptTrees& operator=(const KeptTrees&) = delete;

  XPathNode* KeepFragment(XPathNode* root) {  // takes it; returns it
    KeptFragments.push_back(root);
    return root;
  }
  // A new pointer for each call.
  InternedURI KeepURI(std::u16string_view text) { return &TextPool.emplace_back(text); }

 private:
  std::vector<XPathNode*> KeptFragments;
  std::deque<TQString> TextPool;
};

}  // namespace kelmora
