// XMLRegExpGrammar: the grammar of regular expressions with what the interpreter needs of it, made
// at the first use and kept to the end of the process.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "parso/parsogrammar.h"
#include "parso/parsonode.h"
#include "parso/parsoparser.h"
#include "tqcore/tqstring.h"

namespace kelmora {

// The rules that the walk tells apart. Sequence and Alternative are the anonymous groups.
enum class RegExpRule : std::uint8_t {
#define REGEXP_RULE(name, text) name,
#include "regexp/regexprule.def"
#undef REGEXP_RULE
  Sequence,
  Alternative,
  Other,
};

class XMLRegExpGrammar {
 public:
  static XMLRegExpGrammar& Instance();

  XMLRegExpGrammar();

  RegExpRule RuleOf(const ParsoNode* node) const;
  // Null when the text does not parse or nests too deep; the Last... values of XMLRegExp are then
  // set. The tree points into `pattern`.
  std::unique_ptr<ParsoTree> Parse(const TQString& pattern);

  // Trees of the classes behind \i, \c, \d and \w; null for another letter.
  const ParsoNode* ClassOf(char16_t letter) const;

  std::int32_t lastErrorOffset = 0;
  std::int32_t lastErrorLength = 0;
  const char16_t* lastErrorPosition = nullptr;
  TQString lastErrorMessage;

 private:
  struct LetterClass {
    char16_t letter;
    TQString pattern;
    std::unique_ptr<ParsoTree> tree;
  };

  ParsoGrammar grammar_;
  std::vector<RegExpRule> rules_;  // by index of the grammar's rule
  std::vector<LetterClass> classes_;
};

// How often an atom may come: {1, 1} without a quantifier behind it.
struct RegExpQuantity {
  std::int32_t least = 1;
  std::int32_t most = 1;
};
RegExpQuantity ReadQuantifier(const ParsoNode* atom, const XMLRegExpGrammar& grammar);

// The character that "\" and the letter stand for.
char16_t EscapedUnit(char16_t letter);

}  // namespace kelmora
