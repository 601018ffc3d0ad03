// ParsoProgram: the rules of a grammar as instructions for ParsoMachine.
//
// A routine is the code of one rule. It exists when the rule is first called, so that a text pays
// only for the rules that it needs: the routine is taken from the table of the grammar if it was
// made of one that holds it, else compiled. Instructions and what they point to live as long as the
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

enum class ParsoOpcode : std::uint16_t {
#define PARSO_OPCODE(name, operand, also) name,
#include "parsoopcode.def"
#undef PARSO_OPCODE
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
struct ParsoInstructionRow;
struct ParsoStopRow;

// Which members of the unions an instruction uses.
enum class ParsoOperand : std::uint8_t { None, Set, Name, Stop, Beginning, Dispatch, Routine };
enum class ParsoSecondOperand : std::uint8_t { None, Rule, Literal, Owner };
ParsoOperand OperandOf(ParsoOpcode opcode);
ParsoSecondOperand SecondOperandOf(ParsoOpcode opcode);

struct ParsoInstruction {
  ParsoInstruction(ParsoOpcode code = ParsoOpcode::Accept, std::int32_t jumpBy = 1)
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
  // All routines that can be reached from any rule, with their code; those that the machine can't
  // run have none.
  const std::deque<ParsoRoutine>& AllRoutines();
  // For ParsoInterpreter.
  const std::vector<bool>& MemoisedRules();

 private:
  friend class ParsoCompiler;

  ParsoRoutine* RoutineFor(const ParsoRule& rule, ParsoOutput output);
  bool TakeFromTable(ParsoRoutine& routine);
  ParsoInstruction FromRow(const ParsoInstructionRow& row, const ParsoGrammarTable& table);
  const ParsoStop* StopFromRow(const ParsoStopRow& row, const ParsoGrammarTable& table);

  const ParsoGrammar& grammar_;
  std::unique_ptr<ParsoAnalysis> analysis_;  // made when something is compiled
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
