// The rule for a node is the first in the order of rules whose pattern has it (XSLT 1.0, 5.5). The
// rules lie in one vector, the other way round: what is registered later has a higher precedence
// and goes behind, so a rule's index, its Rank, never changes. A selection goes down the candidates
// that RuleIndex has for the node's mode, kind and name, and takes the first that holds.
//
// Whether a rule holds is asked in one of two ways. What SimplePattern can take is tested at the
// node. Any other pattern runs once per document as a query from all its nodes, and the rule keeps
// which nodes came out (MatchSets).
//
// The trap is failure: a query raises when a selection reaches its rule and not earlier, so no rule
// may be asked before its turn, nor left out as long as its pattern can fail.
#include "rules/templaterules.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "base/parsedexpression.h"
#include "engine/instruction.h"
#include "names/elementrecord.h"
#include "names/stylesheetindex.h"
#include "tqcore/tqtext.h"
#include "xpath/alternatives.h"
#include "xpath/qualifiedname.h"
#include "xpath/simplepattern.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

constexpr std::u16string_view kBlanks = u" \t";

// The first attribute of that local name, in whatever namespace.
XPathNode* FindAnyAttribute(const XPathNode* element, std::u16string_view localName) {
  for (XPathNode* child = element->firstChild; child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Attribute && child->GetLocalName() == localName) return child;
  }
  return nullptr;
}

}  // namespace

ModeId TemplateRules::InternMode(std::u16string_view expanded) {
  const auto found = modes_.find(expanded);
  if (found != modes_.end()) return found->second;
  const auto id = static_cast<ModeId>(modes_.size());
  modes_.emplace(expanded, id);
  return id;
}

ModeId TemplateRules::ResolveMode(std::u16string_view mode, const XPathNode* scopeNode) {
  if (mode.empty()) return kNoMode;
  if (PrefixOf(mode).empty()) return InternMode(mode);
  return InternMode(ExpandName(mode, scopeNode->ScopeMap(), UnboundPrefix::DropIfDeclared));
}

void TemplateRules::RegisterBuiltInRules(XPathNode* builtInRoot) {
  for (XPathNode* child = builtInRoot->firstChild->firstChild; child != nullptr;
       child = child->next) {
    if (child->kind == XPathNodeKind::Element) {
      RegisterTemplate(child, TemplateRule::kBuiltInPrecedence);
    }
  }
  SortNewRules();
}

void TemplateRules::RegisterStylesheetRules(XPathNode* stylesheetElement) {
  for (XPathNode* child = stylesheetElement->firstChild; child != nullptr; child = child->next) {
    if (processor_->Index->Code(child) == XsltElement::Template) {
      RegisterTemplate(child, ImportPrecedence);
    }
  }
  SortNewRules();
}

void TemplateRules::RegisterTemplate(XPathNode* templateNode, std::int32_t precedence) {
  XPathNode* matchNode = FindAnyAttribute(templateNode, u"match");
  const XPathNode* modeNode = FindAnyAttribute(templateNode, u"mode");
  TQString patterns(matchNode != nullptr ? matchNode->GetValue() : std::u16string_view());
  const TQString rawMode(modeNode != nullptr ? modeNode->GetValue() : std::u16string_view());
  const XPathNode* scopeNode = matchNode != nullptr ? matchNode : templateNode;
  if (patterns.IsEmpty() && !rawMode.IsEmpty()) {
    throw TQXSLTError(XsltCode::ModeWithoutMatch, templateNode);
  }
  patterns.Replace(u'\r', u' ');
  patterns.Replace(u'\n', u' ');
  auto sequence = static_cast<std::int32_t>(rules_.size());
  bool isSplit = false;
  ForEachAlternative(TrimView(patterns, kBlanks), [&](std::u16string_view pattern, bool isLast) {
    if (isSplit && isLast && pattern.empty()) {
      throw TQXSLTError(XsltCode::UnexpectedValue, matchNode);
    }
    isSplit = true;
    auto rule =
        std::make_unique<TemplateRule>(templateNode, matchNode, pattern, precedence, sequence++);
    rule->RawMode = rawMode;
    rule->Mode = ResolveMode(rawMode, scopeNode);
    AddRule(std::move(rule));
  });
}

