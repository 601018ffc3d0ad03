// The tests of NumberCounts are match patterns, and a match pattern asks of a node and its
// ancestors what the evaluated expression asks from above: the lists that xsl:number evaluates from
// are closed under taking parents. One case isn't, a pattern of several steps in front of a from on
// the same chain, and is declined.
#include <algorithm>
#include <functional>
#include <optional>

#include "base/parsedexpression.h"
#include "numbers/numbercounter.h"
#include "tqcore/tqtext.h"
#include "xpath/alternatives.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

// Siblings looked at one by one before an index of the parent's children is made.
constexpr int kWalkedSiblings = 24;
// A climb longer than this is remembered at every such step, so that numbering each node of a deep
// document stays linear.
constexpr int kRememberedStep = 64;

// Appends to an ascending list; false when the number is none of a stamped node in order.
bool AppendOrdered(std::vector<std::int32_t>& numbers, std::int32_t number) {
  if (number <= 0 || (!numbers.empty() && numbers.back() >= number)) return false;
  numbers.push_back(number);
  return true;
}

// False for numbers of nodes that are not stamped.
bool PutInOrder(std::vector<std::int32_t>& numbers) {
  if (!std::ranges::is_sorted(numbers)) std::ranges::sort(numbers);
  return numbers.empty() || numbers.front() > 0;
}

bool IsPlainName(std::u16string_view name) {
  const auto isLetter = [](char16_t unit) {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') || unit == u'_';
  };
  const auto isInner = [isLetter](char16_t unit) {
    return isLetter(unit) || (unit >= u'0' && unit <= u'9') || unit == u'-';
  };
  return !name.empty() && isLetter(name.front()) && std::ranges::all_of(name, isInner) &&
         !name.starts_with(u"NaN");
}

std::int32_t CountUpTo(const std::vector<std::int32_t>& numbers, std::int32_t number) {
  return static_cast<std::int32_t>(std::ranges::upper_bound(numbers, number) - numbers.begin());
}

}  // namespace

NumberCounts::NumberCounts() = default;
NumberCounts::~NumberCounts() = default;

std::size_t NumberCounts::NameHash::operator()(const Name& name) const {
  constexpr std::size_t kSpread = 0x9E3779B97F4A7C15u;
  return std::hash<std::u16string_view>()(name.localName) ^
         (std::hash<InternedURI>()(name.uri) * kSpread) ^ (name.isAttribute ? 1 : 0);
}

bool NumberCounts::Test::Matches(const XPathNode* node) const {
  if (isName) {
    const auto kind = name.isAttribute ? XPathNodeKind::Attribute : XPathNodeKind::Element;
    return node->kind == kind && node->namespaceURI == name.uri && node->parent != nullptr &&
           node->GetLocalName() == name.localName;
  }
  return std::ranges::any_of(
      alternatives, [node](const SimplePattern& pattern) { return pattern.Matches(node); });
}

NumberFormat& NumberCounts::FormatOf(const TQString& format, const NumberGrouping& grouping) {
  if (lastFormat_ != formats_.end() && lastFormat_->first.first == format &&
      lastFormat_->first.second == grouping) {
    return lastFormat_->second;
  }
  lastFormat_ = formats_.find({format, grouping});
  if (lastFormat_ != formats_.end()) return lastFormat_->second;
  if (formats_.size() == kKeptFormats) formats_.clear();  // they come from computed texts
  lastFormat_ = formats_
                    .emplace(std::piecewise_construct, std::forward_as_tuple(format, grouping),
                             std::forward_as_tuple(format.View(), grouping))
                    .first;
  return lastFormat_->second;
}

// ---------------------------------------------------------------------------------------- tests

NumberCounts::Test* NumberCounts::Find(const NumberQuery& query, const ExpressionText& text) {
  const bool isDefault = &text != &query.record.CountText && &text != &query.record.FromText;
  const void* owner = isDefault ? static_cast<const void*>(&query.record) : &text;
  auto& ofOwner = tests_[owner];
  auto found = ofOwner.find(text.Text.View());
  if (found != ofOwner.end()) return found->second.get();
  found = ofOwner.try_emplace(text.Text).first;
  if (isDefault) found->second = MakeNameTest(query, found->first);
  if (found->second == nullptr) found->second = MakeTest(query, text);
  return found->second.get();
}

// A document may have very many names, and each default count is one of them; so the usual ones are
// not parsed. Null for others: `text` must be a name or "@" and a name that no grammar can take for
// anything else, with a prefix that is bound. It lives as long as the test.
std::unique_ptr<NumberCounts::Test> NumberCounts::MakeNameTest(const NumberQuery& query,
                                                               std::u16string_view text) {
  const bool isAttribute = text.starts_with(u'@');
  if (isAttribute) text.remove_prefix(1);
  const std::u16string_view prefix = PrefixOf(text);
  const bool hasPrefix = prefix.size() < text.size() && text[prefix.size()] == u':';
  const std::u16string_view local = LocalPartOf(text);
  if (!IsPlainName(local) || (hasPrefix && !IsPlainName(prefix))) return nullptr;
  const InternedURI uri = hasPrefix ? query.element->AttributeScopeMap().Lookup(prefix) : nullptr;
  if (hasPrefix && uri == nullptr) return nullptr;
  auto test = std::make_unique<Test>();
  test->isName = true;
  test->name = {local, uri, isAttribute};
  return test;
}

