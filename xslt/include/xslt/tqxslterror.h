// TQXSLTError carries every failure of the XSLT engine to the driver: a number, the stylesheet node
// at fault, and for a failed expression the two numbers of the XPath engine. Texts are looked up
// when somebody asks.
#pragma once

#include <cstdint>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

// The error codes; the texts stand in one table beside them (tqxslterror.cpp).
namespace XsltCode {
enum : std::int32_t {
  XPathFailed = 1,
  RepeatedAttribute = 2,
  DecimalFormatExists = 4,
  ExpressionExpected = 5,
  InvalidExpression = 6,
  UnexpectedFailure = 7,
  UndefinedTemplate = 8,
  UndefinedAttributeSet = 9,
  UndefinedPrefix = 10,
  TemplateExists = 11,
  VariableExists = 13,
  ParameterExists = 14,
  SelectAndContent = 15,
  ModeWithoutMatch = 16,
  UseExpected = 17,
  SelectExpected = 18,
  TestExpected = 19,
  VersionExpected = 20,
  NameExpected = 21,
  WhenExpected = 22,
  HrefExpected = 23,
  ElementsExpected = 24,
  StylesheetPrefixExpected = 25,
  ResultPrefixExpected = 26,
  UnexpectedOtherwise = 27,
  NotWhenOrOtherwise = 28,
  NotANodeSet = 29,
  UnexpectedValue = 31,
  UnexpectedAttribute = 32,
  UnexpectedChild = 33,
  UnexpectedElement = 34,
  UnexpectedApplyImports = 36,
  NotARootElement = 38,
  NotAPITarget = 39,
  NotAQName = 40,
  ImportFailed = 43,
  IncludeFailed = 44,
  RecursiveInclude = 45,
  VariableInPattern = 46,
  BadAttributeTemplate = 47,
  NameOrMatchExpected = 48,
  ImportNotFirst = 49,
  RecursiveVariable = 50,
};
}  // namespace XsltCode

class TQXSLTError {
 public:
  // A synthetic node is replaced by its nearest ancestor that has a place in a file.
  TQXSLTError(std::int32_t code, XPathNode* node);
  TQXSLTError(const TQXSLTError&) = default;
  virtual ~TQXSLTError() = default;

  // Stores the numbers of the expression that failed; for code 1.
  TQXSLTError& SetXPathError(std::int32_t xpathCode, std::int32_t xpathFunction);
  // Stores the expanded name of the variable that an expression did not find.
  TQXSLTError& SetMissingVariable(const TQString& name);

  const TQString& Text() const;  // lives as long as the error
  XPathNode* Node() const { return node_; }
  std::int32_t Code() const { return code_; }
  std::int32_t XPathCode() const { return xpathCode_; }
  std::int32_t XPathFunction() const { return xpathFunction_; }
  // Empty for another failure than an expression's reference to a variable that is not bound.
  const TQString& MissingVariable() const { return missingVariable_; }

 private:
  const TQString& XPathText() const;

  mutable TQString message_;
  mutable TQString xpathMessage_;
  TQString missingVariable_;
  std::int32_t code_;
  std::int32_t xpathCode_ = 0;
  std::int32_t xpathFunction_ = -1;
  XPathNode* node_;
};

}  // namespace kelmora
