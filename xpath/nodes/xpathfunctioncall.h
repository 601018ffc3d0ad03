// XPathFunctionCallNode: a function call, and what it asks of the functions: a row for each, which
// the function library implements.
#pragma once

#include <cstdint>
#include <string_view>
#include <variant>

#include "nodes/xpathvaluenode.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"
#include "xpath/xpathfunction.h"

namespace kelmora {

class XPathFunctionCallNode;

// The failure of a function or of one of its arguments.
struct TQXPathFunctionLibraryException {
  XPathError code;
  std::int32_t function;
};

// A function gets its call and the context, and returns its value or throws the exception above.
struct XPathFunctionRow {
  enum class Called : std::uint8_t { Called, Uncalled };
  enum class Fails : std::uint8_t { Never, UnlessNodeSet, Perhaps };
  enum class Reads : std::uint8_t { Node, Position };
  template <class Result>
  using RunnerOf = Result (*)(const XPathFunctionCallNode& call, const XPathContext& context);
  using Runner = std::variant<RunnerOf<double>, RunnerOf<bool>, RunnerOf<TQString>,
                              RunnerOf<std::u16string_view>, RunnerOf<XPathNodeList>>;

  XPathFunction function;
  std::u16string_view name;
  Called called;
  bool isXslt;  // found only where the functions of XSLT are on
  Runner run;
  std::int32_t fewest;
  std::int32_t most;  // -1: no limit
  Fails fails;
  Reads reads;

  XPathParseNode::Type ResultType() const;
};
// Null for an unknown name. The function library implements it.
const XPathFunctionRow* FindFunction(std::u16string_view name);

class XPathFunctionCallNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  void Prepare(XPathParseTree& tree) override;

  int ArgumentCount() const { return argumentCount_; }
  const XPathParseNode& Argument(int index) const { return *arguments_[index]; }
  // True for a call without prefix, with a number of arguments that the function takes.
  bool IsPlainCallOf(XPathFunction function) const;

 private:
  // False, with the error noted, when the call finds no function or its arguments are too many or
  // too few.
  bool Resolve(const XPathContext& context) const;
  bool CannotFail() const;  // of a call with the right number of arguments
  bool Fail(const XPathContext& context, XPathError code,
            XPathFunction function = XPathFunction::none) const;
  // Runs `call` unless Resolve fails; an exception of the function becomes a false result.
  template <class Caller>
  bool Guard(const XPathContext& context, Caller call) const;
  // The function of the row, which has this result.
  template <class Result>
  Result Call(const XPathContext& context) const;
  std::u16string_view CallForText(const XPathContext& context, TQString& scratch) const;
  bool CallInto(const XPathContext& context, XPathValue& value) const;

  ParsedName name_;
  const XPathFunctionRow* row_ = nullptr;  // null: an unknown name
  const XPathParseNode* const* arguments_ = nullptr;
  int argumentCount_ = 0;
};

}  // namespace kelmora