std::unique_ptr<NumberCounts::Test> NumberCounts::MakeTest(const NumberQuery& query,
                                                           const ExpressionText& text) {
  auto test = std::make_unique<Test>();
  bool areSimple = true;
  ForEachAlternative(text.Text, [&](std::u16string_view pattern, bool /*isLast*/) {
    if (!areSimple) return;
    ExpressionText alternative;
    alternative.Text = pattern;
    // The plain way raises it for a text that doesn't parse, if that is ever reached.
    const XPathParseNodeRef& tree = query.processor.TryParse(alternative, kNoPattern).tree;
    std::optional<SimplePattern> simple;
    if (tree) simple = SimplePattern::Classify(tree, query.element->AttributeScopeMap());
    areSimple = simple.has_value();
    if (!areSimple) return;
    test->isSingleStep = test->isSingleStep && simple->IsSingleStep();
    test->alternatives.push_back(std::move(*simple));
  });
  if (!areSimple) return std::make_unique<Test>();
  const SimplePattern& first = test->alternatives.front();
  if (test->alternatives.size() == 1 && first.IsSingleStep() && !first.IsRoot()) {
    const SimpleStep& step = first.LastStep();
    test->isName = step.test.kind == StepTest::Name;
    test->name = {step.test.name, step.test.uri, step.isAttribute};
  }
  return test;
}

bool NumberCounts::FindTests(const NumberQuery& query, bool byChain, Test*& count, Test*& from) {
  count = Find(query, query.countText);
  from = query.record.From != nullptr ? Find(query, query.record.FromText) : nullptr;
  if (!count->IsSimple() || (from != nullptr && !from->IsSimple())) return false;
  return from == nullptr || !byChain || count->isSingleStep;
}

// -------------------------------------------------------------------------- single and multiple

// The innermost node at or above `node` that counts, within a from.
NumberCounts::Climb NumberCounts::FindTarget(Test& count, const Test* from, XPathNode* node,
                                             XPathNode*& target) {
  std::vector<const XPathNode*> passed;
  target = nullptr;
  int steps = 0;
  for (XPathNode* up = node; up != nullptr; up = up->parent, ++steps) {
    if (up->orderNumber <= 0) return Climb::Declined;
    if (up->parent != nullptr && up->parent->orderNumber >= up->orderNumber) {
      return Climb::Declined;
    }
    if (steps >= kRememberedStep) {
      const auto known = count.climbs.find(up);
      if (known != count.climbs.end()) {
        target = known->second;
        break;
      }
      if (steps % kRememberedStep == 0) passed.push_back(up);
    }
    if (from != nullptr && from->Matches(up)) break;
    // A node that has no parent to run the count from counts by itself.
    if (count.Matches(up) || (up == node && up->parent == nullptr)) {
      target = up;
      break;
    }
  }
  for (const XPathNode* at : passed) count.climbs.emplace(at, target);
  return target != nullptr ? Climb::Found : Climb::None;
}

bool NumberCounts::CountSingle(const NumberQuery& query, XPathNode* node,
                               std::vector<std::int32_t>& numbers) {
  Test* count;
  Test* from;
  if (!FindTests(query, true, count, from)) return false;
  XPathNode* target;
  switch (FindTarget(*count, from, node, target)) {
    case Climb::Declined:
      return false;
    case Climb::None:
      return true;
    case Climb::Found:
      break;
  }
  numbers.push_back(CountSiblings(*count, target));
  return true;
}

bool NumberCounts::CountMultiple(const NumberQuery& query, XPathNode* node,
                                 std::vector<std::int32_t>& numbers) {
  Test* count;
  Test* from;
  if (!FindTests(query, true, count, from)) return false;
  for (XPathNode* at = node; at != nullptr;) {
    XPathNode* target;
    switch (FindTarget(*count, from, at, target)) {
      case Climb::Declined:
        numbers.clear();
        return false;
      case Climb::None:
        return true;
      case Climb::Found:
        break;
    }
    // The root alone, when it is reached from below, doesn't count by having no parent.
    if (target->parent == nullptr && target != node && !count->Matches(target)) return true;
    numbers.push_back(CountSiblings(*count, target));
    at = target->parent;
  }
  return true;
}

