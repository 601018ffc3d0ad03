// xsl:apply-templates. States:
//   Execute    without children the nodes are selected and the first rule starts; else the first
//              child starts, an xsl:sort with the nodes selected before it
//   children   each xsl:sort and xsl:with-param runs once; the last one is followed by the
//   selection,
//              unless that was done
//   applying   one rule after the other, NextIndex saying which is next
//
// This room holds the instructions that decide what runs next, and in which context.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "rules/ruleinstruction.h"
#include "rules/templaterule.h"
#include "sorting/sortkey.h"

namespace kelmora {

struct ApplyTemplatesRecord;

class ApplyTemplatesInstruction final : public RuleInstruction {
 public:
  explicit ApplyTemplatesInstruction(XSLTProcessorBase* processor);
  bool Execute() override;
  bool Resume() override;

  SortKeyList SortKeys;  // filled by the xsl:sort children

 private:
  void Select();
  void StartChild(XPathNode* child);
  void NextParameterOrSort();
  void ApplyOrFinish();
  void ApplyNext();
  bool TakeShortcut(const TemplateRule& rule, const XPathNode& item);

  std::size_t NextIndex = 0;
  ModeId Mode = kNoMode;
  XPathNodeList* SavedContext = nullptr;  // the list on entry, of a frame below
  std::int32_t SavedPosition = 0;
  bool Evaluated = false;
  bool HasSort = false;
  bool Sorted = false;
};

}  // namespace kelmora
