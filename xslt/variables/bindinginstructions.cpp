#include "variables/bindinginstructions.h"

#include <utility>

#include "engine/kepttrees.h"

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
    Fragment = Processor->Kept->KeepFragment(MakeFragmentRoot());
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
    if (!Processor->Globals->Begin(DefiningNode, Role(), binding)) return true;
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

// The frame that sees a local definition. As document element it has none around it.
TemplateFrame& DefinitionInstruction::Scope() const {
  return Frame().Parent != nullptr ? *Frame().Parent : Frame();
}

void DefinitionInstruction::CheckLocalName() const {
  const TemplateFrame& scope = Scope();
  const TQString& name = Binding().Name;
  if (scope.Variables.Find(name) == nullptr && scope.Parameters.Find(name) == nullptr) return;
  throw TQXSLTError(IsParameter() ? XsltCode::ParameterExists : XsltCode::VariableExists,
                    Binding().NameNode);
}

void DefinitionInstruction::Store(XPathValue value) {
  const TQString& name = Binding().Name;
  if (Binding().IsGlobal) {
    Processor->Globals->Store(DefiningNode, Role(), name, std::move(value));
  } else {
    TemplateFrame& scope = Scope();
    (IsParameter() ? scope.Parameters : scope.Variables).Bind(name, std::move(value));
  }
}

void DefinitionInstruction::AtEnd() {
  if (Binding().IsGlobal) Processor->Globals->End(DefiningNode);
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
