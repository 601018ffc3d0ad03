// Every rule or group that is being matched stands on `frames_`, so that the depth of a text costs
// heap and no machine stack. A frame hands out the attempts that its operator asks for one by one
// (NextAttempt); classes and literals are matched on the spot, all else gets a frame of its own.
// What came of an attempt is delivered to the frame below. A frame without further attempts is
// closed: its node is pruned or has failed.
//
// A sequence never tries an item again that has matched, and a choice that has taken an
// alternative never tries another. Giving back the partial tree of a failed alternative is all the
// backtracking there is.
#include "parsointerpreter.h"

#include "parsoerrors.h"

namespace kelmora {
namespace {

bool Repeats(ParsoQuantifier quantifier) {
  return quantifier == ParsoQuantifier::Any || quantifier == ParsoQuantifier::Some;
}

bool IsRequired(ParsoQuantifier quantifier) {
  return quantifier == ParsoQuantifier::One || quantifier == ParsoQuantifier::Some;
}

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
  if (Start(root, ParsoQuantifier::One)) return result_;
  while (true) {
    Frame& frame = frames_.back();
    if (ParsoNode* child = NextAttempt(frame)) {
      if (Start(child, frame.node->rule->children[frame.item].quantifier)) Deliver(child, result_);
      continue;
    }
    ParsoNode* node = frame.node;
    result_ = Close(frame);
    frames_.pop_back();
    if (frames_.empty()) return result_;
    Deliver(node, result_);
  }
}

// True when the node is finished, with its result in `result_`; else it has a frame now.
bool ParsoInterpreter::Start(ParsoNode* node, ParsoQuantifier quantifier) {
  switch (node->rule->kind) {
    case ParsoKind::Class:
      result_ = MatchClass(node, quantifier);
      return true;
    case ParsoKind::Literal:
      result_ = MatchLiteral(node);
      return true;
    default:
      break;
  }
  if (TakeMemo(node)) return true;
  frames_.push_back({.node = node,
                     .cursor = node->text,
                     .available = node->length,
                     .line = node->line});
  node->matched = false;
  node->length = 0;
  return false;
}

bool ParsoInterpreter::TakeMemo(ParsoNode* node) {
  if (memoised_ == nullptr || !(*memoised_)[static_cast<std::size_t>(node->rule->index)]) {
    return false;
  }
  const auto known = memo_.find({node->rule, node->text});
  if (known == memo_.end()) return false;
  node->length = known->second.length;
  node->matched = known->second.line != 0;
  result_ = known->second.line;
  return true;
}

std::uint32_t ParsoInterpreter::MatchClass(ParsoNode* node, ParsoQuantifier quantifier) {
  const ParsoRule& rule = *node->rule;
  const std::int32_t most = Repeats(quantifier) ? node->length : 1;
  std::uint32_t line = node->line;
  std::int32_t length = 0;
  while (length < most && Takes(rule, node->text[length])) {
    line += LinesIn(node->text[length], rule.crSeen);
    ++length;
  }
  node->length = length;
  node->matched = length > 0;
  return node->matched ? line : 0;
}

std::uint32_t ParsoInterpreter::MatchLiteral(ParsoNode* node) {
  node->matched = CompareLiteral(*node->rule, node->text);
  node->length = node->matched ? static_cast<std::int32_t>(node->rule->name.size()) : 0;
  return node->matched ? node->line : 0;
}

ParsoNode* ParsoInterpreter::NextAttempt(Frame& frame) {
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

ParsoNode* ParsoInterpreter::NextInSequence(Frame& frame) {
  ParsoNode* node = frame.node;
  for (; frame.item < node->rule->children.size(); ++frame.item) {
    const ParsoChild& child = node->rule->children[frame.item];
    if (frame.tryItem && frame.available > 0) return NewChild(frame, *child.rule);
    if (frame.successes == 0 && IsRequired(child.quantifier)) {
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

ParsoNode* ParsoInterpreter::NextInChoice(Frame& frame) {
  ParsoNode* node = frame.node;
  for (; frame.item < node->rule->children.size(); ++frame.item) {
    if (frame.tryItem && frame.available > 0) {
      return NewChild(frame, *node->rule->children[frame.item].rule);
    }
    if (frame.successes > 0) break;
    frame.tryItem = true;
  }
  node->matched = frame.successes > 0;
  return nullptr;
}

ParsoNode* ParsoInterpreter::NextInExcept(Frame& frame) {
  if (!frame.tryItem || frame.available <= 0) return nullptr;
  frame.tryItem = false;
  return NewChild(frame, *frame.node->rule->children[0].rule);
}

ParsoNode* ParsoInterpreter::NextInStopAt(Frame& frame) {
  ParsoNode* node = frame.node;
  const ParsoRule& left = *node->rule->children[0].rule;
  const bool isFirst = frame.tryItem && frame.successes == 0;
  if (isFirst) frame.available = ScanToStop(frame);
  if (left.kind == ParsoKind::Class) {
    node->length = frame.available;
    node->matched = frame.available > 0;
    if (!node->matched) {
      RecordFailure(*node->rule, frame.cursor, 0, 0, node->line);
    }
    return nullptr;
  }
  if (frame.tryItem && frame.available > 0) return NewChild(frame, left);
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

ParsoNode* ParsoInterpreter::NewChild(const Frame& frame, const ParsoRule& rule) {
  ParsoNode* child = pool_.Take();
  child->rule = &rule;
  child->text = frame.cursor;
  child->length = frame.available;
  child->line = frame.line;
  return child;
}

// Tells the frame on top what came of its attempt: `line` is the line reached, 0 for a failure.
void ParsoInterpreter::Deliver(ParsoNode* child, std::uint32_t line) {
  Frame& frame = frames_.back();
  ParsoNode* node = frame.node;
  const ParsoRule& rule = *node->rule;
  if (line == 0) {
    RecordFailure(*child->rule, frame.cursor, frame.item, child->length, frame.line);
    pool_.Release(child);
    frame.tryItem = false;
    return;
  }
  if (rule.op == ParsoOp::Except) {
    const std::u16string_view literal = rule.children[1].rule->name;
    if (child->Text().size() == literal.size() &&
        CompareIgnoringCase(child->text, literal.data(), literal.size())) {
      RecordFailure(rule, frame.cursor, 0, 0, node->line);
      pool_.Release(child);
      return;
    }
    node->matched = true;
  }
  Accept(frame, child, line);
}

void ParsoInterpreter::Accept(Frame& frame, ParsoNode* child, std::uint32_t line) {
  const std::int32_t length = child->length;
  const ParsoRule& rule = *frame.node->rule;
  const bool repeats =
      rule.op == ParsoOp::StopAt || Repeats(rule.children[frame.item].quantifier);
  frame.node->length += length;
  frame.available -= length;
  frame.cursor += length;
  frame.line = line;
  ++frame.successes;
  frame.tryItem = repeats && length > 0 && rule.op != ParsoOp::Except;
  Attach(frame, child);
}

void ParsoInterpreter::Attach(Frame& frame, ParsoNode* child) {
  const ParsoRule& rule = *child->rule;
  const bool leavesNode = rule.kind == ParsoKind::Group || rule.kind == ParsoKind::Rule;
  if (!leavesNode || rule.flagNoNode) {
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
  if (memoised_ != nullptr && (*memoised_)[static_cast<std::size_t>(node->rule->index)]) {
    memo_[{node->rule, node->text}] = {node->length, line};
  }
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
    const bool splices = first != nullptr && !rule.flagKeepNode &&
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
