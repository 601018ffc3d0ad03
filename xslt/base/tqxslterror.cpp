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

// Ascending by code. Codes 3, 12, 30, 35, 37, 41 and 42 have a text but nobody raises them.
constexpr CodeText kCodeTexts[] = {
    {2, 7240},  {3, 7200},  {4, 7237},  {5, 7201},  {6, 7245},  {7, 7202},  {8, 7203},
    {9, 7204},  {10, 7205}, {11, 7206}, {12, 7235}, {13, 7207}, {14, 7208}, {15, 7236},
    {16, 7244}, {17, 7238}, {18, 7209}, {19, 7210}, {20, 7211}, {21, 7212}, {22, 7213},
    {23, 7214}, {24, 7249}, {25, 7215}, {26, 7216}, {27, 7217}, {28, 7218}, {29, 7219},
    {30, 7220}, {31, 7221}, {32, 7222}, {33, 7223}, {34, 7224}, {35, 7225}, {36, 7226},
    {37, 7227}, {38, 7228}, {39, 7229}, {40, 7230}, {41, 7231}, {42, 7232}, {43, 7233},
    {44, 7234}, {45, 7246}, {46, 7241}, {47, 7242}, {48, 7243}, {49, 7247}, {50, 7248},
};

// By XPath error number, ascending.
constexpr CodeText kXPathTexts[] = {
#define XPATH_ERROR(number, id, message) {number, message},
#include "xpath/xpatherrors.def"
#undef XPATH_ERROR
};

constexpr int kFirstFunctionName = 7413;
constexpr int kLastFunctionName = 7448;
constexpr int kXPathIntroduction = 7250;

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

TQXSLTError::TQXSLTError(std::int32_t code, XPathNode* node) : code_(code), node_(node) {
  while (node_ != nullptr && node_->synthetic) node_ = node_->parent;
}

TQXSLTError& TQXSLTError::SetXPathError(std::int32_t xpathCode, std::int32_t xpathFunction) {
  xpathCode_ = xpathCode;
  xpathFunction_ = xpathFunction;
  return *this;
}

const TQString& TQXSLTError::Text() const {
  if (!message_.IsEmpty() || code_ == 0) return message_;
  if (code_ == XsltCode::XPathFailed) return XPathText();
  message_ = TextOf(kCodeTexts, code_);
  if (message_.IsEmpty()) message_ = u"Unknown error";
  return message_;
}

const TQString& TQXSLTError::XPathText() const {
  if (!xpathMessage_.IsEmpty()) return xpathMessage_;
  TQString message = TextOf(kXPathTexts, xpathCode_);
  if (!NameOfFunction(xpathFunction_).empty()) {
    message = TQString::Format(u"%s -> %s", {message, FunctionText(xpathFunction_)});
  }
  xpathMessage_.LoadResource(kXPathIntroduction);
  xpathMessage_ += message;
  return xpathMessage_;
}

}  // namespace kelmora
