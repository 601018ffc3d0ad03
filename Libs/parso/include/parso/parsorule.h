// ParsoRule: one object of a compiled grammar. A named rule, an anonymous group, a literal and a
// character class are all this record, told apart by `kind`.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "parso/grammarruletable.h"
#include "tqcore/arena.h"

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

// A list in the memory of its grammar.
template <class T>
class ParsoList {
 public:
  ParsoList() = default;
  ParsoList(T* items, std::size_t count)
      : items_(items), count_(static_cast<std::uint16_t>(count)), room_(count_) {}

  void Append(Arena& arena, const T& item) {
    if (count_ == room_) {
      room_ = static_cast<std::uint16_t>(count_ == 0 ? 2 : count_ * 2);
      auto* larger = static_cast<T*>(arena.Allocate(room_ * sizeof(T), alignof(T)));
      if (count_ > 0) std::memcpy(larger, items_, count_ * sizeof(T));
      items_ = larger;
    }
    items_[count_++] = item;
  }
  void clear() { count_ = 0; }

  std::size_t size() const { return count_; }
  bool empty() const { return count_ == 0; }
  T* begin() { return items_; }
  T* end() { return items_ + count_; }
  const T* begin() const { return items_; }
  const T* end() const { return items_ + count_; }
  const T& operator[](std::size_t i) const { return items_[i]; }
  T& back() { return items_[count_ - 1]; }

 private:
  T* items_ = nullptr;
  std::uint16_t count_ = 0;
  std::uint16_t room_ = 0;
};

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
  ParsoList<ParsoChild> children;          // at most 40
  ParsoList<ParsoRule*> constraint;        // { A = B }: A, B; at most 20
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
