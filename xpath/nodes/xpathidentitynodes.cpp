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
    const XPathParseNode& path = child == firstChild ? *child : *child->lastChild;
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
  effective = this;
  type = Type::NodeSet;
}

bool XPathIdentityPathNode::Evaluate(XPathContext& context) const {
  for (const XPathParseNode* child = firstChild; child != nullptr; child = child->nextSibling) {
    if (child->rule == XPathRule::FieldDescendantStart ||
        child->rule == XPathRule::SelectorDescendantStart) {
      if (!RunDescendantStep(context, *this)) return false;
      continue;
    }
    context.axis = Axis::Child;
    const XPathParseNode* step = child;
    if (child->rule == XPathRule::FieldSeparatedStep) step = child->firstChild;
    if (child->rule == XPathRule::SelectorSeparatedStep) step = child->lastChild;
    if (child->rule == XPathRule::FieldLastStep) step = child->firstChild;
    if (step->rule == XPathRule::FieldAttribute) context.axis = Axis::Attribute;
    const XPathParseNode& test = *step->lastChild;
    if (test.rule == XPathRule::Token) continue;  // "."
    if (!test.Evaluate(context)) return false;
  }
  return true;
}

}  // namespace kelmora
