#include <algorithm>
#include <iterator>

#include "syntax/xpathparser.h"

namespace kelmora {
namespace {

struct OperatorLevel {
  XPathRule expr;
  XPathRule tail;
  XPathRule op;  // None: the token stands in the tail itself
  std::u16string_view tokens[4];
  int tokenCount;
};

// From the loosest to the tightest.
constexpr OperatorLevel kLevels[] = {
    {XPathRule::OrExpr, XPathRule::OrTail, XPathRule::None, {u"or"}, 1},
    {XPathRule::AndExpr, XPathRule::AndTail, XPathRule::None, {u"and"}, 1},
    {XPathRule::EqualityExpr, XPathRule::EqualityTail, XPathRule::EqualityOp, {u"=", u"!="}, 2},
    {XPathRule::RelationalExpr,
     XPathRule::RelationalTail,
     XPathRule::RelationalOp,
     {u"<=", u">=", u"<", u">"},
     4},
    {XPathRule::AdditiveExpr, XPathRule::AdditiveTail, XPathRule::None, {u"+", u"-"}, 2},
    {XPathRule::MultiplicativeExpr,
     XPathRule::MultiplicativeTail,
     XPathRule::None,
     {u"*", u"div", u"mod"},
     3},
};
constexpr int kLevelCount = static_cast<int>(std::size(kLevels));

}  // namespace

XPathParseNode* XPathParser::ParseExpr() {
  if (nesting_ == kMaxNesting) {
    tooDeep_ = true;
    return nullptr;
  }
  deepest_ = std::max(deepest_, ++nesting_);
  std::u16string_view rest = text_.substr(cursor_);
  XPathParseNode* operators = ParseOperators();
  --nesting_;
  if (operators == nullptr) return nullptr;
  XPathParseNode* expr = MakeWith(XPathRule::Expr, operators);
  constexpr std::size_t kLongestKeptText = 255;
  if (rest.size() <= kLongestKeptText) expr->text = rest;
  return expr;
}

// The tail of a level up to its operator; the operand is the caller's to add.
XPathParseNode* XPathParser::MatchOperator(int level) {
  const OperatorLevel& row = kLevels[level];
  XPathParseNode* token = AnyTokenOf(row.tokens, static_cast<std::size_t>(row.tokenCount));
  if (token == nullptr) return nullptr;
  if (row.op != XPathRule::None) return MakeWith(row.tail, MakeWith(row.op, token));
  if (row.expr == XPathRule::AdditiveExpr) {
    token->rule = XPathRule::CharacterRun;
    XPathParseNode* tail = Make(row.tail);
    tail->AddChild(token, XPathParseNode::kCharacterRole);
    return tail;
  }
  if (row.expr != XPathRule::MultiplicativeExpr) return MakeWith(row.tail, token);
  XPathRule rule = token->text == u"*"     ? XPathRule::MultiplyTail
                   : token->text == u"div" ? XPathRule::DivTail
                                           : XPathRule::ModTail;
  return MakeWith(row.tail, MakeWith(rule, token));
}

XPathParseNode* XPathParser::ParseOperators() {
  struct OpenLevel {
    XPathParseNode* expr = nullptr;
    XPathParseNode* tail = nullptr;  // waits for its operand
  };
  OpenLevel open[kLevelCount];

  XPathParseNode* complete = ParseUnary();  // of the level below `level`
  if (complete == nullptr) return nullptr;
  int level = kLevelCount - 1;
  for (;;) {
    OpenLevel& at = open[level];
    if (at.tail != nullptr) {
      // "*", "div" and "mod" have a node of their own between the tail and the operand.
      bool nested = kLevels[level].expr == XPathRule::MultiplicativeExpr;
      Add(nested ? at.tail->firstChild : at.tail, complete);
      Add(at.expr, at.tail);
      at.tail = nullptr;
    } else {
      at.expr = MakeWith(kLevels[level].expr, complete);
    }
    std::size_t before = cursor_;
    at.tail = MatchOperator(level);
    if (at.tail != nullptr) {
      complete = ParseUnary();
      if (complete != nullptr) {
        level = kLevelCount - 1;
        continue;
      }
      cursor_ = before;
    }
    complete = at.expr;
    at = OpenLevel();
    if (level == 0) return complete;
    --level;
  }
}

// A row of minus signs is read in a loop, outermost first.
XPathParseNode* XPathParser::ParseUnary() {
  std::size_t start = cursor_;
  XPathParseNode* top = nullptr;
  XPathParseNode* innermost = nullptr;  // the negation that waits for its operand
  for (;;) {
    XPathParseNode* operand = ParseUnion();
    XPathParseNode* minus = operand ? nullptr : Token(u"-");
    if (operand == nullptr && minus == nullptr) {
      cursor_ = start;
      return nullptr;
    }
    XPathParseNode* negation = minus ? MakeWith(XPathRule::NegationExpr, minus) : nullptr;
    XPathParseNode* unary = MakeWith(XPathRule::UnaryExpr, minus ? negation : operand);
    if (innermost != nullptr) Add(innermost, unary);
    if (top == nullptr) top = unary;
    if (minus == nullptr) return top;
    innermost = negation;
  }
}

XPathParseNode* XPathParser::ParseUnion() {
  XPathParseNode* path = ParsePath();
  if (path == nullptr) return nullptr;
  XPathParseNode* node = MakeWith(XPathRule::UnionExpr, path);
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* bar = Token(u"|");
    path = bar ? ParsePath() : nullptr;
    if (path == nullptr) {
      cursor_ = before;
      return node;
    }
    XPathParseNode* tail = MakeWith(XPathRule::UnionTail, bar);
    Add(tail, path);
    Add(node, tail);
  }
}

