// The interpreter walks the parse tree of the expression. It does not backtrack inside an attempt:
// every attempt at a match runs the whole text from the start, and the list of choices recorded so
// far tells it which ones to take differently. After a failed attempt the last choice that is not
// yet rejected becomes rejected, and those behind it are forgotten; so the choices are enumerated
// depth first, the greedy ones before the others.
//
// A choice met again is recognised by its node, place, sign and iteration, wherever it stands in
// the list; a hash of these finds it.
#include "xmlutil/xmlregexp.h"

#include <algorithm>

#include "regexp/regexpgrammar.h"
#include "tqcore/tqtext.h"
#include "unicode/unicodedata.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

bool HasCategory(char16_t unit, View category) {
  return View(GeneralCategory(unit)).starts_with(category);
}

View BlockNameOf(View text) {
  return text.substr(2);
}  // behind "Is"

bool IsInBlock(char16_t unit, View name) {
  const char16_t* block = BlockName(unit);
  return block != nullptr && name == block;
}

struct ChoiceHash {
  std::size_t operator()(const XMLRegExpChoice& choice) const {
    auto hash = reinterpret_cast<std::uintptr_t>(choice.cursor) * 31;
    hash ^= reinterpret_cast<std::uintptr_t>(choice.node) >> 3;
    return hash * 31 + static_cast<std::uintptr_t>(choice.count) * 2 + choice.negated;
  }
};
struct ChoiceEqual {
  bool operator()(const XMLRegExpChoice& a, const XMLRegExpChoice& b) const {
    return a.IsSameAs(b);
  }
};

}  // namespace

// One Match: the choices and the walk.
class XMLRegExp::Run {
 public:
  explicit Run(const XMLRegExpGrammar& grammar) : grammar_(grammar) {}

  int Search(const ParsoNode* root, const char16_t* text, bool stopAtPartial);

 private:
  enum class Choice { New, Known, Rejected };

  bool MatchNode(const ParsoNode* node, const char16_t*& cursor, bool negated, char16_t* outUnit);
  bool MatchRegExp(const ParsoNode* node, const char16_t*& cursor, bool negated);
  bool MatchPiece(const ParsoNode* node, const char16_t*& cursor, bool negated);
  bool MatchSequence(const ParsoNode* node, const char16_t*& cursor, bool negated, bool isGroup);
  bool MatchMembers(const ParsoNode* node, const char16_t*& cursor, bool negated);
  bool MatchSubtraction(const ParsoNode* node, const char16_t*& cursor, bool negated);
  bool MatchRange(const ParsoNode* node, const char16_t*& cursor, bool negated);
  bool MatchMultiCharEsc(char16_t letter, const char16_t*& cursor, bool negated);
  static bool TestUnit(bool inside, const char16_t*& cursor, bool negated);
  Choice Meet(const XMLRegExpChoice& choice);
  bool Turn();  // rejects the last open choice; false when none is left

  const XMLRegExpGrammar& grammar_;
  const std::int64_t lastStep_ = steps + kMaxSteps;
  std::vector<XMLRegExpChoice> choices_;
  std::unordered_map<XMLRegExpChoice, std::size_t, ChoiceHash, ChoiceEqual> places_;
};

XMLRegExp::Run::Choice XMLRegExp::Run::Meet(const XMLRegExpChoice& choice) {
  const auto [place, added] = places_.try_emplace(choice, choices_.size());
  if (!added) return choices_[place->second].rejected ? Choice::Rejected : Choice::Known;
  choices_.push_back(choice);
  return Choice::New;
}

bool XMLRegExp::Run::Turn() {
  while (!choices_.empty() && choices_.back().rejected) {
    places_.erase(choices_.back());
    choices_.pop_back();
  }
  if (choices_.empty()) return false;
  choices_.back().rejected = true;
  return true;
}

int XMLRegExp::Run::Search(const ParsoNode* root, const char16_t* text, bool stopAtPartial) {
  for (int attempts = 1;; ++attempts) {
    const char16_t* cursor = text;
    const bool through = MatchNode(root, cursor, false, nullptr);
    if (steps > lastStep_) return kNoMatch;
    if (through && *cursor == 0) return kMatch;
    const int result = through ? kPartial : kNoMatch;
    if (through && stopAtPartial) return result;
    if (choices_.empty() || choices_.size() > kMaxChoices || attempts > kMaxAttempts) {
      return result;
    }
    if (!Turn()) return result;
  }
}

bool XMLRegExp::Run::TestUnit(bool inside, const char16_t*& cursor, bool negated) {
  if (*cursor == 0 || inside == negated) return false;
  ++cursor;
  return true;
}

