// ElementDispatcher: what the system has in place of a stylesheet compiler. Validate walks a tree
// once; at each node it computes the element code, checks the node against the tables of
// elementrules.cpp, makes an ElementRecord for an element of XSLT, and enters both in the index of
// the processor. Expressions and attribute value templates stay text.
//
// Each check raises TQXSLTError at once, so the first fault in document order ends the run.
//
// This room holds what a stylesheet must be before it runs: the rules of its elements as tables.
#pragma once

#include <cstdint>

#include "names/xsltnames.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class XSLTProcessorBase;

class ElementDispatcher {
 public:
  explicit ElementDispatcher(XSLTProcessorBase* processor) : processor_(processor) {}

  // Linear in the tree, without recursion. `parentCode` is the code that `top`'s parent counts as.
  void Validate(XsltElement parentCode, XPathNode* top);

 private:
  XsltElement CheckNode(XPathNode* node, XsltElement parentCode);

  XSLTProcessorBase* processor_;
};

}  // namespace kelmora
