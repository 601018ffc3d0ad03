// CountTests: the counts and froms of xsl:number as tests of a single node, where they can be that.
// Each is made once a run and lives as long.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/simplepattern.h"

namespace kelmora {

struct ExpressionText;
struct NumberQuery;

// Of an element or attribute.
struct NodeName {
  std::u16string_view localName;
  InternedURI uri = nullptr;
  bool isAttribute = false;

  static NodeName Of(const XPathNode& node) {
    return {node.GetLocalName(), node.namespaceURI, node.kind == XPathNodeKind::Attribute};
  }
  friend bool operator==(const NodeName&, const NodeName&) = default;
};
struct NodeNameHash {
  std::size_t operator()(const NodeName& name) const;
};

struct CountTest {
  bool isName = false;  // the test of one name
  NodeName name{};
  std::vector<SimplePattern> alternatives;  // of a parsed text
  bool isSingleStep = true;                 // all of them

  bool IsSimple() const { return isName || !alternatives.empty(); }  // else it serves nothing
  bool Matches(XPathNode* node) const;
};

class CountTests {
 public:
  // `text` is the count or from of the query's record, or its default count for a node.
  const CountTest& Find(const NumberQuery& query, const ExpressionText& text);

 private:
  using ByText = std::unordered_map<TQString, std::unique_ptr<CountTest>, TextHash, TextEqual>;

  // By the attribute's text object or, for a default count, by the instruction's record.
  std::unordered_map<const void*, ByText> tests_;
};

}  // namespace kelmora
