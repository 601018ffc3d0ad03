#include "rules/ruleindex.h"

#include <algorithm>

#include "xpath/simplepattern.h"

namespace kelmora {

RuleIndex::NodeClass RuleIndex::ClassOf(const XPathNode* node) {
  switch (node->kind) {
    case XPathNodeKind::Root:
      return Root;
    case XPathNodeKind::Element:
      return Element;
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      return Text;
    case XPathNodeKind::Attribute:
      return Attribute;
    case XPathNodeKind::PI:
      return PI;
    case XPathNodeKind::Comment:
      return Comment;
    case XPathNodeKind::Namespace:
    case XPathNodeKind::XMLDeclaration:
    case XPathNodeKind::DocType:
    case XPathNodeKind::ExternalID:
    case XPathNodeKind::DTDElement:
    case XPathNodeKind::DTDAttlist:
    case XPathNodeKind::DTDEntity:
    case XPathNodeKind::DTDNotation:
      return Other;
  }
  return Other;
}

RuleIndex::Target RuleIndex::TargetOf(const TemplateRule& rule) {
  if (rule.Simple == nullptr) return {};
  if (rule.Simple->IsRoot()) return {1U << Root, {}};
  const SimpleStep& step = rule.Simple->LastStep();
  const NodeClass named = step.isAttribute ? Attribute : Element;
  switch (step.test.kind) {
    case StepTest::Name:
      return {1U << named, step.test.name};
    case StepTest::Namespace:
    case StepTest::Element:
    case StepTest::Attribute:
      return {1U << named, {}};
    case StepTest::Text:
      return {1U << Text, {}};
    case StepTest::Comment:
      return {1U << Comment, {}};
    case StepTest::PI:
      return {1U << PI, {}};
    case StepTest::None:
    case StepTest::AnyNode:
    case StepTest::NamespaceNode:
    case StepTest::NotNamespace:
    case StepTest::Content:
    case StepTest::LocalName:
      return {};
  }
  return {};
}

void RuleIndex::Add(TemplateRule* rule) {
  const Target target = TargetOf(*rule);
  ModeLists& lists = modes_[rule->Mode];
  for (unsigned nodeClass = 0; nodeClass < ClassCount; ++nodeClass) {
    if ((target.classes >> nodeClass & 1) == 0) continue;
    NodeLists& place = lists.classes[nodeClass];
    (target.name.empty() ? place.any : place.named[target.name]).push_back(rule);
  }
}

void RuleIndex::Candidates::AddMode(ModeId mode) {
  const auto found = index_.modes_.find(mode);
  if (found == index_.modes_.end()) return;
  const NodeLists& lists = found->second.classes[ClassOf(node_)];
  AddList(lists.any);
  if (lists.named.empty()) return;
  const auto named = lists.named.find(node_->GetLocalName());
  if (named != lists.named.end()) AddList(named->second);
}

void RuleIndex::Candidates::AddList(const List& list) {
  if (list.empty()) return;
  std::size_t left = list.size();
  if (list.back()->Rank >= rankLimit_) {
    const auto end = std::ranges::lower_bound(list, rankLimit_, {}, &TemplateRule::Rank);
    left = static_cast<std::size_t>(end - list.begin());
  }
  places_[static_cast<std::size_t>(count_++)] = {&list, left};
}

TemplateRule* RuleIndex::Candidates::Next() {
  Place* best = nullptr;
  std::int32_t bestRank = -1;
  for (int i = 0; i < count_; ++i) {
    Place& place = places_[static_cast<std::size_t>(i)];
    if (place.left == 0) continue;
    const std::int32_t rank = (*place.list)[place.left - 1]->Rank;
    if (rank <= bestRank) continue;
    best = &place;
    bestRank = rank;
  }
  return best == nullptr ? nullptr : (*best->list)[--best->left];
}

}  // namespace kelmora
