// ReferenceEvaluator: evaluates the parse tree of an expression by the definitions alone, one rule
// after the other, and nothing but them: every step makes its whole list, duplicates are found with
// a set, node sets are compared pair by pair. What the product does must come out the same.
//
// Of functions it decides which one is called, with how many arguments; the operation itself runs
// in the product, on arguments that are values already. Tables of inputs hold the operations.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "syntax/xpathaxisnames.h"
#include "syntax/xpathparsetree.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

// What an evaluation may ask its host for. The functions of XSLT are on.
struct ReferenceHost {
  const PrefixMap* prefixMap = nullptr;
  const XPathVariables* variables = nullptr;
  XPathPatternKind patternKind = kNoPattern;
  // Runs the call `text` in the product, with these variables and with everything else as the host
  // has it.
  std::function<bool(XPathError& code, std::int32_t& function, const TQString& text,
                     const XPathVariables& variables, const XPathRequest& request,
                     XPathValue& result)>
      run;
};

class ReferenceEvaluator {
 public:
  explicit ReferenceEvaluator(const ReferenceHost& host) : host_(host) {}

  // As XPathExpression::Evaluate does.
  bool Evaluate(const XPathParseTree& tree, const XPathRequest& request, bool allowFragment,
                XPathValue& result);

  XPathError errorCode = XPathError::None;
  std::int32_t errorFunction = -1;
  std::int32_t errorPosition = 0;
  TQString missingVariable;

 private:
  struct State {
    XPathValue input;
    bool isFromVariable = false;  // the input came from a variable with a result tree fragment
    Axis axis = Axis::Child;
    std::int32_t position = 1;
    std::int32_t inputSize = 0;
    std::int32_t size = 0;
    bool inPredicate = false;
  };
  using Rule = bool (ReferenceEvaluator::*)(const XPathParseNode& node, State& state);
  using NodeTest = std::function<bool(const XPathNode& node)>;
  struct Row {
    XPathRule rule;
    Rule evaluate;
  };
  static const Row kRows[];

  bool Run(const XPathParseNode& node, State& state);
  bool Children(const XPathParseNode& node, State& state);
  bool RelativePath(const XPathParseNode& node, State& state);
  bool AbsolutePath(const XPathParseNode& node, State& state);
  bool RootPath(const XPathParseNode& node, State& state);
  bool FilterPath(const XPathParseNode& node, State& state);
  bool Step(const XPathParseNode& node, State& state);
  bool AxisName(const XPathParseNode& node, State& state);
  bool TypeTest(const XPathParseNode& node, State& state);
  bool NameTest(const XPathParseNode& node, State& state);
  bool Predicate(const XPathParseNode& node, State& state);
  bool Parenthesis(const XPathParseNode& node, State& state);
  bool Variable(const XPathParseNode& node, State& state);
  bool Literal(const XPathParseNode& node, State& state);
  bool Number(const XPathParseNode& node, State& state);
  bool Negation(const XPathParseNode& node, State& state);
  bool Operators(const XPathParseNode& node, State& state);
  bool Union(const XPathParseNode& node, State& state);
  bool FunctionCall(const XPathParseNode& node, State& state);
  bool Identity(const XPathParseNode& node, State& state);
  bool IdentityPath(const XPathParseNode& node, State& state);

  bool Fail(XPathError code, const XPathParseNode& node, std::int32_t function = -1);
  bool RunAxis(Axis axis, const NodeTest& test, const XPathParseNode& node, State& state);
  bool DescendantStep(const XPathParseNode& node, State& state);

  const ReferenceHost& host_;
  XPathNode* documentNode_ = nullptr;
  bool hasPosition_ = false;
};

// The six comparisons by their rules; `op` is the operator as it is written.
bool ReferenceCompare(std::u16string_view op, const XPathValue& a, const XPathValue& b);

// Every node that the axis visits from `node`, in the order of the visit.
std::vector<XPathNode*> ReferenceAxis(Axis axis, XPathNode* node);

}  // namespace kelmora
