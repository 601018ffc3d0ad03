#include "engine/xpathevaluator.h"

#include "names/xsltnames.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

XPathEvaluator::XPathEvaluator(XSLTProcessorBase* processor) : processor_(processor) {
  SetXsltFunctions(true);
}

void XPathEvaluator::OnMissingVariable(std::u16string_view key) {
  missingVariable_ = key;
}

XPathNode* XPathEvaluator::LoadDocument(const TQString& uri, XPathNode* /*baseNode*/) {
  return processor_->LoadDocumentTree(uri);
}

bool XPathEvaluator::HasElement(std::u16string_view localName) const {
  return XsltElementNames::Code(localName) != XsltElement::Literal;
}

const XPathValue* FrameVariables::Find(std::u16string_view key) const {
  if (const XPathValue* value = frame_.Variables.Find(key)) return value;
  if (const XPathValue* value = frame_.Parameters.Find(key)) return value;
  if (const XPathValue* value = processor_.GlobalVariables.Find(key)) return value;
  return processor_.GlobalParameters.Find(key);
}

}  // namespace kelmora
