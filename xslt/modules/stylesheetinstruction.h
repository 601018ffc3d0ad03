// xsl:stylesheet, in the bottom frame for the main stylesheet and in a frame of its own for each
// import. States:
//   Execute   includes are expanded; the first import starts, else rules are registered and the
//             first other top-level element starts
//   Resume    the next top-level element starts, as long as there is one
//   applying  in the bottom frame alone: the rule for the source root runs
#pragma once

#include "rules/ruleinstruction.h"

namespace kelmora {

class StylesheetInstruction final : public RuleInstruction {
 public:
  using RuleInstruction::RuleInstruction;
  bool Execute() override;
  bool Resume() override;

 private:
  static void AddURIs(URISet& set, XPathNode* attribute);
  void RegisterRules();
  // Starts the first element at or behind `node` that has to run. False without one.
  bool StartFrom(XPathNode* node);
  void ApplyToRoot();

  bool rulesRegistered_ = false;
  bool applied_ = false;
};

}  // namespace kelmora
