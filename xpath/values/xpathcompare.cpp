// The order of the rules is observable: a NaN number is unequal to nothing, but a node whose text
// is no number differs from every number; an empty set neither equals nor differs.
//
// Pairs of node sets are not tried one by one. Equality hashes the smaller set. Two non-empty sets
// differ unless all texts of both are the same. Of the relations only the extremes matter.

#include "values/xpathcompare.h"

#include <cmath>
#include <limits>
#include <unordered_set>

#include "tqcore/texthash.h"

namespace kelmora {
namespace {

using Relation = bool (*)(double, double);
bool IsLess(double a, double b) {
  return a < b;
}
bool IsLessOrEqual(double a, double b) {
  return a <= b;
}
bool IsGreater(double a, double b) {
  return a > b;
}
bool IsGreaterOrEqual(double a, double b) {
  return a >= b;
}

bool HasText(const XPathNodeList& nodes, std::u16string_view text) {
  TQString scratch;
  for (const XPathNodeRef& node : nodes) {
    if (node.node->StringValue(scratch) == text) return true;
  }
  return false;
}

// True when a node has a text other than `text`.
bool HasOtherText(const XPathNodeList& nodes, std::u16string_view text) {
  TQString scratch;
  for (const XPathNodeRef& node : nodes) {
    if (node.node->StringValue(scratch) != text) return true;
  }
  return false;
}

bool SetsMeet(const XPathNodeList& a, const XPathNodeList& b) {
  const XPathNodeList& few = a.size() <= b.size() ? a : b;
  const XPathNodeList& many = a.size() <= b.size() ? b : a;
  TQString scratch;
  constexpr std::size_t kFewEnoughToTry = 4;
  if (few.size() <= kFewEnoughToTry) {
    for (const XPathNodeRef& node : few) {
      if (HasText(many, node.node->StringValue(scratch))) return true;
    }
    return false;
  }
  std::unordered_set<TQString, TextHash, TextEqual> texts;
  for (const XPathNodeRef& node : few) {
    std::u16string_view text = node.node->StringValue(scratch);
    if (texts.find(text) == texts.end()) texts.emplace(text);
  }
  for (const XPathNodeRef& node : many) {
    if (texts.find(node.node->StringValue(scratch)) != texts.end()) return true;
  }
  return false;
}

bool SetsDiffer(const XPathNodeList& a, const XPathNodeList& b) {
  if (a.empty() || b.empty()) return false;
  TQString scratch;
  std::u16string_view text = a.front().node->StringValue(scratch);
  return HasOtherText(b, text) || HasOtherText(a, text);
}

struct Extremes {
  bool any = false;  // a node whose text is a number
  double least = 0;
  double greatest = 0;
};

Extremes ExtremesOf(const XPathNodeList& nodes) {
  Extremes result;
  for (const XPathNodeRef& node : nodes) {
    double number = NodeNumber(*node.node);
    if (std::isnan(number)) continue;
    if (!result.any || number < result.least) result.least = number;
    if (!result.any || number > result.greatest) result.greatest = number;
    result.any = true;
  }
  return result;
}

// `upwards`: the relation asks whether the left side is the lower one.
bool Relate(const XPathValue& a, const XPathValue& b, Relation relation, bool upwards) {
  bool aIsSet = a.kind == XPathValue::NodeSet;
  bool bIsSet = b.kind == XPathValue::NodeSet;
  if (aIsSet && bIsSet) {
    Extremes left = ExtremesOf(a.nodes);
    Extremes right = ExtremesOf(b.nodes);
    if (!left.any || !right.any) return false;
    return upwards ? relation(left.least, right.greatest) : relation(left.greatest, right.least);
  }
  if (aIsSet || bIsSet) {
    double other = ToNumber(aIsSet ? b : a);
    for (const XPathNodeRef& node : aIsSet ? a.nodes : b.nodes) {
      double number = NodeNumber(*node.node);
      if (aIsSet ? relation(number, other) : relation(other, number)) return true;
    }
    return false;
  }
  return relation(ToNumber(a), ToNumber(b));
}

}  // namespace

double NodeNumber(const XPathNode& node) {
  TQString scratch;
  return TextToNumber(node.StringValue(scratch));
}

bool EqualNumbers(double a, double b) {
  return a == b;
}
bool NotEqualNumbers(double a, double b) {
  return !std::isnan(a) && !std::isnan(b) && a != b;
}

bool Equal(const XPathValue& a, const XPathValue& b) {
  using V = XPathValue;
  if (a.kind == V::NodeSet && b.kind == V::NodeSet) return SetsMeet(a.nodes, b.nodes);
  if (a.kind == V::Number && b.kind == V::Number) return EqualNumbers(a.number, b.number);
  if (a.kind == V::String && b.kind == V::String) return a.string == b.string;
  if (a.kind == V::Boolean && b.kind == V::Boolean) return a.boolean == b.boolean;
  if (a.kind == V::NodeSet || b.kind == V::NodeSet) {
    const XPathValue& set = a.kind == V::NodeSet ? a : b;
    const XPathValue& other = a.kind == V::NodeSet ? b : a;
    if (other.kind == V::Boolean) return ToBoolean(set) == other.boolean;
    if (other.kind == V::String) return HasText(set.nodes, other.string);
    for (const XPathNodeRef& node : set.nodes) {
      if (NodeNumber(*node.node) == other.number) return true;
    }
    return false;
  }
  if (a.kind == V::Boolean || b.kind == V::Boolean) return ToBoolean(a) == ToBoolean(b);
  return EqualNumbers(ToNumber(a), ToNumber(b));  // a number and a string
}

bool NotEqual(const XPathValue& a, const XPathValue& b) {
  using V = XPathValue;
  if (a.kind == V::NodeSet && b.kind == V::NodeSet) return SetsDiffer(a.nodes, b.nodes);
  if (a.kind == V::Number && b.kind == V::Number) return NotEqualNumbers(a.number, b.number);
  if (a.kind == V::String && b.kind == V::String) return !(a.string == b.string);
  if (a.kind == V::Boolean && b.kind == V::Boolean) return a.boolean != b.boolean;
  if (a.kind == V::NodeSet || b.kind == V::NodeSet) {
    const XPathValue& set = a.kind == V::NodeSet ? a : b;
    const XPathValue& other = a.kind == V::NodeSet ? b : a;
    if (other.kind == V::Boolean) return ToBoolean(set) != other.boolean;
    if (other.kind == V::String) return HasOtherText(set.nodes, other.string);
    if (std::isnan(other.number)) return false;
    for (const XPathNodeRef& node : set.nodes) {
      if (!(NodeNumber(*node.node) == other.number)) return true;  // a NaN differs too
    }
    return false;
  }
  if (a.kind == V::Boolean || b.kind == V::Boolean) return ToBoolean(a) != ToBoolean(b);
  double left = ToNumber(a);
  double right = ToNumber(b);
  if (std::isnan(left) && std::isnan(right)) return false;
  return !(left == right);
}

bool Less(const XPathValue& a, const XPathValue& b) {
  return Relate(a, b, IsLess, true);
}
bool LessOrEqual(const XPathValue& a, const XPathValue& b) {
  return Relate(a, b, IsLessOrEqual, true);
}
bool Greater(const XPathValue& a, const XPathValue& b) {
  return Relate(a, b, IsGreater, false);
}
bool GreaterOrEqual(const XPathValue& a, const XPathValue& b) {
  return Relate(a, b, IsGreaterOrEqual, false);
}

double Modulo(double left, double right) {
  double divisor = std::trunc(right);
  if (!std::isfinite(left) || !std::isfinite(right) || divisor == 0) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  return std::fmod(std::trunc(left), divisor) + 0.0;  // an integer has no negative zero
}

}  // namespace kelmora
