#include "result/resultinstruction.h"

#include "engine/declarations.h"
#include "names/xsltnames.h"
#include "result/resultscope.h"
#include "result/starttags.h"
#include "tqcore/tqtext.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

ResultInstruction::~ResultInstruction() {
  if (OwnsOutput) Processor->Tags->Close(*OutputNode);
}

void ResultInstruction::EndChildren() {
  CloseOutput();
  Instruction::EndChildren();
}

void ResultInstruction::CloseOutput() {
  if (!OwnsOutput) return;
  OwnsOutput = false;
  Processor->Tags->Close(*OutputNode);
  OutputNode = OutputNode->parent;
}

XPathNode* ResultInstruction::CopyResultNode(XPathNode& node, bool makeCurrent, bool literal) {
  XPathNode* copy = nullptr;
  if (node.kind == XPathNodeKind::Namespace) {
    copy = AddDeclaration(node.GetName(), node.GetValue());
  } else {
    OwnedTree made = ShallowCopy(node);
    PrefixText = PrefixOf(made->GetName());
    const bool isRenamed = !Processor->Declared->NamespaceAliases().empty() && ApplyAlias(*made);
    copy = node.kind == XPathNodeKind::Attribute
               ? CopyAttribute(node, std::move(made), isRenamed, literal)
               : AppendOrDrop(*OutputNode, std::move(made));
    if (copy != nullptr && copy->kind == XPathNodeKind::CData) copy->kind = XPathNodeKind::Text;
    if (copy != nullptr && copy->kind == XPathNodeKind::Element) {
      copy->ShareScope(*OutputNode);
      const InternedURI bound = isRenamed ? node.ScopeMap().Lookup(PrefixText) : nullptr;
      const bool keepsXslt = bound != nullptr && IsXsltURI(bound);
      const TemplateFrame& frame = Frame();
      Processor->Scopes->ProcessScope(
          *copy, {node, literal, keepsXslt, PrefixText, frame.ExcludedURIs, frame.ExtensionURIs,
                  Processor->Declared->NamespaceAliases()});
    }
  }
  if (copy == nullptr) return nullptr;
  OwnsOutput = makeCurrent;
  if (makeCurrent) OutputNode = copy;
  return copy;
}

XPathNode* ResultInstruction::CopyAttribute(XPathNode& node, OwnedTree copy, bool isRenamed,
                                            bool literal) {
  if (literal && node.GetValue().find_first_of(u"{}") != std::u16string_view::npos) {
    copy->SetOwnValue(Processor->ExpandAttributeValue(&node, Frame()));
  }
  // An alias changes the prefix and not the URI: then any binding will do. A literal attribute
  // finds the declarations of its element, unless they were excluded or an attribute set took the
  // prefix.
  const bool isBound = OutputNode->ScopeMap().Lookup(PrefixText) != nullptr;
  const bool declares = isRenamed ? !literal && !isBound : !literal || isBound;
  return declares ? AddCopiedAttribute(std::move(copy))
                  : Processor->Tags->AddAttribute(*OutputNode, std::move(copy));
}

XPathNode* ResultInstruction::AddCopiedAttribute(OwnedTree copy) {
  const std::u16string_view prefix = copy->GetPrefix();
  const InternedURI uri = copy->namespaceURI;
  if (!prefix.empty() && uri != nullptr && TakesAttributes(*OutputNode) &&
      !SameURI(OutputNode->ScopeMap().Lookup(prefix), uri)) {
    TQString name = copy->GetName();
    BindPrefix(name, uri);
    copy->SetOwnName(std::move(name));
  }
  return Processor->Tags->AddAttribute(*OutputNode, std::move(copy));
}

XPathNode* ResultInstruction::AddDeclaration(std::u16string_view prefix,
                                             std::u16string_view value) {
  if (prefix == u"xml" || prefix == u"xmlns") return nullptr;
  const InternedURI uri = value.empty() ? nullptr : Processor->TreeBuilder->InternURI(value);
  return Processor->Tags->AddDeclaration(*OutputNode, prefix, uri);
}

void ResultInstruction::BindPrefix(TQString& name, InternedURI uri) {
  TQString prefix(PrefixOf(name));
  const bool isUsable = !prefix.IsEmpty() && prefix != u"xmlns";
  if (isUsable && Processor->Tags->AddDeclaration(*OutputNode, prefix, uri) != nullptr) return;
  do {
    prefix = Processor->Tags->GeneratePrefix();
  } while (Processor->Tags->AddDeclaration(*OutputNode, prefix, uri) == nullptr);
  name = prefix + u":" + LocalPartOf(name);
}

bool ResultInstruction::ApplyAlias(XPathNode& copy) {
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
  return true;
}

bool ResultInstruction::AddResultNode(OwnedTree node) {
  XPathNode* added = AppendOrDrop(*OutputNode, std::move(node));
  if (added == nullptr) return false;
  OutputNode = added;
  OwnsOutput = true;
  return true;
}

void ResultInstruction::AddResultAttribute(OwnedTree attribute) {
  OutputNode = Processor->Tags->AddAttribute(*OutputNode, std::move(attribute));
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
