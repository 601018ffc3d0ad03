// TQXSLTError carries every failure of the XSLT engine to the driver: a number, the stylesheet node
// at fault, and for a failed expression the two numbers of the XPath engine. Texts are looked up
// when somebody asks.
#pragma once

#include <cstdint>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

enum class XsltCode : std::int32_t {
#define XSLT_CODE(number, enumerator, resource) enumerator = number,
#include "xslt/xsltcodes.def"
#undef XSLT_CODE
};

class TQXSLTError {
 public:
  // A synthetic node is replaced by its nearest ancestor that has a place in a file.
  TQXSLTError(XsltCode code, XPathNode* node);
  TQXSLTError(const TQXSLTError&) = default;
  virtual ~TQXSLTError() = default;

  // Stores the numbers of the expression that failed; for code 1.
  TQXSLTError& SetXPathError(std::int32_t xpathCode, std::int32_t xpathFunction);
  // Stores the expanded name of the variable that an expression did not find.
  TQXSLTError& SetMissingVariable(const TQString& name);

  const TQString& Text() const;  // lives as long as the error
  XPathNode* Node() const { return node_; }
  XsltCode Code() const { return code_; }
  std::int32_t XPathCode() const { return xpathCode_; }
  std::int32_t XPathFunction() const { return xpathFunction_; }
  // Empty for another failure than an expression's reference to a variable that is not bound.
  const TQString& MissingVariable() const { return missingVariable_; }

 private:
  TQString XPathText() const;

  mutable TQString message_;
  TQString missingVariable_;
  XsltCode code_;
  std::int32_t xpathCode_ = 0;
  std::int32_t xpathFunction_ = -1;
  XPathNode* node_;
};

}  // namespace kelmora
