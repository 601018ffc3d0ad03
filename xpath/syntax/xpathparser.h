// XPathParser: recursive descent over the text of an expression, with ordered choice. There is no
// token stream: each rule is a function that works at the cursor, skips white space itself, and on
// failure gives the cursor back as it was.
//
// Two things keep it linear although the first of several alternatives may fail late. The three
// forms of a path that begin with a filter share one parse of the filter. And the six levels of
// binary operators are one loop that holds an open node per level, so that a level which cannot go
// on hands its node down and the next level looks at the same place.
//
// Recursion happens only where expressions nest (brackets, predicates, arguments) and is counted:
// beyond kMaxNesting levels the parse fails.
#pragma once

#include <cstddef>
#include <string_view>

#include "syntax/xpathparsetree.h"

namespace kelmora {

// Tokens and names; what they match becomes leaves of the tree.
class XPathScanner {
 public:
  explicit XPathScanner(XPathParseTree& tree) : tree_(tree), text_(tree.Text().View()) {}

  // Units that remained behind the furthest token that ever matched, 0x7FFFFFFF before the first.
  std::int32_t Furthest() const { return furthest_; }
  std::int32_t Remaining() const { return Remaining(cursor_); }

 protected:
  XPathParseNode* Make(XPathRule rule) { return tree_.MakeNode(rule); }
  XPathParseNode* MakeWith(XPathRule rule, XPathParseNode* child);
  static void Add(XPathParseNode* parent, XPathParseNode* child) {
    parent->AddChild(child, XPathParseNode::kRuleRole);
  }

  // Skips white space, then compares. There is no test of what follows, so a keyword matches the
  // start of a longer word.
  XPathParseNode* Token(std::u16string_view literal);
  // The same without a step over white space.
  XPathParseNode* TokenHere(std::u16string_view literal);
  XPathParseNode* AnyTokenOf(const std::u16string_view* literals, std::size_t count);
  XPathParseNode* Name(XPathRule rule);  // white space, then a name without colon
  XPathParseNode* QName(XPathRule qualified, XPathRule prefixed, XPathRule local);
  XPathParseNode* PrefixWildcard(XPathRule rule, XPathRule name);
  XPathParseNode* Literal();
  XPathParseNode* Number();

  char16_t Peek(std::size_t ahead = 0) const {
    return cursor_ + ahead < text_.size() ? text_[cursor_ + ahead] : u'\0';
  }
  void SkipSpace();

  XPathParseTree& tree_;
  std::u16string_view text_;
  std::size_t cursor_ = 0;

 private:
  std::int32_t Remaining(std::size_t at) const {
    return static_cast<std::int32_t>(text_.size() - at);
  }
  XPathParseNode* Leaf(XPathRule rule, std::size_t from, std::size_t to);
  void AddRun(XPathParseNode* parent, std::size_t from, std::size_t to);
  void Matched() {
    if (Remaining() < furthest_) furthest_ = Remaining();
  }
  XPathParseNode* Quoted(XPathRule rule, char16_t quote);
  XPathParseNode* DigitRun();

  std::int32_t furthest_ = 0x7FFFFFFF;
};

class XPathParser : public XPathScanner {
 public:
  // Levels of nested expressions. An evaluation recurs to the same depth: a predicate, the
  // costliest form, takes about 1.4 KB of machine stack per level, and 6 KB in a sanitizer build.
  static constexpr int kMaxNesting = 800;

  using XPathScanner::XPathScanner;

  // The three start rules. Null when the text does not start with a sentence; text may be left
  // over, see Remaining().
  XPathParseNode* ParseExpr();
  XPathParseNode* ParseSelector();
  XPathParseNode* ParseField();
  bool IsTooDeep() const { return tooDeep_; }
  int DeepestNesting() const { return deepest_; }

 private:
  XPathParseNode* ParseOperators();
  XPathParseNode* MatchOperator(int level);
  XPathParseNode* ParseUnary();
  XPathParseNode* ParseUnion();
  XPathParseNode* ParsePath();
  XPathParseNode* ParseFilterPath(XPathParseNode* filter);
  XPathParseNode* ParseFilter();
  XPathParseNode* ParsePrimary();
  XPathParseNode* ParseVariable();
  XPathParseNode* ParseParenthesis();
  XPathParseNode* ParseFunctionCall();
  XPathParseNode* ParseArguments();
  XPathParseNode* ParseLocationPath();
  XPathParseNode* ParseRelativePath();
  XPathParseNode* ParseStep();
  XPathParseNode* ParseFullStep();
  XPathParseNode* ParseAxisSpecifier();
  XPathParseNode* ParseNodeTest();
  XPathParseNode* ParseNodeType();
  XPathParseNode* ParsePredicate();

  XPathParseNode* ParseSelectorPath();
  XPathParseNode* ParseFieldPath();
  XPathParseNode* ParseIdentityStep(bool field);

  int nesting_ = 0;
  int deepest_ = 0;
  bool tooDeep_ = false;
};

}  // namespace kelmora
