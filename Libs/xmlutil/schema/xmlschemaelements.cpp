// Element declarations and identity constraints.
#include <utility>

#include "schema/xmlschemareader.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

constexpr View kAnyType = u"anyType";
constexpr View kAnySimpleType = u"anySimpleType";
constexpr View kNameOrRef = u"name or ref";
constexpr View kOneType = u"- only one of type, simpleType, or complexType may be used";

struct ConstraintKind {
  Word word;
  IdentityConstraint::Kind kind;
  const SchemaRow& row;
};
constexpr ConstraintKind kConstraintKinds[] = {
    {Word::Unique, IdentityConstraint::Kind::Unique, kConstraintRow},
    {Word::Key, IdentityConstraint::Kind::Key, kConstraintRow},
    {Word::Keyref, IdentityConstraint::Kind::Keyref, kKeyrefRow},
};

}  // namespace

bool XmlSchemaReader::ReadElement(const XTreeNode& node, const Holder* holder) {
  SchemaValues values;
  const bool isLocal = holder != nullptr;
  if (!ReadAttributes(node, isLocal ? kLocalElementRow : kTopElementRow, values)) return false;
  if (values.Has(Word::Default) && values.Has(Word::Fixed)) {
    return Fail(ModelCode::DefaultAndFixed, node);
  }
  if (!CheckOccurrence(node, values, holder)) return false;
  const TQString* reference = values.Find(Word::Ref);
  const TQString* name = values.Find(Word::Name);
  if (reference == nullptr && name == nullptr) {
    return Fail(ModelCode::AttributeMissing, node, kNameOrRef);
  }
  if (reference != nullptr && name != nullptr) return Fail(ModelCode::NameAndRef, node);

  ElementDecl* element =
      reference != nullptr ? ReferredElement(node, *reference) : NamedElement(node, values, holder);
  if (isLocal) {
    const Particle bounds = BoundsOf(values);
    holder->group->AddParticle(element, bounds.minOccurs, bounds.maxOccurs);
  }
  if (reference != nullptr) {
    // What a reference says besides is the business of the declaration.
    return ReadChildren(node, kTopElementRow, [](Word, const XTreeNode&) { return true; });
  }
  if (!ReadElementDefinition(node, values, *element, isLocal)) return false;
  element->declared = true;
  return true;
}

bool XmlSchemaReader::CheckOccurrence(const XTreeNode& node, const SchemaValues& values,
                                      const Holder* holder) {
  if (holder == nullptr || !holder->isAll) return true;
  const auto isSmall = [](std::int32_t bound) { return bound == 0 || bound == 1; };
  const Particle bounds = BoundsOf(values);
  if (!isSmall(bounds.maxOccurs)) return Fail(ModelCode::BadValue, node, kMaxOccursInAll);
  return isSmall(bounds.minOccurs) || Fail(ModelCode::BadValue, node, kMinOccursInAll);
}

ElementDecl* XmlSchemaReader::ReferredElement(const XTreeNode& node, const TQString& text) {
  QName name = ResolveName(node, text);
  if (name.uri == nullptr && !state_.hasOwnTarget) name.uri = state_.targetNamespace;
  ElementDecl* element = model_.AddElement(name);
  if (element->sourceNode == nullptr) element->sourceNode = &node;
  return element;
}

// Elements of one name within one element share a declaration.
ElementDecl* XmlSchemaReader::NamedElement(const XTreeNode& node, const SchemaValues& values,
                                           const Holder* holder) {
  const TQString& local = values[Word::Name];
  const TQString* form = values.Find(Word::Form);
  const bool isQualified = form != nullptr ? *form == u"qualified" : state_.elementFormQualified;
  ElementDecl* element = nullptr;
  if (holder == nullptr) {
    element = model_.AddElement(TargetName(local));
  } else {
    const QName name{local, isQualified ? state_.targetNamespace : nullptr};
    element = holder->element->locals.Find(name);
    if (element == nullptr) {
      element = model_.MakeElement();
      element->name = name;
      holder->element->locals.Append(element);
    }
  }
  element->qualified = isQualified;
  element->sourceNode = &node;
  return element;
}

