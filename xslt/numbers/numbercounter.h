// Counting for xsl:number, two ways.
//
// NumberCounter is the plain one, and the meaning: count and from are run as expressions from lists
// of nodes, and the results are intersected with the nodes of interest.
//
// NumberCounts is the fast one, for counts and froms that can be tested on a single node (the usual
// ones: a name, "*", "a | b", "chapter/title"). It keeps what it counted: for each parent with many
// children and each tree the order numbers of the nodes that count, so that a number is a binary
// search. It declines whatever it can't answer exactly, such as trees without order numbers.
//
// Numbers come from the innermost to the outermost.
//
// This room holds xsl:number: counting and formatting.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/expressiontext.h"
#include "names/elementrecord.h"
#include "numbers/numberformat.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/simplepattern.h"
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

class NumberCounts {
 public:
  NumberCounts();
  ~NumberCounts();

  // False when it declines.
  bool CountSingle(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);
  bool CountMultiple(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);
  bool CountAny(const NumberQuery& query, XPathNode* node, std::vector<std::int32_t>& numbers);

  // Formats are kept, since a stylesheet numbers many nodes by few of them. Lives until the next
  // call.
  NumberFormat& FormatOf(const TQString& format, const NumberGrouping& grouping);

 private:
  using OrderNumbers = std::vector<std::int32_t>;  // ascending; empty also when there is no order
  struct Name {
    std::u16string_view localName;
    InternedURI uri;
    bool isAttribute;
    friend bool operator==(const Name&, const Name&) = default;
  };
  struct NameHash {
    std::size_t operator()(const Name& name) const;
  };
  // Order numbers by name: of the element children of one parent, or of a whole tree.
  struct NameIndex {
    bool isOrdered = true;
    std::unordered_map<Name, OrderNumbers, NameHash> byName;
  };
  struct Ordered {
    bool isOrdered = true;
    OrderNumbers numbers;
  };
  // A count or from that can be tested on one node.
  struct Test {
    bool isName = false;  // the test of one name
    Name name{};
    std::vector<SimplePattern> alternatives;  // of a parsed text; empty: it can't be tested so
    bool isSingleStep = true;                 // all of them
    std::unordered_map<const XPathNode*, Ordered> children;   // by parent
    std::unordered_map<std::int32_t, Ordered> trees;          // by document number
    std::unordered_map<const XPathNode*, XPathNode*> climbs;  // node to the target above it

    bool IsSimple() const { return isName || !alternatives.empty(); }
    bool Matches(const XPathNode* node) const;
  };
  enum class Climb { Found, None, Declined };

  Test* Find(const NumberQuery& query, const ExpressionText& text);
  std::unique_ptr<Test> MakeNameTest(const NumberQuery& query, std::u16string_view text);
  std::unique_ptr<Test> MakeTest(const NumberQuery& query, const ExpressionText& text);
  // The two tests of a query; false when one can't be used for the level.
  bool FindTests(const NumberQuery& query, bool byChain, Test*& count, Test*& from);
  Climb FindTarget(Test& count, const Test* from, XPathNode* node, XPathNode*& target);
  std::int32_t CountSiblings(Test& count, XPathNode* target);
  const OrderNumbers* ChildrenOf(Test& count, XPathNode* parent);
  const OrderNumbers* NodesOf(Test& test, XPathNode* node);

  // By the attribute's text object or, for a default count, by the instruction's record and the
  // text.
  std::unordered_map<const void*,
                     std::unordered_map<TQString, std::unique_ptr<Test>, TextHash, TextEqual>>
      tests_;
  std::unordered_map<const XPathNode*, NameIndex> childNames_;  // by parent
  std::unordered_map<std::int32_t, NameIndex> treeNames_;       // by document number

  // The number that a target got last, so that the next sibling needs to look no further back.
  struct Last {
    const Test* count = nullptr;
    const XPathNode* target = nullptr;
    std::int32_t number = 0;
  };
  Last& LastOf(const Test& count, const XPathNode* parent);
  std::vector<Last> lasts_;  // by test and parent; a later pair takes the place of an earlier one

  static constexpr std::size_t kKeptFormats = 64;
  using FormatMap = std::map<std::pair<TQString, NumberGrouping>, NumberFormat>;
  FormatMap formats_;
  FormatMap::iterator lastFormat_ = formats_.end();
};

}  // namespace kelmora
