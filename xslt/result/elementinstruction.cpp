#include "result/elementinstruction.h"

#include "engine/kepttrees.h"
#include "names/elementrecord.h"
#include "result/resultscope.h"
#include "result/starttags.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathexpression.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool ElementInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const ElementElementRecord&>(*Record);
  Name = Processor->ExpandAttributeValue(record.Name, Frame());
  if (!IsQName(Name)) throw TQXSLTError(XsltCode::NotAQName, record.Name);
  if (Name == u"xmlns") throw TQXSLTError(XsltCode::UnexpectedValue, record.Name);
  if (record.Namespace != nullptr) {
    Namespace = Processor->ExpandAttributeValue(record.Namespace, Frame());
  }

  OwnedTree element(XPathNode::Make(XPathNodeKind::Element));
  element->ShareScope(*OutputNode);
  if (AddResultNode(std::move(element))) {
    if (record.Namespace != nullptr) {
      ResolveByNamespace();
    } else {
      ResolveByPrefix(record);
    }
    OutputNode->SetOwnName(std::move(Name));
  }
  RunSetsAndChildren(record.UseAttributeSets);
  return true;
}

void ElementInstruction::ResolveByPrefix(const ElementElementRecord& record) {
  const std::u16string_view prefix = PrefixOf(Name);
  const PrefixMap::Entry* bound = Frame().CallingNode->ScopeMap().Find(prefix);
  if (bound == nullptr && !prefix.empty()) {
    XPathNode* element = OutputNode;
    CloseOutput();
    OutputNode->RemoveChild(element);
    XPathNode::DeleteTree(element);
    throw TQXSLTError(XsltCode::UndefinedPrefix, record.Name);
  }
  OutputNode->namespaceURI = bound != nullptr ? bound->uri : nullptr;
  if (!SameURI(OutputNode->ScopeMap().Lookup(prefix), OutputNode->namespaceURI)) {
    DeclareOn(*OutputNode, prefix, OutputNode->namespaceURI);
  }
}

void ElementInstruction::ResolveByNamespace() {
  XPathNode& element = *OutputNode;
  const std::u16string_view prefix = PrefixOf(Name);
  const PrefixMap& inForce = element.ScopeMap();
  const PrefixMap::Entry* bound = Processor->Scopes->FindURI(inForce, Namespace);
  if (bound != nullptr && bound->prefix == prefix) {
    element.namespaceURI = bound->uri;
    return;
  }
  if (Namespace.IsEmpty() && bound == nullptr && inForce.Lookup(u"") == nullptr) return;

  TQString declared(prefix);
  if (declared == u"xmlns") {
    declared = Processor->Tags->GeneratePrefix();
    Name = declared + u":" + LocalPartOf(Name);
  }
  if (!Namespace.IsEmpty()) element.namespaceURI = Processor->Kept->KeepURI(Namespace);
  DeclareOn(element, declared, element.namespaceURI);
}

}  // namespace kelmora
