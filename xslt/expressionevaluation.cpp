// How expressions of the stylesheet are evaluated. A text is parsed once; each evaluation lends the
// tree to an evaluator, together with what it may see: the context, the variables of a frame, the
// key tables and the decimal formats. The one trap is re-entry: key() makes an index by evaluating
// the expressions of xsl:key while the expression that called it runs, so such an evaluation gets
// an evaluator of its own.

#include "elementdispatcher.h"
#include "instruction.h"
#include "parsedexpression.h"
#include "universes.h"
#include "xpathevaluator.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

const ParsedExpression& ExpressionCache::Parse(const TQString& text, XPathPatternKind kind) {
  auto found = entries_.find(text.View());
  if (found == entries_.end()) found = entries_.try_emplace(text).first;
  auto& place = found->second[kind];
  if (place != nullptr) return *place;
  auto parsed = std::make_unique<ParsedExpression>();
  parsed->kind = kind;
  XPathExpression parser;
  parser.SetXsltFunctions(true);
  parser.SetExpression(nullptr, text, kind);
  if (parser.Parse(true, kExprGrammar)) {
    parsed->tree = parser.TakeTree();
  } else {
    parsed->variableInPattern = parser.VariableInPattern();
  }
  place = std::move(parsed);
  return *place;
}

const ParsedExpression& XSLTProcessorBase::TryParse(const ExpressionText& expression,
                                                    XPathPatternKind patternKind) {
  if (expression.Parsed != nullptr && expression.Parsed->kind == patternKind) {
    return *expression.Parsed;
  }
  TQString text = expression.Text;
  text.Replace(u'\n', u' ');
  text.Replace(u'\r', u' ');
  expression.Parsed = &expressionCache_->Parse(text, patternKind);
  return *expression.Parsed;
}

const ParsedExpression& XSLTProcessorBase::Parse(const ExpressionText& expression,
                                                 XPathPatternKind patternKind,
                                                 XPathNode* errorNode) {
  const ParsedExpression& parsed = TryParse(expression, patternKind);
  if (parsed.tree != nullptr) return parsed;
  const std::int32_t code =
      parsed.variableInPattern ? XsltCode::VariableInPattern : XsltCode::InvalidExpression;
  throw TQXSLTError(code, expression.Holder != nullptr ? expression.Holder : errorNode);
}

// What one evaluation works with.
struct XSLTProcessorBase::Evaluation {
  const ParsedExpression& parsed;
  XPathNode* scopeNode;  // an element or attribute: the prefixes, the base URI, the error
  const TemplateFrame& frame;  // the variables
  const XPathNodeList& list;
  std::int32_t position;  // -1: the whole list is the input
};

namespace {

// Machine stack, in bytes, that evaluations inside of one another may use before the innermost one
// starts: keys whose use expressions ask for the next key nest as deep as there are keys.
constexpr std::uintptr_t kNestedStack = std::uintptr_t{1} << 20;

// Marks that an evaluation runs, and where on the machine stack the outermost one began.
class EvaluationScope {
 public:
  explicit EvaluationScope(std::uintptr_t& base) : base_(base), isOutermost_(base == 0) {
    if (isOutermost_) base_ = Here();
  }
  ~EvaluationScope() {
    if (isOutermost_) base_ = 0;
  }
  EvaluationScope(const EvaluationScope&) = delete;
  EvaluationScope& operator=(const EvaluationScope&) = delete;

  bool IsOutermost() const { return isOutermost_; }
  bool IsTooDeep() const { return base_ - Here() > kNestedStack && Here() < base_; }

 private:
  static std::uintptr_t Here() {
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  }

  std::uintptr_t& base_;
  bool isOutermost_;
};

}  // namespace

