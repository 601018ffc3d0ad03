// The declarations of a DTD.
#include <array>

#include "sourcewriterrun.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Element = XTreeDTDElement;
using Attlist = XTreeDTDAttlist;

constexpr std::array<View, 4> kRepeats{u"", u"?", u"+", u"*"};

// By item, from AttributeName on: what is written of an item beside its own text.
constexpr std::array<View, 19> kKeywords{
    u"",           u"",          u"CDATA",    u"ID",        u"IDREF", u"IDREFS", u"ENTITY",
    u"ENTITIES",   u"NMTOKEN",   u"NMTOKENS", u"NOTATION ", u"",      u"",       u"",
    u" #REQUIRED", u" #IMPLIED", u" #FIXED",  u"",          u"",
};

bool IsTop(const XTreeNode& node) {
  return node.parent == nullptr || node.parent->kind != node.kind;
}

bool IsGroup(const Element& element) {
  return element.item == Element::Mixed || element.item == Element::Sequence ||
         element.item == Element::Choice;
}

bool IsItem(const XTreeNode* node, Attlist::Item item) {
  return node != nullptr && node->kind == XTreeKind::DTDAttlist &&
         static_cast<const Attlist*>(node)->item == item;
}

// Lists of one name that follow one another are one declaration.
bool Continues(const XTreeNode* first, const XTreeNode* second) {
  return IsItem(first, Attlist::List) && IsItem(second, Attlist::List) &&
         first->GetName() == second->GetName();
}

bool IsEnumerationName(const XTreeNode* node) {
  return IsItem(node, Attlist::EnumerationName);
}

}  // namespace

void SourceWriter::WriteDeclaration(View keyword, const XTreeNode& node) {
  Write(keyword);
  Write(node.GetName());
  Write(u" ");
  Write(node.GetText());
  Write(u">");
}

XTreeNode* SourceWriter::StartDocType(XTreeContainer& docType) {
  Write(u"<!DOCTYPE ");
  Write(docType.name);
  XTreeNode* subset = nullptr;
  for (XTreeNode* child = docType.first; child != nullptr; child = child->next) {
    if (child->kind == XTreeKind::ExternalID) {
      Write(u" ");
      MarkStart(*child);
      Start(*child);
      MarkEnd(*child);
    } else if (subset == nullptr) {
      subset = child;
    }
  }
  if (subset != nullptr) Write(u" [");
  return subset;
}

XTreeNode* SourceWriter::StartDtdElement(Element& element) {
  if (IsTop(element)) {
    Write(u"<!ELEMENT ");
    Write(element.name);
    Write(u" ");
  } else {
    const auto group = static_cast<const Element&>(*element.parent).item;
    const bool isFirst = element.previous == nullptr && group != Element::Mixed;
    if (!isFirst) Write(group == Element::Sequence ? u", " : u" | ");
    if (element.item == Element::SubName) Write(element.name);
  }
  switch (static_cast<Element::Item>(element.item)) {
    case Element::PCDATA:
      Write(u"(#PCDATA)");
      break;
    case Element::Empty:
      Write(u"EMPTY");
      break;
    case Element::AnyContent:
      Write(u"ANY");
      break;
    case Element::PERef:
      Write(element.text);
      break;
    case Element::Mixed:
      Write(u"(#PCDATA");
      break;
    case Element::Sequence:
    case Element::Choice:
      Write(u"(");
      break;
    case Element::SubName:  // written above
      break;
  }
  return IsGroup(element) ? element.first : nullptr;
}

void SourceWriter::EndDtdElement(const Element& element) {
  if (IsGroup(element)) Write(u")");
  if (element.item == Element::Mixed) {
    Write(u"*");
  } else if (IsGroup(element) || element.item == Element::SubName) {
    Write(kRepeats[static_cast<std::size_t>(element.repeat)]);
  }
  if (IsTop(element)) Write(u">");
}

XTreeNode* SourceWriter::StartAttlist(Attlist& list) {
  if (list.item != Attlist::List && list.item != Attlist::Unformatted) {
    StartAttlistItem(list);
    return list.first;
  }
  if (!Continues(list.previous, &list)) {
    Write(u"<!ATTLIST ");
    Write(list.name);
  }
  if (list.item == Attlist::Unformatted) Write(u" ");
  if (list.item == Attlist::List) WriteIndent(1);
  Write(list.text);
  return list.first;
}

void SourceWriter::StartAttlistItem(const Attlist& item) {
  Write(kKeywords[static_cast<std::size_t>(item.item)]);
  switch (static_cast<Attlist::Item>(item.item)) {
    case Attlist::AttributeName:
      Write(item.text);
      return Write(u" ");
    case Attlist::TypePERef:
      return Write(item.text);
    case Attlist::EnumerationName:
      Write(IsEnumerationName(item.previous) ? u" | " : u"(");
      Write(item.text);
      return Write(IsEnumerationName(item.next) ? u"" : u")");
    case Attlist::DefaultValue:
      Write(u" ");
      return WriteQuoted(item.text);
    case Attlist::List:
    case Attlist::TypeCDATA:
    case Attlist::TypeID:
    case Attlist::TypeIDREF:
    case Attlist::TypeIDREFS:
    case Attlist::TypeENTITY:
    case Attlist::TypeENTITIES:
    case Attlist::TypeNMTOKEN:
    case Attlist::TypeNMTOKENS:
    case Attlist::TypeNOTATION:
    case Attlist::TypeEnumeration:
    case Attlist::Required:
    case Attlist::Implied:
    case Attlist::Fixed:
    case Attlist::Unformatted:
      return;  // the keyword is all
  }
}

void SourceWriter::EndAttlist(const Attlist& list) {
  const bool isLast = list.item == Attlist::List && !Continues(&list, list.next);
  if (isLast || list.item == Attlist::Unformatted) Write(u">");
}

}  // namespace kelmora
