// ParsoAnalysis: what can be said of the rules of a grammar before any text is seen. Everything is
// worked out when first asked for, so a run pays for the rules that it meets.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "parso/parsogrammar.h"

namespace kelmora {

// In a choice at least one attempt has to succeed, so that an operand is never left out.
constexpr ParsoQuantifier AsAlternative(ParsoQuantifier quantifier) {
  return Repeats(quantifier) ? ParsoQuantifier::Some : ParsoQuantifier::One;
}

// Whether the two take a unit in common.
bool Meet(const ParsoClassTable& a, const ParsoClassTable& b);

// The first two units of what an item can match. A unit that the item doesn't take itself, because
// it can match less than two, is in the set as well, whatever it is. Entry 0 stands for the end of
// the text.
struct ParsoBeginning {
  ParsoClassTable first{};
  ParsoClassTable second{};
  bool canBeEmpty = false;
  bool canBeOne = false;

  static const ParsoBeginning& Anything();
  ParsoBeginning Then(const ParsoBeginning& other) const;
  ParsoBeginning Or(const ParsoBeginning& other) const;
  ParsoBeginning Quantified(ParsoQuantifier quantifier) const;
  // With the units that may follow filled in.
  ParsoBeginning Closed() const;
  bool Overlaps(const ParsoBeginning& other) const {
    return Meet(first, other.first) && Meet(second, other.second);
  }
};

// How many nodes a match leaves in the list of the node above it, after pruning.
struct ParsoNodeCount {
  static constexpr std::uint8_t kMany = 2;
  std::uint8_t least = 0;
  std::uint8_t most = 0;  // kMany: two or more
};

class ParsoAnalysis {
 public:
  explicit ParsoAnalysis(const ParsoGrammar& grammar) : facts_(grammar.rules.size()) {}

  bool MatchesEmpty(const ParsoRule& rule);
  const ParsoBeginning& BeginningOf(const ParsoRule& rule);  // not Closed
  ParsoNodeCount NodesOf(const ParsoRule& rule);  // what an attached match of `rule` leaves
  ParsoNodeCount NodesOf(const ParsoChild& child);
  ParsoNodeCount NodesBelow(const ParsoRule& rule);  // its children's lists in all
  // Objects that have to be gone through to match the rule; kHuge for a recursive one.
  std::uint32_t Weight(const ParsoRule& rule);
  static constexpr std::uint32_t kHuge = 100000;

  // Whether an attached match of `rule` can leave a node of `wanted` in the list.
  bool CanLeave(const ParsoRule& rule, const ParsoRule& wanted);

 private:
  struct Facts {
    std::optional<bool> matchesEmpty;
    std::unique_ptr<ParsoBeginning> beginning;
    std::optional<ParsoNodeCount> nodesBelow;
    std::optional<std::uint32_t> weight;
    bool visiting = false;
  };
  Facts& FactsOf(const ParsoRule& rule) { return facts_[static_cast<std::size_t>(rule.index)]; }
  ParsoBeginning WorkOutBeginning(const ParsoRule& rule);
  bool WorkOutMatchesEmpty(const ParsoRule& rule);
  ParsoNodeCount WorkOutNodesBelow(const ParsoRule& rule);

  std::vector<Facts> facts_;
};

// The rules whose results a parse may keep by position: recursive, and with no constraint within
// reach. Only in these can a failing alternative be parsed once more at every level of a text.
std::vector<bool> FindMemoisedRules(const ParsoGrammar& grammar);

}  // namespace kelmora
