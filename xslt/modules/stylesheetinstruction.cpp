#include "modules/stylesheetinstruction.h"

#include "base/namelist.h"
#include "modules/stylesheetmodules.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "rules/templaterule.h"
#include "rules/templaterules.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool StylesheetInstruction::Execute() {
  XPathNode* element = Begin();
  const auto& record = static_cast<const StylesheetRecord&>(*Record);
  if (record.Version->GetValue() != u"1.0") Frame().AllowUnknown = true;
  Processor->Modules->Open(element);
  Processor->Modules->ExpandIncludes(element);
  AddURIs(Frame().ExcludedURIs, record.ExcludeResultPrefixes);
  AddURIs(Frame().ExtensionURIs, record.ExtensionElementPrefixes);
  StartFrom(FirstContent(element));
  return true;
}

void StylesheetInstruction::AddURIs(URISet& set, XPathNode* attribute) {
  if (attribute != nullptr) AddTo(set, PrefixListURIs(attribute));
}

bool StylesheetInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (cursor != nullptr && StartFrom(NextContent(cursor))) return true;
  RegisterRules();
  if (Frame().Parent == nullptr && !applied_) {
    ApplyToRoot();
    return true;
  }
  Processor->Modules->Close();
  TemplateFrame* parent = Frame().Parent;
  if (parent != nullptr) parent->Cursor = Frame().CallingNode;
  Finish();
  return true;
}

// Imports start before the rules are registered, everything else behind that.
bool StylesheetInstruction::StartFrom(XPathNode* node) {
  for (; node != nullptr; node = NextContent(node)) {
    if (!IsXsltURI(node->namespaceURI)) continue;
    const XsltElement code = CodeOf(node);
    if (code == XsltElement::Import) {
      if (rulesRegistered_) throw TQXSLTError(XsltCode::ImportNotFirst, node);
    } else {
      RegisterRules();
    }
    if (code == XsltElement::Template) continue;
    PushChild(node);
    return true;
  }
  Frame().Cursor = nullptr;
  return false;
}

void StylesheetInstruction::RegisterRules() {
  if (rulesRegistered_) return;
  rulesRegistered_ = true;
  Processor->Rules->RegisterStylesheetRules(Frame().CallingNode);
}

void StylesheetInstruction::ApplyToRoot() {
  applied_ = true;
  Processor->JoinsTexts = !Processor->Settings.CdataElementsGiven;
  XPathNode* node = Frame().NodeList->front().node;
  TemplateRule* rule = Processor->Rules->FindRule(node, kNoMode);
  if (rule == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  PushRule(*rule);
}

}  // namespace kelmora
