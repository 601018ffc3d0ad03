// XPathValue: a node set, boolean, number or string; and XPathNodeRef, one entry of a node set.
// Values own their text and their vector, never the nodes.
#pragma once

#include <cstdint>
#include <iterator>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

struct XPathNodeRef {
  // The node's kind as XPath sees it.
  enum Kind : std::int32_t {
    Root = 0,
    Element = 1,
    Text = 2,  // CDATA sections too
    Attribute = 3,
    Namespace = 4,
    PI = 5,
    Comment = 6,
    Declaration = 7,  // XML declaration, DOCTYPE and what is in it; no axis yields them
    NoNode = 9,
  };

  XPathNode* node = nullptr;
  std::int32_t kind = NoNode;
  std::int32_t position = 0;  // proximity position in the step or predicate that made it, from 1

  XPathNodeRef() = default;
  explicit XPathNodeRef(XPathNode* refersTo, std::int32_t at = 0)
      : node(refersTo), kind(KindOf(refersTo)), position(at) {}
  XPathNodeRef Parent() const { return XPathNodeRef(node ? node->parent : nullptr); }
  static Kind KindOf(const XPathNode* node) {
    if (node == nullptr) return NoNode;
    constexpr Kind kKinds[] = {Root, Element, Text, Attribute, Namespace, PI, Text, Comment};
    std::size_t kind = static_cast<std::size_t>(node->kind);
    return kind < std::size(kKinds) ? kKinds[kind] : Declaration;
  }
};

using XPathNodeList = std::vector<XPathNodeRef>;

struct XPathValue {
  enum Kind : std::int32_t { NodeSet = 0, Boolean = 1, Number = 2, String = 3 };

  Kind kind = NodeSet;
  XPathNodeList nodes;
  bool boolean = false;
  double number = 0;
  TQString string;

  void SetBoolean(bool value);
  void SetNumber(double value);
  void SetString(TQString value);
  void SetNodes(XPathNodeList value);
  void Clear();  // becomes an empty node set and keeps the vector's memory
  // A node set of exactly one root node without a source: a result tree fragment.
  bool IsFragment() const;
};

// Conversions. A node set converts by its first node in document order, wherever that stands in
// the list.
bool ToBoolean(const XPathValue& value);
double ToNumber(const XPathValue& value);
double TextToNumber(std::u16string_view text);  // NaN when it is no number as a whole
TQString ToString(const XPathValue& value);
// ToString without a copy where the text exists already: the view points into the value, into a
// document, or into `scratch`.
std::u16string_view TextOf(const XPathValue& value, TQString& scratch);
bool NumberToBoolean(double number);   // false for zero and NaN
TQString NumberToText(double number);  // no exponents; see the rule in the source

// Sorts by document order unless the list is in order, then numbers positions from 1. Nodes that
// compare equal (unstamped ones) keep their order.
void SortAndNumber(XPathNodeList& list);

}  // namespace kelmora