// 1 and the preceding elements among the siblings that count.
std::int32_t NumberCounts::CountSiblings(Test& count, XPathNode* target) {
  if (target->parent == nullptr || target->kind == XPathNodeKind::Attribute) return 1;
  Last& last = LastOf(count, target->parent);
  const bool isKnown = last.count == &count && last.target->parent == target->parent;
  if (isKnown && last.target == target) return last.number;
  std::int32_t number = 1;
  int walked = 0;
  for (const XPathNode* sibling = target->previous; sibling != nullptr;
       sibling = sibling->previous) {
    if (isKnown && sibling == last.target) {
      number += last.number - (sibling->kind == XPathNodeKind::Element ? 0 : 1);
      break;
    }
    if (walked++ == kWalkedSiblings) {
      if (const OrderNumbers* numbers = ChildrenOf(count, target->parent)) {
        number = 1 + CountUpTo(*numbers, target->orderNumber - 1);
        break;
      }
    }
    if (sibling->kind == XPathNodeKind::Element && count.Matches(sibling)) ++number;
  }
  last = {&count, target, number};
  return number;
}

NumberCounts::Last& NumberCounts::LastOf(const Test& count, const XPathNode* parent) {
  constexpr std::size_t kSize = 512;  // a power of two
  if (lasts_.empty()) lasts_.resize(kSize);
  const std::size_t hash =
      std::hash<const void*>()(parent) / sizeof(XPathNode) + std::hash<const void*>()(&count) / 64;
  return lasts_[hash & (kSize - 1)];
}

// Order numbers of the element children that count; null when they are not in order.
const NumberCounts::OrderNumbers* NumberCounts::ChildrenOf(Test& count, XPathNode* parent) {
  static const OrderNumbers kNone;
  if (!count.isName) {
    const auto [place, isNew] = count.children.try_emplace(parent);
    Ordered& ordered = place->second;
    for (XPathNode* child = isNew ? parent->firstChild : nullptr; child != nullptr;
         child = child->next) {
      if (child->kind == XPathNodeKind::Element && count.Matches(child)) {
        ordered.isOrdered = AppendOrdered(ordered.numbers, child->orderNumber) && ordered.isOrdered;
      }
    }
    return ordered.isOrdered ? &ordered.numbers : nullptr;
  }
  const auto [place, isNew] = childNames_.try_emplace(parent);
  NameIndex& index = place->second;
  for (XPathNode* child = isNew ? parent->firstChild : nullptr; child != nullptr;
       child = child->next) {
    if (child->kind != XPathNodeKind::Element) continue;
    OrderNumbers& numbers = index.byName[{child->GetLocalName(), child->namespaceURI, false}];
    index.isOrdered = AppendOrdered(numbers, child->orderNumber) && index.isOrdered;
  }
  if (!index.isOrdered) return nullptr;
  const auto found = index.byName.find(count.name);
  return found != index.byName.end() ? &found->second : &kNone;
}

// ------------------------------------------------------------------------------------------ any

bool NumberCounts::CountAny(const NumberQuery& query, XPathNode* node,
                            std::vector<std::int32_t>& numbers) {
  Test* count;
  Test* from;
  if (!FindTests(query, false, count, from)) return false;
  const std::int32_t order = node->orderNumber;
  if (order <= 0) return false;
  std::int32_t limit = 0;
  if (from != nullptr) {
    const OrderNumbers* starts = NodesOf(*from, node);
    if (starts == nullptr) return false;
    const std::int32_t before = CountUpTo(*starts, order - 1);
    if (before > 0) limit = (*starts)[static_cast<std::size_t>(before) - 1];
  }
  const OrderNumbers* counted = NodesOf(*count, node);
  if (counted == nullptr) return false;
  const std::int32_t number = CountUpTo(*counted, order) - CountUpTo(*counted, limit);
  if (number > 0) numbers.push_back(number);
  return true;
}

// Order numbers of the nodes of the tree of `node` that pass; null when some are not stamped.
const NumberCounts::OrderNumbers* NumberCounts::NodesOf(Test& test, XPathNode* node) {
  static const OrderNumbers kNone;
  if (!test.isName) {
    const auto [place, isNew] = test.trees.try_emplace(node->documentNumber);
    Ordered& ordered = place->second;
    if (isNew) {
      for (XPathNode* at = node->Root(); at != nullptr; at = at->NextInDocument(true)) {
        if (test.Matches(at)) ordered.numbers.push_back(at->orderNumber);
      }
      ordered.isOrdered = PutInOrder(ordered.numbers);
    }
    return ordered.isOrdered ? &ordered.numbers : nullptr;
  }
  const auto [place, isNew] = treeNames_.try_emplace(node->documentNumber);
  NameIndex& index = place->second;
  if (isNew) {
    for (XPathNode* at = node->Root(); at != nullptr; at = at->NextInDocument(true)) {
      const bool isAttribute = at->kind == XPathNodeKind::Attribute;
      if (!isAttribute && at->kind != XPathNodeKind::Element) continue;
      // The XML declaration has attributes too, which no axis yields.
      if (isAttribute && at->parent->kind != XPathNodeKind::Element) continue;
      const Name name{at->GetLocalName(), at->namespaceURI, isAttribute};
      index.byName[name].push_back(at->orderNumber);
    }
    for (auto& [name, numbers] : index.byName) {
      index.isOrdered = PutInOrder(numbers) && index.isOrdered;
    }
  }
  if (!index.isOrdered) return nullptr;
  const auto found = index.byName.find(test.name);
  return found != index.byName.end() ? &found->second : &kNone;
}

}  // namespace kelmora