bool XmlSchemaReader::ReadElementDefinition(const XTreeNode& node, const SchemaValues& values,
                                            ElementDecl& element, bool isLocal) {
  const TQString* typeName = values.Find(Word::Type);
  element.isAbstract = values.IsTrue(Word::Abstract);
  element.isNillable = values.IsTrue(Word::Nillable);
  element.constraints.clear();
  bool hasType = typeName != nullptr;
  if (hasType && !ReadElementType(node, *typeName, element, isLocal)) return false;
  element.defaultText = values[Word::Default];
  element.fixedText = values[Word::Fixed];
  if (!ReadElementChildren(node, values, element, isLocal, hasType)) return false;
  const TQString& head = values[Word::SubstitutionGroup];
  if (!hasType && !TakeDefaultType(node, values, element)) return false;
  if (!CheckElementValue(node, values, element)) return false;
  if (!head.IsEmpty()) {
    if (isLocal) return Fail(ModelCode::LocalSubstitution, node);
    element.substitutionGroup = ResolveName(node, head);
  }
  const TQString* final = values.Find(Word::Final);
  const TQString* block = values.Find(Word::Block);
  element.finalText = final != nullptr ? *final : state_.finalDefault;
  element.blockText = block != nullptr ? *block : state_.blockDefault;
  return true;
}

bool XmlSchemaReader::CheckNotDeclared(const XTreeNode& node, const ElementDecl& element,
                                       bool isLocal) {
  if (!element.declared || !IsFirstPass()) return true;
  return Fail(isLocal ? ModelCode::LocalDeclaredTwice : ModelCode::DeclaredTwice, node,
              element.name.local);
}

bool XmlSchemaReader::ReadElementType(const XTreeNode& node, const TQString& text,
                                      ElementDecl& element, bool isLocal) {
  const QName name = ResolveName(node, text);
  const bool isOther = !(name == element.typeName);
  if (isOther && IsSchemaName(name) && !CheckNotDeclared(node, element, isLocal)) return false;
  element.ClearDefinition();
  element.typeName = name;
  if (IsSchemaName(name)) {
    if (name.local == kAnyType) {
      element.isMixed = true;
      return true;
    }
    element.hasSimpleContent = true;
    if (name.local == kAnySimpleType) return true;
    element.typeRef = BuiltinType(name);
    return element.typeRef != nullptr || Fail(ModelCode::BadValue, node, text);
  }
  const auto* complex = FindByName(name, [&](const QName& wanted) -> const ComplexTypeEntry* {
    const auto entry = schema_.complexTypes.find(wanted);
    return entry != schema_.complexTypes.end() ? entry->second.get() : nullptr;
  });
  if (complex != nullptr) return CopyDefinition(node, *complex->definition, element);
  const auto* simple = FindByName(name, [&](const QName& wanted) -> const SimpleTypeEntry* {
    const auto entry = schema_.simpleTypes.find(wanted);
    return entry != schema_.simpleTypes.end() ? entry->second.get() : nullptr;
  });
  if (simple == nullptr) {
    element.isOpenEnded = true;
    return LeaveOpen(name, ModelCode::BadValue, node, text);
  }
  element.typeRef = simple->type;
  element.hasSimpleContent = true;
  return true;
}

bool XmlSchemaReader::ReadElementChildren(const XTreeNode& node, const SchemaValues& values,
                                          ElementDecl& element, bool isLocal, bool& hasType) {
  return ReadChildren(node, kTopElementRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) return true;
    if (word == Word::SimpleType || word == Word::ComplexType) {
      if (values.Has(Word::Type)) return Fail(ModelCode::NotAllowed, child, kOneType);
      hasType = true;
      return ReadInlineType(word, child, element, isLocal);
    }
    return ReadConstraint(child, word, element);
  });
}

