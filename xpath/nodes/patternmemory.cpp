#include "nodes/patternmemory.h"

#include "axes/xpathaxis.h"
#include "nodes/xpathpathnodes.h"

namespace kelmora {

// --- verdicts ---------------------------------------------------------------------------------

std::uint64_t NodeVerdicts::PageKey(const XPathNode& node) {
  return std::uint64_t{static_cast<std::uint32_t>(node.documentNumber)} << 32 |
         static_cast<std::uint32_t>(node.orderNumber) / kNodesPerPage;
}

namespace {

// The two bits of a number within its page.
struct BitPlace {
  std::size_t byte;
  unsigned shift;
};
BitPlace PlaceOf(std::int32_t number, unsigned perPage, unsigned perByte) {
  const unsigned index = static_cast<unsigned>(number) % perPage;
  return {index / perByte, index % perByte * 2};
}

}  // namespace

Verdict NodeVerdicts::Find(const XPathNode& node) {
  if (!IsStamped(node)) {
    if (unstamped_.empty()) return Verdict::Unknown;
    const auto found = unstamped_.find(&node);
    if (found == unstamped_.end()) return Verdict::Unknown;
    return found->second ? Verdict::Yes : Verdict::No;
  }
  const std::uint64_t key = PageKey(node);
  if (key != lastKey_) {
    const auto found = pages_.find(key);
    if (found == pages_.end()) return Verdict::Unknown;
    lastKey_ = key;
    lastPage_ = &found->second;
  }
  const BitPlace place = PlaceOf(node.orderNumber, kNodesPerPage, kNodesPerByte);
  return static_cast<Verdict>(static_cast<unsigned>((*lastPage_)[place.byte]) >> place.shift & 3U);
}

void NodeVerdicts::Set(const XPathNode& node, bool passes) {
  if (!IsStamped(node)) {
    unstamped_[&node] = passes;
    return;
  }
  const std::uint64_t key = PageKey(node);
  if (key != lastKey_) {
    lastPage_ = &pages_.try_emplace(key).first->second;
    lastKey_ = key;
  }
  const BitPlace place = PlaceOf(node.orderNumber, kNodesPerPage, kNodesPerByte);
  const auto verdict = static_cast<unsigned>(passes ? Verdict::Yes : Verdict::No);
  std::uint8_t& byte = (*lastPage_)[place.byte];
  byte = static_cast<std::uint8_t>((byte & ~(3U << place.shift)) | verdict << place.shift);
}

// --- predicates and climbs --------------------------------------------------------------------

PatternMemory::PatternMemory(const XPathParseNodeRef& tree, const PrefixMap& prefixMap,
                             std::size_t steps)
    : steps_(steps), bindings_(tree->ResolvePrefixes(prefixMap)), context_(evaluation_, noInput_) {
  evaluation_.expression = &host_;
  evaluation_.prefixMap = &bindings_->map;
  evaluation_.bindings = bindings_.get();
  evaluation_.spareLists = &spareLists_;
  evaluation_.patternKind = kTemplatePattern;
  evaluation_.xsltFunctions = true;
}

bool PatternMemory::PassesPredicates(std::size_t index, const SimpleStep& step, XPathNode* node) {
  StepVerdicts& verdicts = steps_[index];
  Verdict verdict = verdicts.passes.Find(*node);
  if (verdict == Verdict::Unknown) {
    Judge(verdicts, step, node);
    verdict = verdicts.passes.Find(*node);
  }
  return verdict == Verdict::Yes;
}

// Where positions count, all siblings get their verdicts at once. The predicates are harmless, so
// the filter gives true.
void PatternMemory::Judge(StepVerdicts& verdicts, const SimpleStep& step, XPathNode* node) {
  found_.clear();
  std::int32_t size = 0;
  if (step.node->FiltersByNode()) {
    found_.emplace_back(node, 1);
  } else {
    const XPathNodeRef parent(node->parent, 1);
    RunAxis(step.isAttribute ? Axis::Attribute : Axis::Child, step.test, &parent, 1, found_);
    size = static_cast<std::int32_t>(found_.size());
  }
  for (const XPathNodeRef& entry : found_) verdicts.passes.Set(*entry.node, false);
  static_cast<void>(step.node->FilterOne(context_, size, found_, scratch_));
  for (const XPathNodeRef& entry : found_) verdicts.passes.Set(*entry.node, true);
}

void PatternMemory::EndClimbs(bool matches) {
  for (const Climb& climb : climbs_) {
    NodeVerdicts& above = steps_[climb.index].above;
    for (const XPathNode* at = climb.first; at != climb.end; at = at->parent) {
      above.Set(*at, matches);
    }
  }
  climbs_.clear();
}

}  // namespace kelmora
