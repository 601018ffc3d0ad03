#include "numbers/numbercounter.h"

#include <algorithm>
#include <unordered_set>

#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

using NodeSet = std::unordered_set<const XPathNode*>;

NodeSet SetOf(const XPathNodeList& list) {
  NodeSet set;
  set.reserve(list.size());
  for (const XPathNodeRef& entry : list) set.insert(entry.node);
  return set;
}

}  // namespace

// The node and its ancestors as far as they are in scope, in document order, and what counts.
struct NumberCounter::Chain {
  XPathNodeList scope;
  NodeSet counted;
};

XPathNodeList NumberCounter::Run(const ExpressionText& text, XPathNode* attribute,
                                 const XPathNodeList& list, std::int32_t position) {
  XPathValue value;
  query_.processor.EvaluateOn(text, query_.element, list, position, kNoPattern, value);
  if (value.kind != XPathValue::NodeSet) throw TQXSLTError(XsltCode::NotANodeSet, attribute);
  SortAndNumber(value.nodes);
  return std::move(value.nodes);
}

NumberCounter::Chain NumberCounter::FindChain(XPathNode* node) {
  XPathNodeList chain;
  for (XPathNode* up = node; up != nullptr; up = up->parent) chain.emplace_back(up);
  std::ranges::reverse(chain);
  SortAndNumber(chain);

  std::int32_t limit = 0;
  if (query_.record.From != nullptr) {
    const NodeSet from = SetOf(Run(query_.record.FromText, query_.record.From, chain, -1));
    for (const XPathNodeRef& entry : chain) {
      const std::int32_t number = entry.node->orderNumber;
      if (number <= node->orderNumber && from.contains(entry.node)) limit = number;
    }
  }

  Chain result;
  XPathNodeList parents;
  for (const XPathNodeRef& entry : chain) {
    if (entry.node->orderNumber <= limit) continue;
    result.scope.push_back(entry);
    if (entry.node->parent != nullptr) parents.emplace_back(entry.node->parent);
  }
  if (result.scope.empty()) return result;
  if (parents.empty()) {
    result.counted.insert(node);
    return result;
  }
  SortAndNumber(parents);
  result.counted = SetOf(Run(query_.countText, query_.record.Count, parents, -1));
  return result;
}

std::int32_t NumberCounter::CountSiblings(XPathNode* target, const Chain& chain) {
  const XPathNodeList siblings =
      Run(precedingSiblings_, query_.element, {XPathNodeRef(target, 1)}, 1);
  const auto counts = [&chain](const XPathNodeRef& entry) {
    return chain.counted.contains(entry.node);
  };
  return 1 + static_cast<std::int32_t>(std::ranges::count_if(siblings, counts));
}

std::vector<std::int32_t> NumberCounter::CountSingle(XPathNode* node) {
  const Chain chain = FindChain(node);
  for (std::size_t at = chain.scope.size(); at > 0; --at) {
    XPathNode* candidate = chain.scope[at - 1].node;
    if (chain.counted.contains(candidate)) return {CountSiblings(candidate, chain)};
  }
  return {};
}

std::vector<std::int32_t> NumberCounter::CountMultiple(XPathNode* node) {
  const Chain chain = FindChain(node);
  std::vector<std::int32_t> numbers;
  for (const XPathNodeRef& entry : chain.scope) {
    if (chain.counted.contains(entry.node)) numbers.push_back(CountSiblings(entry.node, chain));
  }
  std::ranges::reverse(numbers);
  return numbers;
}

std::vector<std::int32_t> NumberCounter::CountAny(XPathNode* node) {
  const XPathNodeList visited = Run(visited_, query_.element, {XPathNodeRef(node, 1)}, 1);
  const std::int32_t order = node->orderNumber;
  std::int32_t limit = 0;
  if (query_.record.From != nullptr) {
    for (const XPathNodeRef& entry : Run(query_.record.FromText, query_.record.From, visited, -1)) {
      if (entry.node->orderNumber < order) limit = entry.node->orderNumber;
    }
  }
  const XPathNodeList counted = Run(query_.countText, query_.record.Count, visited, -1);
  const auto isInBounds = [limit, order](const XPathNodeRef& entry) {
    return entry.node->orderNumber > limit && entry.node->orderNumber <= order;
  };
  const auto number = static_cast<std::int32_t>(std::ranges::count_if(counted, isInBounds));
  return number > 0 ? std::vector<std::int32_t>{number} : std::vector<std::int32_t>();
}

}  // namespace kelmora
