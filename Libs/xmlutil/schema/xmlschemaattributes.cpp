// Attribute declarations.
#include <utility>

#include "schema/xmlschemareader.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

constexpr View kOneType = u"- only one of type or simpleType may be used";

}  // namespace

bool XmlSchemaReader::ReadAttribute(const XTreeNode& node, const AttributeHolder* holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kAttributeRow, values)) return false;
  AttributeDecl& attribute = *model_.MakeAttribute();
  const TQString* reference = values.Find(Word::Ref);
  if (reference != nullptr) {
    bool isKnown = false;
    if (!FindReferredAttribute(node, *reference, attribute, isKnown)) return false;
    if (!isKnown) return true;
    if (values.Has(Word::Name)) return Fail(ModelCode::NameAndRef, node);
  } else if (MissesAttribute(node, values, Word::Name)) {
    return false;
  } else {
    const TQString* form = values.Find(Word::Form);
    const bool isQualified =
        form != nullptr ? *form == u"qualified" : state_.attributeFormQualified;
    const bool isInTarget = holder == nullptr || isQualified;
    attribute.name = {values[Word::Name], isInTarget ? state_.targetNamespace : nullptr};
  }
  attribute.sourceNode = &node;

  const TQString& use = values[Word::Use];
  attribute.prohibited |= use == u"prohibited";
  attribute.required |= use == u"required";
  const TQString* byDefault = values.Find(Word::Default);
  const TQString* fixed = values.Find(Word::Fixed);
  if (byDefault != nullptr && fixed != nullptr) return Fail(ModelCode::DefaultAndFixed, node);
  if (byDefault != nullptr && !use.IsEmpty() && use != u"optional") {
    return Fail(ModelCode::DefaultWithUse, node);
  }
  attribute.fixed |= fixed != nullptr;
  if (!ReadAttributeType(node, values, attribute)) return false;
  attribute.implied = !attribute.fixed && !attribute.required;
  if (const TQString* value = byDefault != nullptr ? byDefault : fixed) {
    if (!CheckTypedValue(node, attribute.type.get(), *value)) return false;
    attribute.defaultValue = *value;
  }
  return StoreAttribute(node, attribute, holder);
}

bool XmlSchemaReader::FindReferredAttribute(const XTreeNode& node, const TQString& text,
                                            AttributeDecl& attribute, bool& isKnown) {
  const QName name = ResolveName(node, text);
  const AttributeDecl* global =
      FindByName(name, [&](const QName& wanted) { return schema_.globalAttributes.Find(wanted); });
  isKnown = global != nullptr;
  if (!isKnown) return LeaveOpen(name, ModelCode::UnknownAttribute, node, text);
  attribute = *global;
  return true;
}

bool XmlSchemaReader::ReadAttributeType(const XTreeNode& node, const SchemaValues& values,
                                        AttributeDecl& attribute) {
  const TQString* typeName = values.Find(Word::Type);
  if (typeName != nullptr) {
    FoundType found;
    if (!ResolveSimpleType(node, *typeName, found)) return false;
    attribute.type = found.type;
  }
  const bool complete = ReadChildren(node, kAttributeRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) return true;
    if (word == Word::SimpleType) {
      if (typeName != nullptr) return Fail(ModelCode::NotAllowed, child, kOneType);
      return ReadNestedSimpleType(child, attribute.type);
    }
    SchemaValues ofName;
    if (!ReadAttributes(child, kFacetRow, ofName)) return false;
    attribute.isEnumeration = true;
    attribute.enumeration.push_back(ofName[Word::Value]);
    return true;
  });
  attribute.JoinEnumeration();
  return complete;
}

bool XmlSchemaReader::StoreAttribute(const XTreeNode& node, AttributeDecl& attribute,
                                     const AttributeHolder* holder) {
  if (holder == nullptr) {
    schema_.globalAttributes.Set(&attribute);
    return true;
  }
  DeclarationList<AttributeDecl>& attributes = holder->element->attributes;
  const bool isThere = attributes.Find(attribute.name) != nullptr;
  if (isThere && !holder->isRestriction && IsFirstPass()) {
    return Fail(ModelCode::AttributeDeclaredTwice, node, attribute.name.local);
  }
  attributes.Set(&attribute);
  if (attribute.prohibited && holder->isRestriction && !isThere && !IsPassPending()) {
    return Fail(ModelCode::UnknownAttribute, node, attribute.name.local);
  }
  return true;
}

}  // namespace kelmora
