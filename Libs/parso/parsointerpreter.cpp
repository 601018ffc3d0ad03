// Every rule or group that is being matched stands on `frames_`, so that the depth of a text costs
// heap and no machine stack. A frame hands out the attempts that its operator asks for one by one
// (NextAttempt); what came of it is delivered to it. A frame without further attempts is
// closed: its node is pruned or has failed.
//
// A sequence never tries an item again that has matched, and a choice that has taken an
// alternative never tries another. Giving back the partial tree of a failed alternative is all the
// backtracking there is.
#include "parsointerpreter.h"

#include "parsoerrors.h"

namespace kelmora {
namespace {

bool Takes(const ParsoRule& rule, char16_t unit) {
  return (*rule.table)[std::min<std::size_t>(unit, rule.table->size() - 1)] != 0;
}

// Lines that end at `unit`: CR LF is one line end, and each of the two alone is one.
std::uint32_t LinesIn(char16_t unit, bool& crSeen) {
  const bool second = unit == u'\n' && crSeen;
  crSeen = unit == u'\r';
  return (unit == u'\r' || unit == u'\n') && !second ? 1 : 0;
}

bool CompareLiteral(const ParsoRule& literal, const char16_t* text) {
  return ParsoMode::current.compare(text, literal.name.data(), literal.name.size());
}

// The right side of a stop-at: a literal, or a group of literals.
bool BeginsStop(const ParsoRule& stop, const char16_t* text) {
  if (stop.kind == ParsoKind::Literal) return CompareLiteral(stop, text);
  for (const ParsoChild& child : stop.children) {
    if (child.rule->kind == ParsoKind::Literal && CompareLiteral(*child.rule, text)) return true;
  }
  return false;
}

}  // namespace

std::uint32_t ParsoInterpreter::Match(ParsoNode* root) {
  if (root->rule->kind == ParsoKind::Class) {
    const Frame whole = {.node = root,
                         .cursor = root->text,
                         .given = root->length,
                         .available = root->length,
                         .line = 1};
    const Result result = MatchClass(*root->rule, ParsoQuantifier::One, whole);
    root->length = result.length;
    return result.line;
  }
  Start(root);
  while (true) {
    Frame& frame = frames_.back();
    if (const ParsoChild* child = NextAttempt(frame)) {
      Attempt(*child);
      continue;
    }
    ParsoNode* node = frame.node;
    const std::uint32_t line = Close(frame);
    frames_.pop_back();
    if (frames_.empty()) return line;
    Deliver(*node->rule, node, {line, node->length});
  }
}

void ParsoInterpreter::Start(ParsoNode* node) {
  frames_.push_back({.node = node,
                     .cursor = node->text,
                     .given = node->length,
                     .available = node->length,
                     .line = node->line});
  node->matched = false;
  node->length = 0;
}

// Tries an operand of the topmost rule. Classes and literals are matched on the spot and without a
// node, since none would stay; a rule or group gets a frame.
void ParsoInterpreter::Attempt(const ParsoChild& child) {
  const Frame& frame = frames_.back();
  const ParsoRule& rule = *child.rule;
  if (rule.kind == ParsoKind::Class) {
    Deliver(rule, nullptr, MatchClass(rule, child.quantifier, frame));
    return;
  }
  if (rule.kind == ParsoKind::Literal) {
    const bool matches = CompareLiteral(rule, frame.cursor);
    const auto length = static_cast<std::int32_t>(rule.name.size());
    Deliver(rule, nullptr, matches ? Result{frame.line, length} : Result{});
    return;
  }
  if (IsMemoised(rule)) {
    const auto known = memo_.find({&rule, frame.cursor, frame.available});
    if (known != memo_.end()) {
      Deliver(rule, nullptr, known->second);
      return;
    }
  }
  ParsoNode* node = pool_.Take();
  node->rule = &rule;
  node->text = frame.cursor;
  node->length = frame.available;
  node->line = frame.line & ParsoNode::kLineBits;
  Start(node);
}

ParsoInterpreter::Result ParsoInterpreter::MatchClass(const ParsoRule& rule,
                                                      ParsoQuantifier quantifier,
                                                      const Frame& frame) {
  const std::int32_t most = Repeats(quantifier) ? frame.available : std::min(frame.available, 1);
  Result result = {frame.line, 0};
  while (result.length < most && Takes(rule, frame.cursor[result.length])) {
    result.line += LinesIn(frame.cursor[result.length], rule.crSeen);
    ++result.length;
  }
  return result.length > 0 ? result : Result{};
}

const ParsoChild* ParsoInterpreter::NextAttempt(Frame& frame) {
  const ParsoRule& rule = *frame.node->rule;
  switch (rule.op) {
    case ParsoOp::None:
    case ParsoOp::Sequence:
      return NextInSequence(frame);
    case ParsoOp::Choice:
      return NextInChoice(frame);
    case ParsoOp::Except:
      return rule.children.size() < 2 ? nullptr : NextInExcept(frame);
    case ParsoOp::StopAt:
      return rule.children.size() < 2 ? nullptr : NextInStopAt(frame);
  }
  return nullptr;
}

const ParsoChild* ParsoInterpreter::NextInSequence(Frame& frame) {
  ParsoNode* node = frame.node;
  for (; frame.item < node->rule->children.size(); ++frame.item) {
    const ParsoChild& child = node->rule->children[frame.item];
    if (frame.tryItem && frame.available > 0) return &child;
    if (frame.successes == 0 && !CanBeNone(child.quantifier)) {
      RecordFailure(*node->rule, node->text, frame.item, node->length, node->line);
      return nullptr;
    }
    frame.successes = 0;
    frame.tryItem = true;
  }
  node->matched = true;
  if (node->rule->constraint.size() >= 2) CheckConstraint(node);
  return nullptr;
}

const ParsoChild* ParsoInterpreter::NextInChoice(Frame& frame) {
  ParsoNode* node = frame.node;
  for (; frame.item < node->rule->children.size(); ++frame.item) {
    if (frame.tryItem && frame.available > 0) return &node->rule->children[frame.item];
    if (frame.successes > 0) break;
    frame.tryItem = true;
  }
  node->matched = frame.successes > 0;
  return nullptr;
}

const ParsoChild* ParsoInterpreter::NextInExcept(Frame& frame) {
  if (!frame.tryItem || frame.available <= 0) return nullptr;
  frame.tryItem = false;
  return &frame.node->rule->children[0];
}

const ParsoChild* ParsoInterpreter::NextInStopAt(Frame& frame) {
  ParsoNode* node = frame.node;
  const ParsoChild& left = node->rule->children[0];
  if (frame.tryItem && frame.successes == 0) frame.available = ScanToStop(frame);
  if (left.rule->kind == ParsoKind::Class) {
    node->length = frame.available;
    node->matched = frame.available > 0;
    if (!node->matched) RecordFailure(*node->rule, frame.cursor, 0, 0, node->line);
    return nullptr;
  }
  if (frame.tryItem && frame.available > 0) return &left;
  node->matched = frame.successes > 0;
  return nullptr;
}

// The units up to the first place where a stop literal begins or the class on the left refuses.
std::int32_t ParsoInterpreter::ScanToStop(Frame& frame) {
  ParsoNode* node = frame.node;
  const ParsoRule& left = *node->rule->children[0].rule;
  const ParsoRule& stop = *node->rule->children[1].rule;
  bool crSeen = node->crSeen;
  std::int32_t count = 0;
  std::uint32_t lines = 0;
  for (; count < frame.available; ++count) {
    const char16_t unit = frame.cursor[count];
    if (left.kind == ParsoKind::Class && !Takes(left, unit)) break;
    if (BeginsStop(stop, frame.cursor + count)) break;
    lines += LinesIn(unit, crSeen);
  }
  node->crSeen = crSeen;
  if (left.kind == ParsoKind::Class) frame.line += lines;
  return count;
}

// Tells the topmost frame what came of its attempt. `child` is null for what leaves no node.
void ParsoInterpreter::Deliver(const ParsoRule& childRule, ParsoNode* child, Result result) {
  Frame& frame = frames_.back();
  ParsoNode* node = frame.node;
  const ParsoRule& rule = *node->rule;
  if (result.line == 0) {
    RecordFailure(childRule, frame.cursor, frame.item, result.length, frame.line);
    pool_.Release(child);
    frame.tryItem = false;
    return;
  }
  if (rule.op == ParsoOp::Except) {
    const std::u16string_view literal = rule.children[1].rule->name;
    if (static_cast<std::size_t>(result.length) == literal.size() &&
        CompareIgnoringCase(frame.cursor, literal.data(), literal.size())) {
      RecordFailure(rule, frame.cursor, 0, 0, node->line);
      pool_.Release(child);
      return;
    }
    node->matched = true;
  }
  const bool repeats = rule.op == ParsoOp::StopAt || Repeats(rule.children[frame.item].quantifier);
  node->length += result.length;
  frame.available -= result.length;
  frame.cursor += result.length;
  frame.line = result.line;
  ++frame.successes;
  frame.tryItem = repeats && result.length > 0 && rule.op != ParsoOp::Except;
  if (child != nullptr) Attach(frame, child);
}

void ParsoInterpreter::Attach(Frame& frame, ParsoNode* child) {
  if (child->rule->flagNoNode) {
    pool_.Release(child);
    return;
  }
  if (frame.lastChild == nullptr) {
    frame.node->firstChild = child;
  } else {
    frame.lastChild->next = child;
  }
  frame.lastChild = child;
}

// { A = B }: both names must be there, as children or grandchildren, and their texts equal.
void ParsoInterpreter::CheckConstraint(ParsoNode* node) {
  constexpr int kDepth = 2;
  const ParsoRule* expected = node->rule->constraint[1];
  ParsoNode* a = node->FindByRule(node->rule->constraint[0], kDepth);
  ParsoNode* b = node->FindByRule(expected, kDepth);
  if (a == nullptr || b == nullptr) {
    node->matched = false;
    return;
  }
  const auto length = static_cast<std::size_t>(a->length);
  if (a->length == b->length && ParsoMode::current.compare(a->text, b->text, length)) {
    if (ParsoMode::current.dropEndNames && node->Remove(b)) {
      b->next = nullptr;
      pool_.Release(b);
    }
    return;
  }
  node->matched = false;
  SetExplicitMessage(UnequalNamesMessage(a->Text(), *expected), b->text, b->length, b->line);
  memo_.clear();  // the record may have gone back, so a repeated attempt can add to it
}

std::uint32_t ParsoInterpreter::Close(Frame& frame) {
  ParsoNode* node = frame.node;
  if (node->rule->IsToken()) {
    pool_.Release(node->firstChild);
    node->firstChild = nullptr;
  }
  const std::uint32_t line = node->matched ? frame.line : 0;
  if (IsMemoised(*node->rule)) memo_[{node->rule, node->text, frame.given}] = {line, node->length};
  if (line != 0 && ParsoMode::current.flatten) Prune(node);
  return line;
}

void ParsoInterpreter::Prune(ParsoNode* node) {
  ParsoNode** link = &node->firstChild;
  while (ParsoNode* child = *link) {
    const ParsoRule& rule = *child->rule;
    ParsoNode* first = child->firstChild;
    const bool isGroup = rule.kind == ParsoKind::Group;
    const bool isOnly = first != nullptr && first->next == nullptr;
    const bool splices =
        first != nullptr && !rule.flagKeepNode &&
        (isGroup || (isOnly && !(rule.flagKeepApart && first->rule->flagKeepApart)));
    if (splices) {
      ParsoNode* last = first;
      while (last->next != nullptr) last = last->next;
      last->next = child->next;
      *link = first;
      link = &last->next;
    } else if (first == nullptr && !isGroup && !rule.flagKeepNode && !rule.IsToken()) {
      *link = child->next;
    } else {
      link = &child->next;
      continue;
    }
    child->firstChild = nullptr;
    child->next = nullptr;
    pool_.Release(child);
  }
}

}  // namespace kelmora
