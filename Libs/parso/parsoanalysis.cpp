// Facts of rules, each worked out once by recursion over the operands and kept by the rule's index:
// whether a rule matches nothing, with which two units it can begin (FIRST sets, as of LL(2)
// parsers), how many nodes a match leaves, how much there is to go through. Parsing expression
// grammars and these predicates are described by Ford, "Parsing Expression Grammars: A
// Recognition-Based Syntactic Foundation", POPL 2004.
//
// The trap is recursion: a rule that is being visited answers with what is safe to believe, and
// that answer is kept in facts of the rules in between. So it has to err to one side: anything may
// begin it, any number of nodes may come of it. Only "matches nothing" says no, which holds since
// a rule that comes back to itself before it has taken a unit never ends and is not supported.
#include "parsoanalysis.h"

#include <algorithm>

namespace kelmora {
namespace {

std::size_t EntryOf(char16_t unit) {
  return std::min<std::size_t>(unit, 255);
}

void Add(ParsoClassTable& table, const ParsoClassTable& more) {
  for (std::size_t i = 0; i < table.size(); ++i) table[i] |= more[i];
}

ParsoNodeCount Add(ParsoNodeCount a, ParsoNodeCount b) {
  const auto sum = [](int x, int y) {
    return static_cast<std::uint8_t>(std::min<int>(x + y, ParsoNodeCount::kMany));
  };
  return {sum(a.least, b.least), sum(a.most, b.most)};
}

ParsoNodeCount Quantify(ParsoNodeCount count, ParsoQuantifier quantifier) {
  if (CanBeNone(quantifier)) count.least = 0;
  if (Repeats(quantifier) && count.most > 0) count.most = ParsoNodeCount::kMany;
  return count;
}

}  // namespace

bool Meet(const ParsoClassTable& a, const ParsoClassTable& b) {
  std::uint8_t common = 0;
  for (std::size_t i = 0; i < a.size(); ++i)
    common = static_cast<std::uint8_t>(common | (a[i] & b[i]));
  return common != 0;
}

const ParsoBeginning& ParsoBeginning::Anything() {
  static const ParsoBeginning anything = [] {
    ParsoBeginning all;
    all.first.fill(1);
    all.second.fill(1);
    all.canBeEmpty = all.canBeOne = true;
    return all;
  }();
  return anything;
}

ParsoBeginning ParsoBeginning::Then(const ParsoBeginning& other) const {
  ParsoBeginning both = *this;
  if (canBeEmpty) {
    Add(both.first, other.first);
    Add(both.second, other.second);
  }
  if (canBeOne) Add(both.second, other.first);
  both.canBeEmpty = canBeEmpty && other.canBeEmpty;
  both.canBeOne = (canBeOne && other.canBeEmpty) || (canBeEmpty && other.canBeOne);
  return both;
}

ParsoBeginning ParsoBeginning::Or(const ParsoBeginning& other) const {
  ParsoBeginning either = *this;
  Add(either.first, other.first);
  Add(either.second, other.second);
  either.canBeEmpty |= other.canBeEmpty;
  either.canBeOne |= other.canBeOne;
  return either;
}

ParsoBeginning ParsoBeginning::Quantified(ParsoQuantifier quantifier) const {
  ParsoBeginning result = *this;
  if (Repeats(quantifier) && canBeOne) Add(result.second, first);
  if (CanBeNone(quantifier)) result.canBeEmpty = true;
  return result;
}

ParsoBeginning ParsoBeginning::Closed() const {
  if (canBeEmpty) return Anything();
  ParsoBeginning result = *this;
  if (canBeOne) result.second.fill(1);
  return result;
}

bool ParsoAnalysis::MatchesEmpty(const ParsoRule& rule) {
  Facts& facts = FactsOf(rule);
  if (facts.matchesEmpty) return *facts.matchesEmpty;
  if (facts.visiting) return false;  // what is empty only by way of itself is not
  facts.visiting = true;
  const bool result = WorkOutMatchesEmpty(rule);
  facts.visiting = false;
  facts.matchesEmpty = result;
  return result;
}

bool ParsoAnalysis::WorkOutMatchesEmpty(const ParsoRule& rule) {
  if (rule.kind == ParsoKind::Class) return false;
  if (rule.kind == ParsoKind::Literal) return rule.name.empty();
  switch (rule.op) {
    case ParsoOp::None:
    case ParsoOp::Sequence:
      return std::ranges::all_of(rule.children, [&](const ParsoChild& child) {
        return CanBeNone(child.quantifier) || MatchesEmpty(*child.rule);
      });
    case ParsoOp::Choice:
      return std::ranges::any_of(
          rule.children, [&](const ParsoChild& child) { return MatchesEmpty(*child.rule); });
    case ParsoOp::Except:
      return MatchesEmpty(*rule.children[0].rule);
    case ParsoOp::StopAt:
      return false;
  }
  return false;
}

const ParsoBeginning& ParsoAnalysis::BeginningOf(const ParsoRule& rule) {
  Facts& facts = FactsOf(rule);
  if (facts.beginning) return *facts.beginning;
  if (facts.visiting) return ParsoBeginning::Anything();
  facts.visiting = true;
  facts.beginning = std::make_unique<ParsoBeginning>(WorkOutBeginning(rule));
  facts.visiting = false;
  return *facts.beginning;
}

ParsoBeginning ParsoAnalysis::WorkOutBeginning(const ParsoRule& rule) {
  ParsoBeginning result;
  if (rule.kind == ParsoKind::Class) {
    result.first = *rule.table;
    result.first[0] = 0;
    result.canBeOne = true;
    return result;
  }
  if (rule.kind == ParsoKind::Literal) {
    result.canBeEmpty = rule.name.empty();
    result.canBeOne = rule.name.size() == 1;
    if (!rule.name.empty()) result.first[EntryOf(rule.name[0])] = 1;
    if (rule.name.size() > 1) result.second[EntryOf(rule.name[1])] = 1;
    return result;
  }
  switch (rule.op) {
    case ParsoOp::None:
    case ParsoOp::Sequence:
      result.canBeEmpty = true;
      for (const ParsoChild& child : rule.children) {
        if (!result.canBeEmpty && !result.canBeOne) break;
        result = result.Then(BeginningOf(*child.rule).Quantified(child.quantifier));
      }
      break;
    case ParsoOp::Choice:
      for (const ParsoChild& child : rule.children) {
        result = result.Or(BeginningOf(*child.rule).Quantified(AsAlternative(child.quantifier)));
      }
      break;
    case ParsoOp::Except:
      result = BeginningOf(*rule.children[0].rule).Quantified(rule.children[0].quantifier);
      break;
    case ParsoOp::StopAt:
      result = BeginningOf(*rule.children[0].rule).Quantified(ParsoQuantifier::Some);
      break;
  }
  return result;
}

ParsoNodeCount ParsoAnalysis::NodesOf(const ParsoRule& rule) {
  if (rule.kind != ParsoKind::Group && rule.kind != ParsoKind::Rule) return {0, 0};
  if (rule.flagNoNode) return {0, 0};
  if (rule.IsToken() || rule.flagKeepNode) return {1, 1};
  const ParsoNodeCount below = NodesBelow(rule);
  // A group is replaced by its children and stays without any; a rule is the other way round.
  if (rule.kind == ParsoKind::Group) {
    const auto atLeastOne = [](std::uint8_t n) { return std::max<std::uint8_t>(n, 1); };
    return {atLeastOne(below.least), atLeastOne(below.most)};
  }
  const auto atMostOne = [](std::uint8_t n) { return std::min<std::uint8_t>(n, 1); };
  return {atMostOne(below.least), atMostOne(below.most)};
}

ParsoNodeCount ParsoAnalysis::NodesOf(const ParsoChild& child) {
  return Quantify(NodesOf(*child.rule), child.quantifier);
}

ParsoNodeCount ParsoAnalysis::NodesBelow(const ParsoRule& rule) {
  Facts& facts = FactsOf(rule);
  if (facts.nodesBelow) return *facts.nodesBelow;
  if (facts.visiting) return {0, ParsoNodeCount::kMany};
  facts.visiting = true;
  const ParsoNodeCount result = WorkOutNodesBelow(rule);
  facts.visiting = false;
  facts.nodesBelow = result;
  return result;
}

ParsoNodeCount ParsoAnalysis::WorkOutNodesBelow(const ParsoRule& rule) {
  ParsoNodeCount result;
  switch (rule.op) {
    case ParsoOp::None:
    case ParsoOp::Sequence:
      for (const ParsoChild& child : rule.children) result = Add(result, NodesOf(child));
      break;
    case ParsoOp::Choice:
      result.least = ParsoNodeCount::kMany;
      for (const ParsoChild& child : rule.children) {
        const ParsoNodeCount nodes =
            Quantify(NodesOf(*child.rule), AsAlternative(child.quantifier));
        result = {std::min(result.least, nodes.least), std::max(result.most, nodes.most)};
      }
      break;
    case ParsoOp::Except:
      result = NodesOf(*rule.children[0].rule);
      break;
    case ParsoOp::StopAt:
      result = Quantify(NodesOf(*rule.children[0].rule), ParsoQuantifier::Some);
      break;
  }
  return result;
}

std::uint32_t ParsoAnalysis::Weight(const ParsoRule& rule) {
  if (rule.children.empty()) return 1;
  Facts& facts = FactsOf(rule);
  if (facts.weight) return *facts.weight;
  if (facts.visiting) return kHuge;
  facts.visiting = true;
  std::uint32_t weight = 1;
  for (const ParsoChild& child : rule.children) {
    weight = std::min(weight + Weight(*child.rule), kHuge);
  }
  facts.visiting = false;
  facts.weight = weight;
  return weight;
}

bool ParsoAnalysis::CanLeave(const ParsoRule& rule, const ParsoRule& wanted) {
  if (&rule == &wanted) return true;
  if (rule.kind != ParsoKind::Group && rule.kind != ParsoKind::Rule) return false;
  if (rule.flagNoNode || rule.flagKeepNode || rule.IsToken()) return false;
  Facts& facts = FactsOf(rule);
  if (facts.visiting) return false;
  facts.visiting = true;
  const bool result = std::ranges::any_of(
      rule.children, [&](const ParsoChild& child) { return CanLeave(*child.rule, wanted); });
  facts.visiting = false;
  return result;
}

std::vector<bool> FindMemoisedRules(const ParsoGrammar& grammar) {
  std::vector<bool> memoised(grammar.rules.size());
  std::vector<bool> named(grammar.rules.size());
  for (const ParsoRule* rule : grammar.rules) {
    if (rule == nullptr) continue;
    for (const ParsoRule* name : rule->constraint) {
      if (name != nullptr) named[static_cast<std::size_t>(name->index)] = true;
    }
  }
  for (const auto& start : grammar.rules) {
    if (start == nullptr || start->kind != ParsoKind::Rule) continue;
    std::vector<bool> reached(grammar.rules.size());
    std::vector<const ParsoRule*> pending = {start};
    bool isConstrained = false;
    while (!pending.empty() && !isConstrained) {
      const ParsoRule& rule = *pending.back();
      pending.pop_back();
      isConstrained = !rule.constraint.empty() || named[static_cast<std::size_t>(rule.index)];
      for (const ParsoChild& child : rule.children) {
        const auto index = static_cast<std::size_t>(child.rule->index);
        if (reached[index]) continue;
        reached[index] = true;
        pending.push_back(child.rule);
      }
    }
    const auto index = static_cast<std::size_t>(start->index);
    memoised[index] = reached[index] && !isConstrained;
  }
  return memoised;
}

}  // namespace kelmora
