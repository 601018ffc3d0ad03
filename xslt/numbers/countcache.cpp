#include "numbers/countcache.h"

#include <algorithm>
#include <functional>

namespace kelmora {

namespace {

constexpr std::size_t kSpread = 0x9E3779B97F4A7C15u;

// Of several tests only those of a name share their lists.
const CountTest* OwnerOf(const CountTest& test) {
  return test.isName ? nullptr : &test;
}

bool IsStrictlyAscending(const OrderNumbers& numbers) {
  return std::ranges::adjacent_find(numbers, std::greater_equal()) == numbers.end();
}

// False for numbers of nodes that are not stamped.
bool AreStamped(const OrderNumbers& numbers) {
  return numbers.empty() || numbers.front() > 0;
}

}  // namespace

std::size_t CountKeyHash::operator()(const CountKey& key) const {
  constexpr int kHighBits = 20;  // the low bits of a product depend on few bits of its factor
  const std::size_t test = std::hash<const void*>()(key.test);
  return ((key.place * kSpread ^ test) * kSpread) >> kHighBits;
}

void CountCache::Lists::Enter(const CountTest* test, XPathNode* node) {
  if (test == nullptr) {
    byName[NodeName::Of(*node)].push_back(node->orderNumber);
  } else if (test->Matches(node)) {
    byName[NodeName()].push_back(node->orderNumber);
  }
}

const OrderNumbers* CountCache::Find(const Lists& lists, const CountTest& test) {
  static const OrderNumbers kNone;
  if (!lists.isOrdered) return nullptr;
  const auto found = lists.byName.find(test.isName ? test.name : NodeName());
  return found != lists.byName.end() ? &found->second : &kNone;
}

const OrderNumbers* CountCache::ChildrenOf(const CountTest& test, XPathNode* parent) {
  const CountTest* owner = OwnerOf(test);
  const auto [place, isNew] = lists_.try_emplace(At(owner, parent));
  Lists& lists = place->second;
  if (!isNew) return Find(lists, test);
  for (XPathNode* child = parent->firstChild; child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Element) lists.Enter(owner, child);
  }
  for (const auto& [name, numbers] : lists.byName) {
    lists.isOrdered = lists.isOrdered && IsStrictlyAscending(numbers) && AreStamped(numbers);
  }
  return Find(lists, test);
}

const OrderNumbers* CountCache::NodesOf(const CountTest& test, XPathNode* node) {
  const CountTest* owner = OwnerOf(test);
  const auto [place, isNew] = lists_.try_emplace(CountKey{owner, DocumentKeyOf(node)});
  Lists& lists = place->second;
  if (!isNew) return Find(lists, test);
  for (XPathNode* at = node->Root(); at != nullptr; at = at->NextInDocument(true)) {
    if (owner == nullptr) {
      const bool isAttribute = at->kind == XPathNodeKind::Attribute;
      if (!isAttribute && at->kind != XPathNodeKind::Element) continue;
      // The XML declaration has attributes too, which no axis yields.
      if (isAttribute && at->parent->kind != XPathNodeKind::Element) continue;
    }
    lists.Enter(owner, at);
  }
  for (auto& [name, numbers] : lists.byName) {
    if (!std::ranges::is_sorted(numbers)) std::ranges::sort(numbers);
    lists.isOrdered = lists.isOrdered && AreStamped(numbers);
  }
  return Find(lists, test);
}

const CountCache::ClimbEnd* CountCache::FindClimb(const CountTest* count,
                                                  const XPathNode* node) const {
  const auto found = climbs_.find(At(count, node));
  return found != climbs_.end() ? &found->second : nullptr;
}

void CountCache::AddClimb(const CountTest* count, const XPathNode* node, XPathNode* target) {
  climbs_.try_emplace(At(count, node), ClimbEnd{target});
}

CountCache::Last& CountCache::LastOf(const CountTest& count, const XPathNode* parent) {
  constexpr std::size_t kSize = 512;  // a power of two
  if (lasts_.empty()) lasts_.resize(kSize);
  const CountKey key = At(&count, parent);
  Last& last = lasts_[CountKeyHash()(key) & (kSize - 1)];
  if (last.key != key) last = {.key = key};
  return last;
}

}  // namespace kelmora
