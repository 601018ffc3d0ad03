#include "syntax/xpathparser.h"

#include <gtest/gtest.h>

#include "nodes/xpathvaluenode.h"
#include "testtree.h"

namespace kelmora {
namespace {

const char* RuleName(XPathRule rule) {
  switch (rule) {
    case XPathRule::None:
      break;
#define XPATH_RULE(number, name) \
  case XPathRule::name:          \
    return #name;
#include "syntax/xpathrule.def"
#undef XPATH_RULE
  }
  return "?";
}

// "Rule(children)" in one line; leaves are their text. `brief` leaves out nodes with one child.
std::string Dump(const XPathParseNode& node, bool brief) {
  if (node.firstChild == nullptr) return "'" + Narrow(node.text) + "'";
  if (brief && node.HasOneChild()) return Dump(*node.firstChild, brief);
  std::string text = std::string(RuleName(node.rule)) + "(";
  for (const XPathParseNode* child = node.firstChild; child; child = child->nextSibling) {
    if (child != node.firstChild) text += ' ';
    text += Dump(*child, brief);
  }
  return text + ")";
}

struct Parsed {
  explicit Parsed(const std::string& text, XPathGrammar grammar = kExprGrammar) {
    expression.SetExpression(&map, Wide(text), kNoPattern);
    succeeded = expression.Parse(true, grammar);
    tree = expression.TakeTree();
  }
  std::string Brief() const { return succeeded ? Dump(*tree->Root(), true) : "fails"; }

  PrefixMap map;
  XPathExpression expression;
  bool succeeded = false;
  XPathParseNodeRef tree;
};

TEST(XPathParser, EveryLevelHasANode) {
  EXPECT_EQ(Dump(*Parsed("1").tree->Root(), false),
            "Expr(OrExpr(AndExpr(EqualityExpr(RelationalExpr(AdditiveExpr(MultiplicativeExpr("
            "UnaryExpr(UnionExpr(PathExpr(FilterExpr(PrimaryExpr(Number(Digits(DigitRun('1')))))))"
            "))))))))");
  EXPECT_EQ(Parsed("1").tree->Root()->effective->rule, XPathRule::Number);
}

TEST(XPathParser, Trees) {
  struct Row {
    const char* text;
    const char* expected;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"a or b", "OrExpr(FullStep('' 'a') OrTail('or' FullStep('' 'b')))"},
           {"a order", "OrExpr(FullStep('' 'a') OrTail('or' FullStep('' 'der')))"},
           {"1+2*3",
            "AdditiveExpr('1' AdditiveTail('+' MultiplicativeExpr('2' MultiplyTail('*' '3'))))"},
           {"1*2-3",
            "AdditiveExpr(MultiplicativeExpr('1' MultiplyTail('*' '2')) AdditiveTail('-' '3'))"},
           {"-a", "NegationExpr('-' FullStep('' 'a'))"},
           {"a-b", "FullStep('' 'a-b')"},
           {"a<=b", "RelationalExpr(FullStep('' 'a') RelationalTail('<=' FullStep('' 'b')))"},
           {"$p:v", "VariableReference('$' PrefixedName('p' ':' 'v'))"},
           {"f(1,a)",
            "FunctionCall('f' '(' Arguments('1' ArgumentTail(',' FullStep('' 'a'))) ')')"},
           {"(a)[1]", "FilterExpr(ParenExpr('(' FullStep('' 'a') ')') Predicate('[' '1' ']'))"},
           {"f()//a", "FilterDescendantPath(FunctionCall('f' '(' ')') '//' FullStep('' 'a'))"},
           {"/", "'/'"},
           {"//a/..",
            "RootDescendantPath('//' RelativeLocationPath(FullStep('' 'a') "
            "SeparatedStep('/' '..')))"},
           {"self :: node ( )", "FullStep(NamedAxis('self' '::') NodeTypeTest('node' '(' ')'))"},
           {"@p:*", "FullStep('@' PrefixWildcard('p' ':' '*'))"},
           {"processing-instruction( 't' )",
            "FullStep('' PITest('processing-instruction' '(' SingleQuoted(''' 't' ''') ')'))"},
           {"''", "SingleQuoted(''' ''')"},
           {"1.", "Digits('1' '.')"},
           {".5", "Fraction('.' '5')"},
           {"NaN", "'NaN'"},
           {"textual", "FullStep('' 'textual')"},
       }) {
    EXPECT_EQ(Parsed(row.text).Brief(), row.expected) << row.text;
  }
}

