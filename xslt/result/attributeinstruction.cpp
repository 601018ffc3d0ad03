#include "result/attributeinstruction.h"

#include "engine/kepttrees.h"
#include "names/elementrecord.h"
#include "result/resultscope.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathexpression.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool AttributeInstruction::Execute() {
  XPathNode* element = Begin();
  const auto& record = static_cast<const AttributeRecord&>(*Record);
  Name = Processor->ExpandAttributeValue(record.Name, Frame());
  if (!IsQName(Name)) throw TQXSLTError(XsltCode::NotAQName, record.Name);
  if (Name == u"xmlns") return true;
  if (record.Namespace != nullptr) {
    Namespace = Processor->ExpandAttributeValue(record.Namespace, Frame());
  }
  if (!TakesAttributes(*OutputNode)) return true;

  const InternedURI uri = Namespace.IsEmpty() ? ResolveByPrefix(record) : ResolveByNamespace();
  OwnedTree attribute = MakeResultNode(XPathNodeKind::Attribute, std::move(Name), TQString());
  attribute->namespaceURI = uri;
  AddResultAttribute(std::move(attribute));

  if (XPathNode* first = FirstContent(element)) {
    Fragment.reset(MakeFragmentRoot());
    PushChild(first, Fragment.get());
  }
  return true;
}

InternedURI AttributeInstruction::ResolveByNamespace() {
  const std::u16string_view prefix = PrefixOf(Name);
  if (!prefix.empty()) {
    const InternedURI bound = OutputNode->ScopeMap().Lookup(prefix);
    if (bound != nullptr && *bound == Namespace) return bound;
  }
  const InternedURI uri = Processor->Kept->KeepURI(Namespace);
  BindPrefix(Name, uri);
  return uri;
}

InternedURI AttributeInstruction::ResolveByPrefix(const AttributeRecord& record) {
  const std::u16string_view prefix = PrefixOf(Name);
  if (prefix.empty()) return nullptr;
  // A binding at the output is not compared with that of the stylesheet.
  if (OutputNode->ScopeMap().Find(prefix) != nullptr) {
    return record.Name->AttributeScopeMap().Lookup(prefix);
  }
  const PrefixMap::Entry* bound = Frame().CallingNode->AttributeScopeMap().Find(prefix);
  if (bound == nullptr) throw TQXSLTError(XsltCode::UndefinedPrefix, record.Name);
  DeclareOn(*OutputNode, prefix, bound->uri);
  return bound->uri;
}

bool AttributeInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (XPathNode* next = cursor != nullptr ? NextContent(cursor) : nullptr) {
    PushChild(next, Fragment.get());
    return true;
  }
  if (Fragment != nullptr) {
    TQString value;
    int length = 0;
    constexpr int kGrowth = 64;  // units
    for (const XPathNode* child = Fragment->firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Text) value.AppendAt(child->GetValue(), length, kGrowth);
    }
    OutputNode->SetOwnValue(std::move(value));
    Fragment.reset();
  }
  CloseOutput();
  Finish();
  return true;
}

}  // namespace kelmora
