// StylesheetIndex: what is known about the nodes of a stylesheet, beside its tree: an element code
// and an ElementRecord for each element. The checks fill it; everything that runs reads it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/nodemap.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class StylesheetIndex {
 public:
  // Every node of code 1 has a LiteralRecord.
  struct Entry {
    XsltElement code = XsltElement::None;   // not checked
    const ElementRecord* record = nullptr;  // lives until Clear; null for a code without records
  };

  // The entry, else the code computed from the node and no record. Constant time.
  Entry Find(const XPathNode* node) const {
    if (node->kind != XPathNodeKind::Element) return {XsltElement::Literal, &kPlainLiteral};
    const Entry* entry = entries_.Find(node);
    return entry != nullptr && entry->code != XsltElement::None ? *entry : Unchecked(node);
  }
  XsltElement Code(const XPathNode* node) const { return Find(node).code; }
  const ElementRecord* Record(const XPathNode* node) const { return Find(node).record; }
  bool Holds(const XPathNode* node) const { return entries_.Find(node) != nullptr; }

  // Takes the record; null gives a literal element the plain one, any other none.
  void Enter(const XPathNode* node, XsltElement code, std::unique_ptr<ElementRecord> record);
  // For a subtree that is about to be deleted.
  void Forget(XPathNode* top);
  void Clear();  // records die here

 private:
  static Entry Unchecked(const XPathNode* node);

  static const LiteralRecord kPlainLiteral;  // of a node that has no such attributes

  NodeMap<Entry> entries_;
  std::vector<std::unique_ptr<ElementRecord>> records_;
};

}  // namespace kelmora