TEST(XPathParser, RefusedTextsAndHowFarTheyCame) {
  struct Row {
    const char* text;
    int remaining;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"", 0},          {"a b", 2},  {"1 .5", 3},   {"NaNny", 2}, {"textual()", 2},
           {"a[", 0},        {"a[1", 0},  {"f(", 0},     {"(a", 0},    {"'x", 2},
           {"a/", 0},        {"a//", 0},  {"$", 0},      {"a::b", 2},  {"foo:", 0},
           {"1 + .5", 1},    {"a or", 0}, {"self::", 0}, {"p:*()", 2}, {"1 2", 2},
           {"text-of()", 2}, {"!a", 2},
       }) {
    Parsed parsed(row.text);
    EXPECT_FALSE(parsed.succeeded) << row.text;
    int expected = row.text[0] == '\'' || row.text[0] == '!' ? 0x7FFFFFFF : row.remaining;
    if (row.text[0] == '\'') expected = 1;  // the opening mark is a token
    EXPECT_EQ(parsed.expression.ErrorPosition(), expected) << row.text;
  }
}

TEST(XPathParser, IdentityConstraintPaths) {
  struct Row {
    const char* text;
    bool selector;
    bool field;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"a", true, true},
           {".//a/b", true, true},
           {"a|p:*|*", true, true},
           {".", true, true},
           {"@a", false, true},
           {"a/@p:b", false, true},
           {".//@a", false, true},
           {"a/", false, false},
           {"a//b", false, false},
           {"@.", false, false},
           {"a[1]", false, false},
           {"/a", false, false},
           {"a|", false, false},
           {"./a", true, true},
       }) {
    EXPECT_EQ(Parsed(row.text, kSelectorGrammar).succeeded, row.selector) << row.text;
    EXPECT_EQ(Parsed(row.text, kFieldGrammar).succeeded, row.field) << row.text;
  }
  XPathTreeBuilder builder;
  TestTree tree(builder, "<r><a k='1'><b/><b/></a><a><c><b/></c></a></r>");
  auto evaluate = [&](const char* text, XPathGrammar grammar) {
    PrefixMap map;
    XPathExpression expression;
    expression.SetExpression(&map, Wide(text), kNoPattern);
    EXPECT_TRUE(expression.Parse(true, grammar));
    XPathValue value;
    EXPECT_TRUE(expression.Evaluate(tree.Root(), tree.Root()->firstChild, value));
    return Show(value);
  };
  EXPECT_EQ(evaluate(".//b", kSelectorGrammar), "[b b b]");
  EXPECT_EQ(evaluate("a/b|a", kSelectorGrammar), "[b b a a]");
  EXPECT_EQ(evaluate("a/@k|./a/@k|.", kFieldGrammar), "[@k r]");
}

TEST(XPathNames, QNames) {
  for (const char* name : {"a", "a:b", "a : b", "_-.", "\xC3\xA9"}) {
    EXPECT_TRUE(IsQName(Wide(name))) << name;
  }
  for (const char* name : {"", " a", "a ", "a b", "a:", ":a", "a:b:c", "1", "-a",
                           "\xC2\xB7"
                           "a"}) {
    EXPECT_FALSE(IsQName(Wide(name))) << name;
  }
  EXPECT_FALSE(IsNCName(u"a:b"));
  EXPECT_FALSE(IsNCName(u"a\u00B7"));
}

