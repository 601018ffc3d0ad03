#include "xslt/tqxslterror.h"

#include <algorithm>
#include <iterator>

#include "xpath/xpathfunction.h"

namespace kelmora {

namespace {

struct CodeText {
  std::int32_t code;
  int resource;
};

// By code, ascending.
constexpr CodeText kCodeTexts[] = {
#define XSLT_CODE(number, enumerator, resource) {number, resource},
#include "xslt/xsltcodes.def"
#undef XSLT_CODE
};

// By XPath error number, ascending.
constexpr CodeText kXPathTexts[] = {
#define XPATH_ERROR(number, id, message) {number, message},
#include "xpath/xpatherrors.def"
#undef XPATH_ERROR
};

constexpr int kFirstFunctionName = 7413;
constexpr int kLastFunctionName = 7448;

// Functions without a text show the name that calls use.
TQString FunctionText(std::int32_t function) {
  TQString text(NameOfFunction(function));
  if (function <= kLastFunctionName - kFirstFunctionName) {
    text.LoadResource(kFirstFunctionName + function);
  }
  return text;
}

// Empty for a code that the table lacks.
template <std::size_t size>
TQString TextOf(const CodeText (&table)[size], std::int32_t code) {
  TQString text;
  const auto* row = std::ranges::lower_bound(table, code, {}, &CodeText::code);
  if (row != std::end(table) && row->code == code) text.LoadResource(row->resource);
  return text;
}

}  // namespace

TQXSLTError::TQXSLTError(XsltCode code, XPathNode* node) : code_(code), node_(node) {
  while (node_ != nullptr && node_->synthetic) node_ = node_->parent;
}

TQXSLTError& TQXSLTError::SetXPathError(std::int32_t xpathCode, std::int32_t xpathFunction) {
  xpathCode_ = xpathCode;
  xpathFunction_ = xpathFunction;
  return *this;
}

TQXSLTError& TQXSLTError::SetMissingVariable(const TQString& name) {
  missingVariable_ = name;
  return *this;
}

const TQString& TQXSLTError::Text() const {
  if (!message_.IsEmpty()) return message_;
  message_ = TextOf(kCodeTexts, static_cast<std::int32_t>(code_));
  if (code_ == XsltCode::XPathFailed) message_ += XPathText();
  return message_;
}

TQString TQXSLTError::XPathText() const {
  TQString message = TextOf(kXPathTexts, xpathCode_);
  if (NameOfFunction(xpathFunction_).empty()) return message;
  return TQString::Format(u"%s -> %s", {message, FunctionText(xpathFunction_)});
}

}  // namespace kelmora