bool XmlSchemaReader::ReadInlineType(Word word, const XTreeNode& node, ElementDecl& element,
                                     bool isLocal) {
  if (!CheckNotDeclared(node, element, isLocal)) return false;
  if (word == Word::ComplexType) {
    SchemaValues values;
    if (!ReadAttributes(node, kComplexTypeRow, values)) return false;
    Derivation derivation;
    ElementDecl earlier(&model_);
    earlier.CopyDefinition(element);
    const bool complete = ReadComplexType(node, values, element, derivation);
    if (!complete) element.AddMissing(earlier);
    return complete;
  }
  element.ClearDefinition();
  element.hasSimpleContent = true;
  return ReadNestedSimpleType(node, element.typeRef);
}

// Without a type of its own an element has what the head of its substitution group declares, with
// the value that it gives itself, or any type.
bool XmlSchemaReader::TakeDefaultType(const XTreeNode& node, const SchemaValues& values,
                                      ElementDecl& element) {
  constexpr std::size_t kUnitsPerCopy = 16;  // of a text, as far as kSchemaCopyLimit counts
  element.ClearDefinition();
  const TQString& name = values[Word::SubstitutionGroup];
  if (name.IsEmpty()) {
    element.isAny = element.isMixed = true;
    return true;
  }
  const ElementDecl* head = model_.FindElement(ResolveName(node, name));
  if (head == nullptr || head == &element) return true;
  if (!CopyDefinition(node, *head, element)) return false;
  if (values.Has(Word::Default) || values.Has(Word::Fixed)) return true;
  element.defaultText = head->defaultText;
  element.fixedText = head->fixedText;
  const auto units =
      static_cast<std::size_t>(head->defaultText.Length() + head->fixedText.Length());
  return ChargeCopies(node, units / kUnitsPerCopy);
}

bool XmlSchemaReader::CheckElementValue(const XTreeNode& node, const SchemaValues& values,
                                        const ElementDecl& element) {
  const TQString* value = values.Find(Word::Default);
  if (value == nullptr) value = values.Find(Word::Fixed);
  if (value == nullptr || element.isOpenEnded) return true;
  if (!element.hasSimpleContent) return Fail(ModelCode::DefaultWithoutText, node);
  return CheckTypedValue(node, element.typeRef.get(), *value);
}

// --- identity constraints ----------------------------------------------------------------------

bool XmlSchemaReader::ReadConstraint(const XTreeNode& node, Word word, ElementDecl& element) {
  const ConstraintKind* kind = kConstraintKinds;
  while (kind->word != word) ++kind;
  SchemaValues values;
  if (!ReadAttributes(node, kind->row, values)) return false;
  if (MissesAttribute(node, values, Word::Name)) return false;
  auto& entry = schema_.constraints[TargetName(values[Word::Name])];
  if (entry != nullptr && IsFirstPass()) {
    return Fail(ModelCode::ConstraintDeclaredTwice, node, values[Word::Name]);
  }
  if (entry == nullptr) entry = std::make_unique<IdentityConstraint>();
  IdentityConstraint& constraint = *entry;
  constraint.name = TargetName(values[Word::Name]);
  constraint.kind = kind->kind;
  constraint.fields.clear();
  if (values.Has(Word::Refer)) constraint.refer = ResolveName(node, values[Word::Refer]);
  const bool complete = ReadChildren(node, kind->row, [&](Word part, const XTreeNode& child) {
    if (part == Word::Annotation) return true;
    if (part == Word::Selector) return ReadPath(child, constraint.selector, false);
    constraint.fields.push_back(std::make_unique<XPathExpression>());
    return ReadPath(child, *constraint.fields.back(), true);
  });
  if (complete) element.constraints.push_back(&constraint);
  return complete;
}

bool XmlSchemaReader::ReadPath(const XTreeNode& node, XPathExpression& path, bool isField) {
  SchemaValues values;
  if (!ReadAttributes(node, kPathRow, values)) return false;
  const TQString& text = values[Word::Xpath];
  path.SetExpression(&model_.Builder().ScopeAt(node), text, kNoPattern);
  if (isField ? path.ParseField(true) : path.ParseSelector(true)) return true;
  return Fail(ModelCode::BadPath, node, text);
}

}  // namespace kelmora