// The borders of the classes of characters. Combining characters and extenders belong to none.
TEST(XPathNames, Characters) {
  for (char16_t unit :
       std::u16string(u"AZaz_\u00C0\u00D6\u00D8\u00F6\u00F8\u0100\u0131\u0134\u013E"
                      u"\u0141\u0148\u014A\u017E\u0180\u01C3\u01CD\u0386\u0391\u03A1"
                      u"\u0410\u05D0\u0621\u3007\u3021\u3029\u3041\u3105\u4E00\u9FA5"
                      u"\uAC00\uD7A3")) {
    EXPECT_TRUE(IsNCName(TQString(unit))) << static_cast<int>(unit);
  }
  for (char16_t unit : std::u16string(u"-.09\u0660\u0669\u06F0\u0966\u0ED9")) {
    EXPECT_FALSE(IsNCName(TQString(unit))) << static_cast<int>(unit);
    EXPECT_TRUE(IsNCName(u'a' + TQString(unit))) << static_cast<int>(unit);
  }
  for (char16_t unit :
       std::u16string(u"@[`{:\u00A0\u00B7\u00BF\u00D7\u00F7\u0132\u013F\u0149\u017F"
                      u"\u01C4\u0300\u0387\u03A2\u0E46\u3005\u3006\u302A\u3099\u9FA6"
                      u"\uD7A4\xD800"
                      u"\xDFFF"
                      u"\uF900\uFF21\uFFFF")) {
    EXPECT_FALSE(IsNCName(u'a' + TQString(unit))) << static_cast<int>(unit);
  }
}

// --- size and depth ---------------------------------------------------------------------------

