// Attribute lists. One XTreeDTDAttlist node of item List is one attribute definition; its items
// are its children in the order name, type, default.
#include <algorithm>
#include <utility>

#include "dtd/dtdreader.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Item = XTreeDTDAttlist::Item;

struct TypeName {
  View keyword;
  Item item;
  bool AttributeDecl::*flag;  // null: a type without one
};
constexpr TypeName kTypes[] = {
    {u"CDATA", Item::TypeCDATA, nullptr},
    {u"ID", Item::TypeID, &AttributeDecl::isID},
    {u"IDREF", Item::TypeIDREF, &AttributeDecl::isIDREF},
    {u"IDREFS", Item::TypeIDREFS, &AttributeDecl::isIDREFS},
    {u"ENTITY", Item::TypeENTITY, &AttributeDecl::isENTITY},
    {u"ENTITIES", Item::TypeENTITIES, &AttributeDecl::isENTITIES},
    {u"NMTOKEN", Item::TypeNMTOKEN, &AttributeDecl::isNMTOKEN},
    {u"NMTOKENS", Item::TypeNMTOKENS, &AttributeDecl::isNMTOKENS},
    {u"NOTATION", Item::TypeNOTATION, &AttributeDecl::isNOTATION},
};

// From `node` on, the next item of the same definition; a list begins another one.
const XTreeDTDAttlist* NextItem(const XTreeNode* node) {
  while (node != nullptr && node->kind != XTreeKind::DTDAttlist) node = node->next;
  const auto* item = static_cast<const XTreeDTDAttlist*>(node);
  return item != nullptr && item->item == Item::List ? nullptr : item;
}

// The list behind `definition` among the children of `root`; behind the root itself the first.
const XTreeDTDAttlist* NextList(const XTreeDTDAttlist* definition, const XTreeContainer* root) {
  const XTreeNode* node = definition == root ? root->first : definition->next;
  for (; node != nullptr; node = node->next) {
    if (node->kind != XTreeKind::DTDAttlist) continue;
    const auto* list = static_cast<const XTreeDTDAttlist*>(node);
    if (list->item == Item::List) return list;
  }
  return nullptr;
}

bool IsDefault(const XTreeDTDAttlist& item) {
  return item.item >= Item::Required && item.item <= Item::DefaultValue;
}

// A definition whose name alone stands, or which has no default item, got the rest of it from a
// parameter entity: it has to be read as text.
bool IsComplete(const XTreeDTDAttlist& list) {
  bool hasType = false;
  bool hasDefault = false;
  for (const auto* item = NextItem(list.first); item != nullptr; item = NextItem(item->next)) {
    hasType |= item->item >= Item::TypeCDATA && item->item <= Item::TypePERef;
    hasDefault |= IsDefault(*item);
  }
  return hasType && hasDefault;
}

// The text of an incomplete definition, from its name to the reference that ends it. The views of
// the items point into the parsed buffer, at their own offsets.
View DefinitionText(const XTreeDTDAttlist& list) {
  const XTreeDTDAttlist* name = NextItem(list.first);
  if (name == nullptr || name->item != Item::AttributeName) return {};
  if (name->sourceStart < 0) return name->text;
  std::int32_t end = name->sourceEnd;
  for (const auto* item = NextItem(name->next); item != nullptr; item = NextItem(item->next)) {
    end = item->sourceEnd;
  }
  const char16_t* text = name->text.data();
  const char16_t* stop = text + (end - name->sourceStart);
  while (IsXmlSpace(*stop)) ++stop;
  if (*stop == u'%') {
    while (*stop != u';' && *stop != u'\0') ++stop;
    if (*stop == u';') ++stop;
  }
  return {text, static_cast<std::size_t>(stop - text)};
}

}  // namespace

bool DtdReader::ReadAttlist(const XTreeDTDAttlist& list, const Place& place) {
  TQString elementName;
  if (!ResolveName(list, list.name, elementName)) return false;
  if (elementName.IsEmpty()) return true;  // it waits
  if (list.item == Item::Unformatted) {
    return ReadAttributeText(list, elementName, list.text, place);
  }
  if (list.first == nullptr) return true;
  if (!IsComplete(list)) {
    const View text = DefinitionText(list);
    if (text.find(u'%') == View::npos) {
      return model_.Error().RecordError(ModelCode::BadName, &list, elementName);
    }
    return ReadAttributeText(list, elementName, text, place);
  }
  return ReadDefinition(*model_.AddElement({elementName, nullptr}), list, list);
}

