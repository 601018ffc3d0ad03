#include "nodes/xpathprimarynodes.h"

#include <algorithm>

#include "nodes/xpathcontext.h"
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

bool XPathLiteralNode::Evaluate(XPathContext& context) const {
  context.Output().SetString(literal_);
  context.Swap();
  return true;
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

bool XPathNumberNode::Evaluate(XPathContext& context) const {
  context.Output().SetNumber(number_);
  context.Swap();
  return true;
}

bool XPathNumberNode::EvaluateNumber(const XPathContext&, double& value) const {
  value = number_;
  return true;
}

bool XPathNumberNode::EvaluateOperand(const XPathContext&, XPathOperand& operand) const {
  operand.own.SetNumber(number_);
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
    InternedURI uri = evaluation.prefixMap->Lookup(name_.prefix);
    made = uri != nullptr && !uri->IsEmpty() ? *uri : TQString(name_.prefix);
    made += u':';
    made += name_.local;
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
  if (context.IsPlain()) {
    context.Output() = *value;
    context.Swap();
  } else {
    context.BorrowInput(*value);
    context.inputSize = static_cast<std::int32_t>(value->nodes.size());
  }
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

// --- function calls ---------------------------------------------------------------------------

void XPathFunctionCallNode::Prepare(XPathParseTree& tree) {
  effective = this;
  name_ = NameOf(*firstChild->firstChild);
  if (!name_.hasPrefix) row_ = FindFunction(name_.local);

  const XPathParseNode* list = firstChild->nextSibling->nextSibling;
  if (list->rule == XPathRule::Arguments) {
    int count = 0;
    for (const XPathParseNode* child = list->firstChild; child; child = child->nextSibling) ++count;
    auto* arguments = static_cast<const XPathParseNode**>(
        tree.GetArena().Allocate(static_cast<std::size_t>(count) * sizeof(void*), alignof(void*)));
    for (const XPathParseNode* child = list->firstChild; child; child = child->nextSibling) {
      arguments[argumentCount_++] = child->lastChild;  // of an argument or of its tail
    }
    arguments_ = arguments;
  }
  for (int i = 0; i < argumentCount_; ++i) {
    usesPosition = usesPosition || arguments_[i]->usesPosition;
  }
  if (row_ == nullptr) return;
  if (row_->function == XPathFunction::position || row_->function == XPathFunction::last) {
    usesPosition = true;
  }
  type = row_->ResultType();
  harmless = row_->library == XPathFunctionRow::Core && IsPlainCallOf(row_->function);
  for (int i = 0; i < argumentCount_; ++i) harmless = harmless && arguments_[i]->harmless;
  if (row_->function == XPathFunction::count) {
    harmless = harmless && arguments_[0]->type == Type::NodeSet;
  }
}

bool XPathFunctionCallNode::IsPlainCallOf(XPathFunction function) const {
  return row_ != nullptr && row_->function == function && argumentCount_ >= row_->fewest &&
         (row_->most < 0 || argumentCount_ <= row_->most);
}

bool XPathFunctionCallNode::Fail(const XPathContext& context, XPathError code,
                                 XPathFunction function) const {
  return context.evaluation->Fail(code, position, static_cast<std::int32_t>(function));
}

bool XPathFunctionCallNode::Resolve(const XPathContext& context) const {
  if (name_.hasPrefix) {
    bool bound = context.evaluation->prefixMap->Find(name_.prefix) != nullptr;
    if (!bound) return Fail(context, XPathError::InvalidPrefix);
    const XPathFunctionRow* sameName = FindFunction(name_.local);
    return Fail(context, XPathError::FunctionNotInNamespace,
                sameName ? sameName->function : XPathFunction::none);
  }
  bool found = row_ != nullptr && row_->library != XPathFunctionRow::Never &&
               (row_->library == XPathFunctionRow::Core || context.evaluation->xsltFunctions);
  if (!found) return Fail(context, XPathError::UnknownFunction);
  if (row_->function == XPathFunction::key && context.evaluation->patternKind == kKeyPattern) {
    return Fail(context, XPathError::KeyFunctionInKey, XPathFunction::key);
  }
  XPathFunction reported =
      row_->function == XPathFunction::not_ ? XPathFunction::boolean : row_->function;
  if (argumentCount_ < row_->fewest) {
    return Fail(context, XPathError::TooFewParameters, reported);
  }
  if (row_->most >= 0 && argumentCount_ > row_->most) {
    return Fail(context, XPathError::TooManyParameters, reported);
  }
  return true;
}

template <class Caller>
bool XPathFunctionCallNode::Guard(const XPathContext& context, Caller call) const {
  if (!Resolve(context)) return false;
  try {
    call(XsltFunctionLibrary());
    return true;
  } catch (const TQXPathFunctionLibraryException& error) {
    return context.evaluation->Fail(error.code, position, error.function);
  }
}

template <class Result>
Result XPathFunctionCallNode::Call(const XsltFunctionLibrary& library,
                                   const XPathContext& context) const {
  return (library.*std::get<XPathFunctionRow::SlotOf<Result>>(row_->slot))(*this, context);
}

// Of a function that gives a text.
std::u16string_view XPathFunctionCallNode::CallForText(const XsltFunctionLibrary& library,
                                                       const XPathContext& context,
                                                       TQString& scratch) const {
  if (std::holds_alternative<XPathFunctionRow::SlotOf<std::u16string_view>>(row_->slot)) {
    return Call<std::u16string_view>(library, context);
  }
  scratch = Call<TQString>(library, context);
  return scratch;
}

bool XPathFunctionCallNode::CallInto(const XPathContext& context, XPathValue& value) const {
  return Guard(context, [&](const XsltFunctionLibrary& library) {
    switch (type) {
      case Type::Number:
        value.SetNumber(Call<double>(library, context));
        break;
      case Type::Boolean:
        value.SetBoolean(Call<bool>(library, context));
        break;
      case Type::String: {
        TQString scratch;
        std::u16string_view made = CallForText(library, context, scratch);
        value.SetString(made.data() == scratch.c_str() ? std::move(scratch) : TQString(made));
        break;
      }
      default:
        value.SetNodes(Call<XPathNodeList>(library, context));
    }
  });
}

bool XPathFunctionCallNode::Evaluate(XPathContext& context) const {
  XPathValue value;
  if (!CallInto(context, value)) return false;
  context.Output() = std::move(value);
  context.Swap();
  return true;
}

bool XPathFunctionCallNode::EvaluateOperand(const XPathContext& context,
                                            XPathOperand& operand) const {
  return CallInto(context, operand.own);
}

bool XPathFunctionCallNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  if (type == Type::Boolean) {
    return Guard(context,
                 [&](const XsltFunctionLibrary& library) { value = Call<bool>(library, context); });
  }
  XPathValue result;
  if (!CallInto(context, result)) return false;
  value = ToBoolean(result);
  return true;
}

bool XPathFunctionCallNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (type == Type::Number) {
    return Guard(context, [&](const XsltFunctionLibrary& library) {
      value = Call<double>(library, context);
    });
  }
  XPathValue result;
  if (!CallInto(context, result)) return false;
  value = ToNumber(result);
  return true;
}

bool XPathFunctionCallNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                         std::u16string_view& result) const {
  if (IsPlainCallOf(XPathFunction::string) && argumentCount_ == 1) {
    return OperandText(*arguments_[0], context, scratch, result);
  }
  if (type == Type::String) {
    return Guard(context, [&](const XsltFunctionLibrary& library) {
      result = CallForText(library, context, scratch);
    });
  }
  XPathOperand operand;
  if (!CallInto(context, operand.own)) return false;
  result = TextOf(operand.own, scratch);
  return true;
}

}  // namespace kelmora
