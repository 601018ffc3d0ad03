// The registers are a local variable of Run and every step is inlined into it, so that they stay in
// machine registers. All that is remembered lies on one stack of entries in the heap. A failure
// goes back to the topmost choice point, which has the text position and the list of nodes as they
// were; nodes made since then stay unused in the pool.
#include "parsomachine.h"

#include <algorithm>
#include <bit>
#include <new>

#include "parso/parsoparser.h"
#include "tqcore/tqexcept.h"

// Without this the compiler calls the larger steps, and the registers go through memory.
#if defined(__GNUC__)
#define PARSO_STEP [[gnu::always_inline]] inline
#else
#define PARSO_STEP inline
#endif

namespace kelmora {
namespace {

constexpr std::size_t kFirstEntries = 256;

std::size_t EntryOf(char16_t unit) {
  return std::min<std::size_t>(unit, 255);
}

PARSO_STEP bool SameUnits(const char16_t* a, const char16_t* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

PARSO_STEP bool CanBegin(const ParsoBeginningTable& beginning, const char16_t* text) {
  // At the end of the text both tables are asked about the same 0.
  return beginning.first[EntryOf(text[0])] != 0 &&
         (text[0] == 0 || beginning.second[EntryOf(text[1])] != 0);
}

}  // namespace

PARSO_STEP ParsoMachine::Entry& ParsoMachine::Push(Registers& r) {
  if (++r.top == limit_) Grow(r);
  return *r.top;
}

PARSO_STEP void ParsoMachine::PushChoice(Registers& r, const ParsoInstruction* alternative) {
  const auto below = static_cast<std::uint32_t>(r.choice - entries_.get());
  Entry& entry = Push(r);
  entry = {alternative, r.text, r.first, r.last, below, 0};
  r.choice = &entry;
}

PARSO_STEP void ParsoMachine::PopChoice(Registers& r) {
  r.top = r.choice - 1;
  r.choice = entries_.get() + r.choice->previousChoice;
}

PARSO_STEP void ParsoMachine::MakeChoicePoint(Registers& r) {
  PushChoice(r, r.code + r.code->jump);
  const std::uint16_t count = r.code->count;
  for (std::uint16_t i = 0; i < count; ++i) {
    Push(r);
    *r.top = *(r.top - count - 1);
  }
}

PARSO_STEP void ParsoMachine::Commit(Registers& r) {
  PopChoice(r);
  r.top -= r.code->count;
  r.code += r.code->jump;
}

// False when there is no choice point left.
PARSO_STEP bool ParsoMachine::GoBack(Registers& r) {
  Entry& entry = *r.choice;
  if (&entry == entries_.get()) return false;
  r.text = entry.text;
  r.first = entry.first;
  r.last = entry.last;
  if (r.last != nullptr) r.last->next = nullptr;
  r.code = entry.code;
  r.top = r.choice;
  if (entry.alternatives == 0) {
    PopChoice(r);
    return true;
  }
  const int next = std::countr_zero(entry.alternatives);
  r.code += entry.code->dispatch->jumps[static_cast<std::size_t>(next)];
  entry.alternatives &= entry.alternatives - 1;
  if (entry.alternatives == 0) PopChoice(r);
  return true;
}

PARSO_STEP bool ParsoMachine::MatchLiteral(Registers& r) const {
  if (!SameUnits(r.text, r.code->literal, r.code->count)) return false;
  r.text += r.code->count;
  return true;
}

// Whether there is anything in front of the stop, and up to there.
PARSO_STEP bool ParsoMachine::MatchStop(Registers& r) const {
  const ParsoStop& stop = *r.code->stop;
  const char16_t* start = r.text;
  const auto isStop = [&](std::u16string_view literal) {
    return !literal.empty() && SameUnits(r.text, literal.data(), literal.size());
  };
  while (true) {
    r.text = SkipRun(stop.run, r.text, end_);
    if (!stop.whole.Takes(*r.text)) break;
    if (isStop(stop.literals[0]) || isStop(stop.literals[1])) break;
    ++r.text;
  }
  return r.text != start;
}

PARSO_STEP bool ParsoMachine::MatchSameName(Registers& r) const {
  const ParsoNode* name = r.first->rule == r.code->rule ? r.first : r.first->firstChild;
  const auto length = static_cast<std::size_t>(name->length);
  if (!SameUnits(r.text, name->text, length)) return false;
  if (r.code->name->rest.Takes(r.text[length])) return false;
  r.text += length;
  return true;
}

PARSO_STEP bool ParsoMachine::CheckExcept(Registers& r) const {
  const char16_t* start = r.top->text;
  --r.top;
  return r.text - start != r.code->count ||
         !CompareIgnoringCase(start, r.code->literal, r.code->count);
}

// Puts the choice point of a loop, whose alternative is `behind`, to the present place, or takes it
// away when the loop ends.
PARSO_STEP void ParsoMachine::MoveLoop(Registers& r, const ParsoInstruction* behind, bool goesOn) {
  const bool isThere = r.choice == r.top && r.top->code == behind;
  if (!goesOn) {
    if (isThere) PopChoice(r);
  } else if (!isThere) {
    PushChoice(r, behind);
  } else {
    r.top->text = r.text;
    r.top->first = r.first;
    r.top->last = r.last;
  }
}

PARSO_STEP bool ParsoMachine::Dispatch(Registers& r) {
  const ParsoDispatch& dispatch = *r.code->dispatch;
  unsigned possible = dispatch.first[EntryOf(r.text[0])];
  if (r.text[0] != 0) possible &= dispatch.second[EntryOf(r.text[1])];
  if (possible == 0) return false;
  const unsigned others = possible & (possible - 1);
  const int next = std::countr_zero(possible);
  if (others != 0) {
    PushChoice(r, r.code);
    r.choice->alternatives = others;
  }
  r.code += dispatch.jumps[static_cast<std::size_t>(next)];
  return true;
}

PARSO_STEP void ParsoMachine::LoopDispatch(Registers& r) {
  const ParsoDispatch& dispatch = *r.code->dispatch;
  const ParsoInstruction* behind = r.code + r.code->jump;
  unsigned possible = dispatch.first[EntryOf(r.text[0])];
  if (r.text[0] != 0) possible &= dispatch.second[EntryOf(r.text[1])];
  MoveLoop(r, behind, possible != 0);
  if (possible == 0) {
    r.code = behind;
    return;
  }
  const unsigned others = possible & (possible - 1);
  if (others != 0) {
    PushChoice(r, r.code);
    r.choice->alternatives = others;
  }
  r.code += dispatch.jumps[static_cast<std::size_t>(std::countr_zero(possible))];
}

PARSO_STEP void ParsoMachine::EndAlternative(Registers& r) {
  if (r.choice == r.top && r.top->code == r.code + r.code->owner) PopChoice(r);
  r.code += r.code->jump;
}

PARSO_STEP void ParsoMachine::Repeat(Registers& r) {
  const ParsoInstruction* behind = r.code + 1;
  const bool goesOn = CanBegin(*r.code->beginning, r.text);
  MoveLoop(r, behind, goesOn);
  r.code = goesOn ? r.code + r.code->jump : behind;
}

PARSO_STEP ParsoNode* ParsoMachine::NewNode(const Registers& r, const char16_t* start) {
  ParsoNode* node = tree_.pool.Take();
  node->rule = r.code->rule;
  node->text = start;
  node->length = static_cast<std::int32_t>(r.text - start);
  node->matched = true;
  return node;
}

PARSO_STEP void ParsoMachine::Attach(Registers& r, ParsoNode* first, ParsoNode* last) {
  if (r.last == nullptr) {
    r.first = first;
  } else {
    r.last->next = first;
  }
  r.last = last;
}

PARSO_STEP void ParsoMachine::CloseNode(Registers& r) {
  ParsoNode* node = NewNode(r, r.top->text);
  node->firstChild = r.first;
  r.first = r.top->first;
  r.last = r.top->last;
  --r.top;
  Attach(r, node, node);
}

PARSO_STEP void ParsoMachine::CloseSpliced(Registers& r) {
  ParsoNode* first = r.first;
  ParsoNode* last = r.last;
  r.first = r.top->first;
  r.last = r.top->last;
  --r.top;
  if (first != nullptr) Attach(r, first, last);
}

PARSO_STEP void ParsoMachine::ClosePruned(Registers& r) {
  if (r.first == r.last) {
    CloseSpliced(r);
  } else {
    CloseNode(r);
  }
}

PARSO_STEP void ParsoMachine::CloseGroup(Registers& r) {
  if (r.first != nullptr) {
    CloseSpliced(r);
  } else {
    CloseNode(r);
  }
}

PARSO_STEP bool ParsoMachine::Call(Registers& r) {
  ParsoRoutine* routine = r.code->routine;
  if (routine->code.empty() && !program_.Complete(*routine)) return false;
  Push(r).code = r.code + r.code->jump;
  r.code = routine->code.data();
  return true;
}

void ParsoMachine::Grow(Registers& r) {
  const auto used = static_cast<std::size_t>(r.top - entries_.get());
  const auto choice = r.choice - entries_.get();
  const std::size_t capacity = used == 0 ? kFirstEntries : used * 2;
  std::unique_ptr<Entry[]> larger;
  try {
    larger = std::make_unique_for_overwrite<Entry[]>(capacity);
  } catch (const std::bad_alloc&) {
    throw TQExcept(kAllocationFailed, __LINE__, u"parsomachine.cpp");
  }
  std::copy_n(entries_.get(), used, larger.get());
  entries_ = std::move(larger);
  limit_ = entries_.get() + capacity;
  r.top = entries_.get() + used;
  r.choice = entries_.get() + choice;
}

// The instructions of one unit or one jump.
PARSO_STEP bool ParsoMachine::MatchUnit(Registers& r) const {
  const bool takes = r.code->set->Takes(*r.text);
  r.text += takes ? 1 : 0;
  return takes;
}

PARSO_STEP bool ParsoMachine::MatchRun(Registers& r) const {
  const char16_t* start = r.text;
  r.text = SkipRun(*r.code->set, start, end_);
  return r.text != start;
}

PARSO_STEP bool ParsoMachine::MatchSpacedLiteral(Registers& r) const {
  if (*r.text != *r.code->literal) MatchRun(r);
  return MatchLiteral(r);
}

PARSO_STEP bool ParsoMachine::MatchName(Registers& r) const {
  if (!r.code->name->first.Takes(*r.text)) return false;
  r.text = SkipRun(r.code->name->rest, r.text + 1, end_);
  return true;
}

PARSO_STEP bool ParsoMachine::MatchNameLeaf(Registers& r) {
  const char16_t* start = r.text;
  if (!MatchName(r)) return false;
  ParsoNode* leaf = NewNode(r, start);
  Attach(r, leaf, leaf);
  return true;
}

PARSO_STEP void ParsoMachine::Open(Registers& r) {
  Entry& entry = Push(r);
  entry.text = r.text;
  entry.first = r.first;
  entry.last = r.last;
  r.first = r.last = nullptr;
}

PARSO_STEP void ParsoMachine::CloseLeaf(Registers& r) {
  ParsoNode* leaf = NewNode(r, r.top->text);
  --r.top;
  Attach(r, leaf, leaf);
}

// Every step ends with a jump of its own to the next one, by the address of a label, since the
// processor then foresees the next instruction from the present one. A switch has one jump for all
// and takes half as long again.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#define PARSO_GO() goto* kLabels[static_cast<std::size_t>(r.code->opcode)]
#define PARSO_NEXT() \
  ++r.code;          \
  PARSO_GO()
#define PARSO_NEXT_IF(matches) \
  if (!(matches)) goto Failed; \
  PARSO_NEXT()
#define PARSO_GO_IF(matches)   \
  if (!(matches)) goto Failed; \
  PARSO_GO()
#define PARSO_JUMP_IF(jumps)            \
  r.code += (jumps) ? r.code->jump : 1; \
  PARSO_GO()

ParsoMachine::Outcome ParsoMachine::Run(const ParsoRoutine& start, const char16_t* text,
                                        std::int32_t length) {
  static constexpr const void* kLabels[] = {
#define PARSO_OPCODE(name, operand, also) &&name,
#include "parsoopcode.def"
#undef PARSO_OPCODE
  };
  end_ = text + length;
  Registers r{start.code.data(), text, nullptr, nullptr, nullptr, nullptr};
  Grow(r);

  // clang-format off
  PARSO_GO();
  Unit:            PARSO_NEXT_IF(MatchUnit(r));
  OptionalUnit:    MatchUnit(r); PARSO_NEXT();
  Run:             MatchRun(r); PARSO_NEXT();
  RequiredRun:     PARSO_NEXT_IF(MatchRun(r));
  Literal:         PARSO_NEXT_IF(MatchLiteral(r));
  SpacedLiteral:   PARSO_NEXT_IF(MatchSpacedLiteral(r));
  Name:            PARSO_NEXT_IF(MatchName(r));
  ToStop:          PARSO_NEXT_IF(MatchStop(r));
  OptionalToStop:  MatchStop(r); PARSO_NEXT();
  FailAtEnd:       PARSO_NEXT_IF(r.text != end_);
  Jump:            PARSO_JUMP_IF(true);
  JumpAtEnd:       PARSO_JUMP_IF(r.text == end_);
  JumpUnless:      PARSO_JUMP_IF(!CanBegin(*r.code->beginning, r.text));
  UnitOrJump:      PARSO_JUMP_IF(!MatchUnit(r));
  LiteralOrJump:   PARSO_JUMP_IF(!MatchLiteral(r));
  ChoicePoint:     MakeChoicePoint(r); PARSO_NEXT();
  Commit:          Commit(r); PARSO_GO();
  Repeat:          Repeat(r); PARSO_GO();
  Dispatch:        PARSO_GO_IF(Dispatch(r));
  LoopDispatch:    LoopDispatch(r); PARSO_GO();
  EndAlternative:  EndAlternative(r); PARSO_GO();
  Call:            if (!Call(r)) return Outcome::Unsupported; PARSO_GO();
  Return:          r.code = (r.top--)->code; PARSO_GO();
  Open:            Open(r); PARSO_NEXT();
  Mark:            Push(r).text = r.text; PARSO_NEXT();
  CloseLeaf:       CloseLeaf(r); PARSO_JUMP_IF(true);
  CloseLeafUnlessEmpty:
                   if (r.text == r.top->text) goto Failed;
                   CloseLeaf(r); PARSO_JUMP_IF(true);
  CloseNode:       CloseNode(r); PARSO_JUMP_IF(true);
  ClosePruned:     ClosePruned(r); PARSO_NEXT();
  CloseGroup:      CloseGroup(r); PARSO_NEXT();
  CloseSpliced:    CloseSpliced(r); PARSO_NEXT();
  NameLeaf:        PARSO_NEXT_IF(MatchNameLeaf(r));
  Except:          PARSO_NEXT_IF(CheckExcept(r));
  SameName:        PARSO_NEXT_IF(MatchSameName(r));
  Failed:          if (!GoBack(r)) return Outcome::Failed; PARSO_GO();
  // clang-format on

Accept:
  if (r.text != end_) return Outcome::Failed;
  tree_.root = r.first;
  return Outcome::Matched;
}
#pragma GCC diagnostic pop

}  // namespace kelmora
