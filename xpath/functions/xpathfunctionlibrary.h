// XPathFunctionLibrary: the functions as virtual operations of an object without data. The
// functions of XSLT are those that XsltFunctionLibrary adds.
//
// A function gets its call and the context, and returns its value. Its failure, and the failure of
// an argument, is thrown and caught where the call is evaluated.
#pragma once

#include <cstdint>
#include <string_view>

#include "nodes/xpathcontext.h"
#include "nodes/xpathfunctioncall.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathFunctionLibrary {
 public:
  using Call = const XPathFunctionCallNode&;
  using Context = const XPathContext&;

  XPathFunctionLibrary() = default;
  virtual ~XPathFunctionLibrary() = default;

#define XPATH_FUNCTION(number, id, name, called, Operation, Result, ...) \
  virtual Result Operation(Call call, Context context) const;
#define XSLT_FUNCTION(...)
#include "xpath/xpathfunctions.def"
#undef XSLT_FUNCTION
#undef XPATH_FUNCTION
  // The conversions, and the rounding of a value.
  virtual TQString ToString(const XPathValue& value) const;
  virtual bool ToBoolean(const XPathValue& value) const;
  virtual double ToNumber(const XPathValue& value) const;
  virtual double Round(double number) const;

  [[noreturn]] void Raise(XPathError code, XPathFunction function) const;

 protected:
  // The argument as a value of the wanted kind. An error of the argument is thrown on.
  void Argument(Call call, Context context, int index, XPathOperand& operand) const;
  bool BooleanArgument(Call call, Context context, int index) const;
  double NumberArgument(Call call, Context context, int index) const;
  // The view lives as long as `scratch` and the documents.
  std::u16string_view TextArgument(Call call, Context context, int index, TQString& scratch) const;
  // The argument or, without one, the input of the context.
  const XPathValue& ArgumentOrInput(Call call, Context context, XPathOperand& operand) const;
  std::u16string_view TextOrInput(Call call, Context context, TQString& scratch) const;

 private:
  [[noreturn]] void RaiseAgain(Context context) const;
  XPathNode* FirstNode(Call call, Context context) const;
};

class XsltFunctionLibrary : public XPathFunctionLibrary {
 public:
  // Adds the root of the document that `uri` names, seen from the first node of `base` in document
  // order or, without one, from the stylesheet node. No node for an empty name or a failed load.
  virtual void LoadRelative(Context context, const TQString& uri, const XPathNodeList& base,
                            XPathNodeList& roots) const;

#define XPATH_FUNCTION(...)
#define XSLT_FUNCTION(number, id, name, called, Operation, Result, ...) \
  virtual Result Operation(Call call, Context context) const;
#include "xpath/xpathfunctions.def"
#undef XSLT_FUNCTION
#undef XPATH_FUNCTION

 private:
  XPathNode* Load(Context context, const TQString& uri, XPathNode* baseNode) const;
  // The text of an argument that must be a qualified name.
  TQString NameArgument(Call call, Context context, XPathFunction function) const;
};

}  // namespace kelmora
