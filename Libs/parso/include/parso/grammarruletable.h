// GrammarKind and GrammarRuleTable: what the consumers of parse trees know of the document
// grammars, namely their numbers, their files, and the rules that stand for something.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelmora {

struct ParsoRule;
class ParsoGrammar;

enum class GrammarKind : std::uint32_t {
  DTD = 0,
  XML = 1,
  Entity = 2,
  Lax = 3,    // 3DML
  XmlTD = 4,  // kinds 4 and 5 have a file name, but no such file exists
  Stylesheet = 5,
};
inline constexpr std::uint32_t kGrammarKindCount = 6;

// The file that holds the grammar, as the embedded file table names it.
const char16_t* KindFileName(GrammarKind kind);

// One value per rule of grammarrule.def, named after the rule. Every ParsoRule carries its value,
// so that a walk can switch on `node->rule->grammarRule`.
enum class GrammarRule : std::uint8_t {
#define GRAMMAR_RULE(name) name,
#include "parso/grammarrule.def"
#undef GRAMMAR_RULE
  None,  // any other rule
};
inline constexpr std::size_t kGrammarRuleCount = static_cast<std::size_t>(GrammarRule::None);

// None for a name that is not in the list.
GrammarRule GrammarRuleFromName(std::u16string_view name);

// The rules of one grammar by GrammarRule. A rule that the grammar lacks, or that became a class
// when it was compiled, is null and so never equals the rule of a node.
class GrammarRuleTable {
 public:
  GrammarRuleTable() = default;
  explicit GrammarRuleTable(const ParsoGrammar& grammar);

  const ParsoRule* operator[](GrammarRule rule) const {
    return rules_[static_cast<std::size_t>(rule)];
  }

 private:
  std::array<const ParsoRule*, kGrammarRuleCount> rules_{};
};

}  // namespace kelmora
