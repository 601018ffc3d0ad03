// ElementDispatcher: what the system has in place of a stylesheet compiler. Validate walks a tree
// once; at each node it stores the element code, checks the node against the tables of
// elementrules.cpp, and makes an ElementRecord for an element of XSLT. Expressions and attribute
// value templates stay text.
//
// Each check raises TQXSLTError at once, so the first fault in document order ends the run.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/nodemap.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class XSLTProcessorBase;

class ElementDispatcher {
 public:
  // What is known about a node of the stylesheet. Every node of code 1 has a LiteralRecord.
  struct Entry {
    std::int32_t code = 0;                  // 0: not validated
    const ElementRecord* record = nullptr;  // lives until Clear; null for a code without records
  };

  explicit ElementDispatcher(XSLTProcessorBase* processor) : processor_(processor) {}

  // Linear in the tree, without recursion. `parentCode` is the code that `top`'s parent counts as.
  void Validate(std::int32_t parentCode, XPathNode* top);
  void Clear();  // records die here
  bool IsValidated(const XPathNode* root) const { return entries_.Find(root) != nullptr; }
  // For a subtree that is about to be deleted.
  void Forget(XPathNode* top);

  // The stored entry, else the code computed from the node and no record. Constant time.
  Entry Find(const XPathNode* node) const {
    if (node->kind != XPathNodeKind::Element) return {ElementCode::Literal, &kPlainLiteral};
    const Entry* entry = entries_.Find(node);
    return entry != nullptr && entry->code != 0 ? *entry : Unchecked(node);
  }
  std::int32_t Code(const XPathNode* node) const { return Find(node).code; }
  const ElementRecord* Record(const XPathNode* node) const { return Find(node).record; }

 private:
  static Entry Unchecked(const XPathNode* node);
  std::int32_t CheckNode(XPathNode* node, std::int32_t parentCode);

  static const LiteralRecord kPlainLiteral;  // of a node that has no such attributes

  XSLTProcessorBase* processor_;
  NodeMap<Entry> entries_;
  std::vector<std::unique_ptr<ElementRecord>> records_;
};

}  // namespace kelmora