bool XMLRegExp::Run::MatchRegExp(const ParsoNode* node, const char16_t*& cursor, bool negated) {
  const char16_t* start = cursor;
  bool matched = false;
  for (const ParsoNode* branch = node->firstChild; branch != nullptr; branch = branch->next) {
    cursor = start;
    matched = MatchNode(branch, cursor, negated, nullptr);
    if (negated) {
      if (!matched) return false;
      continue;
    }
    if (matched && Meet({branch, cursor, 0, negated, false}) != Choice::Rejected) return true;
  }
  return matched;
}

bool XMLRegExp::Run::MatchPiece(const ParsoNode* node, const char16_t*& cursor, bool negated) {
  const ParsoNode* atom = node->firstChild;
  if (atom == nullptr || grammar_.RuleOf(atom) != RegExpRule::Atom) return false;
  const RegExpQuantity quantity = ReadQuantifier(atom, grammar_);
  const char16_t* const begin = cursor;
  bool matched = false;
  std::int32_t count = 0;
  while (count < quantity.most) {
    const char16_t* const start = cursor;
    matched = MatchNode(atom, cursor, negated, nullptr);
    if (!matched) break;
    if (cursor == start) {  // all further iterations would be as empty
      return true;
    } else if (count >= quantity.least &&
               Meet({atom, cursor, count, negated, false}) == Choice::Rejected) {
      cursor = start;
      break;
    }
    ++count;
  }
  if (count >= quantity.least || matched) return true;
  cursor = begin;
  return false;
}

bool XMLRegExp::Run::MatchSequence(const ParsoNode* node, const char16_t*& cursor, bool negated,
                                   bool isGroup) {
  const char16_t* const begin = cursor;
  if (node->firstChild == nullptr) return false;
  for (const ParsoNode* child = node->firstChild; child != nullptr; child = child->next) {
    if ((isGroup && *cursor == 0) || !MatchNode(child, cursor, negated, nullptr)) {
      cursor = begin;
      return false;
    }
  }
  return true;
}

bool XMLRegExp::Run::MatchMembers(const ParsoNode* node, const char16_t*& cursor, bool negated) {
  if (*cursor == 0) return false;
  const char16_t* const start = cursor;
  bool matched = false;
  for (const ParsoNode* child = node->firstChild; child != nullptr; child = child->next) {
    cursor = start;
    matched = MatchNode(child, cursor, negated, nullptr);
    if (matched != negated) return matched;
  }
  return matched;
}

bool XMLRegExp::Run::MatchSubtraction(const ParsoNode* node, const char16_t*& cursor,
                                      bool negated) {
  const ParsoNode* first = node->firstChild;
  if (first == nullptr || first->next == nullptr) return false;
  const char16_t* const start = cursor;
  const bool inFirst = MatchNode(first, cursor, negated, nullptr);
  if (inFirst == negated) return inFirst;
  cursor = start;
  return MatchNode(first->next, cursor, !negated, nullptr);
}

bool XMLRegExp::Run::MatchRange(const ParsoNode* node, const char16_t*& cursor, bool negated) {
  const ParsoNode* first = node->firstChild;
  if (first == nullptr || first->next == nullptr) return false;
  char16_t low = 0;
  char16_t high = 0;
  const char16_t* scratch = cursor;
  MatchNode(first, scratch, false, &low);
  scratch = cursor;
  MatchNode(first->next, scratch, false, &high);
  return TestUnit(low <= *cursor && *cursor <= high, cursor, negated);
}

bool XMLRegExp::Run::MatchMultiCharEsc(char16_t letter, const char16_t*& cursor, bool negated) {
  if (letter == u's') return TestUnit(IsXmlSpace(*cursor), cursor, negated);
  if (letter == u'S') return TestUnit(!IsXmlSpace(*cursor), cursor, negated);
  const bool isComplement = letter >= u'A' && letter <= u'Z';
  const auto small = static_cast<char16_t>(isComplement ? letter - u'A' + u'a' : letter);
  const ParsoNode* letterClass = grammar_.ClassOf(small);
  return letterClass != nullptr && MatchNode(letterClass, cursor, negated != isComplement, nullptr);
}