std::string Repeat(const std::string& piece, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

std::string EvaluateText(const std::string& text) {
  XPathTreeBuilder builder;
  TestTree tree(builder, "<a><a/></a>");
  PrefixMap map;
  XPathExpression expression;
  expression.SetExpression(&map, Wide(text), kNoPattern);
  if (!expression.Parse(true, kExprGrammar)) return "fails";
  XPathValue value;
  if (!expression.Evaluate(tree.Root(), tree.Root()->firstChild, value)) return "error";
  return Show(value);
}

TEST(XPathParser, NestingHasABound) {
  constexpr int kBound = XPathParser::kMaxNesting;
  struct Row {
    const char* open;
    const char* inside;
    const char* close;
    int bound;  // levels that the inside and the outermost expression leave
    const char* expected;
  };
  for (const Row& row : std::initializer_list<Row>{
           {"(", "1", ")", kBound - 1, "1"},
           {"self::a[", "1", "]", kBound - 1, "[a]"},
           {"string(", "1", ")", kBound - 1, "\"1\""},
           {"1+(", "1", ")", kBound - 1, nullptr},
           {"not(a[", "1", "])", (kBound - 1) / 2, nullptr},
           {"-(a|(", "a", "))", (kBound - 1) / 2, nullptr},
       }) {
    auto nested = [&row](int levels) {
      return Repeat(row.open, levels) + row.inside + Repeat(row.close, levels);
    };
    std::string value = EvaluateText(nested(row.bound));
    if (row.expected != nullptr) {
      EXPECT_EQ(value, row.expected) << row.open;
    }
    EXPECT_NE(value, "fails") << row.open;
    EXPECT_EQ(EvaluateText(nested(row.bound + 1)), "fails") << row.open;
    EXPECT_EQ(EvaluateText(nested(100000)), "fails") << row.open;
    EXPECT_EQ(EvaluateText(Repeat(row.open, 100000)), "fails") << row.open;
  }
}

TEST(XPathParser, LongChainsAreLinear) {
  constexpr int kLong = 20000;
  EXPECT_EQ(EvaluateText("1" + Repeat("+1", kLong)), "20001");
  EXPECT_EQ(EvaluateText("1" + Repeat(" or 1", kLong)), "true");
  EXPECT_EQ(EvaluateText(Repeat("-", kLong) + "1"), "1");
  EXPECT_EQ(EvaluateText("." + Repeat("/.", kLong)), "[a]");
  EXPECT_EQ(EvaluateText("a" + Repeat("/a", kLong)), "[]");
  EXPECT_EQ(EvaluateText("a" + Repeat("[1]", kLong)), "[a]");
  EXPECT_EQ(EvaluateText("a" + Repeat("|a", kLong)), "[a]");
  EXPECT_EQ(EvaluateText("string-length(concat(''" + Repeat(",'x'", kLong) + "))"), "20000");
  EXPECT_EQ(EvaluateText("string-length('" + Repeat("x", kLong) + "')"), "20000");
  EXPECT_EQ(EvaluateText("count(" + Repeat("x", kLong) + ")"), "0");
  EXPECT_EQ(EvaluateText(Repeat("p:", kLong)), "fails");
}

// A key whose index asks for the key.
class CircularKeys : public XPathKeys {
 public:
  bool HasKey(std::u16string_view) const override { return true; }
  const XPathNodeList* Lookup(std::u16string_view, XPathNode* root, std::u16string_view) override {
    ++lookups;
    XPathExpression inner;
    inner.SetExpression(&map, u"key('k', 'x')", kNoPattern);
    EXPECT_TRUE(inner.Parse(true, kExprGrammar));
    inner.SetXsltFunctions(true);
    inner.SetKeyTable(this);
    XPathValue value;
    if (!inner.Evaluate(root, root, value)) error = inner.ErrorCode();
    return nullptr;
  }
  PrefixMap map;
  XPathError error = XPathError::None;
  int lookups = 0;
};

TEST(XPathExpression, CircularEvaluationsEnd) {
  XPathTreeBuilder builder;
  TestTree tree(builder, "<a/>");
  CircularKeys keys;
  keys.Lookup(u"k", tree.Root(), u"x");
  EXPECT_EQ(keys.error, XPathError::KeyFunctionInKey);
  EXPECT_GT(keys.lookups, 100);
  EXPECT_LT(keys.lookups, 1000);
}

// A host function may use the object, and the very tree, that is being evaluated.
class ReenteringExpression : public XPathExpression {
 public:
  XPathNode* LoadDocument(const TQString& uri, XPathNode*) override {
    SetExpression(&map, u"count(//a)", kNoPattern);
    UseTree(uri == u"again" ? shared : counting, kExprGrammar);
    SetXsltFunctions(false);
    XPathValue value;
    inner = Evaluate(root, root, value) ? Show(value) : "error";
    return root;
  }
  PrefixMap map;
  XPathNode* root = nullptr;
  XPathParseNodeRef shared;
  XPathParseNodeRef counting;
  std::string inner;
};

TEST(XPathExpression, MayBeUsedWhileItRuns) {
  XPathTreeBuilder builder;
  TestTree tree(builder, "<a><a/></a>");
  ReenteringExpression expression;
  expression.root = tree.Root();
  expression.counting = Parsed("count(//a)").tree;
  for (const char* name : {"again", "other"}) {
    expression.shared =
        Parsed(std::string("concat(count(//a), count(document('") + name + "')/a), count(a))").tree;
    PrefixMap map;
    expression.SetExpression(&map, u"", kNoPattern);
    expression.UseTree(expression.shared, kExprGrammar);
    expression.SetXsltFunctions(true);
    XPathValue value;
    ASSERT_TRUE(expression.Evaluate(tree.Root(), tree.Root(), value));
    EXPECT_EQ(Show(value), "\"211\"");
    // Inside, the functions of XSLT were off: the tree that calls one of them fails.
    EXPECT_EQ(expression.inner, name == std::string("again") ? "error" : "2");
  }
}

}  // namespace
}  // namespace kelmora
