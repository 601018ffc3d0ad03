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
  // is set keeps its results by the range of text that it was given, and a result taken from there
  // has no children. Failures are recorded all the same: an attempt that is repeated has nothing
  // new to record.
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
    std::int32_t given;      // units from the start of the node on
    std::int32_t available;  // units from `cursor` on
    std::uint32_t line;
    std::uint32_t item = 0;       // the operand that is being tried
    std::uint32_t successes = 0;  // of that operand
    bool tryItem = true;
  };
  // What came of an attempt: the line reached, 0 for a failure, and the units consumed.
  struct Result {
    std::uint32_t line = 0;
    std::int32_t length = 0;
  };
  struct MemoKey {
    const ParsoRule* rule;
    const char16_t* text;
    std::int32_t available;  // less inside a stop-at
    bool operator==(const MemoKey&) const = default;
  };
  struct MemoHash {
    std::size_t operator()(const MemoKey& key) const {
      const std::size_t range =
          std::hash<const void*>()(key.text) * 31 + static_cast<std::size_t>(key.available);
      return range * 31 + std::hash<const void*>()(key.rule);
    }
  };

  void Start(ParsoNode* node);
  void Attempt(const ParsoChild& child);
  static Result MatchClass(const ParsoRule& rule, ParsoQuantifier quantifier, const Frame& frame);
  bool IsMemoised(const ParsoRule& rule) const {
    return memoised_ != nullptr && (*memoised_)[static_cast<std::size_t>(rule.index)];
  }

  const ParsoChild* NextAttempt(Frame& frame);
  const ParsoChild* NextInSequence(Frame& frame);
  const ParsoChild* NextInChoice(Frame& frame);
  const ParsoChild* NextInExcept(Frame& frame);
  const ParsoChild* NextInStopAt(Frame& frame);
  void Deliver(const ParsoRule& childRule, ParsoNode* child, Result result);
  void Attach(Frame& frame, ParsoNode* child);
  void CheckConstraint(ParsoNode* node);
  std::int32_t ScanToStop(Frame& frame);
  std::uint32_t Close(Frame& frame);
  void Prune(ParsoNode* node);

  ParsoNodePool& pool_;
  const std::vector<bool>* memoised_;
  std::vector<Frame> frames_;
  std::unordered_map<MemoKey, Result, MemoHash> memo_;
};

}  // namespace kelmora
