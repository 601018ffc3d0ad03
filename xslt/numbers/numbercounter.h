// NumberCounter: counting for xsl:number as it is defined. count and from are run as expressions
// from lists of nodes, and the results are intersected with the nodes of interest. NumberCounts
// gives the same numbers faster where it can.
//
// Numbers come from the innermost to the outermost.
//
// This room holds xsl:number: counting and formatting.
#pragma once

#include <cstdint>
#include <vector>

#include "base/expressiontext.h"
#include "names/elementrecord.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XSLTProcessorBase;

// What one xsl:number counts with.
struct NumberQuery {
  XSLTProcessorBase& processor;
  XPathNode* element;               // xsl:number: the prefixes of the expressions
  const NumberRecord& record;       // count and from
  const ExpressionText& countText;  // that of the record, or the default for the node
};

class NumberCounter {
 public:
  explicit NumberCounter(const NumberQuery& query) : query_(query) {}

  // Raise what the evaluation raises, and code 29 for what is no node set.
  std::vector<std::int32_t> CountSingle(XPathNode* node);
  std::vector<std::int32_t> CountMultiple(XPathNode* node);
  std::vector<std::int32_t> CountAny(XPathNode* node);

 private:
  struct Chain;
  Chain FindChain(XPathNode* node);
  std::int32_t CountSiblings(XPathNode* target, const Chain& chain);
  XPathNodeList Run(const ExpressionText& text, XPathNode* attribute, const XPathNodeList& list,
                    std::int32_t position);

  const NumberQuery& query_;
  ExpressionText precedingSiblings_{u"preceding-sibling::*"};
  ExpressionText visited_{u"preceding::node() | ancestor-or-self::node()"};
};

}  // namespace kelmora
