#include "nodes/xpathfunctioncall.h"

#include "nodes/xpathcontext.h"
#include "syntax/xpathparsetree.h"

namespace kelmora {

XPathParseNode::Type XPathFunctionRow::ResultType() const {
  using Type = XPathParseNode::Type;
  if (std::holds_alternative<RunnerOf<double>>(run)) return Type::Number;
  if (std::holds_alternative<RunnerOf<bool>>(run)) return Type::Boolean;
  if (std::holds_alternative<RunnerOf<XPathNodeList>>(run)) return Type::NodeSet;
  return Type::String;
}

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
  usesPosition = usesPosition || row_->reads == XPathFunctionRow::Reads::Position;
  type = row_->ResultType();
  harmless = IsPlainCallOf(row_->function) && CannotFail();
  for (int i = 0; i < argumentCount_; ++i) harmless = harmless && arguments_[i]->harmless;
}

bool XPathFunctionCallNode::CannotFail() const {
  switch (row_->fails) {
    case XPathFunctionRow::Fails::Never:
      return true;
    case XPathFunctionRow::Fails::UnlessNodeSet:
      return arguments_[0]->type == Type::NodeSet;
    case XPathFunctionRow::Fails::Perhaps:
      break;
  }
  return false;
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
  bool found = row_ != nullptr && row_->called == XPathFunctionRow::Called::Called &&
               (!row_->isXslt || context.evaluation->xsltFunctions);
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
    call();
    return true;
  } catch (const TQXPathFunctionLibraryException& error) {
    return context.evaluation->Fail(error.code, position, error.function);
  }
}

template <class Result>
Result XPathFunctionCallNode::Call(const XPathContext& context) const {
  return std::get<XPathFunctionRow::RunnerOf<Result>>(row_->run)(*this, context);
}

// Of a function that gives a text.
std::u16string_view XPathFunctionCallNode::CallForText(const XPathContext& context,
                                                       TQString& scratch) const {
  if (std::holds_alternative<XPathFunctionRow::RunnerOf<std::u16string_view>>(row_->run)) {
    return Call<std::u16string_view>(context);
  }
  scratch = Call<TQString>(context);
  return scratch;
}

bool XPathFunctionCallNode::CallInto(const XPathContext& context, XPathValue& value) const {
  return Guard(context, [&] {
    switch (type) {
      case Type::Number:
        value.SetNumber(Call<double>(context));
        break;
      case Type::Boolean:
        value.SetBoolean(Call<bool>(context));
        break;
      case Type::String: {
        TQString scratch;
        std::u16string_view made = CallForText(context, scratch);
        value.SetString(made.data() == scratch.c_str() ? std::move(scratch) : TQString(made));
        break;
      }
      default:
        value.SetNodes(Call<XPathNodeList>(context));
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
    return Guard(context, [&] { value = Call<bool>(context); });
  }
  XPathValue result;
  if (!CallInto(context, result)) return false;
  value = ToBoolean(result);
  return true;
}

bool XPathFunctionCallNode::EvaluateNumber(const XPathContext& context, double& value) const {
  if (type == Type::Number) {
    return Guard(context, [&] { value = Call<double>(context); });
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
    return Guard(context, [&] { result = CallForText(context, scratch); });
  }
  XPathOperand operand;
  if (!CallInto(context, operand.own)) return false;
  result = TextOf(operand.own, scratch);
  return true;
}

}  // namespace kelmora
