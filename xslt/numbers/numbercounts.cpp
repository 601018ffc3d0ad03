// The tests are match patterns, and a match pattern asks of a node and its ancestors what the
// evaluated expression asks from above: the lists that xsl:number evaluates from are closed under
// taking parents. One case isn't, a pattern of several steps in front of a from on the same chain,
// and is declined.
#include "numbers/numbercounts.h"

#include <algorithm>

#include "numbers/numbercounter.h"

namespace kelmora {

namespace {

// Siblings looked at one by one before a list of the parent's children is made.
constexpr int kWalkedSiblings = 24;
// A climb longer than this is remembered at every such step.
constexpr int kRememberedStep = 64;

std::int32_t CountUpTo(const OrderNumbers& numbers, std::int32_t number) {
  return static_cast<std::int32_t>(std::ranges::upper_bound(numbers, number) - numbers.begin());
}

}  // namespace

NumberCounts::Tests NumberCounts::FindTests(const NumberQuery& query) {
  const CountTest& count = tests_.Find(query, query.countText);
  if (!count.IsSimple()) return {};
  if (query.record.From == nullptr) return {&count, nullptr};
  const CountTest& from = tests_.Find(query, query.record.FromText);
  return from.IsSimple() ? Tests{&count, &from} : Tests();
}

NumberCounts::Tests NumberCounts::FindChainTests(const NumberQuery& query) {
  const Tests tests = FindTests(query);
  return tests && tests.from != nullptr && !tests.count->isSingleStep ? Tests() : tests;
}

// -------------------------------------------------------------------------- single and multiple

// The innermost node at or above `node` that counts, within a from.
NumberCounts::Climb NumberCounts::FindTarget(const Tests& tests, XPathNode* node,
                                             XPathNode*& target) {
  std::vector<const XPathNode*> passed;
  target = nullptr;
  int steps = 0;
  for (XPathNode* up = node; up != nullptr; up = up->parent, ++steps) {
    if (up->orderNumber <= 0) return Climb::Declined;
    if (up->parent != nullptr && up->parent->orderNumber >= up->orderNumber) {
      return Climb::Declined;
    }
    if (steps >= kRememberedStep) {
      if (const CountCache::ClimbEnd* known = cache_.FindClimb(tests.count, up)) {
        target = known->target;
        break;
      }
      if (steps % kRememberedStep == 0) passed.push_back(up);
    }
    if (tests.from != nullptr && tests.from->Matches(up)) break;
    // A node that has no parent to run the count from counts by itself.
    if (tests.count->Matches(up) || (up == node && up->parent == nullptr)) {
      target = up;
      break;
    }
  }
  for (const XPathNode* at : passed) cache_.AddClimb(tests.count, at, target);
  return target != nullptr ? Climb::Found : Climb::None;
}

bool NumberCounts::CountSingle(const NumberQuery& query, XPathNode* node,
                               std::vector<std::int32_t>& numbers) {
  const Tests tests = FindChainTests(query);
  if (!tests) return false;
  XPathNode* target;
  switch (FindTarget(tests, node, target)) {
    case Climb::Declined:
      return false;
    case Climb::None:
      return true;
    case Climb::Found:
      break;
  }
  numbers.push_back(CountSiblings(*tests.count, target));
  return true;
}

bool NumberCounts::CountMultiple(const NumberQuery& query, XPathNode* node,
                                 std::vector<std::int32_t>& numbers) {
  const Tests tests = FindChainTests(query);
  if (!tests) return false;
  for (XPathNode* at = node; at != nullptr;) {
    XPathNode* target;
    switch (FindTarget(tests, at, target)) {
      case Climb::Declined:
        numbers.clear();
        return false;
      case Climb::None:
        return true;
      case Climb::Found:
        break;
    }
    // The root alone, when it is reached from below, doesn't count by having no parent.
    if (target->parent == nullptr && target != node && !tests.count->Matches(target)) return true;
    numbers.push_back(CountSiblings(*tests.count, target));
    at = target->parent;
  }
  return true;
}

// 1 and the preceding elements among the siblings that count.
std::int32_t NumberCounts::CountSiblings(const CountTest& count, XPathNode* target) {
  XPathNode* parent = target->parent;
  if (parent == nullptr || target->kind == XPathNodeKind::Attribute) return 1;
  CountCache::Last& last = cache_.LastOf(count, parent);
  if (last.target == target) return last.number;
  std::int32_t number = 1;
  int walked = 0;
  for (XPathNode* sibling = target->previous; sibling != nullptr; sibling = sibling->previous) {
    if (sibling == last.target) {
      number += last.number - (sibling->kind == XPathNodeKind::Element ? 0 : 1);
      break;
    }
    if (walked++ == kWalkedSiblings) {
      if (const OrderNumbers* numbers = cache_.ChildrenOf(count, parent)) {
        number = 1 + CountUpTo(*numbers, target->orderNumber - 1);
        break;
      }
    }
    if (sibling->kind == XPathNodeKind::Element && count.Matches(sibling)) ++number;
  }
  last.target = target;
  last.number = number;
  return number;
}

// ------------------------------------------------------------------------------------------ any

bool NumberCounts::CountAny(const NumberQuery& query, XPathNode* node,
                            std::vector<std::int32_t>& numbers) {
  const Tests tests = FindTests(query);
  const std::int32_t order = node->orderNumber;
  if (!tests || order <= 0) return false;
  std::int32_t limit = 0;
  if (tests.from != nullptr) {
    const OrderNumbers* starts = cache_.NodesOf(*tests.from, node);
    if (starts == nullptr) return false;
    const std::int32_t before = CountUpTo(*starts, order - 1);
    if (before > 0) limit = (*starts)[static_cast<std::size_t>(before) - 1];
  }
  const OrderNumbers* counted = cache_.NodesOf(*tests.count, node);
  if (counted == nullptr) return false;
  const std::int32_t number = CountUpTo(*counted, order) - CountUpTo(*counted, limit);
  if (number > 0) numbers.push_back(number);
  return true;
}

}  // namespace kelmora