bool DtdReader::ReadAttributeText(const XTreeDTDAttlist& list, const TQString& elementName,
                                  View text, const Place& place) {
  TQString expanded;
  if (!expander_.ExpandEntityReferences(&list, text, expanded, {.withParameterEntities = true})) {
    return false;
  }
  expanded.TrimLeft(kXmlSpaces);
  expanded.TrimRight(kXmlSpaces);
  if (expanded.IsEmpty()) return true;
  const auto parsed =
      model_.ParseFragment(expanded, u"attlistText", XTreeKind::DTDAttlist, place.kind);
  if (parsed == nullptr) {
    if (expander_.Postpone()) return true;
    return model_.Error().RecordError(ModelCode::ReplacementUnparsable, &list, elementName);
  }
  // The root holds the items of the first definition, and a list for each further one.
  ElementDecl& element = *model_.AddElement({elementName, nullptr});
  for (const auto* definition = static_cast<const XTreeDTDAttlist*>(parsed->root);
       definition != nullptr; definition = NextList(definition, parsed->root)) {
    if (!IsComplete(*definition)) {
      if (expander_.Postpone()) return true;
      return model_.Error().RecordError(ModelCode::ReplacementUnparsable, &list, elementName);
    }
    if (!ReadDefinition(element, *definition, list)) return false;
  }
  return true;
}

bool DtdReader::ReadDefinition(ElementDecl& element, const XTreeDTDAttlist& definition,
                               const XTreeDTDAttlist& list) {
  TQString name;
  const XTreeDTDAttlist* item = NextItem(definition.first);
  if (!ResolveName(list, item->text, name)) return false;
  if (name.IsEmpty()) return true;
  AttributeDecl& attribute = element.AddAttribute({name, nullptr});
  // A later definition overwrites an earlier one field by field.
  AttributeDecl fresh;
  std::swap(fresh.name, attribute.name);  // the element's index holds a view of the name
  attribute = std::move(fresh);
  attribute.sourceNode = &list;
  if (element.idAttribute == &attribute) element.idAttribute = nullptr;
  for (item = NextItem(item->next); item != nullptr; item = NextItem(item->next)) {
    switch (item->item) {
      case Item::Required:
        attribute.required = true;
        break;
      case Item::Implied:
        attribute.implied = true;
        break;
      case Item::Fixed:
        attribute.fixed = true;
        break;
      case Item::DefaultValue:
        attribute.defaultValue = item->text;
        break;
      case Item::TypePERef:
        if (!ReadTypeReference(attribute, *item, list)) return false;
        break;
      case Item::TypeEnumeration:
        attribute.isEnumeration = true;
        if (!ReadNames(attribute, *item, list)) return false;
        break;
      default:
        for (const TypeName& type : kTypes) {
          if (type.item == item->item && type.flag != nullptr) attribute.*type.flag = true;
        }
        if (item->item == Item::TypeNOTATION && !ReadNames(attribute, *item, list)) return false;
    }
  }
  element.hasDefaults = true;
  return CheckDefinition(element, attribute, list);
}

bool DtdReader::ReadTypeReference(AttributeDecl& attribute, const XTreeDTDAttlist& item,
                                  const XTreeDTDAttlist& list) {
  TQString text;
  if (!expander_.ExpandEntityReferences(&list, item.text, text, {.withParameterEntities = true})) {
    return false;
  }
  if (expander_.Postpone()) return true;
  int at = 0;
  TQString word = text.Tokenize(u"()| \t\r\n", at);
  for (const TypeName& type : kTypes) {
    if (word != type.keyword) continue;
    if (type.flag != nullptr) attribute.*type.flag = true;
    if (type.item != Item::TypeNOTATION) return true;
    word = text.Tokenize(u"()| \t\r\n", at);
  }
  attribute.isEnumeration = !attribute.isNOTATION;
  for (; !word.IsEmpty(); word = text.Tokenize(u"()| \t\r\n", at)) {
    attribute.enumeration.push_back(word);
  }
  return true;
}

bool DtdReader::ReadNames(AttributeDecl& attribute, const XTreeDTDAttlist& item,
                          const XTreeDTDAttlist& list) {
  for (const auto* name = NextItem(item.first); name != nullptr; name = NextItem(name->next)) {
    TQString text;
    if (!expander_.ExpandEntityReferences(&list, name->text, text,
                                          {.withParameterEntities = true})) {
      return false;
    }
    int at = 0;
    for (TQString word = text.Tokenize(u"| \t\r\n", at); !word.IsEmpty();
         word = text.Tokenize(u"| \t\r\n", at)) {
      attribute.enumeration.push_back(std::move(word));
    }
  }
  return true;
}

bool DtdReader::CheckDefinition(ElementDecl& element, AttributeDecl& attribute,
                                const XTreeDTDAttlist& list) {
  attribute.JoinEnumeration();
  if (attribute.isID && !expander_.Postpone()) {
    if (element.idAttribute != nullptr) {
      return model_.Error().RecordError(ModelCode::SecondID, &list, attribute.name.local);
    }
    element.idAttribute = &attribute;
    if (!attribute.required && !attribute.implied) {
      return model_.Error().RecordError(ModelCode::IDWithDefault, &list, attribute.name.local);
    }
  }
  if (!attribute.isEnumeration || attribute.defaultValue.IsEmpty()) return true;
  const auto& names = attribute.enumeration;
  if (std::find(names.begin(), names.end(), attribute.defaultValue) != names.end()) return true;
  if (expander_.Postpone()) return true;
  return model_.Error().RecordError(ModelCode::DefaultNotInEnumeration, &list,
                                    attribute.defaultValue);
}

}  // namespace kelmora
