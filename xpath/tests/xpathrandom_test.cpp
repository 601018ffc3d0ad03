// The product against the definitions: the same value, order, positions and errors, on random
// expressions over random trees. The same holds for a simple pattern and the query that it stands
// for.

#include <unordered_set>

#include "randomexpressions.h"
#include "referenceevaluator.h"
#include "values/xpathnodeset.h"
#include "xpath/simplepattern.h"

namespace kelmora {
namespace {

// The expression object of a host that has one more document and one key: the nodes by their text.
class HostedExpression final : public XPathExpression {
 public:
  explicit HostedExpression(XPathNode* document) : document_(document) {}
  XPathNode* LoadDocument(const TQString& uri, XPathNode* /*base*/) override {
    return uri.View().ends_with(u'b') ? document_ : nullptr;
  }
  void OnMissingVariable(std::u16string_view key) override { missing = key; }
  TQString missing;

 private:
  XPathNode* document_;
};

class TextKeys final : public XPathKeys {
 public:
  bool HasKey(std::u16string_view name) const override { return name == u"k" || name == u"b"; }
  const XPathNodeList* Lookup(std::u16string_view, XPathNode* root,
                              std::u16string_view value) override {
    found_.clear();
    TQString scratch;
    for (XPathNode* at = root; at != nullptr; at = at->NextInDocument(true)) {
      if (at->kind == XPathNodeKind::Element && at->StringValue(scratch) == value) {
        found_.emplace_back(at);
      }
    }
    return found_.empty() ? nullptr : &found_;
  }

 private:
  XPathNodeList found_;
};

class RandomTest : public testing::Test {
 protected:
  RandomTest() {
    map_.Set(u"p", builder_.InternURI(u"urn:p"));
    map_.Set(u"q", builder_.InternURI(u"urn:q"));
    map_.Set(u"none", nullptr);
    map_.Set(u"xsl", builder_.InternURI(u"http://www.w3.org/1999/XSL/Transform"));
    formats_[TQString()] = DecimalFormat();
  }

  struct Case {
    std::string text;
    XPathRequest request;
    XPathPatternKind kind = kNoPattern;
    XPathNode* current = nullptr;
    bool allowFragment = true;
  };

  void Prepare(XPathExpression& expression, const TQString& text, const Case& from,
               const XPathVariables& variables) {
    expression.SetExpression(&map_, text, from.kind);
    expression.SetXsltFunctions(true);
    expression.SetVariables(&variables);
    expression.SetKeyTable(&keys_);
    expression.SetDecimalFormats(&formats_);
    expression.SetCurrent(from.current);
  }

  static bool Evaluate(XPathExpression& expression, const XPathRequest& request, bool allowFragment,
                       XPathValue& value) {
    return expression.Evaluate(request.documentNode, request.contextNode, value, request.inputNodes,
                               request.position, request.size, allowFragment);
  }

  // Nodes are told apart by the order in which they were first shown.
  std::string ShowAll(const XPathValue& value) {
    std::string shown = Show(value);
    for (const XPathNodeRef& entry : value.nodes) {
      auto id = ids_.try_emplace(entry.node, ids_.size()).first->second;
      shown += " " + std::to_string(entry.position) + ":" + std::to_string(id);
    }
    return shown;
  }

  static std::string ShowError(XPathError code, std::int32_t function, std::int32_t position,
                               const TQString& missing) {
    return "error " + std::to_string(static_cast<int>(code)) + "/" + std::to_string(function) +
           " at " + std::to_string(position) + " " + Narrow(missing);
  }

  void Compare(const Case& row, XPathGrammar grammar = kExprGrammar) {
    HostedExpression expression(other_);
    Prepare(expression, Wide(row.text), row, variables_);
    ASSERT_TRUE(expression.Parse(true, grammar)) << row.text;
    XPathParseNodeRef tree = expression.TakeTree();

    ReferenceHost host;
    host.prefixMap = &map_;
    host.variables = &variables_;
    host.patternKind = row.kind;
    host.run = [&](XPathError& code, std::int32_t& function, const TQString& text,
                   const XPathVariables& variables, const XPathRequest& request,
                   XPathValue& result) {
      HostedExpression call(other_);
      Case asPlain = row;
      if (row.kind == kTemplatePattern) asPlain.kind = kNoPattern;  // variables are refused there
      Prepare(call, text, asPlain, variables);
      EXPECT_TRUE(call.Parse(true, kExprGrammar)) << Narrow(text);
      bool succeeds = Evaluate(call, request, true, result);
      code = call.ErrorCode();
      function = call.ErrorFunction();
      return succeeds;
    };
    ReferenceEvaluator reference(host);
    XPathValue wanted;
    bool succeeds = reference.Evaluate(*tree, row.request, row.allowFragment, wanted);
    std::string shown = succeeds ? ShowAll(wanted)
                                 : ShowError(reference.errorCode, reference.errorFunction,
                                             reference.errorPosition, reference.missingVariable);

    XPathValue value;
    expression.UseTree(tree, grammar);
    std::string found = Evaluate(expression, row.request, row.allowFragment, value)
                            ? ShowAll(value)
                            : ShowError(expression.ErrorCode(), expression.ErrorFunction(),
                                        expression.ErrorPosition(), expression.missing);
    ASSERT_EQ(found, shown) << row.text << " at " << Show(*row.request.contextNode) << ", kind "
                            << row.kind;
    if (row.kind == kNoPattern && row.allowFragment) {
      CompareConversions(expression, tree, row, succeeds, wanted);
    }
  }

