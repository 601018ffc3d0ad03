#include "xpath/xpathexpression.h"

#include <functional>
#include <memory>
#include <utility>

#include "nodes/xpathcontext.h"
#include "nodes/xpathpathnodes.h"
#include "nodes/xpathprimarynodes.h"
#include "syntax/xpathparser.h"
#include "tqcore/processstate.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathfunction.h"

namespace kelmora {

XPathExpression::XPathExpression() = default;
XPathExpression::~XPathExpression() = default;

// A tree never changes, so a copy shares it.
XPathExpression::XPathExpression(const XPathExpression& other)
    : text_(other.text_),
      tree_(other.tree_),
      grammar_(other.grammar_),
      prefixMap_(other.prefixMap_),
      variableInPattern_(other.variableInPattern_),
      variables_(other.variables_),
      keyTable_(other.keyTable_),
      decimalFormats_(other.decimalFormats_),
      current_(other.current_),
      stylesheetNode_(other.stylesheetNode_),
      stylesheetRoot_(other.stylesheetRoot_),
      xsltFunctions_(other.xsltFunctions_),
      patternKind_(other.patternKind_) {}

void XPathExpression::SetExpression(const PrefixMap* prefixMap, const TQString& text,
                                    XPathPatternKind patternKind) {
  tree_.reset();
  text_ = text;
  text_.TrimLeft();
  text_.TrimRight();
  prefixMap_ = prefixMap;
  patternKind_ = patternKind;
}

bool XPathExpression::Parse(bool buildTree, XPathGrammar grammar) {
  auto tree = std::make_unique<XPathParseTree>(text_);
  XPathParser parser(*tree);
  XPathParseNode* root = grammar == kFieldGrammar      ? parser.ParseField()
                         : grammar == kSelectorGrammar ? parser.ParseSelector()
                                                       : parser.ParseExpr();
  variableInPattern_ = false;
  bool whole = parser.Remaining() == 0;
  if (!whole) errorPosition_ = parser.Furthest();
  bool parsed = root != nullptr && whole && !parser.IsTooDeep();
  if (root != nullptr) tree->Finish(root, parser.DeepestNesting());
  if (patternKind_ != kNoPattern && root != nullptr && tree->HasVariable()) {
    variableInPattern_ = true;
    parsed = false;
  }
  tree_.reset();
  grammar_ = parsed ? grammar : kNoGrammar;
  if (parsed && buildTree) tree_ = XPathParseNodeRef(tree.release());
  return parsed;
}

XPathParseNodeRef XPathExpression::TakeTree() {
  return std::move(tree_);
}

void XPathExpression::UseTree(XPathParseNodeRef tree, XPathGrammar grammar) {
  borrowedTree_ = std::move(tree);
  grammar_ = grammar;
}

void XPathExpression::UseTree(const PrefixMap* prefixMap, const XPathParseNodeRef& tree,
                              XPathPatternKind patternKind) {
  borrowedTree_ = tree;
  grammar_ = kExprGrammar;
  prefixMap_ = prefixMap;
  patternKind_ = patternKind;
}

bool XPathExpression::IsContextNode(const XPathParseTree& tree) {
  const XPathParseNode& top = *tree.Root()->effective;
  if (top.rule != XPathRule::LocationPath) return false;
  const XPathParseNode& path = *top.firstChild;
  if (path.rule != XPathRule::RelativeLocationPath || !path.HasOneChild()) return false;
  const auto& step = static_cast<const XPathStepNode&>(*path.firstChild);
  return step.GetForm() == XPathStepNode::Form::Self;
}

bool XPathExpression::IsVariable(const XPathParseTree& tree, std::u16string_view& name) {
  const XPathParseNode& top = *tree.Root()->effective;
  if (top.rule != XPathRule::VariableReference) return false;
  return static_cast<const XPathVariableNode&>(top).IsUnprefixed(name);
}

namespace {

// Evaluations stand on one another when a key's index is made while an expression runs. What all
// of them may need of the machine's stack together is bounded like that of a single one, so a key
// that is defined by itself ends in an error.
class NestingBudget {
 public:
  explicit NestingBudget(int nesting) : cost_(nesting + kHostLevels) { used_.levels += cost_; }
  ~NestingBudget() { used_.levels -= cost_; }
  NestingBudget(const NestingBudget&) = delete;
  NestingBudget& operator=(const NestingBudget&) = delete;
  bool IsExceeded() const { return used_.levels > kMaxTotal; }

