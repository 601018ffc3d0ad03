#include "numbers/counttests.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/parsedexpression.h"
#include "numbers/numbercounter.h"
#include "tqcore/tqtext.h"
#include "xpath/alternatives.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

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

// A document may have very many names, and each default count is one of them; so the usual ones are
// not parsed. Null for others: `text` must be a name or "@" and a name that no grammar can take for
// anything else, with a prefix that is bound. It lives as long as the test.
std::unique_ptr<CountTest> MakeNameTest(const NumberQuery& query, std::u16string_view text) {
  const bool isAttribute = text.starts_with(u'@');
  if (isAttribute) text.remove_prefix(1);
  const std::u16string_view prefix = PrefixOf(text);
  const bool hasPrefix = prefix.size() < text.size() && text[prefix.size()] == u':';
  const std::u16string_view local = LocalPartOf(text);
  if (!IsPlainName(local) || (hasPrefix && !IsPlainName(prefix))) return nullptr;
  const InternedURI uri = hasPrefix ? query.element->AttributeScopeMap().Lookup(prefix) : nullptr;
  if (hasPrefix && uri == nullptr) return nullptr;
  auto test = std::make_unique<CountTest>();
  test->isName = true;
  test->name = {local, uri, isAttribute};
  return test;
}

std::unique_ptr<CountTest> MakeTest(const NumberQuery& query, const ExpressionText& text) {
  auto test = std::make_unique<CountTest>();
  bool areSimple = true;
  ForEachAlternative(text.Text, [&](std::u16string_view pattern, bool /*isLast*/) {
    if (!areSimple) return;
    ExpressionText alternative;
    alternative.Text = pattern;
    // The plain way raises it for a text that doesn't parse, if that is ever reached.
    const XPathParseNodeRef& tree = query.processor.TryParse(alternative, kNoPattern).tree;
    std::optional<SimplePattern> simple;
    if (tree) {
      simple = SimplePattern::Classify(tree, query.element->AttributeScopeMap(),
                                       SimplePattern::Predicates::Refused);
    }
    areSimple = simple.has_value();
    if (!areSimple) return;
    test->isSingleStep = test->isSingleStep && simple->IsSingleStep();
    test->alternatives.push_back(std::move(*simple));
  });
  if (!areSimple) return std::make_unique<CountTest>();
  const SimplePattern& first = test->alternatives.front();
  if (test->alternatives.size() == 1 && first.IsSingleStep() && !first.IsRoot()) {
    const SimpleStep& step = first.LastStep();
    test->isName = step.test.kind == StepTest::Name;
    test->name = {step.test.name, step.test.uri, step.isAttribute};
  }
  return test;
}

}  // namespace

std::size_t NodeNameHash::operator()(const NodeName& name) const {
  return HashName(name.localName, name.uri) ^ (name.isAttribute ? 1 : 0);
}

bool CountTest::Matches(XPathNode* node) const {
  if (isName) {
    const auto kind = name.isAttribute ? XPathNodeKind::Attribute : XPathNodeKind::Element;
    return node->kind == kind && node->namespaceURI == name.uri && node->parent != nullptr &&
           node->GetLocalName() == name.localName;
  }
  return std::ranges::any_of(
      alternatives, [node](const SimplePattern& pattern) { return pattern.Matches(node); });
}

const CountTest& CountTests::Find(const NumberQuery& query, const ExpressionText& text) {
  const bool isDefault = &text != &query.record.CountText && &text != &query.record.FromText;
  const void* owner = isDefault ? static_cast<const void*>(&query.record) : &text;
  ByText& ofOwner = tests_[owner];
  auto found = ofOwner.find(text.Text.View());
  if (found != ofOwner.end()) return *found->second;
  found = ofOwner.try_emplace(text.Text).first;
  if (isDefault) found->second = MakeNameTest(query, found->first);
  if (found->second == nullptr) found->second = MakeTest(query, text);
  return *found->second;
}

}  // namespace kelmora