bool XMLRegExp::Run::MatchNode(const ParsoNode* node, const char16_t*& cursor, bool negated,
                               char16_t* outUnit) {
  const ParsoNode* first = node->firstChild;
  const View text = node->Text();
  if (++steps > lastStep_) return false;  // the whole search is over
  switch (grammar_.RuleOf(node)) {
    case RegExpRule::RegExp:
      return MatchRegExp(node, cursor, negated);
    case RegExpRule::Branch:
      return MatchSequence(node, cursor, negated, false);
    case RegExpRule::Sequence:
      return MatchSequence(node, cursor, negated, true);
    case RegExpRule::Piece:
      return MatchPiece(node, cursor, negated);
    case RegExpRule::Atom:
      if (first != nullptr) return MatchNode(first, cursor, negated, nullptr);
      if (text.size() != 1 || *cursor == 0 || *cursor != text[0]) return false;
      ++cursor;
      return true;
    case RegExpRule::CharClass:
    case RegExpRule::WildcardEsc:
      if (first != nullptr) return MatchNode(first, cursor, negated, nullptr);
      return text == u"." && TestUnit(*cursor != u'\n' && *cursor != u'\r', cursor, negated);
    case RegExpRule::CharClassExpr:
    case RegExpRule::CharGroup:
    case RegExpRule::CharClassEsc:
    case RegExpRule::CatEsc:
    case RegExpRule::CharProp:
      return first != nullptr && MatchNode(first, cursor, negated, outUnit);
    case RegExpRule::NegCharGroup:
    case RegExpRule::NegCharGroupND:
    case RegExpRule::ComplEsc:
      return first != nullptr && MatchNode(first, cursor, !negated, nullptr);
    case RegExpRule::CharRange:
    case RegExpRule::CharRangeBegin:
    case RegExpRule::CharRangeEnd:
    case RegExpRule::CharRangeEndND:
      if (first != nullptr) return MatchNode(first, cursor, negated, nullptr);
      return text.size() == 1 && TestUnit(*cursor == text[0], cursor, negated);
    case RegExpRule::PosCharGroup:
    case RegExpRule::PosCharGroupND:
    case RegExpRule::Alternative:
      return MatchMembers(node, cursor, negated);
    case RegExpRule::CharClassSub:
      return MatchSubtraction(node, cursor, negated);
    case RegExpRule::SeRange:
    case RegExpRule::SeRangeBegin:
    case RegExpRule::SeRangeEnd:
      return MatchRange(node, cursor, negated);
    case RegExpRule::CharOrEsc:
    case RegExpRule::CharOrEscIncDash:
      if (first != nullptr) return MatchNode(first, cursor, negated, outUnit);
      if (text.size() == 1 && outUnit != nullptr) *outUnit = text[0];
      return false;
    case RegExpRule::SingleCharEsc: {
      if (text.size() != 2) return false;
      const char16_t unit = EscapedUnit(text[1]);
      if (outUnit != nullptr) *outUnit = unit;
      return TestUnit(*cursor == unit, cursor, negated);
    }
    case RegExpRule::MultiCharEsc:
      return text.size() == 2 && MatchMultiCharEsc(text[1], cursor, negated);
    case RegExpRule::IsCategory:
      return TestUnit(HasCategory(*cursor, text), cursor, negated);
    case RegExpRule::IsBlock:
      return TestUnit(IsInBlock(*cursor, BlockNameOf(text)), cursor, negated);
    default:
      return false;
  }
}

XMLRegExp::XMLRegExp(const TQString& text, bool stopAtPartial) : stopAtPartial_(stopAtPartial) {
  Compile(text);
}

XMLRegExp::XMLRegExp(const XMLRegExp& other) : XMLRegExp(other.pattern_, other.stopAtPartial_) {}

XMLRegExp::~XMLRegExp() = default;

bool XMLRegExp::Compile(const TQString& text) {
  tree_.reset();
  pattern_ = text;
  tree_ = XMLRegExpGrammar::Instance().Parse(pattern_);
  return tree_ != nullptr;
}

int XMLRegExp::Match(const char16_t* text) const {
  if (tree_ == nullptr) return kMatch;
  return Run(XMLRegExpGrammar::Instance()).Search(tree_->root, text, stopAtPartial_);
}

std::int32_t XMLRegExp::LastErrorOffset() {
  return XMLRegExpGrammar::Instance().lastErrorOffset;
}
std::int32_t XMLRegExp::LastErrorLength() {
  return XMLRegExpGrammar::Instance().lastErrorLength;
}
const char16_t* XMLRegExp::LastErrorPosition() {
  return XMLRegExpGrammar::Instance().lastErrorPosition;
}
const TQString& XMLRegExp::LastErrorMessage() {
  return XMLRegExpGrammar::Instance().lastErrorMessage;
}

}  // namespace kelmora
