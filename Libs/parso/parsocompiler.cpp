// A rule becomes code that matches it and hangs what is left of it after pruning into the list of
// nodes above. Pruning looks only at how many children a node has, which for most rules is known
// beforehand (ParsoAnalysis); such a rule makes its node at once, or none at all, and in rules
// whose nodes are dropped nothing makes nodes. Rules that are short are put in the place of their
// call.
//
// The trap is the end of the text: an item that can match nothing is not tried there, so it fails
// where it is required and leaves no empty node where it is optional (FailAtEnd, JumpAtEnd). All
// other items fail there by themselves, since no set and no literal takes the 0 behind the text.
#include "parsocompiler.h"

#include <algorithm>

namespace kelmora {
namespace {

constexpr std::uint32_t kInlineWeight = 70;  // heavier rules are called

ParsoInstruction LiteralInstruction(ParsoOpcode opcode, const ParsoRule& literal) {
  ParsoInstruction instruction{opcode};
  instruction.count = static_cast<std::uint16_t>(literal.name.size());
  instruction.literal = literal.name.data();
  return instruction;
}

ParsoInstruction Close(ParsoOpcode opcode, const ParsoRule& rule) {
  ParsoInstruction instruction{opcode};
  instruction.rule = &rule;
  return instruction;
}

// Unit, Run is Name; with Mark and CloseLeaf around it NameLeaf. Only for code without jumps.
void FuseName(ParsoCode& code, std::deque<ParsoName>& names) {
  if (code.size() == 2 && code[0].opcode == ParsoOpcode::Unit &&
      code[1].opcode == ParsoOpcode::Run) {
    ParsoInstruction name{ParsoOpcode::Name};
    name.name = KeepOnce(names, ParsoName{*code[0].set, *code[1].set});
    code = {name};
  } else if (code.size() == 3 && code[0].opcode == ParsoOpcode::Mark &&
             code[1].opcode == ParsoOpcode::Name && code[2].opcode == ParsoOpcode::CloseLeaf) {
    ParsoInstruction leaf{ParsoOpcode::NameLeaf};
    leaf.name = code[1].name;
    leaf.rule = code[2].rule;
    code = {leaf};
  }
}

}  // namespace

bool IsSequence(const ParsoRule& rule) {
  return !rule.children.empty() && (rule.op == ParsoOp::Sequence || rule.op == ParsoOp::None);
}

ParsoCode JoinParts(const std::vector<ParsoCode>& parts) {
  ParsoCode code;
  bool afterRun = false;  // the part in front was nothing but a Run
  for (const ParsoCode& part : parts) {
    const bool isOne = part.size() == 1;
    if (afterRun && isOne && part[0].opcode == ParsoOpcode::Literal && part[0].count > 0 &&
        !code.back().set->Takes(part[0].literal[0])) {
      code.back().opcode = ParsoOpcode::SpacedLiteral;
      code.back().count = part[0].count;
      code.back().literal = part[0].literal;
    } else {
      AppendCode(code, part);
    }
    afterRun = isOne && code.back().opcode == ParsoOpcode::Run;
  }
  return code;
}

void AppendCode(ParsoCode& code, const ParsoCode& more) {
  code.insert(code.end(), more.begin(), more.end());
}

void Retarget(ParsoCode& code, std::size_t start, std::size_t end, std::size_t target) {
  for (std::size_t i = start; i < end; ++i) {
    const auto here = static_cast<std::int32_t>(i);
    if (here + code[i].jump == static_cast<std::int32_t>(end)) {
      code[i].jump = static_cast<std::int32_t>(target) - here;
    }
  }
}

bool SameCode(const ParsoCode& a, const ParsoCode& b) {
  return std::ranges::equal(a, b, [](const ParsoInstruction& x, const ParsoInstruction& y) {
    return x.opcode == y.opcode && x.count == y.count && x.jump == y.jump && x.data == y.data &&
           x.owner == y.owner;
  });
}

bool ParsoCompiler::Compile(ParsoRoutine& routine) {
  const ParsoRule& rule = *routine.rule;
  Parts parts;
  if (routine.output == ParsoOutput::Root) {
    const bool isLeaf = rule.IsToken() || analysis_.NodesBelow(rule).most == 0;
    parts.push_back({{isLeaf ? ParsoOpcode::Mark : ParsoOpcode::Open}});
    active_.push_back(&rule);
    AddBody(rule, isLeaf ? Shape::Leaf : Shape::Node, 0, parts);
    parts.push_back({Close(isLeaf ? ParsoOpcode::CloseLeaf : ParsoOpcode::CloseNode, rule)});
    parts.push_back({{ParsoOpcode::Accept}});
  } else {
    parts = PartsOf(rule, routine.output == ParsoOutput::Attached, 0);
    parts.push_back({{ParsoOpcode::Return}});
  }
  if (unsupported_) return false;
  routine.code = JoinParts(parts);
  return true;
}

ParsoCompiler::Shape ParsoCompiler::ShapeOf(const ParsoRule& rule, bool attached) {
  if (!attached || rule.flagNoNode) return Shape::Dropped;
  if (rule.IsToken()) return Shape::Leaf;
  if (rule.kind == ParsoKind::Group) return ShapeOfGroup(rule);
  const ParsoNodeCount below = analysis_.NodesBelow(rule);
  if (rule.flagKeepNode) return below.most == 0 ? Shape::Leaf : Shape::Node;
  if (below.most == 0) return Shape::Dropped;
  if (below.most == 1) return Shape::Inline;
  return below.least > 1 ? Shape::Node : Shape::Pruned;
}

ParsoCompiler::Shape ParsoCompiler::ShapeOfGroup(const ParsoRule& group) {
  const ParsoNodeCount below = analysis_.NodesBelow(group);
  if (below.most == 0) return Shape::Leaf;
  if (below.least > 0) return Shape::Inline;
  if (group.op != ParsoOp::Choice) return Shape::Group;
  const bool allKnown = std::ranges::all_of(group.children, [&](const ParsoChild& child) {
    const ParsoNodeCount nodes = analysis_.NodesOf(*child.rule);
    return nodes.most == 0 || nodes.least > 0;
  });
  return allKnown ? Shape::GroupByAlternative : Shape::Group;
}

bool ParsoCompiler::IsActive(const ParsoRule& rule) const {
  return std::ranges::find(active_, &rule) != active_.end();
}

ParsoCode ParsoCompiler::MatchCode(const ParsoRule& rule, bool attached) {
  if (rule.kind == ParsoKind::Class) {
    ParsoInstruction unit{ParsoOpcode::Unit};
    unit.set = SetOf(rule);
    return {unit};
  }
  if (rule.kind == ParsoKind::Literal) return {LiteralInstruction(ParsoOpcode::Literal, rule)};
  if (constrained_ != nullptr && constrained_->constraint[1] == &rule) {
    return SameNameCode(*constrained_->constraint[0], rule);
  }
  attached = attached && analysis_.NodesOf(rule).most > 0;
  if (!IsActive(rule) &&
      (rule.kind == ParsoKind::Group || analysis_.Weight(rule) <= kInlineWeight)) {
    return JoinParts(PartsOf(rule, attached, 0));
  }
  ParsoInstruction call{ParsoOpcode::Call};
  call.routine = program_.RoutineFor(rule, attached ? ParsoOutput::Attached : ParsoOutput::Dropped);
  return {call};
}

ParsoCompiler::Parts ParsoCompiler::PartsOf(const ParsoRule& rule, bool attached, int levels) {
  const Shape shape = ShapeOf(rule, attached);
  Parts parts;
  active_.push_back(&rule);
  switch (shape) {
    case Shape::Dropped:
    case Shape::Inline:
    case Shape::GroupByAlternative:
      AddBody(rule, shape, levels, parts);
      break;
    case Shape::Leaf:
      parts.push_back({{ParsoOpcode::Mark}});
      AddBody(rule, shape, levels, parts);
      parts.push_back({Close(ParsoOpcode::CloseLeaf, rule)});
      parts = {JoinParts(parts)};
      FuseName(parts[0], program_.names_);
      break;
    case Shape::Node:
    case Shape::Pruned:
    case Shape::Group:
      parts.push_back({{ParsoOpcode::Open}});
      AddBody(rule, shape, levels, parts);
      parts.push_back({Close(shape == Shape::Node     ? ParsoOpcode::CloseNode
                             : shape == Shape::Pruned ? ParsoOpcode::ClosePruned
                                                      : ParsoOpcode::CloseGroup,
                             rule)});
      break;
  }
  active_.pop_back();
  return parts;
}

void ParsoCompiler::AddBody(const ParsoRule& rule, Shape shape, int levels, Parts& parts) {
  const bool attached = shape != Shape::Dropped && shape != Shape::Leaf;
  switch (rule.op) {
    case ParsoOp::None:
    case ParsoOp::Sequence:
      AddSequence(rule, attached, levels, parts);
      break;
    case ParsoOp::Choice:
      parts.push_back(ChoiceCode(rule.children, attached,
                                 shape == Shape::GroupByAlternative ? &rule : nullptr));
      break;
    case ParsoOp::Except:
      parts.push_back(ExceptCode(rule, attached));
      break;
    case ParsoOp::StopAt:
      parts.push_back({{ParsoOpcode::ToStop}});
      parts.back()[0].stop = StopOf(rule);
      break;
  }
}

void ParsoCompiler::AddSequence(const ParsoRule& rule, bool attached, int levels, Parts& parts) {
  std::optional<std::size_t> endName;
  if (!rule.constraint.empty()) {
    endName = EndNameItem(rule);
    if (!attached || !endName) unsupported_ = true;
  }
  Parts body;
  for (std::size_t i = 0; i < rule.children.size(); ++i) {
    const ParsoChild& child = rule.children[i];
    const bool holdsEndName = endName == i;
    const ParsoRule* outer = constrained_;
    constrained_ = holdsEndName ? &rule : nullptr;
    const bool takeApart = levels > 0 && !IsActive(*child.rule) &&
                           child.quantifier == ParsoQuantifier::One && IsSequence(*child.rule) &&
                           ShapeOf(*child.rule, attached) != Shape::Leaf;
    // At the end of the text a later item that takes something would fail in any case.
    const bool failsLater =
        std::any_of(rule.children.begin() + static_cast<std::ptrdiff_t>(i) + 1, rule.children.end(),
                    [&](const ParsoChild& later) {
                      return !CanBeNone(later.quantifier) && !analysis_.MatchesEmpty(*later.rule);
                    });
    if (child.quantifier == ParsoQuantifier::One && !failsLater &&
        analysis_.MatchesEmpty(*child.rule)) {
      body.push_back({{ParsoOpcode::FailAtEnd}});
    }
    if (holdsEndName || takeApart) {
      for (ParsoCode& part : PartsOf(*child.rule, attached, levels - 1)) {
        body.push_back(std::move(part));
      }
    } else {
      constrained_ = outer;
      body.push_back(ItemCode(child, attached));
    }
    constrained_ = outer;
  }
  if (body.size() == 2 && body[0].size() == 1 && body[1].size() == 1) {
    ParsoCode joined = JoinParts(body);
    FuseName(joined, program_.names_);
    if (joined.size() == 1) body = {std::move(joined)};
  }
  for (ParsoCode& part : body) parts.push_back(std::move(part));
}

ParsoCode ParsoCompiler::ExceptCode(const ParsoRule& rule, bool attached) {
  if (rule.children.size() != 2 || rule.children[1].rule->kind != ParsoKind::Literal) {
    unsupported_ = true;
    return {};
  }
  // One attempt, so that a quantifier counts only for a class.
  ParsoChild left = rule.children[0];
  const bool repeats = left.rule->kind == ParsoKind::Class && Repeats(left.quantifier);
  left.quantifier = repeats ? ParsoQuantifier::Some : ParsoQuantifier::One;
  ParsoCode code = {{ParsoOpcode::Mark}};
  if (analysis_.MatchesEmpty(*left.rule)) code.push_back({ParsoOpcode::FailAtEnd});
  AppendCode(code, ItemCode(left, attached));
  code.push_back(LiteralInstruction(ParsoOpcode::Except, *rule.children[1].rule));
  return code;
}

ParsoCode ParsoCompiler::ItemCode(const ParsoChild& child, bool attached) {
  if (const auto run = AsRun(child, attached)) {
    constexpr auto kOpcode = [](ParsoQuantifier quantifier) {
      switch (quantifier) {
        case ParsoQuantifier::One:
          return ParsoOpcode::Unit;
        case ParsoQuantifier::Optional:
          return ParsoOpcode::OptionalUnit;
        case ParsoQuantifier::Any:
          return ParsoOpcode::Run;
        case ParsoQuantifier::Some:
          return ParsoOpcode::RequiredRun;
      }
      return ParsoOpcode::Unit;
    };
    ParsoInstruction instruction{kOpcode(run->quantifier)};
    instruction.set = SetOf(*run->rule);
    return {instruction};
  }
  if (Repeats(child.quantifier)) return LoopCode(child, attached);
  if (child.quantifier == ParsoQuantifier::Optional) return OptionalCode(*child.rule, attached);
  return MatchCode(*child.rule, attached);
}

ParsoCode ParsoCompiler::OptionalCode(const ParsoRule& rule, bool attached) {
  ParsoCode body = MatchCode(rule, attached);
  if (rule.kind == ParsoKind::Literal && !rule.name.empty()) {
    body[0].opcode = ParsoOpcode::LiteralOrJump;
    body[0].jump = 1;
    return body;
  }
  body.push_back({ParsoOpcode::Commit, 1});
  const bool canBeEmpty = analysis_.MatchesEmpty(rule);
  ParsoCode code(2);
  code[0] = {canBeEmpty ? ParsoOpcode::JumpAtEnd : ParsoOpcode::JumpUnless, JumpOver(body) + 1};
  if (!canBeEmpty) code[0].beginning = TableOf(analysis_.BeginningOf(rule));
  code[1] = {ParsoOpcode::ChoicePoint, JumpOver(body)};
  AppendCode(code, body);
  return code;
}

ParsoCode ParsoCompiler::LoopCode(const ParsoChild& child, bool attached) {
  const ParsoRule& rule = *child.rule;
  if (analysis_.MatchesEmpty(rule)) {
    unsupported_ = true;
    return {};
  }
  const bool canBeNone = child.quantifier == ParsoQuantifier::Any;
  if (canBeNone && ShapeOf(rule, attached) == Shape::Dropped && rule.op == ParsoOp::Choice) {
    if (auto code = RunLoopCode(rule)) return *code;
  }
  ParsoCode body = MatchCode(rule, attached);
  const bool isDispatch =
      body[0].opcode == ParsoOpcode::Dispatch && body[0].jump == JumpOver(body) - 1;
  if (canBeNone && isDispatch) {
    LoopDispatch(body);
    return body;
  }
  const ParsoBeginningTable* beginning = TableOf(analysis_.BeginningOf(rule));
  ParsoInstruction repeat{ParsoOpcode::Repeat, 1 - JumpOver(body)};
  repeat.beginning = beginning;
  body.push_back(repeat);
  if (!canBeNone) return body;
  ParsoCode code(2);
  code[0] = {ParsoOpcode::JumpUnless, JumpOver(body) + 1};
  code[0].beginning = beginning;
  code[1] = {ParsoOpcode::ChoicePoint, JumpOver(body)};
  AppendCode(code, body);
  return code;
}

// Sends the alternatives of a Dispatch, which end by jumping behind it, back to it.
void ParsoCompiler::LoopDispatch(ParsoCode& code) {
  Retarget(code, 0, code.size(), 0);
  code[0].opcode = ParsoOpcode::LoopDispatch;
  code[0].jump = static_cast<std::int32_t>(code.size());
}

// (C | X | Y)* where C takes runs of units is C* ((X | Y) C*)*, as long as no alternative in front
// of C begins with a unit that C takes.
std::optional<ParsoCode> ParsoCompiler::RunLoopCode(const ParsoRule& choice) {
  std::optional<ParsoInstruction> run;
  std::vector<ParsoChild> others;
  ParsoBeginning before;
  for (const ParsoChild& child : choice.children) {
    if (!run && (run = AnyNumberOf(child))) {
      if (Meet(before.first, BeginningOf(child).first)) return std::nullopt;
      continue;
    }
    const ParsoBeginning beginning = BeginningOf(child);
    before = before.Or(beginning);
    others.push_back(child);
  }
  if (!run || others.empty()) return std::nullopt;
  ParsoBeginning beginning;
  for (const ParsoChild& child : others) beginning = beginning.Or(BeginningOf(child));

  ParsoCode body = ChoiceCode(others, false, nullptr);
  body.push_back(*run);
  ParsoInstruction repeat{ParsoOpcode::Repeat, 1 - JumpOver(body)};
  repeat.beginning = TableOf(beginning);
  body.push_back(repeat);
  ParsoCode code(3);
  code[0] = *run;
  code[1] = {ParsoOpcode::JumpUnless, JumpOver(body) + 1};
  code[1].beginning = repeat.beginning;
  code[2] = {ParsoOpcode::ChoicePoint, JumpOver(body)};
  AppendCode(code, body);
  return code;
}

std::optional<ParsoInstruction> ParsoCompiler::AnyNumberOf(const ParsoChild& child) {
  if (const auto run = AsRun(child, false)) {
    ParsoInstruction instruction{ParsoOpcode::Run};
    instruction.set = SetOf(*run->rule);
    return instruction;
  }
  const ParsoRule& rule = *child.rule;
  const bool isStopAt = rule.kind == ParsoKind::Rule && rule.op == ParsoOp::StopAt;
  if (!isStopAt || Repeats(child.quantifier)) return std::nullopt;
  ParsoInstruction instruction{ParsoOpcode::OptionalToStop};
  instruction.stop = StopOf(rule);
  return instruction;
}

std::optional<ParsoChild> ParsoCompiler::AsRun(const ParsoChild& child, bool attached) {
  const ParsoRule& rule = *child.rule;
  if (rule.kind == ParsoKind::Class) return child;
  if (!IsSequence(rule) || rule.children.size() != 1) return std::nullopt;
  if (ShapeOf(rule, attached) != Shape::Dropped) return std::nullopt;
  const auto inner = AsRun(rule.children[0], false);
  if (!inner || inner->quantifier != ParsoQuantifier::Some) return std::nullopt;
  const bool canBeNone = CanBeNone(child.quantifier);
  return ParsoChild{inner->rule, canBeNone ? ParsoQuantifier::Any : ParsoQuantifier::Some};
}

const ParsoStop* ParsoCompiler::StopOf(const ParsoRule& rule) {
  ParsoStop stop;
  std::vector<const ParsoRule*> literals;
  if (rule.children.size() == 2) {
    const ParsoRule& right = *rule.children[1].rule;
    literals.push_back(&right);
    if (right.kind == ParsoKind::Group) {
      literals.clear();
      for (const ParsoChild& child : right.children) literals.push_back(child.rule);
    }
  }
  const bool areLiterals = std::ranges::all_of(literals, [](const ParsoRule* literal) {
    return literal->kind == ParsoKind::Literal && !literal->name.empty();
  });
  if (literals.empty() || literals.size() > ParsoStop::kMostLiterals || !areLiterals ||
      rule.children[0].rule->kind != ParsoKind::Class) {
    unsupported_ = true;
    return nullptr;
  }
  stop.whole.table = SetOf(*rule.children[0].rule)->table;
  stop.run.table = stop.whole.table;
  for (std::size_t i = 0; i < literals.size(); ++i) {
    stop.literals[i] = literals[i]->name;
    stop.run.table[std::min<std::size_t>(literals[i]->name[0], stop.run.table.size() - 1)] = 0;
  }
  PrepareSkipping(stop.run);
  return KeepOnce(program_.stops_, stop);
}

const ParsoUnitSet* ParsoCompiler::SetOf(const ParsoRule& classRule) {
  ParsoUnitSet set;
  set.table = *classRule.table;
  set.table[0] = 0;
  PrepareSkipping(set);
  return KeepOnce(program_.sets_, set);
}

const ParsoBeginningTable* ParsoCompiler::TableOf(const ParsoBeginning& beginning) {
  const ParsoBeginning closed = beginning.Closed();
  return KeepOnce(program_.beginnings_, ParsoBeginningTable{closed.first, closed.second});
}

}  // namespace kelmora
