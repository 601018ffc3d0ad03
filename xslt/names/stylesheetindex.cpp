#include "names/stylesheetindex.h"

#include <utility>

namespace kelmora {

const LiteralRecord StylesheetIndex::kPlainLiteral;

void StylesheetIndex::Enter(const XPathNode* node, XsltElement code,
                            std::unique_ptr<ElementRecord> record) {
  const ElementRecord* plain = code == XsltElement::Literal ? &kPlainLiteral : nullptr;
  entries_[node] = {code, record != nullptr ? record.get() : plain};
  if (record != nullptr) records_.push_back(std::move(record));
}

void StylesheetIndex::Forget(XPathNode* top) {
  for (XPathNode* node = top; node != nullptr;
       node = node->firstChild != nullptr ? node->firstChild : node->NextSkippingChildren(top)) {
    if (Entry* entry = entries_.Find(node)) *entry = Entry();
  }
}

void StylesheetIndex::Clear() {
  entries_.Clear();
  records_.clear();
}

StylesheetIndex::Entry StylesheetIndex::Unchecked(const XPathNode* node) {
  const XsltElement code = XsltElementNames::Code(node);
  return {code, code == XsltElement::Literal ? &kPlainLiteral : nullptr};
}

}  // namespace kelmora
