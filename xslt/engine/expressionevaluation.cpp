// How expressions of the stylesheet are evaluated. A text is parsed once; each evaluation lends the
// tree to the evaluator, together with what it may see: the context, the variables of a frame, the
// key tables and the decimal formats.

#include "base/expressiontext.h"
#include "base/parsedexpression.h"
#include "engine/attributetemplates.h"
#include "engine/declarations.h"
#include "engine/instruction.h"
#include "engine/universes.h"
#include "engine/xpathevaluator.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

const ParsedExpression& ExpressionCache::Parse(const TQString& text, XPathPatternKind kind) {
  auto found = entries_.find(text.View());
  if (found == entries_.end()) found = entries_.try_emplace(text).first;
  auto& place = found->second[static_cast<std::size_t>(kind)];
  if (place != nullptr) return *place;
  auto parsed = std::make_unique<ParsedExpression>();
  parsed->kind = kind;
  XPathExpression parser;
  parser.SetXsltFunctions(true);
  parser.SetExpression(nullptr, text, kind);
  if (parser.Parse(true, kExprGrammar)) {
    parsed->tree = parser.TakeTree();
    parsed->isContextNode = XPathExpression::IsContextNode(*parsed->tree);
    parsed->isVariable = XPathExpression::IsVariable(*parsed->tree, parsed->variable);
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
  const XsltCode code =
      parsed.variableInPattern ? XsltCode::VariableInPattern : XsltCode::InvalidExpression;
  throw TQXSLTError(code, expression.Holder != nullptr ? expression.Holder : errorNode);
}

// What one evaluation works with.
struct XSLTProcessorBase::Evaluation {
  const ParsedExpression& parsed;
  XPathNode* scopeNode;        // an element or attribute: the prefixes, the base URI, the error
  const TemplateFrame& frame;  // the variables
  const XPathNodeList& list;
  std::int32_t position;  // -1: the whole list is the input
};

// Sets the evaluator up, lets `evaluate` run it, and raises when that gives false. The evaluator
// may be set up anew while it runs: key() makes an index by evaluating the expressions of xsl:key.
template <class Evaluate>
void XSLTProcessorBase::RunEvaluation(const Evaluation& evaluation, Evaluate evaluate) {
  const FrameVariables variables(*this, evaluation.frame);
  XPathEvaluator& evaluator = *Evaluator;
  evaluator.UseTree(&evaluation.scopeNode->AttributeScopeMap(), evaluation.parsed.tree,
                    evaluation.parsed.kind);
  evaluator.SetVariables(&variables);
  evaluator.SetKeyTable(keyLookup_);
  evaluator.SetDecimalFormats(&Declared->DecimalFormats());
  evaluator.SetCurrentStylesheetNode(evaluation.scopeNode);
  evaluator.SetStylesheetRoot(TreeOf(evaluation.scopeNode));

  const XPathNodeList& list = evaluation.list;
  XPathRequest request;
  if (evaluation.position == -1) {
    request.contextNode = list.empty() ? nullptr : list.front().node;
    request.inputNodes = &list;
  } else {
    request.position = evaluation.position;
    request.size = static_cast<std::int32_t>(list.size());
    if (request.position >= 1 && request.position <= request.size) {
      request.contextNode = list[static_cast<std::size_t>(request.position) - 1].node;
    }
  }
  request.documentNode = request.contextNode;
  evaluator.SetCurrent(request.contextNode);
  evaluator.ForgetMissingVariable();
  if (evaluate(evaluator, request)) return;
  throw TQXSLTError(XsltCode::XPathFailed, evaluation.scopeNode)
      .SetXPathError(static_cast<std::int32_t>(evaluator.ErrorCode()), evaluator.ErrorFunction())
      .SetMissingVariable(evaluator.MissingVariable());
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

auto ToValue(XPathValue& value) {
  return [&value](XPathEvaluator& evaluator, const XPathRequest& request) {
    return evaluator.Evaluate(request.documentNode, request.contextNode, value, request.inputNodes,
                              request.position, request.size);
  };
}

}  // namespace

XSLTProcessorBase::Evaluation XSLTProcessorBase::InFrame(const ExpressionText& expression,
                                                         const TemplateFrame& frame) {
  XPathNode* scopeNode = ScopeNodeOf(frame);
  const ParsedExpression& parsed = Parse(expression, kNoPattern, scopeNode);
  return {parsed, scopeNode, frame, *frame.NodeList, frame.Position};
}

void XSLTProcessorBase::EvaluateExpression(const ExpressionText& expression,
                                           const TemplateFrame& frame, XPathValue& value) {
  const XPathValue& found = ViewExpression(expression, frame, value);
  if (&found != &value) value = found;
}

// A variable that is not bound goes the long way, to the error. So does everything without a
// context node.
const XPathValue& XSLTProcessorBase::ViewExpression(const ExpressionText& expression,
                                                    const TemplateFrame& frame,
                                                    XPathValue& scratch) {
  const Evaluation evaluation = InFrame(expression, frame);
  const ParsedExpression& parsed = evaluation.parsed;
  XPathNode* node = frame.ContextNode();
  if (parsed.isContextNode && node != nullptr) {
    scratch.Clear();
    scratch.nodes.emplace_back(node, 1);
    return scratch;
  }
  if (parsed.isVariable && node != nullptr) {
    const FrameVariables variables(*this, frame);
    if (const XPathValue* value = variables.Find(parsed.variable)) return *value;
  }
  RunEvaluation(evaluation, ToValue(scratch));
  return scratch;
}

bool XSLTProcessorBase::EvaluateToBoolean(const ExpressionText& expression,
                                          const TemplateFrame& frame) {
  bool result = false;
  RunEvaluation(InFrame(expression, frame),
                [&result](XPathEvaluator& evaluator, const XPathRequest& request) {
                  return evaluator.EvaluateToBoolean(request, result);
                });
  return result;
}

double XSLTProcessorBase::EvaluateToNumber(const ExpressionText& expression,
                                           const TemplateFrame& frame) {
  double result = 0;
  RunEvaluation(InFrame(expression, frame),
                [&result](XPathEvaluator& evaluator, const XPathRequest& request) {
                  return evaluator.EvaluateToNumber(request, result);
                });
  return result;
}

std::u16string_view XSLTProcessorBase::EvaluateToText(const ExpressionText& expression,
                                                      const TemplateFrame& frame,
                                                      TQString& scratch) {
  std::u16string_view result;
  RunEvaluation(InFrame(expression, frame),
                [&](XPathEvaluator& evaluator, const XPathRequest& request) {
                  return evaluator.EvaluateToText(request, scratch, result);
                });
  return result;
}

void XSLTProcessorBase::EvaluateOn(const ExpressionText& expression, XPathNode* namespaceNode,
                                   const XPathNodeList& list, std::int32_t position,
                                   XPathPatternKind patternKind, XPathValue& value) {
  const ParsedExpression& parsed = Parse(expression, patternKind, namespaceNode);
  RunEvaluation({parsed, namespaceNode, TopFrame(), list, position}, ToValue(value));
}

TQString XSLTProcessorBase::ExpandAttributeValue(XPathNode* attribute, const TemplateFrame& frame) {
  const std::u16string_view text = attribute->GetValue();
  if (!HasBraces(text)) return text;
  TQString result;
  TQString scratch;
  for (const TemplatePart& part : attributeTemplates_->Find(attribute)) {
    switch (part.kind) {
      case TemplatePart::Literal:
        result += part.literal;
        break;
      case TemplatePart::Expression:
        result += EvaluateToText(part.expression, frame, scratch);
        break;
      case TemplatePart::Fault:
        throw TQXSLTError(XsltCode::BadAttributeTemplate, attribute);
    }
  }
  return result;
}

const XPathNodeList& XSLTProcessorBase::Universe(XPathNode* contextNode) {
  return universes_->Find(contextNode);
}

void XSLTProcessorBase::ForgetUniverse(const XPathNode& root) {
  universes_->Forget(root);
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
