// ParsoGrammarLoader: compiles the lines of one grammar text into the objects of a ParsoGrammar.
#pragma once

#include <string_view>

#include "parso/parsogrammar.h"

namespace kelmora {

class ParsoGrammarLoader {
 public:
  static constexpr std::size_t kLongestLine = 1024;  // units; the rest counts as a line of its own
  static constexpr std::size_t kLongestText = 255;   // a name, a body, a literal

  explicit ParsoGrammarLoader(ParsoGrammar& grammar) : grammar_(grammar) {}

  // Compiles one line, which must not be empty. False for a line that is no rule, for a rule that
  // nothing has referred to yet, and when the grammar is full.
  bool AddLine(std::u16string_view line);
  bool HasRules() const { return hasRules_; }
  // Call once, behind the last line.
  void Finish();

 private:
  bool CompileRule(std::u16string_view name, std::u16string_view body);
  void CompileBody(ParsoRule& rule, std::u16string_view text);
  std::size_t CompileBracketed(ParsoRule& rule, std::u16string_view text, std::size_t start);
  void CompileGroup(ParsoRule& rule, std::u16string_view text);
  void CompileConstraint(ParsoRule& rule, std::u16string_view text);
  ParsoRule* FindOrCreate(std::u16string_view name, ParsoKind kind);
  void AddChild(ParsoRule& rule, ParsoRule* child);

  ParsoGrammar& grammar_;
  bool hasRules_ = false;
  bool full_ = false;
};

}  // namespace kelmora
