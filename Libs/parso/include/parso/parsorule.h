// ParsoRule: one object of a compiled grammar. A named rule, an anonymous group, a literal and a
// character class are all this record, told apart by `kind`.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "parso/grammarruletable.h"

namespace kelmora {

class ParsoGrammar;
struct ParsoRule;

enum class ParsoKind : std::uint8_t {
  Group = 0,  // ( ... ), no name
  Rule = 'i',
  Literal = 'l',
  Bracket = 'p',  // [ ... ], not yet compiled
  Code = '#',     // #xHH, not yet compiled
  Class = 'c',
};

// How the children of a rule are joined.
enum class ParsoOp : std::uint8_t {
  None = 0,
  Sequence = 's',
  Choice = '|',
  StopAt = '/',
  Except = '-',
};

enum class ParsoQuantifier : std::uint8_t { One = 0, Any = '*', Some = '+', Optional = '?' };

constexpr bool Repeats(ParsoQuantifier quantifier) {
  return quantifier == ParsoQuantifier::Any || quantifier == ParsoQuantifier::Some;
}
constexpr bool CanBeNone(ParsoQuantifier quantifier) {
  return quantifier == ParsoQuantifier::Any || quantifier == ParsoQuantifier::Optional;
}

// An operand of a rule. The quantifier lives here, in the parent, so that operands can be shared.
struct ParsoChild {
  ParsoRule* rule;
  ParsoQuantifier quantifier;
};

// 1 for each unit that the class takes; entry 255 answers for all units above as well.
using ParsoClassTable = std::array<std::uint8_t, 256>;

struct ParsoRule {
  // A rule's name, a literal's text, a bracket class's text, or "#xHH". At most 255 units, in the
  // grammar's memory. A compiled class keeps the text that it came from.
  std::u16string_view name;
  std::u16string_view description;         // the text behind ">"; empty without one
  std::vector<ParsoChild> children;        // at most 40
  std::vector<ParsoRule*> constraint;      // { A = B }: A, B; at most 20
  const ParsoClassTable* table = nullptr;  // of a class
  const ParsoGrammar* grammar = nullptr;
  std::int32_t index = -1;  // in ParsoGrammar::rules
  ParsoKind kind = ParsoKind::Group;
  ParsoOp op = ParsoOp::None;
  bool flagNoNode = false;      // "!"
  bool flagKeepApart = false;   // "&"
  bool flagKeepNode = false;    // "$"
  mutable bool crSeen = false;  // the last unit that this class counted was CR
  GrammarRule grammarRule = GrammarRule::None;

  // A token keeps no children and survives pruning when it is empty.
  bool IsToken() const {
    return kind == ParsoKind::Rule && !name.empty() && name[0] >= u'A' && name[0] <= u'Z';
  }
};

}  // namespace kelmora
