#include "nodes/xpathprimarynodes.h"

#include "nodes/xpathcontext.h"
#include "syntax/xpathparsetree.h"
#include "tqcore/tqtext.h"

namespace kelmora {

// --- literals and numbers ---------------------------------------------------------------------

void XPathLiteralNode::Prepare(XPathParseTree&) {
  effective = this;
  type = Type::String;
  harmless = true;
  const XPathParseNode& inside = *firstChild->firstChild->nextSibling;
  if (inside.rule == XPathRule::CharacterRun) literal_ = inside.text;
}

bool XPathLiteralNode::EvaluateText(const XPathContext&, TQString&,
                                    std::u16string_view& result) const {
  result = literal_;
  return true;
}

void XPathNumberNode::Prepare(XPathParseTree& tree) {
  effective = this;
  type = Type::Number;
  harmless = true;
  const XPathParseNode& first = *firstChild;
  if (first.rule == XPathRule::Token) {
    number_ = TextToNumber({});
    return;
  }
  // Nothing stands between the digits and the point, so the text is one piece.
  std::u16string_view expression = tree.Text();
  std::size_t start = expression.size() - static_cast<std::size_t>(first.position);
  std::size_t end = start;
  while (end < expression.size() &&
         ((expression[end] >= u'0' && expression[end] <= u'9') || expression[end] == u'.')) {
    ++end;
  }
  number_ = ParseDouble(expression.substr(start, end - start), nullptr);
}

bool XPathNumberNode::EvaluateNumber(const XPathContext&, double& value) const {
  value = number_;
  return true;
}

// --- variables --------------------------------------------------------------------------------

void XPathVariableNode::Prepare(XPathParseTree&) {
  effective = this;
  name_ = NameOf(*lastChild);
}

const XPathValue* XPathVariableNode::Find(const XPathContext& context) const {
  XPathEvaluation& evaluation = *context.evaluation;
  std::u16string_view key = name_.local;
  TQString made;
  if (name_.hasPrefix) {
    made = name_.prefix;
    made += u':';
    made += name_.local;
    made = ExpandName(made, *evaluation.prefixMap);
    key = made;
  }
  const XPathValue* value = evaluation.variables ? evaluation.variables->Find(key) : nullptr;
  if (value == nullptr) {
    context.Fail(XPathError::InvalidVariableReference, *this);
    evaluation.expression->OnMissingVariable(key);
  }
  return value;
}

bool XPathVariableNode::Evaluate(XPathContext& context) const {
  const XPathValue* value = Find(context);
  if (value == nullptr) return false;
  context.BorrowInput(*value);
  context.inputSize = static_cast<std::int32_t>(value->nodes.size());
  if (value->IsFragment()) context.lastStep = XPathContext::kFragmentMark;
  return true;
}

bool XPathVariableNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  operand.value = Find(context);
  return operand.value != nullptr;
}

bool XPathVariableNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                     std::u16string_view& result) const {
  const XPathValue* value = Find(context);
  if (value != nullptr) result = TextOf(*value, scratch);
  return value != nullptr;
}

bool XPathVariableNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  const XPathValue* found = Find(context);
  if (found != nullptr) value = ToBoolean(*found);
  return found != nullptr;
}

bool XPathVariableNode::EvaluateNumber(const XPathContext& context, double& value) const {
  const XPathValue* found = Find(context);
  if (found != nullptr) value = ToNumber(*found);
  return found != nullptr;
}

// --- brackets ---------------------------------------------------------------------------------

void XPathPrimaryNode::Prepare(XPathParseTree&) {
  type = firstChild->type;
  harmless = firstChild->harmless;
  usesPosition = firstChild->usesPosition;
  bool sorts =
      firstChild->rule == XPathRule::ParenExpr && (type == Type::NodeSet || type == Type::Unknown);
  effective = sorts ? this : firstChild->effective;
}

bool XPathPrimaryNode::Evaluate(XPathContext& context) const {
  if (!Run(*firstChild, context)) return false;
  if (firstChild->rule == XPathRule::ParenExpr) context.SortInput();
  return true;
}

// The order shows neither in a truth value nor in the first node.
bool XPathPrimaryNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  return OperandBoolean(*firstChild, context, value);
}
bool XPathPrimaryNode::EvaluateNumber(const XPathContext& context, double& value) const {
  return OperandNumber(*firstChild, context, value);
}
bool XPathPrimaryNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                    std::u16string_view& result) const {
  return OperandText(*firstChild, context, scratch, result);
}

}  // namespace kelmora
