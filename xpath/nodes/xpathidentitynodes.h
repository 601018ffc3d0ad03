// The nodes of the restricted paths in schema identity constraints.
#pragma once

#include "nodes/xpathvaluenode.h"

namespace kelmora {

// A union of paths. Each path starts from the same input; a node counts once.
class XPathIdentityNode final : public XPathValueNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// Steps on the child axis, a last one perhaps on the attribute axis, perhaps ".//" in front.
class XPathIdentityPathNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const;
  void Prepare(XPathParseTree& tree) override;
};

}  // namespace kelmora
