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
  const auto index = static_cast<std::size_t>(frame.RootFrame->Position - 1);
  XPathNode* item = (*frame.NodeList)[index].node;
  const ModeId mode = Processor->Rules->ResolveMode(frame.CurrentRule->RawMode, element);
  TemplateRule* rule = Processor->Rules->FindImportedRule(frame, item, mode);
  if (rule == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  PushRule(*rule);
  return true;
}

}  // namespace kelmora
