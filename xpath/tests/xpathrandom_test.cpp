// Plain evaluation and the fast forms must agree: the same value, order, positions and errors, on
// random expressions over random trees. The same holds for a simple pattern and the query that it
// stands for.

#include <gtest/gtest.h>

#include <random>
#include <unordered_set>

#include "testtree.h"
#include "xpath/simplepattern.h"

namespace kelmora {
namespace {

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string Pick(std::initializer_list<const char*> choices) {
    return *(choices.begin() + Below(static_cast<int>(choices.size())));
  }

  std::string Xml() {
    std::string xml = Pick({"", "<!--c-->", "<!D>"});
    Element(xml, 0);
    return xml + Pick({"", "<?t x?>"});
  }

  std::string Expression(int depth) {
    switch (Below(depth > 3 ? 4 : 12)) {
      case 0:
        return Pick({"1", "2", "0", "'1'", "'b'", "''", "1.5"});
      case 1:
        return Pick(
            {"$set", "$rtf", "$two", "$text", "$missing", "position()", "last()", "current()"});
      case 2:
      case 3:
        return Path(depth);
      case 4:
        return Expression(depth + 1) +
               Pick({"=", "!=", "<", ">", "<=", ">=", " or ", " and ", "+", "*", " - ", " mod "}) +
               Expression(depth + 1);
      case 5:
        if (Below(2) == 0) return Step(depth) + "|" + Step(depth) + Pick({"", "|@*", "|node()"});
        return Path(depth) + "|(" + Expression(depth + 1) + ")";
      case 6:
        return "(" + Expression(depth + 1) + ")" + Predicates(depth);
      case 7:
        return "$set" + Predicates(depth) + Pick({"/", "//"}) + Steps(depth + 1);
      case 8:
        return Pick({"count", "not", "boolean", "string", "number", "sum", "name", "local-name",
                     "string-length", "normalize-space", "generate-id", "floor", "nosuch"}) +
               "(" + Expression(depth + 1) + ")";
      case 9:
        return Pick({"concat", "contains", "starts-with", "substring-before", "substring"}) + "(" +
               Expression(depth + 1) + "," + Expression(depth + 1) + ")";
      case 10:
        return Pick({"-", "--"}) + Expression(depth + 1);
      default:
        return Pick({"string()", "name()", "number()", "normalize-space()", "true()", "lang('e')"});
    }
  }

  std::string Path(int depth) {
    return Pick({"", "", "", "/", "//", "./", ".//", "../"}) + Steps(depth);
  }

  std::string Steps(int depth) {
    std::string path = Step(depth);
    for (int more = Below(3); more > 0; --more) path += Pick({"/", "/", "//"}) + Step(depth);
    return path;
  }

  std::string Pattern() {
    auto step = [this] {
      return Pick({"a", "b", "c", "*", "p:*", "p:a", "node()", "text()", "comment()", "@x", "@*",
                   "@p:x", "processing-instruction()", "processing-instruction('t')"});
    };
    if (Below(12) == 0) return "/";
    std::string pattern = Pick({"", "", "/", "//"}) + step();
    for (int more = Below(4); more > 0; --more) pattern += Pick({"/", "//"}) + step();
    return pattern;
  }

 private:
  void Element(std::string& xml, int depth) {
    std::string name = Pick({"a", "b", "c", "p:a", "p:b"});
    xml += "<" + name + Pick({"", " x='1'", " x='b' y='2'", " p:x='1'"}) +
           Pick({"", "", " xml:lang='en'", " xmlns:p='urn:p'", " xmlns:p='urn:q'"});
    if (depth == 0) xml += " xmlns:p='urn:p'";
    xml += ">";
    for (int children = Below(depth < 5 ? 5 : 1); children > 0; --children) {
      if (Below(2) == 0) {
        Element(xml, depth + 1);
      } else {
        xml += Pick({"1", "b", "22", "<!--1-->", "<?t 1?>", "<![CDATA[2]]>"});
      }
    }
    xml += "</" + name + ">";
  }

