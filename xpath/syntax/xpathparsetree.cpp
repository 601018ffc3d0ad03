#include "syntax/xpathparsetree.h"

#include <memory>

namespace kelmora {

void XPathParseTree::Finish(XPathParseNode* root, int nesting) {
  root_ = root;
  nesting_ = nesting;
  std::vector<XPathParseNode*> order{root};  // parents before children
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (XPathParseNode* child = order[i]->firstChild; child; child = child->nextSibling) {
      order.push_back(child);
    }
  }
  for (auto node = order.rbegin(); node != order.rend(); ++node) {
    (*node)->Prepare(*this);
    const XPathRule rule = (*node)->rule;
    hasVariable_ = hasVariable_ || rule == XPathRule::VariableReference;
    readsContext_ = readsContext_ || rule == XPathRule::RelativeLocationPath ||
                    rule == XPathRule::AbsoluteLocationPath || rule == XPathRule::FunctionCall ||
                    rule == XPathRule::Predicate || rule == XPathRule::FieldPath ||
                    rule == XPathRule::SelectorPath;
  }
}

int XPathParseTree::AddPrefix(std::u16string_view prefix) {
  for (std::size_t i = 0; i < prefixes_.size(); ++i) {
    if (prefixes_[i] == prefix) return static_cast<int>(i);
  }
  prefixes_.push_back(prefix);
  return static_cast<int>(prefixes_.size()) - 1;
}

SharedHandle<const XPathParseTree::Bindings> XPathParseTree::ResolvePrefixes(
    const PrefixMap& map) const {
  if (bindings_ && bindings_->map.SharesWith(map)) return bindings_;
  auto bindings = std::make_unique<Bindings>();
  bindings->map = map;
  for (std::u16string_view prefix : prefixes_) {
    const PrefixMap::Entry* entry = map.Find(prefix);
    bindings->entries.push_back({entry ? entry->uri : nullptr, entry != nullptr});
    // The empty prefix needs no binding.
    if (entry == nullptr && !prefix.empty()) bindings->allBound = false;
  }
  bindings_ = SharedHandle<const Bindings>(bindings.release());
  return bindings_;
}

}  // namespace kelmora
