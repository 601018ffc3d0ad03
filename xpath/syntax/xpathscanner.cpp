#include "syntax/xpathnames.h"
#include "syntax/xpathparser.h"
#include "tqcore/tqtext.h"

namespace kelmora {

XPathParseNode* XPathScanner::MakeWith(XPathRule rule, XPathParseNode* child) {
  XPathParseNode* node = Make(rule);
  Add(node, child);
  return node;
}

XPathParseNode* XPathScanner::Leaf(XPathRule rule, std::size_t from, std::size_t to) {
  XPathParseNode* leaf = Make(rule);
  leaf->text = text_.substr(from, to - from);
  leaf->position = Remaining(from);
  return leaf;
}

void XPathScanner::AddRun(XPathParseNode* parent, std::size_t from, std::size_t to) {
  parent->AddChild(Leaf(XPathRule::CharacterRun, from, to), XPathParseNode::kCharacterRole);
}

void XPathScanner::SkipSpace() {
  while (cursor_ < text_.size() && IsXmlSpace(text_[cursor_])) ++cursor_;
}

XPathParseNode* XPathScanner::TokenHere(std::u16string_view literal) {
  if (text_.substr(cursor_, literal.size()) != literal) return nullptr;
  XPathParseNode* leaf = Leaf(XPathRule::Token, cursor_, cursor_ + literal.size());
  cursor_ += literal.size();
  Matched();
  return leaf;
}

XPathParseNode* XPathScanner::Token(std::u16string_view literal) {
  std::size_t start = cursor_;
  SkipSpace();
  XPathParseNode* leaf = TokenHere(literal);
  if (leaf == nullptr) cursor_ = start;
  return leaf;
}

XPathParseNode* XPathScanner::AnyTokenOf(const std::u16string_view* literals, std::size_t count) {
  std::size_t start = cursor_;
  SkipSpace();
  for (std::size_t i = 0; i < count; ++i) {
    if (XPathParseNode* leaf = TokenHere(literals[i])) return leaf;
  }
  cursor_ = start;
  return nullptr;
}

XPathParseNode* XPathScanner::Name(XPathRule rule) {
  std::size_t start = cursor_;
  SkipSpace();
  std::size_t end = MatchNCName(text_, cursor_);
  if (end == cursor_) {
    cursor_ = start;
    return nullptr;
  }
  XPathParseNode* node = Make(rule);
  AddRun(node, cursor_, end);
  cursor_ = end;
  Matched();
  return node;
}

XPathParseNode* XPathScanner::QName(XPathRule qualified, XPathRule prefixed, XPathRule local) {
  XPathParseNode* first = Name(local);
  if (first == nullptr) return nullptr;
  std::size_t behindFirst = cursor_;
  if (XPathParseNode* colon = Token(u":")) {
    if (XPathParseNode* second = Name(local)) {
      XPathParseNode* node = MakeWith(prefixed, first);
      Add(node, colon);
      Add(node, second);
      return MakeWith(qualified, node);
    }
    cursor_ = behindFirst;
  }
  return MakeWith(qualified, first);
}

XPathParseNode* XPathScanner::PrefixWildcard(XPathRule rule, XPathRule name) {
  std::size_t start = cursor_;
  if (XPathParseNode* prefix = Name(name)) {
    if (XPathParseNode* colon = Token(u":")) {
      if (XPathParseNode* star = Token(u"*")) {
        XPathParseNode* node = MakeWith(rule, prefix);
        Add(node, colon);
        Add(node, star);
        return node;
      }
    }
  }
  cursor_ = start;
  return nullptr;
}

XPathParseNode* XPathScanner::Quoted(XPathRule rule, char16_t quote) {
  std::size_t start = cursor_;
  XPathParseNode* open = Token(std::u16string_view(&quote, 1));
  if (open == nullptr) return nullptr;
  std::size_t end = FindUnit(text_, quote, cursor_);
  if (end == std::u16string_view::npos) {
    cursor_ = start;
    return nullptr;
  }
  XPathParseNode* node = MakeWith(rule, open);
  if (end > cursor_) AddRun(node, cursor_, end);
  cursor_ = end;
  Add(node, TokenHere(std::u16string_view(&quote, 1)));
  return node;
}

XPathParseNode* XPathScanner::Literal() {
  XPathParseNode* quoted = Quoted(XPathRule::DoubleQuoted, u'"');
  if (quoted == nullptr) quoted = Quoted(XPathRule::SingleQuoted, u'\'');
  return quoted ? MakeWith(XPathRule::Literal, quoted) : nullptr;
}

XPathParseNode* XPathScanner::DigitRun() {
  std::size_t end = cursor_;
  while (end < text_.size() && text_[end] >= u'0' && text_[end] <= u'9') ++end;
  if (end == cursor_) return nullptr;
  XPathParseNode* node = Make(XPathRule::DigitRun);
  AddRun(node, cursor_, end);
  cursor_ = end;
  Matched();
  return node;
}

// No white space inside a number. A point may end it: "1." is a number.
XPathParseNode* XPathScanner::Number() {
  if (XPathParseNode* word = Token(u"NaN")) return MakeWith(XPathRule::Number, word);
  std::size_t start = cursor_;
  SkipSpace();
  if (XPathParseNode* run = DigitRun()) {
    XPathParseNode* digits = MakeWith(XPathRule::Digits, run);
    if (XPathParseNode* point = TokenHere(u".")) {
      XPathParseNode* part = MakeWith(XPathRule::DecimalPart, point);
      if (XPathParseNode* fraction = DigitRun()) Add(part, fraction);
      Add(digits, part);
    }
    return MakeWith(XPathRule::Number, digits);
  }
  cursor_ = start;
  if (XPathParseNode* point = TokenHere(u".")) {
    if (XPathParseNode* run = DigitRun()) {
      XPathParseNode* fraction = MakeWith(XPathRule::Fraction, point);
      Add(fraction, run);
      return MakeWith(XPathRule::Number, fraction);
    }
  }
  cursor_ = start;
  return nullptr;
}

}  // namespace kelmora
