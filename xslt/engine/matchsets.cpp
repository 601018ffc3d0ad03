#include "engine/matchsets.h"

#include <algorithm>

namespace kelmora {

namespace {
constexpr std::size_t kBitsPerWord = 64;
}

MatchSet::MatchSet(const XPathNodeList& nodes) {
  for (const XPathNodeRef& entry : nodes) {
    if (IsStamped(entry.node)) {
      numbers_.push_back(entry.node->orderNumber);
    } else {
      unstamped_.insert(entry.node);
    }
  }
  if (numbers_.empty()) return;
  std::ranges::sort(numbers_);
  firstNumber_ = numbers_.front();
  const auto range = static_cast<std::size_t>(numbers_.back() - firstNumber_) + 1;
  if (range / 8 > numbers_.size() * sizeof(std::int32_t)) return;
  bits_.resize((range + kBitsPerWord - 1) / kBitsPerWord);
  for (const std::int32_t number : numbers_) {
    const auto bit = static_cast<std::size_t>(number - firstNumber_);
    bits_[bit / kBitsPerWord] |= std::uint64_t{1} << bit % kBitsPerWord;
  }
  numbers_ = {};
}

bool MatchSet::Contains(const XPathNode* node) const {
  if (!IsStamped(node)) return unstamped_.contains(node);
  if (bits_.empty()) return std::ranges::binary_search(numbers_, node->orderNumber);
  if (node->orderNumber < firstNumber_) return false;
  const auto bit = static_cast<std::size_t>(node->orderNumber - firstNumber_);
  if (bit / kBitsPerWord >= bits_.size()) return false;
  return (bits_[bit / kBitsPerWord] >> bit % kBitsPerWord & 1) != 0;
}

const MatchSet* MatchSets::Find(DocumentKey document) const {
  if (last_ != nullptr && lastDocument_ == document) return last_;
  const auto found = sets_.find(document);
  if (found == sets_.end()) return nullptr;
  lastDocument_ = document;
  last_ = &found->second;
  return last_;
}

const MatchSet& MatchSets::Add(DocumentKey document, const XPathNodeList& nodes) {
  return sets_.emplace(document, nodes).first->second;
}

}  // namespace kelmora
