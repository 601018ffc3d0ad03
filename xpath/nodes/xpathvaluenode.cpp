#include "nodes/xpathvaluenode.h"

#include "nodes/xpathcontext.h"

namespace kelmora {

bool XPathValueNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  operand.own = copy.TakeInput();
  operand.value = &operand.own;
  return true;
}

bool XPathValueNode::EvaluateBoolean(const XPathContext& context, bool& value) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  value = ToBoolean(copy.Input());
  return true;
}

bool XPathValueNode::EvaluateNumber(const XPathContext& context, double& value) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  value = ToNumber(copy.Input());
  return true;
}

bool XPathValueNode::EvaluateText(const XPathContext& context, TQString& scratch,
                                  std::u16string_view& result) const {
  XPathContext copy(context);
  if (!Evaluate(copy)) return false;
  // The value dies with the copy: only text of a document may be handed out as it stands.
  result = TextOf(copy.Input(), scratch);
  if (copy.Input().kind == XPathValue::String) {
    scratch = copy.TakeInput().string;
    result = scratch;
  }
  return true;
}

bool XPathValueNode::CanVisit(const XPathContext&) const {
  return false;
}
bool XPathValueNode::VisitNodes(const XPathContext&, NodeVisitor&) const {
  return false;
}
bool XPathValueNode::CountNodes(const XPathContext&, std::size_t&) const {
  return false;
}

bool OperandScalar(const XPathParseNode& node, const XPathContext& context, XPathValue& value) {
  using Type = XPathParseNode::Type;
  switch (node.type) {
    case Type::Boolean: {
      bool boolean = false;
      if (!OperandBoolean(node, context, boolean)) return false;
      value.SetBoolean(boolean);
      return true;
    }
    case Type::Number: {
      double number = 0;
      if (!OperandNumber(node, context, number)) return false;
      value.SetNumber(number);
      return true;
    }
    case Type::String: {
      TQString scratch;
      std::u16string_view text;
      if (!OperandText(node, context, scratch, text)) return false;
      bool isScratch = text.data() == scratch.c_str();
      value.SetString(isScratch ? std::move(scratch) : TQString(text));
      return true;
    }
    case Type::NodeSet:
    case Type::Unknown:
      break;
  }
  return false;
}

bool XPathScalarNode::Evaluate(XPathContext& context) const {
  if (!OperandScalar(*this, context, context.Output())) return false;
  context.Swap();
  return true;
}

bool XPathScalarNode::EvaluateOperand(const XPathContext& context, XPathOperand& operand) const {
  return OperandScalar(*this, context, operand.own);
}

}  // namespace kelmora
