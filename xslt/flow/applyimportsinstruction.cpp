#include "flow/applyimportsinstruction.h"

#include "rules/templaterules.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ApplyImportsInstruction::Execute() {
  const XPathNode* element = Begin();
  TemplateFrame& frame = Frame();
  if (frame.CurrentRule == nullptr || frame.RuleCursor == nullptr) {
    throw TQXSLTError(XsltCode::UnexpectedApplyImports, nullptr);
  }
  // The position of the template counts in the list of the template alone. An element beside the
  // xsl:sort of xsl:apply-templates runs with the list that is being sorted.
  const TemplateFrame& templateFrame = *frame.RootFrame;
  XPathNode* item =
      frame.NodeList == templateFrame.NodeList ? templateFrame.ContextNode() : nullptr;
  if (item == nullptr) throw TQXSLTError(XsltCode::UnexpectedApplyImports, nullptr);
  const ModeId mode = Processor->Rules->ResolveMode(frame.CurrentRule->RawMode, element);
  TemplateRule* rule = Processor->Rules->FindImportedRule(frame, item, mode);
  if (rule == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  PushRule(*rule);
  return true;
}

}  // namespace kelmora
