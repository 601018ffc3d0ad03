// ParsoProgram: the rules of a grammar as instructions for ParsoMachine.
//
// A routine is the code of one rule. It exists when the rule is first called, so that a text pays
// only for the rules that it needs. Instructions and what they point to live as long as the
// program.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "parso/parsogrammar.h"
#include "parsoanalysis.h"
#include "parsounits.h"

namespace kelmora {

// Where a match fails, the machine goes back to the choice point that was made last. A choice point
// "of its own" of an instruction is the one on top whose alternative is the instruction's.
enum class ParsoOpcode : std::uint16_t {
  // Matching. Each advances or fails.
  Unit,              // one unit of `set`
  OptionalUnit,      // one or none
  Run,               // any number
  RequiredRun,       // one or more
  Literal,           // `count` units of `literal`
  SpacedLiteral,     // Run, then Literal; the set lacks the literal's first unit
  Name,              // a unit of `name->first`, then a run of `name->rest`
  ToStop,            // units of `stop`, one or more
  OptionalToStop,    // the same, or none
  FailAtEnd,
  // Going elsewhere. `jump` counts instructions from this one.
  Jump,
  JumpAtEnd,
  JumpUnless,        // what stands here can't begin as `beginning`
  LiteralOrJump,     // `count` units of `literal`, else jumps
  ChoicePoint,       // makes one: on failure, go on at `jump`. `count` open nodes are to be closed
                     // before the Commit, so it works on copies of them
  Commit,            // takes the choice point away, and the `count` open nodes below; jumps
  Repeat,            // jumps while `beginning` allows, with a choice point at the next instruction
  Dispatch,          // to the first alternative of `dispatch` whose beginning allows
  LoopDispatch,      // the same with a choice point at `jump`; goes there when there is none
  EndAlternative,    // takes the choice point of the Dispatch at `owner` away, if it has one; jumps
  Call,
  Return,
  Accept,            // the text must end here
  // Nodes. Open and Mark push the place where a node begins; each Close pops one.
  Open,              // starts a list of children
  Mark,              // no list: nothing below makes nodes
  CloseLeaf,         // of Mark: a node of `rule` without children
  CloseNode,         // a node of `rule`
  ClosePruned,       // its only child, or nothing for no child, or a node of `rule`
  CloseGroup,        // its children or, without any, a node of `rule`
  CloseSpliced,      // its children
  NameLeaf,          // Mark, Name, CloseLeaf
  Except,            // of Mark: fails if the text since then is `literal`, in whatever case
  SameName,          // the text of the list's first name, a node of `rule`, as a whole `name`
};

struct ParsoName {
  ParsoUnitSet first;
  ParsoUnitSet rest;
  bool operator==(const ParsoName&) const = default;
};

struct ParsoStop {
  static constexpr std::size_t kMostLiterals = 2;
  ParsoUnitSet run;    // the class without the first units of the literals
  ParsoUnitSet whole;  // the class
  std::array<std::u16string_view, kMostLiterals> literals;
  bool operator==(const ParsoStop&) const = default;
};

// Two tables of 0 and 1.
struct ParsoBeginningTable {
  ParsoClassTable first{};
  ParsoClassTable second{};
  bool operator==(const ParsoBeginningTable&) const = default;
};

struct ParsoDispatch {
  static constexpr std::size_t kMostAlternatives = 16;
  using Mask = std::uint16_t;  // a bit for each alternative
  std::array<Mask, 256> first{};
  std::array<Mask, 256> second{};
  std::array<std::int32_t, kMostAlternatives> jumps{};  // from the Dispatch
  bool operator==(const ParsoDispatch&) const = default;
};

struct ParsoRoutine;

struct ParsoInstruction {
  ParsoInstruction(ParsoOpcode code = ParsoOpcode::Accept, std::int32_t jumpBy = 0)
      : opcode(code), jump(jumpBy) {}

  ParsoOpcode opcode;
  std::uint16_t count = 0;
  std::int32_t jump;
  union {
    const void* data = nullptr;
    const ParsoUnitSet* set;
    const ParsoName* name;
    const ParsoStop* stop;
    const ParsoBeginningTable* beginning;
    const ParsoDispatch* dispatch;
    ParsoRoutine* routine;
  };
  union {
    const ParsoRule* rule = nullptr;
    const char16_t* literal;
    std::int64_t owner;
  };
};

using ParsoCode = std::vector<ParsoInstruction>;

// What becomes of the nodes of a match.
enum class ParsoOutput : std::uint8_t { Dropped, Attached, Root };

struct ParsoRoutine {
  const ParsoRule* rule = nullptr;
  ParsoOutput output = ParsoOutput::Dropped;
  ParsoCode code;  // empty until the first call
};

class ParsoProgram {
 public:
  explicit ParsoProgram(const ParsoGrammar& grammar);

  // The routine with its code. Null when the rule, or one that it calls at once, uses a feature
  // that the machine lacks.
  const ParsoRoutine* StartRoutine(const ParsoRule& rule);
  // Makes the code of a routine that is called for the first time; false as above.
  bool Complete(ParsoRoutine& routine);

  bool HasConstraints() const { return hasConstraints_; }
  // For ParsoInterpreter.
  const std::vector<bool>& MemoisedRules();

 private:
  friend class ParsoCompiler;

  ParsoRoutine* RoutineFor(const ParsoRule& rule, ParsoOutput output);

  const ParsoGrammar& grammar_;
  ParsoAnalysis analysis_;
  bool isSupported_ = true;
  bool hasConstraints_ = false;
  std::deque<ParsoRoutine> routines_;
  std::array<std::vector<ParsoRoutine*>, 3> routinesByRule_;  // by output, then rule index
  // Operands, each kept once. Deques, since instructions point into them.
  std::deque<ParsoUnitSet> sets_;
  std::deque<ParsoName> names_;
  std::deque<ParsoStop> stops_;
  std::deque<ParsoBeginningTable> beginnings_;
  std::deque<ParsoDispatch> dispatches_;
  std::vector<bool> memoised_;
};

}  // namespace kelmora
