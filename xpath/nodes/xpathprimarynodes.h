// The nodes of primaries: literals, numbers, variables, brackets and function calls.
#pragma once

#include <cstdint>

#include "functions/xpathfunctionlibrary.h"
#include "syntax/xpathparsenode.h"

namespace kelmora {

class XPathLiteralNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  void Prepare(XPathParseTree& tree) override;
  std::u16string_view Literal() const { return literal_; }

 private:
  std::u16string_view literal_;
};

class XPathNumberNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  void Prepare(XPathParseTree& tree) override;
  double Number() const { return number_; }

 private:
  double number_ = 0;
};

class XPathVariableNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  void Prepare(XPathParseTree& tree) override;

  // True, with the name, when it has no prefix.
  bool IsUnprefixed(std::u16string_view& name) const {
    name = name_.local;
    return !name_.hasPrefix;
  }

 private:
  const XPathValue* Find(const XPathContext& context) const;

  ParsedName name_;
};

// A primary. What stands in brackets is sorted.
class XPathPrimaryNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  void Prepare(XPathParseTree& tree) override;
};

class XPathFunctionCallNode final : public XPathParseNode {
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
  bool Fail(const XPathContext& context, XPathError code,
            XPathFunction function = XPathFunction::none) const;
  // Runs `call` with the library that is on; its exception becomes a false result.
  template <class Caller>
  bool Guard(const XPathContext& context, Caller call) const;
  // The row's slot has this result.
  template <class Result>
  Result Call(const XsltFunctionLibrary& library, const XPathContext& context) const;
  std::u16string_view CallForText(const XsltFunctionLibrary& library, const XPathContext& context,
                                  TQString& scratch) const;
  bool CallInto(const XPathContext& context, XPathValue& value) const;

  ParsedName name_;
  const XPathFunctionRow* row_ = nullptr;  // null: an unknown name
  const XPathParseNode* const* arguments_ = nullptr;
  int argumentCount_ = 0;
};

}  // namespace kelmora
