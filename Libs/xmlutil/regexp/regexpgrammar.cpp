#include "regexp/regexpgrammar.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "tqcore/tqerrorlogger.h"
#include "tqcore/tqsingleton.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

constexpr char16_t kGrammarFile[] = u"gra_re.txt";
constexpr char16_t kRoot[] = u"regExp";

constexpr std::u16string_view kRuleNames[] = {
#define REGEXP_RULE(name, text) text,
#include "regexp/regexprule.def"
#undef REGEXP_RULE
};

struct LetterPattern {
  char16_t letter;
  const char16_t* pattern;
};
constexpr LetterPattern kLetterPatterns[] = {
    {u'i', u"[\\p{L}_:]"},
    {u'c', u"[\\p{L}\\d\\.\\-_:]"},
    {u'd', u"\\p{Nd}"},
    {u'w', u"[^\\p{P}\\p{Z}\\p{C}]"},
};

// Brackets of either kind around what they hold.
bool IsBracketed(const ParsoNode* node, const XMLRegExpGrammar& grammar) {
  const RegExpRule rule = grammar.RuleOf(node);
  return rule == RegExpRule::CharClassExpr ||
         (rule == RegExpRule::Atom && node->Text().starts_with(u'('));
}

// All walks of the tree recur as deep as its brackets are nested.
bool IsNestedDeeper(const ParsoNode* root, int limit, const XMLRegExpGrammar& grammar) {
  std::vector<std::pair<const ParsoNode*, int>> pending{{root, 0}};
  while (!pending.empty()) {
    const auto [node, outer] = pending.back();
    pending.pop_back();
    const int nesting = outer + (IsBracketed(node, grammar) ? 1 : 0);
    if (nesting > limit) return true;
    for (const ParsoNode* child = node->firstChild; child != nullptr; child = child->next) {
      pending.emplace_back(child, nesting);
    }
  }
  return false;
}

constexpr std::int32_t kUnlimited = std::numeric_limits<std::int32_t>::max();

std::int32_t ReadCount(const ParsoNode* node) {
  std::int64_t value = 0;
  for (char16_t digit : node->Text()) {
    if (digit < u'0' || digit > u'9') break;
    value = std::min<std::int64_t>(value * 10 + (digit - u'0'), kUnlimited);
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace

RegExpQuantity ReadQuantifier(const ParsoNode* atom, const XMLRegExpGrammar& grammar) {
  const ParsoNode* quantifier = atom->next;
  if (quantifier == nullptr || grammar.RuleOf(quantifier) != RegExpRule::Quantifier) return {};
  const std::u16string_view text = quantifier->Text();
  if (text == u"?") return {0, 1};
  if (text == u"*") return {0, kUnlimited};
  if (text == u"+") return {1, kUnlimited};
  const ParsoNode* quantity = quantifier->firstChild;
  if (quantity != nullptr && grammar.RuleOf(quantity) == RegExpRule::Quantity) {
    quantity = quantity->firstChild;
  }
  if (quantity == nullptr) return {};
  const ParsoNode* first = quantity->firstChild;
  switch (grammar.RuleOf(quantity)) {
    case RegExpRule::QuantExact:
      return {ReadCount(quantity), ReadCount(quantity)};
    case RegExpRule::QuantMin:
      return {ReadCount(first ? first : quantity), kUnlimited};
    case RegExpRule::QuantRange:
      if (first == nullptr || first->next == nullptr) return {};
      return {ReadCount(first), ReadCount(first->next)};
    default:
      return {};
  }
}

char16_t EscapedUnit(char16_t letter) {
  if (letter == u'n') return u'\n';
  if (letter == u'r') return u'\r';
  if (letter == u't') return u'\t';
  return letter;
}

XMLRegExpGrammar& XMLRegExpGrammar::Instance() {
  return TQSingleton<XMLRegExpGrammar>::Instance();
}

XMLRegExpGrammar::XMLRegExpGrammar() {
  if (!grammar_.InitCompiled(kGrammarFile)) {
    TQErrorLogger::ReportAndRaise(kUnexpected, u"See Manual", u"regexpgrammar.cpp", __LINE__);
  }
  rules_.assign(grammar_.rules.size(), RegExpRule::Other);
  for (std::size_t i = 0; i < std::size(kRuleNames); ++i) {
    const ParsoRule* rule = grammar_.FindRule(kRuleNames[i]);
    if (rule != nullptr) rules_[static_cast<std::size_t>(rule->index)] = RegExpRule(i);
  }
  for (const LetterPattern& entry : kLetterPatterns) {
    classes_.push_back({entry.letter, entry.pattern, nullptr});
    classes_.back().tree = Parse(classes_.back().pattern);
  }
}

RegExpRule XMLRegExpGrammar::RuleOf(const ParsoNode* node) const {
  const ParsoRule* rule = node->rule;
  if (rule == nullptr) return RegExpRule::Other;
  if (rule->kind == ParsoKind::Group) {
    return rule->op == ParsoOp::Choice ? RegExpRule::Alternative : RegExpRule::Sequence;
  }
  return rules_[static_cast<std::size_t>(rule->index)];
}

std::unique_ptr<ParsoTree> XMLRegExpGrammar::Parse(const TQString& pattern) {
  ParsoParser parser(&grammar_);
  ParsoMode::current.flatten = true;
  ParsoMode::current.dropEndNames = false;
  ParsoMode::current.compare = CompareExactly;
  if (!parser.Parse(pattern, kRoot)) {
    lastErrorOffset = parser.ErrorOffset();
    lastErrorLength = parser.ErrorLength();
    lastErrorPosition = parser.ErrorPosition();
    lastErrorMessage = parser.ErrorMessage();
    return nullptr;
  }
  auto tree = parser.TakeTree();
  if (!IsNestedDeeper(tree->root, XMLRegExp::kMaxNesting, *this)) return tree;
  lastErrorOffset = 0;
  lastErrorLength = pattern.Length();
  lastErrorPosition = pattern.c_str();
  lastErrorMessage = u"Regular expression nested too deeply";
  return nullptr;
}

const ParsoNode* XMLRegExpGrammar::ClassOf(char16_t letter) const {
  for (const LetterClass& entry : classes_) {
    if (entry.letter == letter) return entry.tree ? entry.tree->root : nullptr;
  }
  return nullptr;
}

}  // namespace kelmora
