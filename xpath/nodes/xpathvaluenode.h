// XPathValueNode: a node of a parse tree that has a value. This room holds such nodes and what an
// evaluation of them works with: the evaluation and its contexts, operators, paths with their
// steps and predicates, primaries, and the expression as its users see it.
//
// Evaluate is the definition: the value in the input of the context becomes the value of the node.
// Most values are wanted as an operand, seen from a context that stays as it is, and often as a
// truth value, a number or a text; for these there are forms of their own. Each form must agree
// with Evaluate in a private copy of the context, followed by the conversion, and this class makes
// each in just that way; nodes override those that they can answer without making the value.
#pragma once

#include <cstddef>
#include <string_view>

#include "syntax/xpathparsenode.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathContext;

// The value of an operand: its own or one that stands elsewhere until the evaluation ends.
struct XPathOperand {
  XPathOperand() = default;
  XPathOperand(const XPathOperand&) = delete;
  XPathOperand& operator=(const XPathOperand&) = delete;

  const XPathValue* value = &own;
  XPathValue own;
};

// Is shown nodes, one after the other; false asks for no more.
class NodeVisitor {
 public:
  virtual bool Visit(XPathNode& node) = 0;

 protected:
  ~NodeVisitor() = default;
};

class XPathValueNode : public XPathParseNode {
 public:
  // False: an error stands in the evaluation.
  virtual bool Evaluate(XPathContext& context) const = 0;

  virtual bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const;
  virtual bool EvaluateBoolean(const XPathContext& context, bool& value) const;
  virtual bool EvaluateNumber(const XPathContext& context, double& value) const;
  // `result` may point into `scratch`, into the tree of the expression or into a document.
  virtual bool EvaluateText(const XPathContext& context, TQString& scratch,
                            std::u16string_view& result) const;

  // True when VisitNodes can serve: the value is a node set that needs not be made, and making it
  // could not fail.
  virtual bool CanVisit(const XPathContext& context) const;
  // Shows the nodes of the value without making it, in any order and some perhaps twice. False,
  // and nothing was shown, when this node cannot do that here.
  virtual bool VisitNodes(const XPathContext& context, NodeVisitor& visitor) const;
  // The number of nodes in the value, under the same conditions.
  virtual bool CountNodes(const XPathContext& context, std::size_t& count) const;

 protected:
  XPathValueNode() = default;
  ~XPathValueNode() = default;
};

// A node whose type is known and no node set. It overrides the form of its own type, and its value
// is made from that.
class XPathScalarNode : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const override;

 protected:
  ~XPathScalarNode() = default;
};

// A child as part of an evaluation, by its effective node.
inline bool Run(const XPathParseNode& node, XPathContext& context) {
  return node.effective->Evaluate(context);
}
inline bool OperandValue(const XPathParseNode& node, const XPathContext& context,
                         XPathOperand& operand) {
  return node.effective->EvaluateOperand(context, operand);
}
inline bool OperandBoolean(const XPathParseNode& node, const XPathContext& context, bool& value) {
  return node.effective->EvaluateBoolean(context, value);
}
inline bool OperandNumber(const XPathParseNode& node, const XPathContext& context, double& value) {
  return node.effective->EvaluateNumber(context, value);
}
inline bool OperandText(const XPathParseNode& node, const XPathContext& context, TQString& scratch,
                        std::u16string_view& text) {
  return node.effective->EvaluateText(context, scratch, text);
}
// A value that is known to be no node set.
bool OperandScalar(const XPathParseNode& node, const XPathContext& context, XPathValue& value);

}  // namespace kelmora
