// ParsoParser: parses a text by a grammar, into a tree of ParsoNode.
//
// The result is that of a plain interpreter of the rules: ordered choice, greedy repetition, no
// second try of an item that has matched. `Parse` first runs a compiled form of the grammar that
// records no failures; only when that fails does the plain interpreter run, to find the failure to
// report. One thread, one parse at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "parso/parsogrammar.h"
#include "parso/parsonode.h"
#include "tqcore/tqstring.h"

namespace kelmora {

// Compares `count` units; both texts end in a unit of value 0, which stops the comparison.
using ParsoCompare = bool (*)(const char16_t* a, const char16_t* b, std::size_t count);
bool CompareExactly(const char16_t* a, const char16_t* b, std::size_t count);
bool CompareIgnoringCase(const char16_t* a, const char16_t* b, std::size_t count);

// How all parsers work until the next one is constructed, which puts the defaults back.
struct ParsoMode {
  bool flatten = false;       // prune every matched node
  bool dropEndNames = false;  // after { A = B } take the node of B out of the tree
  ParsoCompare compare = CompareIgnoringCase;

  static ParsoMode current;
};

// Where and why the last parse, of whichever parser, failed.
struct ParsoErrorState {
  const char16_t* furthest = nullptr;  // null: nothing recorded
  const ParsoRule* failedRule = nullptr;
  TQString explicitMessage;  // counts only with hasExplicitMessage
  bool hasExplicitMessage = false;
  std::int32_t length = 0;  // units of the failed attempt
  std::uint32_t line = 0;
  std::int32_t childIndex = 0;  // which operand of the rule failed

  static ParsoErrorState current;
};

class ParsoParser {
 public:
  // Puts ParsoMode back to its defaults. The grammar must outlive the parser and its trees.
  explicit ParsoParser(const ParsoGrammar* grammar);
  ~ParsoParser();
  ParsoParser(const ParsoParser&) = delete;
  ParsoParser& operator=(const ParsoParser&) = delete;

  bool SetGrammar(const ParsoGrammar* grammar);  // returns the grammar's `valid`

  // Parses all of `text`, `length` units followed by a unit of value 0, from the named rule or,
  // without a name, from the grammar's root. The tree of the previous parse is freed. On failure
  // there is no tree to walk, and the Error operations tell why. Depth costs heap, not stack.
  [[nodiscard]] bool Parse(const char16_t* text, std::int32_t length,
                           std::u16string_view ruleName = {});
  [[nodiscard]] bool Parse(const TQString& text, std::u16string_view ruleName = {}) {
    return Parse(text.c_str(), text.Length(), ruleName);
  }
  bool Parse(TQString&& text, std::u16string_view ruleName = {}) = delete;  // it has to stay

  ParsoNode* Root() const { return tree_ ? tree_->root : nullptr; }
  // Hands the tree over. It needs the text and the grammar, but no longer this parser.
  [[nodiscard]] std::unique_ptr<ParsoTree> TakeTree() { return std::move(tree_); }
  void ReleaseTree() { tree_.reset(); }

  // Valid until the next parse of any parser. Units from the start of the text; 0 when nothing is
  // recorded or there is no tree.
  std::int32_t ErrorOffset() const;
  std::int32_t ErrorLength() const;
  const char16_t* ErrorPosition() const;
  // What was expected, by the description of the rule; empty when nothing is recorded.
  TQString ErrorMessage() const;

 private:
  const ParsoRule* StartRule(std::u16string_view ruleName) const;
  bool CanRunFast() const;
  bool ParseFast(const ParsoRule& start, std::int32_t length);
  bool ParsePlainly(const ParsoRule& start, std::int32_t length, const std::vector<bool>* memoised);

  const ParsoGrammar* grammar_ = nullptr;
  const char16_t* text_ = nullptr;
  std::unique_ptr<ParsoTree> tree_;
};

}  // namespace kelmora
