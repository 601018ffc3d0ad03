#include "engine/xpathevaluator.h"

#include <algorithm>
#include <iterator>

#include "keys/keytable.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

XPathEvaluator::XPathEvaluator(XSLTProcessorBase* processor) : processor_(processor) {
  SetXsltFunctions(true);
}

void XPathEvaluator::OnMissingVariable(std::u16string_view key) {
  processor_->MissingVariable = key;
}

XPathNode* XPathEvaluator::LoadDocument(const TQString& uri, XPathNode* /*baseNode*/) {
  return processor_->LoadDocumentTree(uri);
}

bool XPathEvaluator::HasElement(std::u16string_view localName) const {
  constexpr std::u16string_view kNames[] = {
      u"transform",
#define ELEMENT(code, enumerator, name) name,
#include "names/elementcodes.def"
#undef ELEMENT
  };
  return std::ranges::find(kNames, localName) != std::end(kNames);
}

const XPathValue* FrameVariables::Find(std::u16string_view key) const {
  if (const XPathValue* value = frame_.Variables.Find(key)) return value;
  if (const XPathValue* value = frame_.Parameters.Find(key)) return value;
  if (const XPathValue* value = processor_.GlobalVariables.Find(key)) return value;
  return processor_.GlobalParameters.Find(key);
}

bool ProcessorKeys::HasKey(std::u16string_view expandedName) const {
  return processor_->Keys.contains(expandedName);
}

const XPathNodeList* ProcessorKeys::Lookup(std::u16string_view expandedName, XPathNode* root,
                                           std::u16string_view value) {
  const auto found = processor_->Keys.find(expandedName);
  if (found == processor_->Keys.end()) return nullptr;
  found->second->Index(root, *processor_);
  return found->second->Lookup(root, value);
}

}  // namespace kelmora
