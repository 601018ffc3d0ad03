// ParsoGrammarTable: a grammar that was compiled while the program was built, as the source that
// makegrammartables writes holds it.
//
// Nothing in it points anywhere: rows name each other by their index and texts by their place in
// one long text. So the table costs nothing before it is used, and a run makes rules and code out
// of those rows only that it needs. Null and "none" are kNone.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "parsoprogram.h"

namespace kelmora {

struct ParsoTextRow {
  std::uint16_t start;
  std::uint16_t length;
};

struct ParsoRuleRow {
  static constexpr std::uint8_t kNoNode = 1;
  static constexpr std::uint8_t kKeepApart = 2;
  static constexpr std::uint8_t kKeepNode = 4;
  static constexpr std::uint8_t kDeleted = 8;  // by the optimiser

  ParsoTextRow name;
  ParsoTextRow description;
  std::uint16_t childrenEnd;    // those of the row before end where these start
  std::uint16_t constraintEnd;  // likewise
  std::uint16_t classTable;
  ParsoKind kind;
  ParsoOp op;
  std::uint8_t flags;
  GrammarRule grammarRule;
};

struct ParsoChildRow {
  std::uint16_t rule;
  ParsoQuantifier quantifier;
};

struct ParsoStopRow {
  std::uint16_t run;
  std::uint16_t whole;
  std::array<std::uint16_t, ParsoStop::kMostLiterals> literals;  // rules
};

struct ParsoInstructionRow {
  ParsoOpcode opcode;
  std::uint16_t count;
  std::int16_t jump;
  std::uint16_t operand;  // index of the first union's; for a routine the rule
  std::int16_t also;      // index of the rule of a literal, or of a rule; an owner
  ParsoOutput output;     // of a routine
};

// In the order of `output` and `rule`.
struct ParsoRoutineRow {
  ParsoOutput output;
  std::uint16_t rule;
  std::uint16_t codeEnd;  // that of the row before ends where this starts
};

struct ParsoGrammarTable {
  static constexpr std::uint16_t kNone = 0xFFFF;

  std::u16string_view file;  // the name of the text
  std::u16string_view texts;
  std::span<const ParsoRuleRow> rules;
  std::span<const ParsoChildRow> children;
  std::span<const std::uint16_t> constraints;
  std::span<const ParsoClassTable> classes;
  std::uint16_t root;
  std::span<const ParsoRoutineRow> routines;
  std::span<const ParsoInstructionRow> code;
  std::span<const ParsoUnitSet> sets;
  std::span<const ParsoName> names;
  std::span<const ParsoStopRow> stops;
  std::span<const ParsoBeginningTable> beginnings;
  std::span<const ParsoDispatch> dispatches;
};

std::span<const ParsoGrammarTable> CompiledGrammars();

}  // namespace kelmora
