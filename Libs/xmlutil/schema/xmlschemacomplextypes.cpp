// Complex types: the content of a type and what it derives from.
#include <utility>

#include "schema/xmlschemareader.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

constexpr View kAnyType = u"anyType";
constexpr View kAnySimpleType = u"anySimpleType";
constexpr View kAnyNamespace = u"##any";
constexpr View kComplexContentBase =
    u"- simpleContent can not have a base that is a complexType with complexContent";
constexpr View kSimpleTypeBase =
    u"- you must use a complexType instead of '%s', because a simpleContent/restriction can't be "
    u"based on a simpleType";

bool Holds(const TQString& words, View word) {
  return words.Find(word) != TQString::kNotFound;
}

}  // namespace

const SchemaRow& XmlSchemaReader::Derivation::Row() const {
  if (!isSimpleContent) return kComplexContentDerivationRow;
  return isRestriction ? kSimpleContentRestrictionRow : kSimpleContentExtensionRow;
}

ElementDecl& XmlSchemaReader::DeclarationOf(const XTreeNode& node) {
  ElementDecl*& declaration = declarations_[{state_.targetNamespace, &node}];
  if (declaration == nullptr) declaration = model_.MakeElement();
  return *declaration;
}

// While the type is being read, its name stands for what the last pass left of it.
bool XmlSchemaReader::ReadTopComplexType(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kComplexTypeRow, values)) return false;
  ComplexTypeEntry read;
  read.definition = &DeclarationOf(node);
  ElementDecl earlier(&model_);
  earlier.CopyDefinition(*read.definition);
  const auto known = schema_.complexTypes.find(TargetName(values[Word::Name]));
  const bool isKnown =
      known != schema_.complexTypes.end() && known->second->definition == read.definition;
  if (isKnown) known->second->definition = &earlier;
  Derivation derivation;
  const bool complete = ReadComplexType(node, values, *read.definition, derivation);
  if (!complete) read.definition->CopyDefinition(earlier);
  if (isKnown) known->second->definition = read.definition;
  if (!complete || MissesAttribute(node, values, Word::Name)) return false;
  read.name = TargetName(values[Word::Name]);
  read.base = derivation.base;
  read.baseEntry = derivation.baseEntry;
  read.blockText = values[Word::Block];
  read.finalText = values[Word::Final];
  read.sourceNode = &node;
  auto& entry = schema_.complexTypes[read.name];
  if (entry == nullptr) entry = std::make_unique<ComplexTypeEntry>();
  if (read.baseEntry == entry.get()) read.baseEntry = nullptr;  // a type redefined by itself
  *entry = std::move(read);
  return true;
}

bool XmlSchemaReader::ReadComplexType(const XTreeNode& node, const SchemaValues& values,
                                      ElementDecl& definition, Derivation& derivation) {
  definition.ClearDefinition();
  definition.isAbstract |= values.IsTrue(Word::Abstract);
  bool isMixed = values.IsTrue(Word::Mixed);
  const bool complete = ReadChildren(node, kComplexTypeRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) {
      ReadAnnotation(child, definition.description);
      return true;
    }
    if (word != Word::SimpleContent && word != Word::ComplexContent) {
      return ReadContentPart(word, child, definition, false);
    }
    derivation.isSimpleContent = word == Word::SimpleContent;
    SchemaValues ofContent;
    const bool isSimple = derivation.isSimpleContent;
    if (!isSimple && !ReadAttributes(child, kComplexContentRow, ofContent)) return false;
    isMixed |= ofContent.IsTrue(Word::Mixed);
    return ReadContent(child, definition, derivation);
  });
  if (complete) FinishComplexType(definition, derivation, isMixed);
  definition.attributes.DropIndex();
  return complete;
}

void XmlSchemaReader::FinishComplexType(ElementDecl& definition, const Derivation& derivation,
                                        bool isMixed) {
  if (derivation.isSimpleContent || derivation.isFromAnyType) {
    definition.isMixed |= isMixed;
    return;
  }
  const bool hasParticles = !definition.particles.empty();
  if (!definition.isMixed && !definition.isAny && !definition.isAll && !hasParticles) {
    definition.isEmpty = true;
    definition.isSequence = false;
    definition.hasSimpleContent = false;
  }
  definition.isMixed |= isMixed;
  if (hasParticles) {
    definition.isEmpty = false;
    if (!definition.isChoice && !definition.isAll) definition.isSequence = true;
  }
  if (definition.hasSimpleContent || definition.isAny) definition.isEmpty = false;
}

bool XmlSchemaReader::ReadContent(const XTreeNode& node, ElementDecl& definition,
                                  Derivation& derivation) {
  const SchemaRow& row = derivation.isSimpleContent ? kSimpleContentRow : kComplexContentRow;
  return ReadChildren(node, row, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) return true;
    derivation.isRestriction = word == Word::Restriction;
    return ReadDerivation(child, definition, derivation);
  });
}

