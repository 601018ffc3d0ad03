// XMLRegExp::Sample: a walk of the expression's tree that writes one short text it describes.
#include "regexp/regexpgrammar.h"
#include "unicode/unicodedata.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

// A repetition such as x{1000000} ends the sample here.
constexpr int kMaxSample = 4096;
constexpr char16_t kLastUnit = 65534;

class Sampler {
 public:
  Sampler(const XMLRegExpGrammar& grammar, TQString& out) : grammar_(grammar), out_(out) {}

  void Visit(const ParsoNode* node);

 private:
  void VisitPiece(const ParsoNode* node);
  void VisitMultiCharEsc(char16_t letter);
  void AppendFirst(View wanted, bool isBlock);

  const XMLRegExpGrammar& grammar_;
  TQString& out_;
};

void Sampler::AppendFirst(View wanted, bool isBlock) {
  for (char16_t unit = 0; unit <= kLastUnit; ++unit) {
    const char16_t* name = isBlock ? BlockName(unit) : GeneralCategory(unit);
    if (name == nullptr) continue;
    if (isBlock ? wanted == name : View(name).starts_with(wanted)) {
      out_ += unit;
      return;
    }
  }
}

void Sampler::VisitMultiCharEsc(char16_t letter) {
  struct Fixed {
    char16_t letter;
    char16_t sample;
  };
  static constexpr Fixed kFixed[] = {{u'C', u'.'}, {u'W', u'.'}, {u'D', u'x'},
                                     {u'S', u'x'}, {u'I', u'0'}, {u's', u'\r'}};
  for (const Fixed& entry : kFixed) {
    if (entry.letter == letter) out_ += entry.sample;
  }
  if (const ParsoNode* letterClass = grammar_.ClassOf(letter)) Visit(letterClass);
}

void Sampler::VisitPiece(const ParsoNode* node) {
  const ParsoNode* atom = node->firstChild;
  if (atom == nullptr) return;
  const RegExpQuantity quantity = ReadQuantifier(atom, grammar_);
  const std::int32_t times = quantity.least > 0 ? quantity.least : (quantity.most >= 1 ? 1 : 0);
  for (std::int32_t i = 0; i < times && out_.Length() < kMaxSample; ++i) {
    const int before = out_.Length();
    Visit(atom);
    if (out_.Length() == before) return;  // all further repetitions would be as empty
  }
}

void Sampler::Visit(const ParsoNode* node) {
  const ParsoNode* first = node->firstChild;
  const View text = node->Text();
  switch (grammar_.RuleOf(node)) {
    case RegExpRule::Branch:
    case RegExpRule::Sequence:
      for (const ParsoNode* child = first; child != nullptr; child = child->next) Visit(child);
      return;
    case RegExpRule::Piece:
      VisitPiece(node);
      return;
    case RegExpRule::CharClass:
    case RegExpRule::WildcardEsc:
      if (first == nullptr) out_ += u'x';
      break;
    case RegExpRule::NegCharGroup:
    case RegExpRule::NegCharGroupND:
      out_ += u'x';
      return;
    case RegExpRule::Atom:
    case RegExpRule::CharRange:
    case RegExpRule::CharRangeBegin:
    case RegExpRule::CharRangeEnd:
    case RegExpRule::CharRangeEndND:
    case RegExpRule::CharOrEsc:
    case RegExpRule::CharOrEscIncDash:
      if (first == nullptr && text.size() == 1) out_ += text[0];
      break;
    case RegExpRule::SingleCharEsc:
      if (text.size() == 2) out_ += EscapedUnit(text[1]);
      return;
    case RegExpRule::MultiCharEsc:
      if (text.size() == 2) VisitMultiCharEsc(text[1]);
      return;
    case RegExpRule::IsCategory:
      AppendFirst(text, false);
      return;
    case RegExpRule::IsBlock:
      AppendFirst(text.substr(2), true);  // behind "Is"
      return;
    default:
      break;
  }
  if (first != nullptr) Visit(first);
}

}  // namespace

TQString XMLRegExp::Sample() const {
  TQString out;
  if (tree_ != nullptr) Sampler(XMLRegExpGrammar::Instance(), out).Visit(tree_->root);
  return out;
}

}  // namespace kelmora
