#include "nodes/xpathidentitynodes.h"

#include "nodes/xpathcontext.h"
#include "nodes/xpathpathnodes.h"
#include "values/xpathnodeset.h"

namespace kelmora {

void XPathIdentityNode::Prepare(XPathParseTree&) {
  effective = this;
  type = Type::NodeSet;
}

bool XPathIdentityNode::Evaluate(XPathContext& context) const {
  XPathNodeList all;
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    const auto& path =
        static_cast<const XPathIdentityPathNode&>(child == firstChild ? *child : *child->lastChild);
    XPathContext run(context);
    if (!path.Evaluate(run)) return false;
    const XPathNodeList& found = run.Input().nodes;
    all.insert(all.end(), found.begin(), found.end());
  }
  if (!HasOneChild()) RemoveDuplicates(all);
  context.Output().SetNodes(std::move(all));
  context.Swap();
  return true;
}

void XPathIdentityPathNode::Prepare(XPathParseTree&) {
  type = Type::NodeSet;
}

bool XPathIdentityPathNode::Evaluate(XPathContext& context) const {
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    if (child->rule == XPathRule::FieldDescendantStart ||
        child->rule == XPathRule::SelectorDescendantStart) {
      if (!TakeDescendants(context, *this)) return false;
      continue;
    }
    const XPathParseNode* step = child;
    if (child->rule == XPathRule::FieldSeparatedStep) step = child->firstChild;
    if (child->rule == XPathRule::SelectorSeparatedStep) step = child->lastChild;
    if (child->rule == XPathRule::FieldLastStep) step = child->firstChild;
    Axis axis = step->rule == XPathRule::FieldAttribute ? Axis::Attribute : Axis::Child;
    const XPathParseNode& test = *step->lastChild;
    if (test.rule == XPathRule::Token) continue;  // "."
    if (!static_cast<const XPathNodeTestNode&>(test).EvaluateOn(axis, context)) return false;
  }
  return true;
}

}  // namespace kelmora
