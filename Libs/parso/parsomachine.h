// ParsoMachine: runs a ParsoProgram over a text. It records no failures: a text that it refuses is
// given to ParsoInterpreter, which finds out why. For a text that parses its tree is the same as
// the interpreter's with flatten and dropEndNames on and an exact compare, but that nobody counts
// lines.
#pragma once

#include <cstdint>
#include <memory>

#include "parso/parsonode.h"
#include "parsoprogram.h"

namespace kelmora {

class ParsoMachine {
 public:
  enum class Outcome { Matched, Failed, Unsupported };

  ParsoMachine(ParsoProgram& program, ParsoTree& tree) : program_(program), tree_(tree) {}

  // Parses `length` units, which a unit of value 0 follows. On Matched the tree has its root. A
  // text that holds a 0 fails.
  Outcome Run(const ParsoRoutine& start, const char16_t* text, std::int32_t length);

 private:
  // What the machine remembers: a choice point, a call, or a node that is open.
  struct Entry {
    const ParsoInstruction* code;  // choice point: alternative; call: where to return
    const char16_t* text;          // choice point: where it was made; node: its start
    ParsoNode* first;              // choice point, node: the list that was being built
    ParsoNode* last;
    std::uint32_t previousChoice;  // index of the choice point below
    std::uint32_t alternatives;    // of a Dispatch: those not yet tried
  };
  struct Registers {
    const ParsoInstruction* code;
    const char16_t* text;
    ParsoNode* first;  // list of the innermost open node
    ParsoNode* last;
    Entry* top;
    Entry* choice;  // the topmost choice point; the bottom entry when there is none
  };

  // Each carries out one instruction. Those with a result return false when the match fails here.
  bool MatchUnit(Registers& r) const;
  bool MatchRun(Registers& r) const;
  bool MatchLiteral(Registers& r) const;
  bool MatchSpacedLiteral(Registers& r) const;
  bool MatchName(Registers& r) const;
  bool MatchStop(Registers& r) const;
  bool MatchSameName(Registers& r) const;
  bool MatchNameLeaf(Registers& r);
  bool CheckExcept(Registers& r) const;
  void MakeChoicePoint(Registers& r);
  void Commit(Registers& r);
  void Repeat(Registers& r);
  bool Dispatch(Registers& r);
  void LoopDispatch(Registers& r);
  void EndAlternative(Registers& r);
  bool Call(Registers& r);  // false when the routine can't be made
  void Open(Registers& r);
  void CloseLeaf(Registers& r);
  void CloseNode(Registers& r);
  void ClosePruned(Registers& r);
  void CloseGroup(Registers& r);
  void CloseSpliced(Registers& r);

  Entry& Push(Registers& r);
  void PushChoice(Registers& r, const ParsoInstruction* alternative);
  void PopChoice(Registers& r);
  void MoveLoop(Registers& r, const ParsoInstruction* behind, bool goesOn);
  bool GoBack(Registers& r);  // false when no choice point is left
  void Attach(Registers& r, ParsoNode* first, ParsoNode* last);
  ParsoNode* NewNode(const Registers& r, const char16_t* start);
  void Grow(Registers& r);

  ParsoProgram& program_;
  ParsoTree& tree_;
  const char16_t* end_ = nullptr;
  std::unique_ptr<Entry[]> entries_;
  Entry* limit_ = nullptr;
};

}  // namespace kelmora
