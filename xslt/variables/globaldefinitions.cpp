// Forward references between globals. A reference to a variable that nobody has bound fails like
// any other. While a global is being evaluated, the failure is caught here: the definition in
// evaluation is taken back with all that it began, a new try of it is pushed, and on top of that
// the definition that was missing, if the same stylesheet element has it.
#include "variables/globaldefinitions.h"

#include "checks/elementdispatcher.h"
#include "engine/instruction.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

namespace {

// True when the frame runs the definition of a global.
bool IsGlobalDefinition(const TemplateFrame& frame) {
  if (frame.Instruction == nullptr) return false;
  const std::int32_t code = frame.Instruction->ElementCode;
  return (code == ElementCode::Variable || code == ElementCode::Param) &&
         static_cast<const BindingRecord*>(frame.Instruction->Record)->IsGlobal;
}

}  // namespace

XPathNode* GlobalDefinitions::Find(const XPathNode* stylesheetElement, std::u16string_view name,
                                   const ElementDispatcher& dispatcher) {
  const auto [place, isNew] = elements_.try_emplace(stylesheetElement);
  ByName& names = place->second;
  if (isNew) {
    XPathNode* child = FirstContent(stylesheetElement);
    for (; child != nullptr; child = NextContent(child)) {
      const ElementDispatcher::Entry entry = dispatcher.Find(child);
      if (entry.code != ElementCode::Variable && entry.code != ElementCode::Param) continue;
      names.try_emplace(static_cast<const BindingRecord*>(entry.record)->Name, child);
    }
  }
  const auto found = names.find(name);
  return found == names.end() ? nullptr : found->second;
}

bool XSLTProcessorBase::RunGuarded(TemplateFrame& frame) {
  try {
    return frame.RunInstruction();
  } catch (const TQXSLTError& error) {
    const bool isMissingVariable =
        error.Code() == XsltCode::XPathFailed &&
        error.XPathCode() == static_cast<std::int32_t>(XPathError::InvalidVariableReference);
    if (!isMissingVariable || !RetryGlobal(MissingVariable)) throw;
  }
  return true;
}

bool XSLTProcessorBase::RetryGlobal(const TQString& key) {
  const TemplateFrame* definition = nullptr;
  while (definition == nullptr && !callStack_.empty()) {
    if (IsGlobalDefinition(TopFrame())) definition = &TopFrame();
    PopFrame();
  }
  if (definition == nullptr) return false;
  XPathNode* node = definition->CallingNode;
  if (!InProgress.empty()) InProgress.pop_back();

  const auto push = [this](TemplateFrame& parent, XPathNode* outputNode, XPathNode* definingNode) {
    auto* frame = new TemplateFrame(&parent, outputNode);
    frame->CurrentNode = definingNode;
    PushFrame(frame);
  };
  push(*definition->Parent, definition->Instruction->OutputNode, node);
  XPathNode* wanted = globalDefinitions_->Find(node->parent, key, *Dispatcher);
  if (wanted == nullptr) return false;
  push(TopFrame(), TopFrame().OutputParent, wanted);
  return true;
}

}  // namespace kelmora
