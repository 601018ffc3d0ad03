// The nodes of primaries: literals, numbers, variables and brackets.
#pragma once

#include <cstdint>

#include "nodes/xpathvaluenode.h"

namespace kelmora {

class XPathLiteralNode final : public XPathScalarNode {
 public:
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  void Prepare(XPathParseTree& tree) override;
  std::u16string_view Literal() const { return literal_; }

 private:
  std::u16string_view literal_;
};

class XPathNumberNode final : public XPathScalarNode {
 public:
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  void Prepare(XPathParseTree& tree) override;
  double Number() const { return number_; }

 private:
  double number_ = 0;
};

class XPathVariableNode final : public XPathValueNode {
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
class XPathPrimaryNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateBoolean(const XPathContext& context, bool& value) const override;
  bool EvaluateNumber(const XPathContext& context, double& value) const override;
  bool EvaluateText(const XPathContext& context, TQString& scratch,
                    std::u16string_view& result) const override;
  void Prepare(XPathParseTree& tree) override;
};

}  // namespace kelmora
