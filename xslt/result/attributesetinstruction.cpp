#include "result/attributesetinstruction.h"

#include "engine/declarations.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "result/resultinstruction.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathexpression.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool AttributeSetInstruction::Execute() {
  Begin();
  const TemplateFrame* user = Frame().Parent;
  if (user == nullptr || user->Instruction == nullptr) {
    throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  }
  Registered = user->Instruction->ElementCode == XsltElement::Stylesheet;
  const auto& record = static_cast<const AttributeSetRecord&>(*Record);
  if (Registered) {
    Register();
  } else if (record.UseAttributeSets != nullptr) {
    InUsedSets = true;
    PushChild(record.UseAttributeSets);
  } else {
    RunAttributes(FirstContent(Frame().CallingNode));
  }
  return true;
}

void AttributeSetInstruction::Register() {
  XPathNode* element = Frame().CallingNode;
  const auto& record = static_cast<const AttributeSetRecord&>(*Record);
  const TQString name =
      ExpandName(record.Name->GetValue(), element->AttributeScopeMap(), UnboundPrefix::DropPrefix);
  Processor->Declared->AddAttributeSet(name, element);
}

void AttributeSetInstruction::RunAttributes(XPathNode* child) {
  for (; child != nullptr; child = NextContent(child)) {
    if (CodeOf(child) != XsltElement::Attribute) {
      throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
    }
    if (AttributeIsSet(child)) continue;
    PushChild(child);
    return;
  }
  Registered = true;
}

// An attribute that the using element has itself isn't written at all, so that it wins over the
// set in whatever order the two stand. The name is taken as written, not as a template.
bool AttributeSetInstruction::AttributeIsSet(XPathNode* child) const {
  const XPathNode* name = FindAttribute(child, u"name");
  if (name == nullptr) throw TQXSLTError(XsltCode::NameExpected, child);
  const TemplateFrame* use = Frame().Parent;
  const XPathNode* user = use->CallingNode->parent;
  while (use->Parent != nullptr && NamesAttributeSets(*use->CallingNode)) use = use->Parent;
  const std::u16string_view prefix = PrefixOf(name->GetValue());
  const InternedURI uri = use->CallingNode->AttributeScopeMap().Lookup(prefix);
  const std::u16string_view local = LocalPartOf(name->GetValue());
  for (const XPathNode* own = user->firstChild; own != nullptr && IsAttributeLike(*own);
       own = own->next) {
    if (own->kind == XPathNodeKind::Attribute && own->namespaceURI == uri &&
        own->GetLocalName() == local) {
      return true;
    }
  }
  return false;
}

bool AttributeSetInstruction::Resume() {
  if (Registered) {
    Finish();
    return true;
  }
  XPathNode* cursor = Frame().Cursor;
  XPathNode* next = NextContent(cursor);
  if (InUsedSets) {
    while (next != nullptr && next->kind == XPathNodeKind::Attribute &&
           !NamesAttributeSets(*next)) {
      next = NextContent(next);
    }
    InUsedSets = next != nullptr && next->kind == XPathNodeKind::Attribute;
    if (InUsedSets) {
      PushChild(next);
      return true;
    }
  }
  RunAttributes(next);
  if (Registered) Finish();
  return true;
}

bool UseAttributeSetsInstruction::Execute() {
  const XPathNode* attribute = Begin();
  const TQString text = attribute->GetValue();
  int position = 0;
  for (TQString name = text.Tokenize(kXmlSpaces, position); !name.IsEmpty();
       name = text.Tokenize(kXmlSpaces, position)) {
    if (!IsQName(name)) throw TQXSLTError(XsltCode::NotAQName, nullptr);
    Names.push_back(std::move(name));
  }
  if (!Names.empty()) OpenSet();
  return true;
}

void UseAttributeSetsInstruction::OpenSet() {
  XPathNode* attribute = Frame().CallingNode;
  const TQString name =
      ExpandName(Names[NameCursor], attribute->AttributeScopeMap(), UnboundPrefix::DropPrefix);
  Definitions = Processor->Declared->FindAttributeSet(name);
  if (Definitions == nullptr) throw TQXSLTError(XsltCode::UndefinedAttributeSet, attribute);
  DefinitionCursor = 0;
  RunDefinition();
}

void UseAttributeSetsInstruction::RunDefinition() {
  TemplateFrame* frame = PushChild((*Definitions)[DefinitionCursor]);
  frame->Variables.Clear();  // a set sees global variables only
  frame->Parameters.Clear();
  frame->PassedParameters.Clear();
}

bool UseAttributeSetsInstruction::Resume() {
  if (Definitions == nullptr) {
    Finish();
  } else if (++DefinitionCursor < Definitions->size()) {
    RunDefinition();
  } else if (++NameCursor < Names.size()) {
    OpenSet();
  } else {
    Finish();
  }
  return true;
}

}  // namespace kelmora