// A name may come again from another tree, that is from an imported stylesheet, only.
void TemplateRules::AddRule(std::unique_ptr<TemplateRule> rule) {
  if (!rule->ExpandedName.IsEmpty()) {
    NamedRules& rules = named_[rule->ExpandedName];
    if (!rules.trees.insert(rule->TemplateNode->Root()).second) {
      throw TQXSLTError(XsltCode::TemplateExists, nullptr);
    }
    if (rules.best == nullptr || RuleBefore(*rule, *rules.best)) rules.best = rule.get();
  }
  rules_.push_back(std::move(rule));
}

void TemplateRules::SortNewRules() {
  const auto before = [](const auto& a, const auto& b) { return RuleBefore(*b, *a); };
  std::sort(rules_.begin() + static_cast<std::ptrdiff_t>(sorted_), rules_.end(), before);
  for (; sorted_ < rules_.size(); ++sorted_) {
    TemplateRule* rule = rules_[sorted_].get();
    rule->Rank = static_cast<std::int32_t>(sorted_);
    if (rule->Pattern.Text.IsEmpty()) continue;
    Classify(*rule);
    FindShortcut(*rule);
    index_.Add(rule);
  }
}

// A pattern that does not parse stays a query, which raises when a selection reaches the rule.
void TemplateRules::Classify(TemplateRule& rule) {
  const ParsedExpression& parsed = processor_->TryParse(rule.Pattern, kTemplatePattern);
  if (parsed.tree == nullptr) return;
  auto simple = SimplePattern::Classify(parsed.tree, rule.NamespaceNode()->AttributeScopeMap(),
                                        SimplePattern::Predicates::Tested);
  if (simple) rule.Simple = std::make_unique<SimplePattern>(std::move(*simple));
}

void TemplateRules::FindShortcut(TemplateRule& rule) const {
  const XPathNode* content = FirstContent(rule.TemplateNode);
  if (content == nullptr) rule.Effect = TemplateRule::Shortcut::Nothing;
  if (content == nullptr || NextContent(content) != nullptr) return;
  const StylesheetIndex::Entry entry = processor_->Index->Find(content);
  if (entry.code != XsltElement::ValueOf) return;
  const auto& record = static_cast<const ValueOfRecord&>(*entry.record);
  if (!processor_->TryParse(record.SelectText, kNoPattern).isContextNode) return;
  rule.Effect = record.DisableOutputEscaping ? TemplateRule::Shortcut::UnescapedValue
                                             : TemplateRule::Shortcut::Value;
}

TemplateRule* TemplateRules::FindRule(XPathNode* node, ModeId mode) {
  TemplateRule* running = processor_->TopFrame().CurrentRule;
  if (running == nullptr && !rules_.empty()) running = rules_.back().get();
  if (running != nullptr) {
    if (mode == kAnyMode) {
      mode = running->LastMode;
    } else {
      running->LastMode = mode;
    }
  }
  return FirstMatch(node, mode, std::numeric_limits<std::int32_t>::max());
}

TemplateRule* TemplateRules::FindImportedRule(const TemplateFrame& frame, XPathNode* node,
                                              ModeId mode) {
  if (rules_.empty()) return nullptr;
  const TemplateRule& start = frame.RuleCursor != nullptr ? *frame.RuleCursor : *rules_.back();
  const auto same = std::ranges::lower_bound(rules_, start.Precedence, {},
                                             [](const auto& rule) { return rule->Precedence; });
  return FirstMatch(node, mode, static_cast<std::int32_t>(same - rules_.begin()));
}

TemplateRule* TemplateRules::FirstMatch(XPathNode* node, ModeId mode, std::int32_t rankLimit) {
  RuleIndex::Candidates candidates(index_, node, rankLimit);
  candidates.AddMode(mode);
  if (mode != kNoMode && mode != kAnyMode) candidates.AddMode(kAnyMode);
  while (TemplateRule* rule = candidates.Next()) {
    if (!Holds(*rule, node)) continue;
    rule->LastMode = mode;
    return rule;
  }
  return nullptr;
}

bool TemplateRules::Holds(TemplateRule& rule, XPathNode* node) {
  if (rule.Simple != nullptr) return rule.Simple->Matches(node);
  const DocumentKey document = documents_.KeyOf(node);
  if (const MatchSet* known = rule.Matches.Find(document)) return known->Contains(node);
  const XPathNodeList nodes = processor_->EvaluateOverUniverse(
      rule.Pattern, node->Root(), rule.NamespaceNode(), kTemplatePattern);
  return rule.Matches.Add(document, nodes).Contains(node);
}

TemplateRule* TemplateRules::FindNamed(std::u16string_view expandedName) const {
  const auto found = named_.find(expandedName);
  return found == named_.end() ? nullptr : found->second.best;
}

}  // namespace kelmora
