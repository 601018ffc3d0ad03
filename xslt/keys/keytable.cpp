#include "keys/keytable.h"

#include <utility>

#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

constexpr std::u16string_view kUnion = u" | ";

}  // namespace

void KeyTable::Add(XPathNode* scopeNode, std::u16string_view match, std::u16string_view use) {
  if (!sources_.insert(scopeNode->source).second) return;
  if (ScopeNode == nullptr) {
    ScopeNode = scopeNode;
  } else {
    Match.Text += kUnion;
    Use.Text += kUnion;
  }
  Match.Text += match;
  Use.Text += use;
  Match.Parsed = Use.Parsed = nullptr;
}

void KeyTable::Index(XPathNode* root, XSLTProcessorBase& processor) {
  if (root == nullptr || ScopeNode == nullptr) return;
  auto& place = Indexes[root];
  if (place != nullptr) return;
  // It stands there while it is being filled: a use expression that asks for its own key sees what
  // is in so far.
  place = std::make_unique<ValueIndex>();
  try {
    Fill(*place, root, processor);
  } catch (...) {
    Indexes.erase(root);  // a definition of a global may be run again
    throw;
  }
}

void KeyTable::Fill(ValueIndex& index, XPathNode* root, XSLTProcessorBase& processor) {
  const XPathNodeList matched = processor.EvaluateOverUniverse(Match, root, ScopeNode, kKeyPattern);
  XPathValue value;
  TQString scratch;
  std::int32_t position = 0;
  for (const XPathNodeRef& entry : matched) {
    processor.EvaluateOn(Use, ScopeNode, matched, ++position, kNoPattern, value);
    if (value.kind != XPathValue::NodeSet) {
      Enter(index, ToString(value), entry.node);
      continue;
    }
    for (const XPathNodeRef& used : value.nodes) {
      Enter(index, used.node->StringValue(scratch), entry.node);
    }
  }
}

void KeyTable::Enter(ValueIndex& index, std::u16string_view value, XPathNode* node) {
  auto place = index.find(value);
  if (place == index.end()) place = index.try_emplace(value).first;
  XPathNodeList& nodes = place->second;
  if (!nodes.empty() && nodes.back().node == node) return;
  nodes.emplace_back(node, static_cast<std::int32_t>(nodes.size()) + 1);
}

const XPathNodeList* KeyTable::Lookup(XPathNode* root, std::u16string_view value) const {
  const auto index = Indexes.find(root);
  if (index == Indexes.end()) return nullptr;
  const auto found = index->second->find(value);
  return found == index->second->end() ? nullptr : &found->second;
}

}  // namespace kelmora
