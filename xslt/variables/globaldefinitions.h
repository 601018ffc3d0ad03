// GlobalDefinitions: the top-level variables and parameters of each xsl:stylesheet element by name,
// for references to a global that the walk of the stylesheet has not reached.
#pragma once

#include <string_view>
#include <unordered_map>

#include "xmltree/xpathnode.h"

namespace kelmora {

class ElementDispatcher;

class GlobalDefinitions {
 public:
  // The first xsl:variable or xsl:param child of that expanded name; null without one. The children
  // of an element are entered at the first question about it.
  XPathNode* Find(const XPathNode* stylesheetElement, std::u16string_view name,
                  const ElementDispatcher& dispatcher);

 private:
  using ByName = std::unordered_map<std::u16string_view, XPathNode*>;

  std::unordered_map<const XPathNode*, ByName> elements_;
};

}  // namespace kelmora
