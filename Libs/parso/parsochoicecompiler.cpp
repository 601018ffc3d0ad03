// The code of choices and of constraints.
//
// A choice looks at the next two units and goes to the first alternative that can begin so; an
// alternative that is passed over could only have failed, and left nothing behind. Two neighbouring
// alternatives that begin with the same items share the code of these items, which builds the same
// nodes for both; the node that is open meanwhile gets its rule only when it is closed.
#include <algorithm>

#include "parsocompiler.h"

namespace kelmora {
namespace {

constexpr int kSharedLevels = 2;  // sequences inside an alternative that may share their beginning

// What a sequence begins with, however deep: a class, a literal or something that is no sequence.
const ParsoRule& FirstItem(const ParsoRule& sequence) {
  const ParsoRule* rule = &sequence;
  while (IsSequence(*rule) && rule->children[0].rule != &sequence) rule = rule->children[0].rule;
  return *rule;
}

bool IsOpen(const ParsoCode& part) {
  return part.size() == 1 && part[0].opcode == ParsoOpcode::Open;
}

bool IsClose(const ParsoCode& part) {
  if (part.size() != 1) return false;
  const ParsoOpcode opcode = part[0].opcode;
  return opcode == ParsoOpcode::CloseNode || opcode == ParsoOpcode::ClosePruned ||
         opcode == ParsoOpcode::CloseGroup;
}

bool CanEndWithJump(ParsoOpcode opcode) {
  return opcode == ParsoOpcode::CloseLeaf || opcode == ParsoOpcode::CloseLeafUnlessEmpty ||
         opcode == ParsoOpcode::CloseNode || opcode == ParsoOpcode::Call;
}

std::size_t LeadingOpens(const std::vector<ParsoCode>& parts) {
  return static_cast<std::size_t>(std::ranges::find_if_not(parts, IsOpen) - parts.begin());
}

}  // namespace

ParsoBeginning ParsoCompiler::BeginningOf(const ParsoChild& alternative) {
  return analysis_.BeginningOf(*alternative.rule)
      .Quantified(AsAlternative(alternative.quantifier))
      .Closed();
}

ParsoCode ParsoCompiler::ChoiceCode(std::span<const ParsoChild> children, bool attached,
                                    const ParsoRule* leafOfEmpty) {
  std::vector<Alternative> alternatives;
  for (std::size_t i = 0; i < children.size(); ++i) {
    const ParsoBeginning beginning = BeginningOf(children[i]);
    if (i + 1 < children.size()) {
      const ParsoBeginning next = BeginningOf(children[i + 1]);
      auto shared = beginning.Overlaps(next)
                        ? SharedCode(children[i], children[i + 1], attached, leafOfEmpty)
                        : std::nullopt;
      if (shared) {
        alternatives.push_back({std::move(*shared), beginning.Or(next)});
        ++i;
        continue;
      }
    }
    alternatives.push_back({AlternativeCode(children[i], attached, leafOfEmpty), beginning});
  }
  if (alternatives.size() == 1) return std::move(alternatives[0].code);
  return DispatchCode(alternatives);
}

// With `leafOfEmpty`, an alternative that leaves no nodes becomes a leaf of that rule.
ParsoCode ParsoCompiler::AlternativeCode(const ParsoChild& child, bool attached,
                                         const ParsoRule* leafOfEmpty) {
  const bool isLeaf = leafOfEmpty != nullptr && analysis_.NodesOf(*child.rule).most == 0;
  ParsoCode code;
  if (isLeaf) code.push_back({ParsoOpcode::Mark});
  if (analysis_.MatchesEmpty(*child.rule)) code.push_back({ParsoOpcode::FailAtEnd});
  AppendCode(code, ItemCode({child.rule, AsAlternative(child.quantifier)}, attached && !isLeaf));
  if (isLeaf) {
    code.push_back({ParsoOpcode::CloseLeaf});
    code.back().rule = leafOfEmpty;
  }
  return code;
}

ParsoCode ParsoCompiler::DispatchCode(const std::vector<Alternative>& alternatives) {
  if (alternatives.size() > ParsoDispatch::kMostAlternatives) {
    unsupported_ = true;
    return {};
  }
  ParsoDispatch dispatch;
  ParsoCode code(1);
  std::vector<std::size_t> ends;  // of the alternatives
  for (std::size_t i = 0; i < alternatives.size(); ++i) {
    const ParsoBeginning& beginning = alternatives[i].beginning;
    const auto bit = static_cast<ParsoDispatch::Mask>(1u << i);
    for (std::size_t unit = 0; unit < dispatch.first.size(); ++unit) {
      if (beginning.first[unit] != 0) dispatch.first[unit] |= bit;
      if (beginning.second[unit] != 0) dispatch.second[unit] |= bit;
    }
    dispatch.jumps[i] = static_cast<std::int32_t>(code.size());
    AppendCode(code, alternatives[i].code);
    const bool leavesOthers =
        std::any_of(alternatives.begin() + static_cast<std::ptrdiff_t>(i) + 1, alternatives.end(),
                    [&](const Alternative& later) { return later.beginning.Overlaps(beginning); });
    if (leavesOthers) {
      code.push_back({ParsoOpcode::EndAlternative});
      code.back().owner = 1 - static_cast<std::int64_t>(code.size());
    } else if (!CanEndWithJump(code.back().opcode)) {
      code.push_back({ParsoOpcode::Jump});
    }
    ends.push_back(code.size());
  }
  std::size_t start = 1;
  for (const std::size_t end : ends) {
    Retarget(code, start, end, code.size());
    start = end;
  }
  code[0] = {ParsoOpcode::Dispatch, static_cast<std::int32_t>(code.size())};
  code[0].dispatch = KeepOnce(program_.dispatches_, dispatch);
  return code;
}

// One code for two neighbouring alternatives that overlap, if there is a way to share it.
std::optional<ParsoCode> ParsoCompiler::SharedCode(const ParsoChild& a, const ParsoChild& b,
                                                   bool attached, const ParsoRule* leafOfEmpty) {
  if (leafOfEmpty != nullptr && analysis_.NodesOf(*b.rule).most == 0) {
    return SharedRun(a, b, *leafOfEmpty);
  }
  if (leafOfEmpty != nullptr && analysis_.NodesOf(*a.rule).most == 0) return std::nullopt;
  return SharedBeginning(a, b, attached);
}

// For a token W* (C | X) Y* and a run W+ that leaves nothing, W and C being classes: the run is
// gone through once, and what stands behind it tells which of the two it begins.
std::optional<ParsoCode> ParsoCompiler::SharedRun(const ParsoChild& a, const ParsoChild& b,
                                                  const ParsoRule& leafOfEmpty) {
  const ParsoRule& token = *a.rule;
  if (Repeats(a.quantifier) || !token.IsToken() || !IsSequence(token) ||
      token.children.size() < 2) {
    return std::nullopt;
  }
  const ParsoChild& middle = token.children[1];
  const auto runA = AsRun(token.children[0], false);
  const auto runB = AsRun({b.rule, AsAlternative(b.quantifier)}, false);
  const bool areRuns = runA && runB && runA->quantifier == ParsoQuantifier::Any &&
                       runB->quantifier == ParsoQuantifier::Some &&
                       SetOf(*runA->rule) == SetOf(*runB->rule);
  if (!areRuns || middle.quantifier != ParsoQuantifier::One || middle.rule->op != ParsoOp::Choice ||
      analysis_.MatchesEmpty(*middle.rule)) {
    return std::nullopt;
  }
  const ParsoChild& first = middle.rule->children[0];
  const std::vector<ParsoChild> others(middle.rule->children.begin() + 1,
                                       middle.rule->children.end());
  const std::vector<ParsoChild> rest(token.children.begin() + 2, token.children.end());
  const bool restNeverFails = std::ranges::all_of(
      rest, [](const ParsoChild& child) { return CanBeNone(child.quantifier); });
  if (!restNeverFails || first.rule->kind != ParsoKind::Class || Repeats(first.quantifier)) {
    return std::nullopt;
  }

  active_.push_back(&token);
  ParsoBeginning beginning;
  for (const ParsoChild& child : others) beginning = beginning.Or(BeginningOf(child));
  ParsoCode other = ChoiceCode(others, false, nullptr);
  Parts taken = {{{ParsoOpcode::UnitOrJump}}};
  taken[0][0].set = SetOf(*first.rule);
  for (const ParsoChild& child : rest) taken.push_back(ItemCode(child, false));
  ParsoCode code = {{ParsoOpcode::Mark}, {ParsoOpcode::Run}};
  code[1].set = SetOf(*runA->rule);
  AppendCode(code, JoinParts(taken));
  active_.pop_back();

  const auto size = static_cast<std::int32_t>(other.size());
  constexpr std::int32_t kUnitOrJump = 2;
  code.push_back({ParsoOpcode::CloseLeaf, size + 5});  // behind all
  code.back().rule = &token;
  code[kUnitOrJump].jump = static_cast<std::int32_t>(code.size()) - kUnitOrJump;
  code.push_back({ParsoOpcode::JumpUnless, size + 3});  // to the last instruction
  code.back().beginning = TableOf(beginning);
  code.push_back({ParsoOpcode::ChoicePoint, size + 2});  // likewise
  AppendCode(code, other);
  code.push_back({ParsoOpcode::Commit, kUnitOrJump + 1 - static_cast<std::int32_t>(code.size())});
  code.push_back({ParsoOpcode::CloseLeafUnlessEmpty});
  code.back().rule = &leafOfEmpty;
  return code;
}

std::optional<ParsoCode> ParsoCompiler::SharedBeginning(const ParsoChild& a, const ParsoChild& b,
                                                        bool attached) {
  constexpr std::size_t kLeastShared = 2;
  for (const ParsoChild* child : {&a, &b}) {
    if (Repeats(child->quantifier) || !IsSequence(*child->rule) || IsActive(*child->rule) ||
        ShapeOf(*child->rule, attached) == Shape::Leaf || analysis_.MatchesEmpty(*child->rule)) {
      return std::nullopt;
    }
  }
  if (&FirstItem(*a.rule) != &FirstItem(*b.rule)) return std::nullopt;
  Parts partsA = PartsOf(*a.rule, attached, kSharedLevels);
  Parts partsB = PartsOf(*b.rule, attached, kSharedLevels);
  const std::size_t opensA = LeadingOpens(partsA);
  const std::size_t opensB = LeadingOpens(partsB);
  const std::size_t opens = std::max(opensA, opensB);
  partsA.erase(partsA.begin(), partsA.begin() + static_cast<std::ptrdiff_t>(opensA));
  partsB.erase(partsB.begin(), partsB.begin() + static_cast<std::ptrdiff_t>(opensB));
  std::size_t shared = 0;
  while (shared < std::min(partsA.size(), partsB.size()) &&
         SameCode(partsA[shared], partsB[shared])) {
    ++shared;
  }
  if (shared < kLeastShared || shared == partsA.size()) return std::nullopt;

  // The one with fewer open nodes at the start closes the others behind its own.
  const auto split = static_cast<std::ptrdiff_t>(shared);
  const ParsoCode splice(1, {ParsoOpcode::CloseSpliced});
  Parts restA(partsA.begin() + split, partsA.end());
  Parts restB(partsB.begin() + split, partsB.end());
  restA.insert(restA.end(), opens - opensA, splice);
  restB.insert(restB.end(), opens - opensB, splice);

  ParsoCode code(opens, {ParsoOpcode::Open});
  std::size_t openNodes = opens;
  for (std::size_t i = 0; i < shared; ++i) {
    AppendCode(code, partsA[i]);
    if (IsOpen(partsA[i])) ++openNodes;
    if (IsClose(partsA[i])) --openNodes;
  }
  const ParsoCode codeB = JoinParts(restB);
  // A literal that only closes follow decides alone; else a choice point has to wait for the end.
  const bool literalDecides =
      restA[0].size() == 1 && restA[0][0].opcode == ParsoOpcode::Literal &&
      std::all_of(restA.begin() + 1, restA.end() - static_cast<std::ptrdiff_t>(opens - opensA),
                  IsClose);
  ParsoCode codeA = JoinParts(restA);
  if (literalDecides) {
    codeA[0].opcode = ParsoOpcode::LiteralOrJump;
    codeA.push_back({ParsoOpcode::Jump, JumpOver(codeB)});
    codeA[0].jump = static_cast<std::int32_t>(codeA.size());
  } else {
    codeA.push_back({ParsoOpcode::Commit, JumpOver(codeB)});
    codeA.back().count = static_cast<std::uint16_t>(openNodes);
    code.push_back({ParsoOpcode::ChoicePoint, JumpOver(codeA)});
    code.back().count = static_cast<std::uint16_t>(openNodes);
  }
  AppendCode(code, codeA);
  AppendCode(code, codeB);
  return code;
}

std::optional<std::size_t> ParsoCompiler::EndNameItem(const ParsoRule& rule) {
  const bool bothThere =
      rule.constraint.size() == 2 && rule.constraint[0] != nullptr && rule.constraint[1] != nullptr;
  if (!bothThere || !StartsWithFirstName(rule)) return std::nullopt;
  const ParsoRule& endName = *rule.constraint[1];
  for (std::size_t i = 0; i < rule.children.size(); ++i) {
    const ParsoChild& child = rule.children[i];
    const auto holds = [&](const ParsoChild& operand) {
      return operand.rule == &endName && operand.quantifier == ParsoQuantifier::One;
    };
    const auto isSilent = [&](const ParsoChild& operand) {
      return holds(operand) || analysis_.NodesOf(operand).most == 0;
    };
    if (child.quantifier == ParsoQuantifier::One && IsSequence(*child.rule) &&
        !IsActive(*child.rule) && !child.rule->flagKeepNode && !child.rule->flagNoNode &&
        !child.rule->IsToken() && std::ranges::count_if(child.rule->children, holds) == 1 &&
        std::ranges::all_of(child.rule->children, isSilent)) {
      return i;
    }
    // Anything in front of it that could hold the end name would be found first.
    const auto canLeave = [&](const ParsoChild& operand) {
      return analysis_.CanLeave(*operand.rule, endName);
    };
    if (canLeave(child) || std::ranges::any_of(child.rule->children, canLeave)) break;
  }
  return std::nullopt;
}

// Whether the first node below a match is, or begins with, the first name of the constraint.
bool ParsoCompiler::StartsWithFirstName(const ParsoRule& rule) {
  const auto firstWithNodes = [&](const ParsoRule& sequence) -> const ParsoRule* {
    for (const ParsoChild& child : sequence.children) {
      if (analysis_.NodesOf(child).most == 0) continue;
      return child.quantifier == ParsoQuantifier::One ? child.rule : nullptr;
    }
    return nullptr;
  };
  const ParsoRule* outer = firstWithNodes(rule);
  if (outer == nullptr || !IsSequence(*outer) || outer->IsToken()) return false;
  return firstWithNodes(*outer) == rule.constraint[0];
}

// Both names have to be a Name of the same units, so that the text of the first tells how far the
// second must go.
ParsoCode ParsoCompiler::SameNameCode(const ParsoRule& first, const ParsoRule& second) {
  ParsoCode a;
  ParsoCode b;
  if (!IsActive(first) && !IsActive(second)) {
    a = JoinParts(PartsOf(first, true, 0));
    b = JoinParts(PartsOf(second, true, 0));
  }
  const bool areNames = a.size() == 1 && b.size() == 1 && a[0].opcode == ParsoOpcode::NameLeaf &&
                        b[0].opcode == ParsoOpcode::NameLeaf && a[0].name == b[0].name;
  if (!areNames) {
    unsupported_ = true;
    return {};
  }
  ParsoCode code = a;
  code[0].opcode = ParsoOpcode::SameName;
  return code;
}

}  // namespace kelmora