void XSLTProcessorBase::RunEvaluation(const Evaluation& evaluation, XPathValue& value) {
  const EvaluationScope scope(evaluationBase_);
  if (scope.IsTooDeep()) {
    throw TQXSLTError(XsltCode::UnexpectedFailure, evaluation.scopeNode);
  }
  std::unique_ptr<XPathEvaluator> nested;
  if (!scope.IsOutermost()) nested = std::make_unique<XPathEvaluator>(this);
  XPathEvaluator& evaluator = nested != nullptr ? *nested : *Evaluator;

  const FrameVariables variables(*this, evaluation.frame);
  ProcessorKeys keys(this);
  static const TQString noText;  // the tree is lent, so the text is not needed
  evaluator.SetExpression(&evaluation.scopeNode->AttributeScopeMap(), noText,
                          evaluation.parsed.kind);
  evaluator.UseTree(evaluation.parsed.tree, kExprGrammar);
  evaluator.SetVariables(&variables);
  evaluator.SetKeyTable(&keys);
  evaluator.SetDecimalFormats(&DecimalFormats);
  evaluator.SetCurrentStylesheetNode(evaluation.scopeNode);
  evaluator.SetStylesheetRoot(TreeOf(evaluation.scopeNode));

  const XPathNodeList& list = evaluation.list;
  const auto size = static_cast<std::int32_t>(list.size());
  bool succeeded = false;
  if (evaluation.position == -1) {
    XPathNode* first = list.empty() ? nullptr : list.front().node;
    evaluator.SetCurrent(first);
    succeeded = evaluator.Evaluate(first, first, value, &list);
  } else {
    const bool isInside = evaluation.position >= 1 && evaluation.position <= size;
    XPathNode* context =
        isInside ? list[static_cast<std::size_t>(evaluation.position) - 1].node : nullptr;
    evaluator.SetCurrent(context);
    succeeded =
        evaluator.Evaluate(context, context, value, nullptr, evaluation.position, size);
  }
  if (succeeded) return;
  throw TQXSLTError(XsltCode::XPathFailed, evaluation.scopeNode)
      .SetXPathError(static_cast<std::int32_t>(evaluator.ErrorCode()), evaluator.ErrorFunction());
}

// The root of the module that holds a node. Asked at each evaluation, so the last answer is kept.
XPathNode* XSLTProcessorBase::TreeOf(XPathNode* stylesheetNode) {
  if (lastTree_ == nullptr || stylesheetNode->documentNumber != lastTreeNumber_) {
    lastTree_ = stylesheetNode->Root();
    lastTreeNumber_ = stylesheetNode->documentNumber;
  }
  return lastTree_;
}

namespace {

XPathNode* ScopeNodeOf(const TemplateFrame& frame) {
  XPathNode* node = frame.CurrentNode != nullptr ? frame.CurrentNode : frame.CallingNode;
  while (node->kind != XPathNodeKind::Element && node->kind != XPathNodeKind::Attribute) {
    node = node->parent;
  }
  return node;
}

}  // namespace

void XSLTProcessorBase::EvaluateExpression(const ExpressionText& expression,
                                           const TemplateFrame& frame, XPathValue& value) {
  XPathNode* scopeNode = ScopeNodeOf(frame);
  const ParsedExpression& parsed = Parse(expression, kNoPattern, scopeNode);
  RunEvaluation({parsed, scopeNode, frame, *frame.NodeList, frame.Position}, value);
}

void XSLTProcessorBase::EvaluateOn(const ExpressionText& expression, XPathNode* namespaceNode,
                                   const XPathNodeList& list, std::int32_t position,
                                   XPathPatternKind patternKind, XPathValue& value) {
  const ParsedExpression& parsed = Parse(expression, patternKind, namespaceNode);
  RunEvaluation({parsed, namespaceNode, TopFrame(), list, position}, value);
}

const XPathNodeList& XSLTProcessorBase::Universe(XPathNode* contextNode) {
  return universes_->Find(contextNode);
}

XPathNodeList XSLTProcessorBase::EvaluateOverUniverse(const ExpressionText& expression,
                                                      XPathNode* contextNode,
                                                      XPathNode* namespaceNode,
                                                      XPathPatternKind patternKind) {
  if (expression.Text.IsEmpty()) return {};
  XPathValue value;
  EvaluateOn(expression, namespaceNode, Universe(contextNode), -1, patternKind, value);
  return std::move(value.nodes);
}

}  // namespace kelmora
