#include "xslt/tqxslterror.h"

#include <algorithm>
#include <iterator>

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
    {1, 7401},  {2, 7402},  {3, 7403},  {4, 7404},  {5, 7405},  {6, 7406},
    {7, 7454},  {8, 7407},  {9, 7408},  {10, 7409}, {11, 7410}, {12, 7411},
    {13, 7449}, {14, 7450}, {15, 7451}, {16, 7453}, {17, 7455},
};

constexpr int kFirstFunctionName = 7413;
constexpr int kFunctionCount = 36;

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
  if (xpathFunction_ < 0 || xpathFunction_ >= kFunctionCount) return message;
  TQString function;
  function.LoadResource(kFirstFunctionName + xpathFunction_);
  return TQString::Format(u"%s -> %s", {message, function});
}

}  // namespace kelmora