  // The conversions that need no value against those of the value.
  void CompareConversions(XPathExpression& expression, const XPathParseNodeRef& tree,
                          const Case& row, bool succeeds, const XPathValue& wanted) {
    auto prepare = [&] {
      Prepare(expression, Wide(row.text), row, variables_);
      expression.UseTree(tree, kExprGrammar);
    };
    bool truth = false;
    prepare();
    ASSERT_EQ(expression.EvaluateToBoolean(row.request, truth), succeeds) << row.text;
    double number = 0;
    prepare();
    ASSERT_EQ(expression.EvaluateToNumber(row.request, number), succeeds) << row.text;
    TQString scratch;
    std::u16string_view asText;
    prepare();
    ASSERT_EQ(expression.EvaluateToText(row.request, scratch, asText), succeeds) << row.text;
    if (!succeeds) return;
    EXPECT_EQ(truth, ToBoolean(wanted)) << row.text;
    EXPECT_EQ(Narrow(NumberToText(number)), Narrow(NumberToText(ToNumber(wanted)))) << row.text;
    EXPECT_EQ(Narrow(asText), Narrow(ToString(wanted))) << row.text;
  }

  static XPathNode* AnyNode(Generator& generator, const TestTree& from) {
    XPathNode* node = from.Nodes()[static_cast<std::size_t>(
        generator.Below(static_cast<int>(from.Nodes().size())))];
    return node->kind >= XPathNodeKind::XMLDeclaration ? from.Root() : node;
  }

  // Copies in a fragment bear other stamps than what was made in it.
  static void StampCopies(Generator& generator, const TestTree& fragment) {
    for (int i = generator.Below(5); i > 0; --i) {
      XPathNode* top = AnyNode(generator, fragment);
      for (XPathNode* at = top; at != nullptr; at = at->NextInDocument(true)) {
        if (at == top->NextSkippingChildren(nullptr)) break;
        at->documentNumber = 0;
        at->orderNumber = 0;
      }
    }
  }

  XPathTreeBuilder builder_;
  PrefixMap map_;
  TestVariables variables_;
  TextKeys keys_;
  DecimalFormatMap formats_;
  XPathNode* other_ = nullptr;
  std::unordered_map<const XPathNode*, std::size_t> ids_;
};

TEST_F(RandomTest, EvaluationEqualsTheDefinitions) {
  ForManySeeds([this](unsigned seed) {
    Generator generator(seed);
    std::string xml = generator.Xml();
    TestTree tree(builder_, xml, 1);
    TestTree other(builder_, generator.Below(3) == 0 ? xml : generator.Xml(), 2);
    TestTree fragment(builder_, generator.Xml(), 0);
    StampCopies(generator, fragment);
    other_ = other.Root();
    ids_.clear();
    variables_.values[u"rtf"].nodes = {XPathNodeRef(fragment.Root(), 1)};
    variables_.values[u"two"].SetNumber(2);
    variables_.values[u"text"].SetString(u"b");
    XPathNodeList mixed;
    for (int i = generator.Below(9); i > 0; --i) {
      const TestTree& from = i % 4 == 0 ? other : i % 4 == 1 ? fragment : tree;
      mixed.emplace_back(AnyNode(generator, from), i);
    }
    RemoveDuplicates(mixed);
    generator.Shuffle(mixed);
    variables_.values[u"set"].nodes = mixed;

    for (int i = 0; i < 60 && !HasFatalFailure(); ++i) {
      Case row;
      row.text = generator.Expression(0);
      row.current = AnyNode(generator, i % 8 == 0 ? fragment : tree);
      const XPathNodeList* input = i % 5 == 0 ? &mixed : nullptr;
      row.request = {row.current, row.current, input, 2, 7};
      bool isPattern = i % 3 == 0 && row.text.find('$') == std::string::npos;
      row.kind = isPattern ? kTemplatePattern : kNoPattern;
      row.allowFragment = generator.Below(2) == 0;
      Compare(row);
    }
    for (int i = 0; i < 6 && !HasFatalFailure(); ++i) {
      Case row;
      bool isField = i % 2 == 0;
      row.text = generator.IdentityPath(isField);
      if (generator.Below(2) == 0) row.text += " | " + generator.IdentityPath(isField);
      row.current = AnyNode(generator, tree);
      row.request = {row.current, row.current, nullptr, 1, 1};
      row.allowFragment = false;
      Compare(row, isField ? kFieldGrammar : kSelectorGrammar);
    }
    for (const TestTree* from : {&tree, &other, &fragment}) {
      for (const XPathNode* node : from->Nodes()) ASSERT_EQ(node->mark, 0);
    }
  });
}

TEST_F(RandomTest, SimplePatternEqualsItsQuery) {
  ForManySeeds([this](unsigned seed) {
    Generator generator(seed);
    TestTree tree(builder_, generator.Xml(), generator.Below(3));
    XPathNodeList universe;
    for (XPathNode* node : tree.Nodes()) {
      XPathNodeRef entry(node);
      bool isInside = entry.kind != XPathNodeRef::Attribute &&
                      entry.kind != XPathNodeRef::Namespace &&
                      entry.kind != XPathNodeRef::Declaration &&
                      entry.Parent().kind != XPathNodeRef::Declaration;
      if (isInside) universe.push_back(entry);
    }
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
  });
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

}  // namespace
}  // namespace kelmora
