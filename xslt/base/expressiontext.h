// ExpressionText: an expression of the stylesheet with the attribute that holds it. It remembers
// its parsed form, so that running it again neither hashes nor compares the text.
//
// This room holds what all others rest on: errors, expression texts, maps by node and by name,
// lists of names, the pool of small objects.
#pragma once

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

struct ParsedExpression;

struct ExpressionText {
  ExpressionText() = default;
  explicit ExpressionText(const char16_t* text) : Text(text) {}
  explicit ExpressionText(XPathNode* attribute) : Text(attribute->GetValue()), Holder(attribute) {}

  TQString Text;
  XPathNode* Holder =
      nullptr;  // the node of the error for a text that is no expression; may be null
  mutable const ParsedExpression* Parsed = nullptr;  // of the processor's ExpressionCache
};

}  // namespace kelmora
