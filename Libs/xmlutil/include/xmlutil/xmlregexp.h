// XMLRegExp, and with it the room of regular expressions: those of XML Schema. An expression must
// take the whole text; "^" and
// "$" are ordinary characters. All text is 16-bit units: a surrogate pair counts as two characters.
//
// An expression that does not parse accepts every text. The search is bounded by kMaxChoices,
// kMaxAttempts and kMaxSteps; beyond them a text does not match. One object does one match at a
// time.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "parso/parsonode.h"
#include "tqcore/tqstring.h"

namespace kelmora {

// One decision point that a match came through.
struct XMLRegExpChoice {
  const ParsoNode* node = nullptr;   // the atom of a repetition, or the branch taken
  const char16_t* cursor = nullptr;  // in the matched text, behind the match of this choice
  std::int32_t count = 0;            // of the iteration, from 0; 0 for a branch
  bool negated = false;
  bool rejected = false;  // given up: the next attempt must decide otherwise

  bool IsSameAs(const XMLRegExpChoice& other) const {
    return node == other.node && cursor == other.cursor && count == other.count &&
           negated == other.negated;
  }
};

class XMLRegExp {
 public:
  static constexpr int kNoMatch = 0;
  static constexpr int kPartial = 1;  // the expression was got through, but text remained
  static constexpr int kMatch = 2;

  static constexpr std::size_t kMaxChoices = 1000;
  static constexpr int kMaxAttempts = 10000;
  // Of one match, in nodes of the expression that are tried. A simple expression takes a few for
  // each character; what takes more multiplies its repetitions.
  static constexpr std::int64_t kMaxSteps = 5'000'000;
  // Bound on brackets inside one another; an expression beyond it does not compile.
  static constexpr int kMaxNesting = 500;

  // With `stopAtPartial` the search ends at the first attempt that leaves text over.
  XMLRegExp(const TQString& text, bool stopAtPartial);
  XMLRegExp(const XMLRegExp& other);  // compiles anew
  XMLRegExp& operator=(const XMLRegExp&) = delete;
  ~XMLRegExp();
  std::unique_ptr<XMLRegExp> Clone() const { return std::make_unique<XMLRegExp>(*this); }

  bool Compile(const TQString& text);
  // One of the three results above. The text must be followed by a unit of value 0.
  int Match(const TQString& text) const { return Match(text.c_str()); }
  int Match(std::u16string_view text) const { return Match(TQString(text)); }
  int Match(const char16_t* text) const;
  // A short example made from the expression; not tested against it.
  TQString Sample() const;

  const TQString& Pattern() const { return pattern_; }
  bool IsCompiled() const { return tree_ != nullptr; }

  // Of the last Compile that failed, in the process.
  static std::int32_t LastErrorOffset();
  static std::int32_t LastErrorLength();
  static const TQString& LastErrorMessage();
  static const char16_t* LastErrorPosition();  // in the pattern that failed, while that lives

  // What all matches of the process have taken, in nodes of expressions that were tried. Who runs
  // expressions of others can bound what they cost.
  static inline std::int64_t steps = 0;

 private:
  class Run;

  TQString pattern_;  // the tree points into it
  std::unique_ptr<ParsoTree> tree_;
  bool stopAtPartial_;
};

}  // namespace kelmora