bool XmlSchemaReader::ReadDerivation(const XTreeNode& node, ElementDecl& definition,
                                     Derivation& derivation) {
  const SchemaRow& row = derivation.Row();
  SchemaValues values;
  if (!ReadAttributes(node, row, values)) return false;
  if (MissesAttribute(node, values, Word::Base)) return false;
  if (!ReadBase(node, values[Word::Base], definition, derivation)) return false;

  FacetTarget target;
  if (derivation.isSimpleContent && derivation.isRestriction) {
    target.base = definition.typeRef;
    if (!CopyType(node, target.base, definition.typeRef)) return false;
    target.type = definition.typeRef;
  }
  return ReadChildren(node, row, [&](Word word, const XTreeNode& child) {
    if (IsFacetWord(word)) return ReadFacet(child, word, target);
    if (word != Word::SimpleType) {
      return ReadContentPart(word, child, definition, derivation.isRestriction);
    }
    if (!ReadNestedSimpleType(child, target.base)) return false;
    if (!CopyType(child, target.base, definition.typeRef)) return false;
    target = {target.base, definition.typeRef};
    return true;
  });
}

// --- the base ----------------------------------------------------------------------------------

bool XmlSchemaReader::ReadBase(const XTreeNode& node, const TQString& text, ElementDecl& definition,
                               Derivation& derivation) {
  const QName name = ResolveName(node, text);
  derivation.base = name;
  if (IsSchemaName(name)) return ReadSchemaBase(node, text, definition, derivation);
  const auto* complex = FindByName(name, [&](const QName& wanted) -> const ComplexTypeEntry* {
    const auto entry = schema_.complexTypes.find(wanted);
    return entry != schema_.complexTypes.end() ? entry->second.get() : nullptr;
  });
  if (complex != nullptr) return ReadComplexBase(node, *complex, definition, derivation);
  const auto* simple = FindByName(name, [&](const QName& wanted) -> const SimpleTypeEntry* {
    const auto entry = schema_.simpleTypes.find(wanted);
    return entry != schema_.simpleTypes.end() ? entry->second.get() : nullptr;
  });
  if (simple != nullptr) return ReadSimpleBase(node, text, *simple, definition, derivation);
  definition.isOpenEnded = true;
  return LeaveOpen(name, ModelCode::BadValue, node, text);
}

bool XmlSchemaReader::ReadSchemaBase(const XTreeNode& node, const TQString& text,
                                     ElementDecl& definition, Derivation& derivation) {
  const QName& name = derivation.base;
  if (name.local == kAnyType) {
    derivation.isFromAnyType = true;
    definition.isMixed = true;
    definition.attributeWildcard = {kAnyNamespace, Wildcard::kStrict};
    definition.isSequence = !derivation.isRestriction;
    if (derivation.isRestriction) return true;
    ElementDecl* any = model_.MakeElement();
    any->isAny = any->isGroup = true;
    any->elementWildcard = {kAnyNamespace, Wildcard::kStrict};
    definition.AddParticle(any);
    return true;
  }
  definition.hasSimpleContent = true;
  definition.isSequence = false;
  if (name.local == kAnySimpleType) return true;
  if (derivation.isSimpleContent && derivation.isRestriction) {
    return Fail(ModelCode::BadValue, node, TQString::Format(kSimpleTypeBase, {text}));
  }
  definition.typeRef = BuiltinType(name);
  return definition.typeRef != nullptr || Fail(ModelCode::BadValue, node, text);
}

bool XmlSchemaReader::ReadComplexBase(const XTreeNode& node, const ComplexTypeEntry& base,
                                      ElementDecl& definition, Derivation& derivation) {
  const ElementDecl& from = *base.definition;
  if (derivation.isSimpleContent && !from.hasSimpleContent && !from.isOpenEnded) {
    return Fail(ModelCode::NotAllowed, node, kComplexContentBase);
  }
  if (!CopyDefinition(node, from, definition)) return false;
  if (Holds(base.finalText, derivation.isRestriction ? View(u"restriction") : u"extension")) {
    return Fail(ModelCode::ForbiddenDerivation, node, base.finalText);
  }
  derivation.baseEntry = &base;
  // Of a restriction the content is given anew; simple content goes on from that of the base.
  if (derivation.isRestriction && !derivation.isSimpleContent) definition.ClearContent();
  return true;
}

bool XmlSchemaReader::ReadSimpleBase(const XTreeNode& node, const TQString& text,
                                     const SimpleTypeEntry& base, ElementDecl& definition,
                                     const Derivation& derivation) {
  if (derivation.isSimpleContent && derivation.isRestriction) {
    return Fail(ModelCode::BadValue, node, TQString::Format(kSimpleTypeBase, {text}));
  }
  if (Holds(base.finalText, u"extension")) {
    return Fail(ModelCode::ForbiddenDerivation, node, base.finalText);
  }
  definition.typeRef = base.type;
  definition.hasSimpleContent = true;
  return true;
}

bool XmlSchemaReader::CopyDefinition(const XTreeNode& node, const ElementDecl& from,
                                     ElementDecl& to) {
  if (!ChargeCopies(node, from.particles.size() + from.attributes.Size())) return false;
  to.CopyDefinition(from);
  return true;
}

bool XmlSchemaReader::ReadContentPart(Word word, const XTreeNode& node, ElementDecl& definition,
                                      bool isRestriction) {
  const AttributeHolder attributes{&definition, isRestriction};
  if (word == Word::Group || word == Word::All || word == Word::Choice || word == Word::Sequence) {
    return ReadGroup(node, word, {&definition, &definition});
  }
  if (word == Word::Attribute) return ReadAttribute(node, &attributes);
  if (word == Word::AttributeGroup) return ReadAttributeGroup(node, definition);
  if (word == Word::AnyAttribute) return ReadAnyAttribute(node, definition);
  return true;
}

}  // namespace kelmora