  std::string Step(int depth) {
    int form = Below(14);
    if (form == 0) return ".";
    if (form == 1) return "..";
    std::string axis =
        form < 8
            ? Pick({"", "", "", "@"})
            : Pick({"ancestor::", "ancestor-or-self::", "attribute::", "child::", "descendant::",
                    "descendant-or-self::", "following::", "following-sibling::", "namespace::",
                    "parent::", "preceding::", "preceding-sibling::", "self::"});
    std::string test = Pick({"a", "b", "c", "x", "*", "*", "p:*", "p:a", "none:*", "node()",
                             "node()", "text()", "comment()", "processing-instruction()"});
    if (Below(60) == 0) test = "unbound:a";
    return axis + test + (Below(3) == 0 ? Predicates(depth) : "");
  }

  std::string Predicates(int depth) {
    std::string text;
    for (int count = Below(3); count > 0; --count) {
      text += "[";
      text += Below(2) == 0 ? Pick({"1", "2", "last()", "position()=2", "position()=last()",
                                    "@x='1'", "@x", "a", ".='1'", "position()<3", "not(@x)"})
                            : Expression(depth + 2);
      text += "]";
    }
    return text;
  }

  std::mt19937 random_;
};

class RandomTest : public testing::TestWithParam<unsigned> {
 protected:
  RandomTest() {
    map_.Set(u"p", builder_.InternURI(u"urn:p"));
    map_.Set(u"none", nullptr);
  }

  // The value with its positions, or the error.
  std::string Run(const std::string& text, bool plain, XPathNode* context,
                  const XPathNodeList* input, XPathPatternKind kind) {
    XPathExpression expression;
    expression.SetExpression(&map_, Wide(text), kind);
    EXPECT_TRUE(expression.Parse(true, kExprGrammar)) << text;
    expression.SetPlainEvaluation(plain);
    expression.SetXsltFunctions(true);
    expression.SetVariables(&variables_);
    expression.SetCurrent(context);
    XPathValue value;
    if (!expression.Evaluate(context, context, value, input, 2, 7, text.size() % 2 == 0)) {
      return "error " + std::to_string(static_cast<int>(expression.ErrorCode())) + "/" +
             std::to_string(expression.ErrorFunction()) + " at " +
             std::to_string(expression.ErrorPosition());
    }
    std::string shown = Show(value);
    for (const XPathNodeRef& entry : value.nodes) {
      shown += " " + std::to_string(entry.position) + ":" + std::to_string(entry.node->orderNumber);
    }
    return shown;
  }

  // The conversions that need no value against those of the value.
  void CheckConversions(const std::string& text, XPathNode* context, const XPathNodeList* input) {
    XPathExpression expression;
    expression.SetExpression(&map_, Wide(text), kNoPattern);
    ASSERT_TRUE(expression.Parse(true, kExprGrammar)) << text;
    expression.SetXsltFunctions(true);
    auto prepare = [&] {
      expression.SetVariables(&variables_);
      expression.SetCurrent(context);
    };
    XPathRequest request{context, context, input, 2, 7};
    XPathValue value;
    prepare();
    bool succeeds = expression.Evaluate(context, context, value, input, 2, 7);
    bool truth = false;
    prepare();
    ASSERT_EQ(expression.EvaluateToBoolean(request, truth), succeeds) << text;
    double number = 0;
    prepare();
    ASSERT_EQ(expression.EvaluateToNumber(request, number), succeeds) << text;
    TQString scratch;
    std::u16string_view asText;
    prepare();
    ASSERT_EQ(expression.EvaluateToText(request, scratch, asText), succeeds) << text;
    if (!succeeds) return;
    EXPECT_EQ(truth, ToBoolean(value)) << text;
    EXPECT_EQ(Narrow(NumberToText(number)), Narrow(NumberToText(ToNumber(value)))) << text;
    EXPECT_EQ(Narrow(asText), Narrow(ToString(value))) << text;
  }

  XPathNodeList NodesOf(XPathNode* root, const char* path) {
    XPathExpression expression;
    expression.SetExpression(&map_, Wide(path), kNoPattern);
    XPathValue value;
    EXPECT_TRUE(expression.Parse(true, kExprGrammar));
    EXPECT_TRUE(expression.Evaluate(root, root, value));
    return value.nodes;
  }

