#include "result/resultinstruction.h"

#include "engine/declarations.h"
#include "names/xsltnames.h"
#include "result/resultscope.h"
#include "tqcore/tqtext.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

ResultInstruction::~ResultInstruction() {
  if (OwnsOutput) Processor->Scopes->ForgetAttributes();
}

void ResultInstruction::EndChildren() {
  CloseOutput();
  Instruction::EndChildren();
}

// An element that ends gets no more attributes; one that an attribute ends in may get many.
void ResultInstruction::CloseOutput() {
  if (!OwnsOutput) return;
  OwnsOutput = false;
  if (OutputNode->kind == XPathNodeKind::Element) Processor->Scopes->ForgetAttributes();
  OutputNode = OutputNode->parent;
}

XPathNode* ResultInstruction::CopyResultNode(XPathNode& node, bool makeCurrent, bool literal) {
  OwnedTree made = ShallowCopy(node);
  PrefixText = PrefixOf(made->GetName());
  const bool keepsXslt =
      !Processor->Declared->NamespaceAliases().empty() && ApplyAlias(*made, node);

  XPathNode* copy = AppendOrDrop(*OutputNode, std::move(made));
  if (copy == nullptr) return nullptr;
  TemplateFrame& frame = Frame();
  switch (copy->kind) {
    case XPathNodeKind::Element:
      copy->ShareScope(*OutputNode);
      Processor->Scopes->ProcessScope(
          *copy, {node, literal, keepsXslt, PrefixText, frame.ExcludedURIs, frame.ExtensionURIs,
                  Processor->Declared->NamespaceAliases()});
      break;
    case XPathNodeKind::Attribute:
      if (literal && node.GetValue().find_first_of(u"{}") != std::u16string_view::npos) {
        copy->SetOwnValue(Processor->ExpandAttributeValue(&node, frame));
      }
      break;
    case XPathNodeKind::CData:
      copy->kind = XPathNodeKind::Text;
      break;
    case XPathNodeKind::Root:
    case XPathNodeKind::Text:
    case XPathNodeKind::Namespace:
    case XPathNodeKind::PI:
    case XPathNodeKind::Comment:
    case XPathNodeKind::XMLDeclaration:
    case XPathNodeKind::DocType:
    case XPathNodeKind::ExternalID:
    case XPathNodeKind::DTDElement:
    case XPathNodeKind::DTDAttlist:
    case XPathNodeKind::DTDEntity:
    case XPathNodeKind::DTDNotation:
      break;
  }
  OwnsOutput = makeCurrent;
  if (makeCurrent) OutputNode = copy;
  return copy;
}

bool ResultInstruction::ApplyAlias(XPathNode& copy, const XPathNode& node) {
  if (copy.kind == XPathNodeKind::Root || copy.IsText() || copy.kind == XPathNodeKind::Comment) {
    return false;  // they have no name
  }
  const NamespaceAliasMap& aliases = Processor->Declared->NamespaceAliases();
  const auto alias = aliases.find(PrefixText);
  if (alias == aliases.end()) return false;
  TQString name = alias->second;
  if (!name.IsEmpty()) name += u':';
  name += copy.GetLocalName();
  PrefixText = alias->second;
  copy.SetOwnName(std::move(name));
  const bool isAttribute = node.kind == XPathNodeKind::Attribute;
  const PrefixMap& scope = isAttribute ? node.AttributeScopeMap() : node.ScopeMap();
  const InternedURI bound = scope.Lookup(PrefixText);
  return bound != nullptr && IsXsltURI(bound);
}

bool ResultInstruction::AddResultNode(OwnedTree node) {
  XPathNode* added = AppendOrDrop(*OutputNode, std::move(node));
  if (added == nullptr) return false;
  OutputNode = added;
  OwnsOutput = true;
  return true;
}

void ResultInstruction::AddResultAttribute(OwnedTree attribute) {
  XPathNode* present = Processor->Scopes->FindAttribute(*OutputNode, attribute->namespaceURI,
                                                        attribute->GetLocalName());
  if (present == nullptr) {
    AddResultNode(std::move(attribute));
    return;
  }
  present->SetOwnName(attribute->GetName());
  present->SetOwnValue(TQString());
  while (XPathNode* child = present->firstChild) {
    present->RemoveChild(child);
    XPathNode::DeleteTree(child);
  }
  OutputNode = present;
  OwnsOutput = true;
}

bool NamesAttributeSets(const XPathNode& node) {
  return node.kind == XPathNodeKind::Attribute &&
         XsltAttributeNames::Code(&node) == XsltAttribute::UseAttributeSets;
}

void SetUsingInstruction::RunSetsAndChildren(XPathNode* useAttributeSets) {
  if (useAttributeSets == nullptr) {
    RunChildren();
    return;
  }
  InAttributeSets = true;
  PushChild(useAttributeSets);
}

// States: InAttributeSets while a use-attribute-sets attribute runs, then the content, child by
// child. Other attributes of the element never run.
bool SetUsingInstruction::Resume() {
  XPathNode* cursor = Frame().Cursor;
  if (cursor == nullptr) {
    EndChildren();
    return true;
  }
  XPathNode* next = NextContent(cursor);
  while (next != nullptr && next->kind == XPathNodeKind::Attribute) {
    if (InAttributeSets && NamesAttributeSets(*next)) break;
    next = NextContent(next);
  }
  if (next == nullptr) {
    EndChildren();
  } else {
    InAttributeSets = next->kind == XPathNodeKind::Attribute;
    PushChild(next);
  }
  return true;
}

}  // namespace kelmora
