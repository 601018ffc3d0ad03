// ParsoInterpreter: the plain interpreter of the rules. It records every failure and builds and
// prunes the tree step by step. What it yields is by definition right; ParsoMachine is the fast
// way to the same tree for texts that parse.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "parso/parsonode.h"

namespace kelmora {

class ParsoInterpreter {
 public:
  // `memoised` has a flag per ParsoRule::index, or is null when a tree is wanted. A rule whose flag
  // is set keeps its results by position, and a result taken from there has no children. Failures
  // are recorded all the same: an attempt that is repeated has nothing new to record.
  ParsoInterpreter(ParsoNodePool& pool, const std::vector<bool>* memoised)
      : pool_(pool), memoised_(memoised) {}

  // Matches `root`, whose rule, text, length and line are set. Works with ParsoMode::current.
  // The line reached, 0 for a failure.
  std::uint32_t Match(ParsoNode* root);

 private:
  // A rule or group that is being matched.
  struct Frame {
    ParsoNode* node;
    ParsoNode* lastChild = nullptr;
    const char16_t* cursor;
    std::int32_t available;       // units from `cursor` on
    std::uint32_t line;
    std::uint32_t item = 0;       // the operand that is being tried
    std::uint32_t successes = 0;  // of that operand
    bool tryItem = true;
  };
  struct MemoKey {
    const ParsoRule* rule;
    const char16_t* text;
    bool operator==(const MemoKey&) const = default;
  };
  struct MemoHash {
    std::size_t operator()(const MemoKey& key) const {
      return std::hash<const void*>()(key.text) * 31 + std::hash<const void*>()(key.rule);
    }
  };
  struct MemoResult {
    std::int32_t length;
    std::uint32_t line;
  };

  bool Start(ParsoNode* node, ParsoQuantifier quantifier);
  bool TakeMemo(ParsoNode* node);
  std::uint32_t MatchClass(ParsoNode* node, ParsoQuantifier quantifier);
  std::uint32_t MatchLiteral(ParsoNode* node);

  ParsoNode* NextAttempt(Frame& frame);
  ParsoNode* NextInSequence(Frame& frame);
  ParsoNode* NextInChoice(Frame& frame);
  ParsoNode* NextInExcept(Frame& frame);
  ParsoNode* NextInStopAt(Frame& frame);
  ParsoNode* NewChild(const Frame& frame, const ParsoRule& rule);
  void Deliver(ParsoNode* child, std::uint32_t line);
  void Accept(Frame& frame, ParsoNode* child, std::uint32_t line);
  void Attach(Frame& frame, ParsoNode* child);
  void CheckConstraint(ParsoNode* node);
  std::int32_t ScanToStop(Frame& frame);
  std::uint32_t Close(Frame& frame);
  void Prune(ParsoNode* node);

  ParsoNodePool& pool_;
  const std::vector<bool>* memoised_;
  std::vector<Frame> frames_;
  std::uint32_t result_ = 0;  // of the node that was finished last
  std::unordered_map<MemoKey, MemoResult, MemoHash> memo_;
};

}  // namespace kelmora
