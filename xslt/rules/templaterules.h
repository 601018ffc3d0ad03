// TemplateRules: Rules of the processor, and the selection of the rule for a node.
//
// Rules stay sorted, so that the right rule is the first one in order whose pattern has the node.
// Every registration has a higher precedence than those before it, so sorting it means sorting the
// new rules alone and putting them in front.
//
// This room holds template rules: their order, their index by node, and the choice of one.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/documentkey.h"
#include "rules/ruleindex.h"
#include "rules/templaterule.h"
#include "tqcore/texthash.h"

namespace kelmora {

struct TemplateFrame;
class XSLTProcessorBase;

class TemplateRules {
 public:
  explicit TemplateRules(XSLTProcessorBase* processor) : processor_(processor) {}

  void RegisterBuiltInRules(XPathNode* builtInRoot);
  void RegisterStylesheetRules(XPathNode* stylesheetElement);

  // The number of a mode as an instruction of the element `scopeNode` names it.
  ModeId ResolveMode(std::u16string_view mode, const XPathNode* scopeNode);

  // The rule for a node, null at the end of Rules. They look at the top frame, which must be that
  // of the instruction: its rule gives the mode behind "?" and remembers the mode asked for. Raise
  // what the evaluation of a pattern raises.
  TemplateRule* FindRule(XPathNode* node, ModeId mode);
  TemplateRule* FindImportedRule(const TemplateFrame& frame, XPathNode* node, ModeId mode);
  // The first rule of that name of the highest precedence; null without one.
  TemplateRule* FindNamed(std::u16string_view expandedName) const;
  std::size_t Count() const { return rules_.size(); }

  std::int32_t ImportPrecedence = 0;  // number of finished imports: that of rules registered next

 private:
  struct NamedRules {
    TemplateRule* best = nullptr;
    std::unordered_set<const XPathNode*> trees;  // that define the name
  };

  void RegisterTemplate(XPathNode* templateNode, std::int32_t precedence);
  void AddRule(std::unique_ptr<TemplateRule> rule);
  void SortNewRules();
  void Classify(TemplateRule& rule);
  void FindShortcut(TemplateRule& rule) const;
  TemplateRule* FirstMatch(XPathNode* node, ModeId mode, std::int32_t rankLimit);
  bool Holds(TemplateRule& rule, XPathNode* node);
  ModeId InternMode(std::u16string_view expanded);

  XSLTProcessorBase* processor_;
  std::vector<std::unique_ptr<TemplateRule>> rules_;  // by ascending Rank: the reverse of Rules
  std::size_t sorted_ = 0;                            // rules_ up to here are in order and indexed
  RuleIndex index_;
  DocumentKeys documents_;
  std::unordered_map<std::u16string_view, NamedRules, TextHash> named_;  // by ExpandedName
  std::unordered_map<TQString, ModeId, TextHash, TextEqual> modes_{{u"", kNoMode},
                                                                   {u"?", kAnyMode}};
};

}  // namespace kelmora
