#include "values/xpathnodeset.h"

#include <algorithm>
#include <bit>

namespace kelmora {
namespace {

bool IsInOrder(const XPathNodeList& list) {
  for (std::size_t i = 1; i < list.size(); ++i) {
    if (DocumentOrderLess(*list[i].node, *list[i - 1].node)) return false;
  }
  return true;
}

// The two numbers of a node as one that compares alike.
std::uint64_t OrderKey(const XPathNode& node) {
  auto biased = [](std::int32_t number) {
    return std::uint32_t{std::bit_cast<std::uint32_t>(number)} ^ 0x80000000U;
  };
  return std::uint64_t{biased(node.documentNumber)} << 32 | biased(node.orderNumber);
}

// Keys stand beside the entries, so that the sort does not go back to the nodes.
void SortByKey(XPathNodeList& list, std::uint64_t flip) {
  struct Keyed {
    std::uint64_t key;
    XPathNodeRef entry;
  };
  std::vector<Keyed> keyed;
  keyed.reserve(list.size());
  for (const XPathNodeRef& entry : list) keyed.push_back({OrderKey(*entry.node) ^ flip, entry});
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const Keyed& a, const Keyed& b) { return a.key < b.key; });
  for (std::size_t i = 0; i < list.size(); ++i) list[i] = keyed[i].entry;
}

}  // namespace

void RemoveDuplicates(XPathNodeList& list) {
  if (list.size() < 2) return;
  auto end = list.begin();
  for (const XPathNodeRef& entry : list) {
    if (entry.node->mark & kDelivered) continue;
    entry.node->mark |= kDelivered;
    *end++ = entry;
  }
  list.erase(end, list.end());
  for (const XPathNodeRef& entry : list) {
    entry.node->mark = static_cast<std::uint8_t>(entry.node->mark & ~kDelivered);
  }
}

void SortByDocumentOrder(XPathNodeList& list) {
  if (!IsInOrder(list)) SortByKey(list, 0);
}

void SortByReverseDocumentOrder(XPathNodeList& list) {
  for (std::size_t i = 1; i < list.size(); ++i) {
    if (DocumentOrderLess(*list[i - 1].node, *list[i].node)) {
      SortByKey(list, ~std::uint64_t{0});
      return;
    }
  }
}

XPathNode* FirstInDocumentOrder(const XPathNodeList& list) {
  if (list.empty()) return nullptr;
  XPathNode* first = list.front().node;
  for (const XPathNodeRef& entry : list) {
    if (DocumentOrderLess(*entry.node, *first)) first = entry.node;
  }
  return first;
}

void SortAndNumber(XPathNodeList& list) {
  SortByDocumentOrder(list);
  std::int32_t position = 0;
  for (XPathNodeRef& entry : list) entry.position = ++position;
}

}  // namespace kelmora
