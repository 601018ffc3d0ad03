// Evaluates expressions over one small document.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "testtree.h"

namespace kelmora {

class Evaluation : public testing::Test {
 protected:
  struct Row {
    const char* expression;
    const char* expected;  // the value, or "error code/function"
  };

  Evaluation() {
    map_.Set(u"p", builder_.InternURI(u"urn:p"));
    map_.Set(u"q", builder_.InternURI(u"urn:q"));
    map_.Set(u"none", nullptr);
    map_.Set(u"xsl", builder_.InternURI(u"http://www.w3.org/1999/XSL/Transform"));
    XPathValue set;
    set.nodes.emplace_back(fragment_.Root(), 1);
    variables_.values[u"rtf"] = set;
    XPathValue number;
    number.SetNumber(2);
    variables_.values[u"two"] = number;
    variables_.values[u"urn:p:v"] = number;
    XPathValue backwards;
    for (const char* name : {"d", "b", "c"}) {
      backwards.nodes.emplace_back(NodeOf(Wide(name)),
                                   7 + static_cast<int>(backwards.nodes.size()));
    }
    variables_.values[u"back"] = backwards;
  }

  class Hosted final : public XPathExpression {
    bool HasElement(std::u16string_view localName) const override { return localName == u"if"; }
  };

  XPathNode* NodeOf(std::u16string_view name) {
    for (XPathNode* node : tree_.Nodes()) {
      if (node->GetName() == name) return node;
    }
    return nullptr;
  }

  std::string Run(const std::string& expression, XPathPatternKind patternKind = kNoPattern) {
    Hosted evaluator;
    evaluator.SetExpression(&map_, Wide(expression), patternKind);
    evaluator.SetXsltFunctions(true);
    if (!evaluator.Parse(true, kExprGrammar)) return "no parse";
    evaluator.SetVariables(&variables_);
    evaluator.SetDecimalFormats(&formats_);
    evaluator.SetCurrent(context_);
    XPathValue value;
    if (!evaluator.Evaluate(tree_.Root(), context_, value, nullptr, 3, 5)) {
      return "error " + std::to_string(static_cast<int>(evaluator.ErrorCode())) + "/" +
             std::to_string(evaluator.ErrorFunction());
    }
    return Show(value);
  }

  void Check(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      EXPECT_EQ(Run(row.expression), row.expected) << row.expression;
    }
  }

  XPathTreeBuilder builder_;
  TestTree tree_{builder_,
                 "<!--first--><!D><r id='1' xml:lang='en-GB' xmlns:p='urn:p'>"
                 "<a x='5' y='6'>t1<b>t2</b><c k='7'/><!--in--><?go now?></a>"
                 "<p:e p:z='8'><![CDATA[ 12 ]]></p:e><d><f>3</f><g>4</g><g>5</g></d></r>"};
  TestTree fragment_{builder_, "<a>1</a>", 0};
  PrefixMap map_;
  TestVariables variables_;
  DecimalFormatMap formats_{{TQString(), DecimalFormat()}};
  XPathNode* context_ = tree_.Root();
};

}  // namespace kelmora