  XPathTreeBuilder builder_;
  PrefixMap map_;
  TestVariables variables_;
};

TEST_P(RandomTest, FastEvaluationEqualsPlain) {
  Generator generator(GetParam());
  TestTree tree(builder_, generator.Xml(), 1);
  TestTree other(builder_, generator.Xml(), 2);
  TestTree fragment(builder_, generator.Xml(), 0);
  variables_.values[u"rtf"].nodes = {XPathNodeRef(fragment.Root(), 1)};
  variables_.values[u"two"].SetNumber(2);
  variables_.values[u"text"].SetString(u"b");
  XPathNodeList mixed;
  for (int i = generator.Below(9); i > 0; --i) {
    const TestTree& from = i % 4 == 0 ? other : i % 4 == 1 ? fragment : tree;
    XPathNode* node = from.Nodes()[static_cast<std::size_t>(
        generator.Below(static_cast<int>(from.Nodes().size())))];
    if (XPathNodeRef::KindOf(node) == XPathNodeRef::Declaration) continue;
    bool isNew = true;
    for (const XPathNodeRef& entry : mixed) isNew = isNew && entry.node != node;
    if (isNew) mixed.emplace_back(node, i);
  }
  variables_.values[u"set"].nodes = mixed;

  for (int i = 0; i < 150; ++i) {
    std::string text = generator.Expression(0);
    const TestTree& from = i % 8 == 0 ? fragment : tree;
    XPathNode* context = from.Nodes()[static_cast<std::size_t>(
        generator.Below(static_cast<int>(from.Nodes().size())))];
    if (context->kind >= XPathNodeKind::XMLDeclaration) context = from.Root();
    const XPathNodeList* input = i % 5 == 0 ? &mixed : nullptr;
    bool isPattern = i % 3 == 0 && text.find('$') == std::string::npos;
    XPathPatternKind kind = isPattern ? kTemplatePattern : kNoPattern;
    ASSERT_EQ(Run(text, false, context, input, kind), Run(text, true, context, input, kind))
        << text << " at " << Show(*context) << ", kind " << kind;
    CheckConversions(text, context, input);
  }
  for (const TestTree* from : {&tree, &other, &fragment}) {
    for (const XPathNode* node : from->Nodes()) ASSERT_EQ(node->mark, 0);
  }
}

TEST_P(RandomTest, SimplePatternEqualsItsQuery) {
  Generator generator(GetParam());
  TestTree tree(builder_, generator.Xml(), 1);
  XPathNodeList universe = NodesOf(tree.Root(), "//node()");
  universe.emplace_back(tree.Root());
  SortAndNumber(universe);
  for (int i = 0; i < 40; ++i) {
    TQString text = Wide(generator.Pattern());
    XPathExpression expression;
    expression.SetExpression(&map_, text, kTemplatePattern);
    ASSERT_TRUE(expression.Parse(true, kExprGrammar));
    XPathValue value;
    ASSERT_TRUE(expression.Evaluate(tree.Root(), tree.Root(), value, &universe)) << Narrow(text);
    std::unordered_set<const XPathNode*> matches;
    for (const XPathNodeRef& entry : value.nodes) matches.insert(entry.node);
    auto pattern = SimplePattern::Classify(expression.TakeTree(), map_);
    ASSERT_TRUE(pattern.has_value()) << Narrow(text);
    for (const XPathNode* node : tree.Nodes()) {
      ASSERT_EQ(pattern->Matches(node), matches.count(node) != 0)
          << Narrow(text) << " at " << Show(*node);
    }
  }
}

TEST(SimplePatternTest, OtherPatternsAreNotSimple) {
  PrefixMap map;
  map.Set(u"none", nullptr);
  for (const char* text : {"a[1]", ".", "a|b", "u:a", "none:*", "ancestor::a", "key('a','b')", "1",
                           "..", "(a)", "descendant-or-self::a", "a/..", "@node()"}) {
    XPathExpression expression;
    expression.SetExpression(&map, Wide(text), kTemplatePattern);
    ASSERT_TRUE(expression.Parse(true, kExprGrammar)) << text;
    EXPECT_FALSE(SimplePattern::Classify(expression.TakeTree(), map).has_value()) << text;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomTest, testing::Range(1U, 61U));

}  // namespace
}  // namespace kelmora
