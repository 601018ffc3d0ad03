// ParsoCompiler: makes the code of one routine.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "parsoprogram.h"

namespace kelmora {

class ParsoCompiler {
 public:
  explicit ParsoCompiler(ParsoProgram& program)
      : program_(program), analysis_(*program.analysis_) {}

  // False when the rule needs what the machine can't do; the routine then has no code.
  bool Compile(ParsoRoutine& routine);

 private:
  // How a match of a rule shows in the list of nodes above it.
  enum class Shape {
    Dropped,             // not at all
    Inline,              // by what it holds
    Leaf,                // as a node without children
    Node,                // as a node with children
    Pruned,              // that depends on the number of children
    Group,               // likewise, for a group
    GroupByAlternative,  // Inline or Leaf, as the alternative that matched says
  };
  // The code of the parts of a rule, in order. No jump leads from one part into another.
  using Parts = std::vector<ParsoCode>;
  struct Alternative {
    ParsoCode code;
    ParsoBeginning beginning;
  };

  Shape ShapeOf(const ParsoRule& rule, bool attached);
  Shape ShapeOfGroup(const ParsoRule& group);
  bool IsActive(const ParsoRule& rule) const;

  ParsoCode MatchCode(const ParsoRule& rule, bool attached);
  // Takes apart the sequences in it as well, down to `levels` of them.
  Parts PartsOf(const ParsoRule& rule, bool attached, int levels);
  void AddBody(const ParsoRule& rule, Shape shape, int levels, Parts& parts);
  void AddSequence(const ParsoRule& rule, bool attached, int levels, Parts& parts);
  ParsoCode ExceptCode(const ParsoRule& rule, bool attached);

  ParsoCode ItemCode(const ParsoChild& child, bool attached);
  ParsoCode OptionalCode(const ParsoRule& rule, bool attached);
  ParsoCode LoopCode(const ParsoChild& child, bool attached);
  static void LoopDispatch(ParsoCode& code);
  std::optional<ParsoCode> RunLoopCode(const ParsoRule& choice);
  // An item that is nothing but a run of units: the class and its quantifier.
  std::optional<ParsoChild> AsRun(const ParsoChild& child, bool attached);
  std::optional<ParsoInstruction> AnyNumberOf(const ParsoChild& child);
  const ParsoStop* StopOf(const ParsoRule& rule);

  // parsochoicecompiler.cpp
  ParsoCode ChoiceCode(std::span<const ParsoChild> children, bool attached,
                       const ParsoRule* leafOfEmpty);
  ParsoCode AlternativeCode(const ParsoChild& child, bool attached, const ParsoRule* leafOfEmpty);
  ParsoCode DispatchCode(const std::vector<Alternative>& alternatives);
  std::optional<ParsoCode> SharedCode(const ParsoChild& a, const ParsoChild& b, bool attached,
                                      const ParsoRule* leafOfEmpty);
  std::optional<ParsoCode> SharedBeginning(const ParsoChild& a, const ParsoChild& b, bool attached);
  std::optional<ParsoCode> SharedRun(const ParsoChild& a, const ParsoChild& b,
                                     const ParsoRule& leafOfEmpty);
  ParsoBeginning BeginningOf(const ParsoChild& alternative);

  // The operand of `rule` that holds the second name of its constraint; empty when the constraint
  // is not of the kind that can be checked on the way.
  std::optional<std::size_t> EndNameItem(const ParsoRule& rule);
  bool StartsWithFirstName(const ParsoRule& rule);
  ParsoCode SameNameCode(const ParsoRule& first, const ParsoRule& second);

  const ParsoUnitSet* SetOf(const ParsoRule& classRule);
  const ParsoBeginningTable* TableOf(const ParsoBeginning& beginning);

  ParsoProgram& program_;
  ParsoAnalysis& analysis_;
  std::vector<const ParsoRule*>
      active_;  // rules whose code is being made, each inside the one before
  const ParsoRule* constrained_ = nullptr;  // the rule whose end name is awaited
  bool unsupported_ = false;
};

// Whether the rule has operands that are matched one behind the other.
bool IsSequence(const ParsoRule& rule);

// One code out of the parts; a Run and a Literal behind it become one instruction.
ParsoCode JoinParts(const std::vector<ParsoCode>& parts);
void AppendCode(ParsoCode& code, const ParsoCode& more);
// What jumps from between `start` and `end` to `end` goes to `target` instead. The instruction in
// front of `end` must be one that jumps.
void Retarget(ParsoCode& code, std::size_t start, std::size_t end, std::size_t target);
bool SameCode(const ParsoCode& a, const ParsoCode& b);
// The jump from the instruction in front of the code to the one behind it.
inline std::int32_t JumpOver(const ParsoCode& code) {
  return static_cast<std::int32_t>(code.size()) + 1;
}

// The value in a pool of operands, where it is added if it isn't there yet.
template <class Pool, class Value>
const Value* KeepOnce(Pool& pool, const Value& value) {
  for (const Value& kept : pool) {
    if (kept == value) return &kept;
  }
  return &pool.emplace_back(value);
}

}  // namespace kelmora
