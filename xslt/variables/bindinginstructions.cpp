#include "variables/bindinginstructions.h"

#include <algorithm>
#include <utility>

#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

namespace {

XPathValue StringValue(TQString text) {
  XPathValue value;
  value.SetString(std::move(text));
  return value;
}

XPathValue FragmentValue(XPathNode* root) {
  XPathValue value;
  value.SetNodes({XPathNodeRef(root, 1)});
  return value;
}

}  // namespace

void BindingInstruction::MakeValue(bool sortNodes) {
  const BindingRecord& binding = Binding();
  if (binding.SelectNode != nullptr) {
    XPathValue value;
    Frame().Evaluate(binding.SelectText, value);
    if (sortNodes && value.kind == XPathValue::NodeSet) SortAndNumber(value.nodes);
    Store(std::move(value));
  } else if (XPathNode* first = FirstContent(Frame().CallingNode)) {
    Fragment = Processor->KeepFragment(MakeFragmentRoot());
    PushChild(first, Fragment);
  } else {
    Store(StringValue(TQString()));
  }
}

bool BindingInstruction::Resume() {
  if (Fragment != nullptr) {
    if (XPathNode* next = NextContent(Frame().Cursor)) {
      PushChild(next, Fragment);
      return true;
    }
    Store(FragmentValue(Fragment));
  }
  AtEnd();
  Finish();
  return true;
}

bool DefinitionInstruction::Execute() {
  DefiningNode = Begin();
  const BindingRecord& binding = Binding();
  if (binding.IsGlobal) {
    std::vector<const XTreeNode*>& inProgress = Processor->InProgress;
    if (std::ranges::find(inProgress, DefiningNode->source) != inProgress.end()) {
      throw TQXSLTError(XsltCode::RecursiveVariable, DefiningNode);
    }
    inProgress.push_back(DefiningNode->source);
    if (Processor->Finished.contains(DefiningNode)) return true;
    MakeWayForGlobal();
  } else {
    CheckLocalName();
  }
  if (IsParameter()) {
    if (const XPathValue* passed = Frame().Parent->PassedParameters.Find(binding.Name)) {
      Store(*passed);
      return true;
    }
  }
  MakeValue(true);
  return true;
}

std::int32_t DefinitionInstruction::TakenError() const {
  return IsParameter() ? XsltCode::ParameterExists : XsltCode::VariableExists;
}

// The frame that sees a local definition. As document element it has none around it.
TemplateFrame& DefinitionInstruction::Scope() const {
  return Frame().Parent != nullptr ? *Frame().Parent : Frame();
}

void DefinitionInstruction::CheckLocalName() const {
  const TemplateFrame& scope = Scope();
  const TQString& name = Binding().Name;
  if (scope.Variables.Find(name) != nullptr || scope.Parameters.Find(name) != nullptr) {
    throw TQXSLTError(TakenError(), Binding().NameNode);
  }
}

// A global of another stylesheet element ran before and has a lower import precedence.
void DefinitionInstruction::MakeWayForGlobal() {
  const TQString& name = Binding().Name;
  if (Processor->GlobalVariables.Find(name) == nullptr &&
      Processor->GlobalParameters.Find(name) == nullptr) {
    return;
  }
  bool removed = false;
  const auto removeFrom = [&](auto& definitions, GlobalMap& values) {
    const auto found = definitions.find(name);
    if (found == definitions.end() || found->second == DefiningNode->parent) return;
    definitions.erase(found);
    values.Remove(name);
    removed = true;
  };
  removeFrom(Processor->VariableDefinitions, Processor->GlobalVariables);
  removeFrom(Processor->ParameterDefinitions, Processor->GlobalParameters);
  if (!removed) throw TQXSLTError(TakenError(), Binding().NameNode);
}

void DefinitionInstruction::Store(XPathValue value) {
  const TQString& name = Binding().Name;
  if (Binding().IsGlobal) {
    (IsParameter() ? Processor->GlobalParameters : Processor->GlobalVariables)
        .Bind(name, std::move(value));
    (IsParameter() ? Processor->ParameterDefinitions : Processor->VariableDefinitions)[name] =
        DefiningNode->parent;
  } else {
    TemplateFrame& scope = Scope();
    (IsParameter() ? scope.Parameters : scope.Variables).Bind(name, std::move(value));
  }
}

void DefinitionInstruction::AtEnd() {
  if (!Binding().IsGlobal) return;
  if (!Processor->InProgress.empty()) Processor->InProgress.pop_back();
  Processor->Finished.insert(DefiningNode);
  Processor->GlobalEvaluation = !Processor->InProgress.empty();
}

bool WithParamInstruction::Execute() {
  Begin();
  if (Frame().Parent->PassedParameters.Find(Binding().Name) != nullptr) {
    throw TQXSLTError(XsltCode::ParameterExists, Binding().NameNode);
  }
  MakeValue(false);
  return true;
}

void WithParamInstruction::Store(XPathValue value) {
  Frame().Parent->PassedParameters.Bind(Binding().Name, std::move(value));
}

}  // namespace kelmora