 private:
  static constexpr int kHostLevels = 8;  // what the frames between two evaluations amount to
  static constexpr int kMaxTotal = 3 * XPathParser::kMaxNesting / 2;
  struct Used {
    int levels = 0;
  };
  Used& used_ = ProcessState::Of<Used>();
  int cost_;
};

}  // namespace

// One evaluation. Everything that belongs to it is taken out of the expression before anything
// runs, so that a host function may use the object for an evaluation of its own.
class XPathExpression::Evaluator {
 public:
  Evaluator(XPathExpression& expression, const XPathRequest& request)
      : expression_(expression),
        tree_(expression.borrowedTree_ ? std::move(expression.borrowedTree_) : expression.tree_),
        context_(run_, input_) {
    run_.spareLists = &expression.spareLists_;
    expression.borrowedTree_.reset();
    run_.expression = &expression;
    run_.prefixMap = expression.prefixMap_;
    run_.variables = std::exchange(expression.variables_, nullptr);
    run_.keyTable = std::exchange(expression.keyTable_, nullptr);
    run_.decimalFormats = std::exchange(expression.decimalFormats_, nullptr);
    run_.documentNode = request.documentNode;
    run_.current = std::exchange(expression.current_, nullptr);
    run_.stylesheetNode = std::exchange(expression.stylesheetNode_, nullptr);
    run_.stylesheetRoot = std::exchange(expression.stylesheetRoot_, nullptr);
    run_.xsltFunctions = expression.xsltFunctions_;
    run_.patternKind = expression.patternKind_;
    expression.errorCode_ = XPathError::None;
    expression.errorFunction_ = -1;
    expression.errorPosition_ = 0;

    context_.position = request.position;
    context_.size = request.size;
    isReady_ = request.documentNode != nullptr && request.contextNode != nullptr &&
               run_.prefixMap != nullptr && tree_;
    if (!isReady_) return;
    if (tree_->ReadsContext()) SetInput(request);
    if (!tree_->Prefixes().empty()) {
      bindings_ = tree_->ResolvePrefixes(*run_.prefixMap);
      run_.bindings = bindings_.get();
    }
  }
  ~Evaluator() { run_.GiveBack(input_.nodes); }
  Evaluator(const Evaluator&) = delete;
  Evaluator& operator=(const Evaluator&) = delete;

  XPathContext& Context() { return context_; }
  const XPathParseNode& Root() const { return *tree_->Root(); }
  bool IsInTree(std::u16string_view text) const {
    std::u16string_view expression = tree_->Text();
    return std::greater_equal<>()(text.data(), expression.data()) &&
           std::less<>()(text.data(), expression.data() + expression.size());
  }

  // Calls `evaluate` unless something that an evaluation needs is missing, and leaves the error in
  // the expression.
  template <class Evaluate>
  bool Do(Evaluate evaluate) {
    if (!isReady_) return false;
    NestingBudget budget(tree_->Nesting());
    bool succeeded = budget.IsExceeded() ? run_.Fail(XPathError::KeyFunctionInKey, Root().position,
                                                     static_cast<std::int32_t>(XPathFunction::key))
                                         : evaluate();
    expression_.errorCode_ = run_.errorCode;
    expression_.errorFunction_ = run_.errorFunction;
    expression_.errorPosition_ = run_.errorPosition;
    return succeeded;
  }

 private:
  void SetInput(const XPathRequest& request) {
    input_.nodes = run_.TakeList();
    if (request.inputNodes != nullptr) {
      input_.nodes = *request.inputNodes;
    } else {
      input_.nodes.emplace_back(request.contextNode, 1);
    }
    context_.inputSize = static_cast<std::int32_t>(input_.nodes.size());
  }

  XPathExpression& expression_;
  XPathParseNodeRef tree_;
  SharedHandle<const XPathParseTree::Bindings> bindings_;
  XPathEvaluation run_;
  XPathValue input_;
  XPathContext context_;
  bool isReady_ = false;
};

bool XPathExpression::Evaluate(XPathNode* documentNode, XPathNode* contextNode, XPathValue& result,
                               const XPathNodeList* inputNodes, std::int32_t position,
                               std::int32_t size, bool allowFragment) {
  Evaluator evaluator(*this, {documentNode, contextNode, inputNodes, position, size});
  XPathContext& context = evaluator.Context();
  result.Clear();
  return evaluator.Do([&] {
    using Type = XPathParseNode::Type;
    Type type = evaluator.Root().type;
    if (type != Type::NodeSet && type != Type::Unknown) {
      return OperandScalar(evaluator.Root(), context, result);
    }
    // The list that the caller brings serves for the new value.
    context.Output().nodes.swap(result.nodes);
    if (!Run(evaluator.Root(), context)) return false;
    if (!allowFragment && context.InputIsRefusedFragment()) {
      return context.Fail(XPathError::CannotUseFragment, evaluator.Root());
    }
    context.MoveInputTo(result);
    return true;
  });
}

bool XPathExpression::EvaluateToBoolean(const XPathRequest& request, bool& result) {
  Evaluator evaluator(*this, request);
  return evaluator.Do(
      [&] { return OperandBoolean(evaluator.Root(), evaluator.Context(), result); });
}

bool XPathExpression::EvaluateToNumber(const XPathRequest& request, double& result) {
  Evaluator evaluator(*this, request);
  return evaluator.Do([&] { return OperandNumber(evaluator.Root(), evaluator.Context(), result); });
}

bool XPathExpression::EvaluateToText(const XPathRequest& request, TQString& scratch,
                                     std::u16string_view& result) {
  Evaluator evaluator(*this, request);
  bool succeeded = evaluator.Do(
      [&] { return OperandText(evaluator.Root(), evaluator.Context(), scratch, result); });
  // A literal stands in the tree, and the tree may go with the evaluation.
  if (succeeded && evaluator.IsInTree(result)) {
    scratch = result;
    result = scratch;
  }
  return succeeded;
}

void XPathExpression::OnMissingVariable(std::u16string_view) {}
XPathNode* XPathExpression::LoadDocument(const TQString&, XPathNode*) {
  return nullptr;
}
bool XPathExpression::HasElement(std::u16string_view) const {
  return false;
}
void XPathExpression::OnLocationPath(const XPathValue&) {}

}  // namespace kelmora
