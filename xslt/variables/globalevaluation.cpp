#include "variables/globalevaluation.h"

#include <algorithm>
#include <utility>

#include "engine/instruction.h"
#include "names/elementrecord.h"
#include "names/stylesheetindex.h"

namespace kelmora {

namespace {

constexpr GlobalEvaluation::Role kRoles[] = {GlobalEvaluation::Role::Variable,
                                             GlobalEvaluation::Role::Parameter};

bool IsDefinition(XsltElement code) {
  return code == XsltElement::Variable || code == XsltElement::Param;
}

bool RunsGlobalDefinition(const TemplateFrame& frame) {
  return frame.Instruction != nullptr && IsDefinition(frame.Instruction->ElementCode) &&
         static_cast<const BindingRecord*>(frame.Instruction->Record)->IsGlobal;
}

}  // namespace

GlobalMap& GlobalEvaluation::Values(Role role) const {
  return role == Role::Parameter ? processor_->GlobalParameters : processor_->GlobalVariables;
}

GlobalEvaluation::ByName& GlobalEvaluation::Definitions(Role role) {
  return role == Role::Parameter ? ParameterDefinitions : VariableDefinitions;
}

bool GlobalEvaluation::Begin(XPathNode* definingNode, Role role, const BindingRecord& binding) {
  if (std::ranges::find(InProgress, definingNode->source) != InProgress.end()) {
    throw TQXSLTError(XsltCode::RecursiveVariable, definingNode);
  }
  InProgress.push_back(definingNode->source);
  if (Finished.contains(definingNode)) return false;
  MakeWay(definingNode, role, binding);
  return true;
}

void GlobalEvaluation::MakeWay(const XPathNode* definingNode, Role role,
                               const BindingRecord& binding) {
  const auto isBound = [&](Role one) { return Values(one).Find(binding.Name) != nullptr; };
  if (std::ranges::none_of(kRoles, isBound)) return;
  bool removed = false;
  for (const Role one : kRoles) removed |= Remove(definingNode, one, binding.Name);
  if (removed) return;
  throw TQXSLTError(role == Role::Parameter ? XsltCode::ParameterExists : XsltCode::VariableExists,
                    binding.NameNode);
}

bool GlobalEvaluation::Remove(const XPathNode* definingNode, Role role, const TQString& name) {
  ByName& definitions = Definitions(role);
  const auto found = definitions.find(name);
  if (found == definitions.end() || found->second == definingNode->parent) return false;
  definitions.erase(found);
  Values(role).Remove(name);
  return true;
}

void GlobalEvaluation::Store(const XPathNode* definingNode, Role role, const TQString& name,
                             XPathValue value) {
  Values(role).Bind(name, std::move(value));
  Definitions(role)[name] = definingNode->parent;
}

void GlobalEvaluation::End(const XPathNode* definingNode) {
  if (!InProgress.empty()) InProgress.pop_back();
  Finished.insert(definingNode);
}

bool GlobalEvaluation::Retry(const TQXSLTError& error) {
  if (InProgress.empty() || error.MissingVariable().IsEmpty()) return false;
  const TemplateFrame* definition = nullptr;
  while (definition == nullptr && !processor_->CallStack().empty()) {
    const TemplateFrame& top = processor_->TopFrame();
    if (RunsGlobalDefinition(top)) definition = &top;
    processor_->PopFrame();
  }
  if (definition == nullptr) return false;
  XPathNode* node = definition->CallingNode;
  InProgress.pop_back();

  const auto push = [this](TemplateFrame& parent, XPathNode* outputNode, XPathNode* definingNode) {
    auto* frame = new TemplateFrame(&parent, outputNode);
    frame->CurrentNode = definingNode;
    processor_->PushFrame(frame);
  };
  push(*definition->Parent, definition->Instruction->OutputNode, node);
  XPathNode* wanted = FindDefinition(node->parent, error.MissingVariable());
  if (wanted == nullptr) return false;
  TemplateFrame& top = processor_->TopFrame();
  push(top, top.OutputParent, wanted);
  return true;
}

// The first of that expanded name; null without one.
XPathNode* GlobalEvaluation::FindDefinition(const XPathNode* stylesheetElement,
                                            std::u16string_view name) {
  const auto [place, isNew] = children_.try_emplace(stylesheetElement);
  ByName& names = place->second;
  if (isNew) {
    XPathNode* child = FirstContent(stylesheetElement);
    for (; child != nullptr; child = NextContent(child)) {
      const StylesheetIndex::Entry entry = processor_->Index->Find(child);
      if (!IsDefinition(entry.code)) continue;
      names.try_emplace(static_cast<const BindingRecord*>(entry.record)->Name, child);
    }
  }
  const auto found = names.find(name);
  return found == names.end() ? nullptr : found->second;
}

}  // namespace kelmora
