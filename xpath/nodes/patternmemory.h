// PatternMemory: what the tests of one simple pattern have found so far, and the evaluation of its
// predicates.
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "nodes/xpathcontext.h"
#include "xpath/simplepattern.h"

namespace kelmora {

enum class Verdict : std::uint8_t { Unknown, No, Yes };

// A verdict for each node. Stamped nodes have two bits in a page of neighbours.
class NodeVerdicts {
 public:
  Verdict Find(const XPathNode& node);
  void Set(const XPathNode& node, bool passes);

 private:
  static constexpr unsigned kNodesPerPage = 1024;
  static constexpr unsigned kNodesPerByte = 4;
  using Page = std::array<std::uint8_t, kNodesPerPage / kNodesPerByte>;
  static bool IsStamped(const XPathNode& node) {
    return node.orderNumber > 0 && node.documentNumber > 0;
  }
  static std::uint64_t PageKey(const XPathNode& node);

  std::unordered_map<std::uint64_t, Page> pages_;
  std::unordered_map<const XPathNode*, bool> unstamped_;
  std::uint64_t lastKey_ = ~std::uint64_t{0};
  Page* lastPage_ = nullptr;  // of lastKey_; selections come in runs of neighbours
};

class PatternMemory {
 public:
  PatternMemory(const XPathParseNodeRef& tree, const PrefixMap& prefixMap, std::size_t steps);
  PatternMemory(const PatternMemory&) = delete;
  PatternMemory& operator=(const PatternMemory&) = delete;

  // The node passes the predicates of the step, provided that it passes axis and test.
  bool PassesPredicates(std::size_t index, const SimpleStep& step, XPathNode* node);

  // Whether the steps up to one lead to a node or to one above it. A climb through nodes without a
  // verdict is noted, and gets the verdict to which it led when that is known.
  Verdict FindAbove(std::size_t index, const XPathNode& node) {
    return steps_[index].above.Find(node);
  }
  // From `first` up to `end`, which is not among them; null for all.
  void NoteClimb(std::size_t index, const XPathNode* first, const XPathNode* end) {
    climbs_.push_back({index, first, end});
  }
  void EndClimbs(bool matches);

 private:
  struct StepVerdicts {
    NodeVerdicts passes;
    NodeVerdicts above;
  };
  struct Climb {
    std::size_t index;
    const XPathNode* first;
    const XPathNode* end;
  };
  void Judge(StepVerdicts& verdicts, const SimpleStep& step, XPathNode* node);

  std::vector<StepVerdicts> steps_;
  std::vector<Climb> climbs_;

  SharedHandle<const XPathParseTree::Bindings> bindings_;
  XPathExpression host_;
  std::vector<XPathNodeList> spareLists_;
  XPathEvaluation evaluation_;
  XPathValue noInput_;
  XPathContext context_;
  XPathNodeList found_;
  XPathNodeList scratch_;
};

}  // namespace kelmora
