// XPathFunctionLibrary: the functions as virtual operations of an object without data. The
// functions of XSLT are those that XsltFunctionLibrary adds.
//
// A function gets its call and the context, and returns its value. Its failure, and the failure of
// an argument, is thrown and caught where the call is evaluated.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "nodes/xpathcontext.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathFunctionCallNode;

// Numbers as errors carry them.
enum class XPathFunction : std::int8_t {
  none = -1,
#define XPATH_FUNCTION(number, id, ...) id = number,
#include "functions/xpathfunctions.def"
#undef XPATH_FUNCTION
};

struct TQXPathFunctionLibraryException {
  XPathError code;
  std::int32_t function;
};

class XPathFunctionLibrary {
 public:
  using Call = const XPathFunctionCallNode&;
  using Context = const XPathContext&;

  XPathFunctionLibrary() = default;
  virtual ~XPathFunctionLibrary() = default;

  virtual double Last(Call call, Context context) const;
  virtual double Position(Call call, Context context) const;
  virtual double Count(Call call, Context context) const;
  virtual XPathNodeList Id(Call call, Context context) const;
  virtual std::u16string_view LocalName(Call call, Context context) const;
  virtual std::u16string_view NamespaceUri(Call call, Context context) const;
  virtual std::u16string_view Name(Call call, Context context) const;
  virtual TQString ToString(const XPathValue& value) const;
  virtual TQString String(Call call, Context context) const;
  virtual TQString Concat(Call call, Context context) const;
  virtual bool StartsWith(Call call, Context context) const;
  virtual bool Contains(Call call, Context context) const;
  virtual TQString SubstringBefore(Call call, Context context) const;
  virtual TQString SubstringAfter(Call call, Context context) const;
  virtual TQString Substring(Call call, Context context) const;
  virtual double StringLength(Call call, Context context) const;
  virtual TQString NormalizeSpace(Call call, Context context) const;
  virtual TQString Translate(Call call, Context context) const;
  virtual bool ToBoolean(const XPathValue& value) const;
  virtual bool Boolean(Call call, Context context) const;
  virtual bool Not(Call call, Context context) const;
  virtual bool True(Call call, Context context) const;
  virtual bool False(Call call, Context context) const;
  virtual bool Lang(Call call, Context context) const;
  virtual double ToNumber(const XPathValue& value) const;
  virtual double Number(Call call, Context context) const;
  virtual double Sum(Call call, Context context) const;
  virtual double Floor(Call call, Context context) const;
  virtual double Ceiling(Call call, Context context) const;
  virtual double Round(double number) const;
  virtual double RoundFunction(Call call, Context context) const;

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
  virtual XPathNodeList Document(Call call, Context context) const;
  virtual XPathNodeList Key(Call call, Context context) const;
  virtual TQString FormatNumber(Call call, Context context) const;
  virtual XPathNodeList Current(Call call, Context context) const;
  virtual TQString UnparsedEntityUri(Call call, Context context) const;
  virtual TQString GenerateId(Call call, Context context) const;
  virtual TQString SystemProperty(Call call, Context context) const;
  virtual bool ElementAvailable(Call call, Context context) const;
  virtual bool FunctionAvailable(Call call, Context context) const;

 private:
  XPathNode* Load(Context context, const TQString& uri, XPathNode* baseNode) const;
  // The text of an argument that must be a qualified name.
  TQString NameArgument(Call call, Context context, XPathFunction function) const;
};

struct XPathFunctionRow {
  enum Library : std::uint8_t { Core, Xslt, Never };
  template <class Result>
  using SlotOf = Result (XsltFunctionLibrary::*)(const XPathFunctionCallNode&,
                                                 const XPathContext&) const;
  // Texts of the tree come back as views.
  using Slot = std::variant<SlotOf<double>, SlotOf<bool>, SlotOf<TQString>,
                            SlotOf<std::u16string_view>, SlotOf<XPathNodeList>>;

  XPathFunction function;
  std::u16string_view name;
  Library library;
  Slot slot;
  std::int32_t fewest;
  std::int32_t most;  // -1: no limit

  XPathParseNode::Type ResultType() const;
};
const XPathFunctionRow* FindFunction(std::u16string_view name);  // null for an unknown name

// "uri:local" when the map binds the prefix of the name to a URI, else the name as it is.
TQString ExpandName(const PrefixMap& map, std::u16string_view name);

}  // namespace kelmora