XPathParseNode* XPathParser::ParsePath() {
  if (XPathParseNode* filter = ParseFilter()) {
    return MakeWith(XPathRule::PathExpr, ParseFilterPath(filter));
  }
  XPathParseNode* path = ParseLocationPath();
  return path ? MakeWith(XPathRule::PathExpr, path) : nullptr;
}

// The three forms that begin with a filter: with "//" and a path, with "/" and a path, alone.
XPathParseNode* XPathParser::ParseFilterPath(XPathParseNode* filter) {
  struct Form {
    std::u16string_view separator;
    XPathRule rule;
  };
  constexpr Form kForms[] = {{u"//", XPathRule::FilterDescendantPath},
                             {u"/", XPathRule::FilterChildPath}};
  std::size_t behindFilter = cursor_;
  for (const Form& form : kForms) {
    XPathParseNode* separator = Token(form.separator);
    XPathParseNode* path = separator ? ParseRelativePath() : nullptr;
    if (path != nullptr) {
      XPathParseNode* node = MakeWith(form.rule, filter);
      Add(node, separator);
      Add(node, path);
      return node;
    }
    cursor_ = behindFilter;
  }
  return filter;
}

XPathParseNode* XPathParser::ParseFilter() {
  XPathParseNode* primary = ParsePrimary();
  if (primary == nullptr) return nullptr;
  XPathParseNode* filter = MakeWith(XPathRule::FilterExpr, primary);
  while (XPathParseNode* predicate = ParsePredicate()) {
    Add(filter, MakeWith(XPathRule::FilterPredicate, predicate));
  }
  return filter;
}

XPathParseNode* XPathParser::ParsePrimary() {
  XPathParseNode* node = ParseVariable();
  if (node == nullptr) node = ParseParenthesis();
  if (node == nullptr) node = Literal();
  if (node == nullptr) node = Number();
  if (node == nullptr) node = ParseFunctionCall();
  return node ? MakeWith(XPathRule::PrimaryExpr, node) : nullptr;
}

XPathParseNode* XPathParser::ParseVariable() {
  std::size_t start = cursor_;
  if (XPathParseNode* sign = Token(u"$")) {
    XPathParseNode* name = QName(XPathRule::QName, XPathRule::PrefixedName, XPathRule::NCName);
    if (name != nullptr) {
      XPathParseNode* variable = MakeWith(XPathRule::VariableReference, sign);
      Add(variable, name);
      return variable;
    }
  }
  cursor_ = start;
  return nullptr;
}

XPathParseNode* XPathParser::ParseParenthesis() {
  std::size_t start = cursor_;
  if (XPathParseNode* open = Token(u"(")) {
    if (XPathParseNode* expr = ParseExpr()) {
      if (XPathParseNode* close = Token(u")")) {
        XPathParseNode* node = MakeWith(XPathRule::ParenExpr, open);
        Add(node, expr);
        Add(node, close);
        return node;
      }
    }
  }
  cursor_ = start;
  return nullptr;
}

XPathParseNode* XPathParser::ParseFunctionCall() {
  std::size_t start = cursor_;
  // A node type is no function name, and it matches as a prefix.
  if (ParseNodeType() == nullptr) {
    XPathParseNode* name = QName(XPathRule::QName, XPathRule::PrefixedName, XPathRule::NCName);
    XPathParseNode* open = name ? Token(u"(") : nullptr;
    if (open != nullptr) {
      XPathParseNode* arguments = ParseArguments();
      if (XPathParseNode* close = Token(u")")) {
        XPathParseNode* call =
            MakeWith(XPathRule::FunctionCall, MakeWith(XPathRule::FunctionName, name));
        Add(call, open);
        if (arguments != nullptr) Add(call, arguments);
        Add(call, close);
        return call;
      }
    }
  }
  cursor_ = start;
  return nullptr;
}

XPathParseNode* XPathParser::ParseArguments() {
  XPathParseNode* expr = ParseExpr();
  if (expr == nullptr) return nullptr;
  XPathParseNode* arguments = MakeWith(XPathRule::Arguments, MakeWith(XPathRule::Argument, expr));
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* comma = Token(u",");
    expr = comma ? ParseExpr() : nullptr;
    if (expr == nullptr) {
      cursor_ = before;
      return arguments;
    }
    XPathParseNode* tail = MakeWith(XPathRule::ArgumentTail, comma);
    Add(tail, MakeWith(XPathRule::Argument, expr));
    Add(arguments, tail);
  }
}

}  // namespace kelmora
