// DcdReader reads a Document Content Description, in one pass. What is an attribute of an element
// there may as well be a child: the properties of a definition are its attributes and the elements
// below it, taken together in the order of the document.
#include <array>
#include <utility>

#include "model/schemadeclarations.h"
#include "older/olderschematypes.h"
#include "schema/schemawalker.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;
using Form = ValueRule::Form;

// --- what is allowed ---------------------------------------------------------------------------

constexpr View kModelWords[] = {u"Empty", u"Data", u"Elements", u"Mixed", u"Any"};
constexpr ValueRule kModel{Form::OneOf, ModelCode::BadValue,
                           u"- expected (Empty | Data | Elements | Mixed | Any)", kModelWords};
constexpr View kContentWords[] = {u"Open", u"Closed"};
constexpr ValueRule kContent{Form::OneOf, ModelCode::BadValue, u"- expected (Open | Closed)",
                             kContentWords};
constexpr View kOrderWords[] = {u"Alt", u"Seq"};
constexpr ValueRule kOrder{Form::OneOf, ModelCode::BadValue, u"- expected (Alt | Seq)",
                           kOrderWords};
constexpr View kGroupOccursWords[] = {u"Required", u"Optional", u"OneOrMore", u"ZeroOrMore"};
constexpr ValueRule kGroupOccurs{Form::OneOf, ModelCode::BadValue,
                                 u"- expected (Required | Optional | OneOrMore | ZeroOrMore)",
                                 kGroupOccursWords};
constexpr Particle kBoundsOfOccurs[] = {
    // by the words of kGroupOccursWords
    {nullptr, nullptr, 1, 1},
    {nullptr, nullptr, 0, 1},
    {nullptr, nullptr, 1, Particle::kUnbounded},
    {nullptr, nullptr, 0, Particle::kUnbounded},
};
constexpr View kIDRoleWords[] = {u"ID", u"IDREF", u"IDREFS"};
constexpr ValueRule kIDRole{Form::OneOf, ModelCode::BadValue, u"- expected (ID | IDREF | IDREFS)",
                            kIDRoleWords};
constexpr View kOccursWords[] = {u"Required", u"Optional"};
constexpr ValueRule kOccurs{Form::OneOf, ModelCode::BadValue, u"- expected (Required | Optional)",
                            kOccursWords};
constexpr View kFixedWords[] = {u"True", u"False"};
constexpr ValueRule kFixed{Form::OneOf, ModelCode::BadValue, u"- expected (True | False)",
                           kFixedWords};

constexpr const char16_t* kElementMessage =
    u"- expected: (Attribute | AttributeDef | Datatype | Description | Element | Group | Type | "
    u"Model | Content)";

constexpr AttributeRule kElementProperties[] = {
    {Word::DcdType},         {Word::DcdModel, &kModel},
    {Word::DcdDatatype},     {Word::DcdMin},
    {Word::DcdMax},          {Word::DcdMinExclusive},
    {Word::DcdMaxExclusive}, {Word::DcdContent, &kContent},
    {Word::DcdRoot},         {Word::DcdAttributeDef},
    {Word::DcdAttribute},    {Word::DcdDescription},
    {Word::DcdElement},      {Word::DcdGroup},
};
constexpr SchemaRow kDcdElementRow{kElementProperties, kElementMessage, {}};

// In front of the type of a definition the other properties are passed over, whatever they say.
constexpr auto kUntypedProperties = [] {
  auto properties = std::to_array(kElementProperties);
  for (AttributeRule& rule : properties) rule.value = nullptr;
  return properties;
}();
constexpr SchemaRow kDcdUntypedRow{kUntypedProperties, kElementMessage, {}};

// In a group the two attributes of the group itself are passed over.
constexpr AttributeRule kGroupProperties[] = {
    {Word::DcdRDFOrder},    {Word::DcdOccurs},  {Word::DcdAttributeDef}, {Word::DcdAttribute},
    {Word::DcdDescription}, {Word::DcdElement}, {Word::DcdGroup},
};
constexpr SchemaRow kDcdGroupContentRow{kGroupProperties, kElementMessage, {}};

constexpr AttributeRule kGroupAttributes[] = {{Word::DcdRDFOrder, &kOrder},
                                              {Word::DcdOccurs, &kGroupOccurs}};
constexpr SchemaRow kDcdGroupRow{
    kGroupAttributes, u"- expected attribute: (RDF:Order | Occurs)", {}};

constexpr AttributeRule kAttributeProperties[] = {
    {Word::DcdName},
    {Word::DcdDefault},
    {Word::DcdDatatype},
    {Word::DcdValues},
    {Word::DcdIDRole, &kIDRole},
    {Word::DcdOccurs, &kOccurs},
    {Word::DcdFixed, &kFixed},
    {Word::DcdDescription},
    {Word::DcdMin},
    {Word::DcdMax},
    {Word::DcdMinExclusive},
    {Word::DcdMaxExclusive},
};
constexpr SchemaRow kDcdAttributeRow{
    kAttributeProperties,
    u"- expected attribute: (Name | Default | Datatype | Description | Occurs)",
    {}};

constexpr Word kTopChildren[] = {Word::DcdElementDef, Word::DcdAttributeDef, Word::DcdDescription};
constexpr SchemaRow kDcdTopRow{
    {}, nullptr, kTopChildren, u"- expected: (ElementType | AttributeType | description)"};

struct FacetName {
  Word word;
  View facet;
};
constexpr FacetName kFacetNames[] = {
    {Word::DcdMin, u"minInclusive"},
    {Word::DcdMax, u"maxInclusive"},
    {Word::DcdMinExclusive, u"minExclusive"},
    {Word::DcdMaxExclusive, u"maxExclusive"},
};

struct Role {
  View word;
  bool AttributeDecl::*flag;
};
constexpr Role kRoles[] = {{u"ID", &AttributeDecl::isID},
                           {u"IDREF", &AttributeDecl::isIDREF},
                           {u"IDREFS", &AttributeDecl::isIDREFS}};

// --- the reader --------------------------------------------------------------------------------

class DcdReader final : private SchemaWalker {
 public:
  explicit DcdReader(DocumentModel& model) : SchemaWalker(model) {}

  bool Read(const XTreeNode& root);

 private:
  bool AttributeName(const XTreeNode&, View name, TQString& key) override {
    key = name;
    return name != u"xmlns" && PrefixOf(name) != u"xmlns";
  }
  View ElementName(const XTreeNode& element) override { return element.GetName(); }

  // The bounds are those of elements that the node names itself. The holder is null until the type
  // of a definition is known.
  bool ReadDCDElement(const XTreeNode& node, const SchemaRow& row, ElementDecl* holder,
                      const Particle& bounds);
  bool ReadType(const XTreeNode& node, const TQString& name, ElementDecl*& holder);
  bool ReadElementProperty(Word word, const TQString& value, const XTreeNode& node,
                           ElementDecl& holder, const Particle& bounds);
  bool ReadGroup(const XTreeNode& node, ElementDecl& holder);
  bool ReadDCDAttribute(const XTreeNode& node, ElementDecl& holder);
  bool ReadAttributeProperty(Word word, const TQString& value, const XTreeNode& node,
                             AttributeDecl& attribute);
};

bool DcdReader::Read(const XTreeNode& root) {
  model_.pass = 0;
  model_.schemaKind = SchemaKind::DCD;
  model_.EnterPredefinedEntities();
  for (const XTreeNode* top = root.FirstChildOfKind(XTreeKind::Element); top != nullptr;
       top = top->NextOfKind(XTreeKind::Element)) {
    if (top->GetName() != TextOf(Word::DCD)) continue;
    const bool complete = ReadChildren(*top, kDcdTopRow, [&](Word word, const XTreeNode& child) {
      if (word == Word::DcdElementDef) return ReadDCDElement(child, kDcdElementRow, nullptr, {});
      if (word == Word::DcdAttributeDef) {
        Warn(child, u"DCD global <AttributeDef>");
      } else {
        model_.Schema().schemaDocumentation = TextOfElement(child);
      }
      return true;
    });
    if (!complete) return false;
  }
  return CheckElements(root);
}

bool DcdReader::ReadDCDElement(const XTreeNode& node, const SchemaRow& row, ElementDecl* holder,
                               const Particle& bounds) {
  const SchemaRow* current = holder != nullptr ? &row : &kDcdUntypedRow;
  return ReadProperties(
      node, current, [&](Word word, const TQString& value, const XTreeNode& property) {
        if (word == Word::DcdType) {
          current = &row;
          return ReadType(property, value, holder);
        }
        return holder == nullptr || ReadElementProperty(word, value, property, *holder, bounds);
      });
}

bool DcdReader::ReadType(const XTreeNode& node, const TQString& name, ElementDecl*& holder) {
  holder = model_.AddElement({TrimView(name), nullptr});
  if (holder->declared) return Fail(ModelCode::DeclaredTwice, node, name);
  holder->declared = true;
  holder->sourceNode = &node;
  return true;
}

bool DcdReader::ReadElementProperty(Word word, const TQString& value, const XTreeNode& node,
                                    ElementDecl& holder, const Particle& bounds) {
  if (word == Word::DcdModel) {
    holder.isEmpty |= value == u"Empty";
    holder.hasSimpleContent |= value == u"Data";
    holder.isSequence |= value == u"Elements" && !holder.isChoice;
    holder.isAny |= value == u"Any";
    holder.isMixed |= value == u"Mixed";
  } else if (word == Word::DcdDatatype) {
    holder.hasSimpleContent = true;
    holder.typeRef = XdrType(value);
    return holder.typeRef != nullptr || Fail(ModelCode::BadValue, node, value);
  } else if (word == Word::DcdContent) {
    holder.isOpen = value == u"Open";
  } else if (word == Word::DcdAttributeDef) {
    return ReadDCDAttribute(node, holder);
  } else if (word == Word::DcdAttribute) {
    Warn(node, u"DCD <Attribute> reference to global <AttributeDef>");
  } else if (word == Word::DcdDescription) {
    holder.description = value;
  } else if (word == Word::DcdElement) {
    ElementDecl* element = model_.AddElement({TrimView(value), nullptr});
    if (element->sourceNode == nullptr) element->sourceNode = &node;
    holder.AddParticle(element, bounds.minOccurs, bounds.maxOccurs);
  } else if (word == Word::DcdGroup) {
    return ReadGroup(node, holder);
  }
  for (const FacetName& entry : kFacetNames) {
    if (entry.word != word || holder.typeRef == nullptr) continue;
    AddFacet(entry.facet, value, TypeCode::String, holder.typeRef);
  }
  return true;
}

bool DcdReader::ReadGroup(const XTreeNode& node, ElementDecl& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kDcdGroupRow, values)) return false;
  const bool isChoice = values[Word::DcdRDFOrder] == u"Alt";
  Particle bounds;
  for (std::size_t i = 0; i < std::size(kGroupOccursWords); ++i) {
    if (values[Word::DcdOccurs] == kGroupOccursWords[i]) bounds = kBoundsOfOccurs[i];
  }
  const bool isPlain = !isChoice && bounds.minOccurs == 1 && bounds.maxOccurs == 1;
  if (isPlain && !holder.isGroup) return ReadDCDElement(node, kDcdGroupContentRow, &holder, {});
  const XTreeNode* first = node.FirstChildOfKind(XTreeKind::Element);
  if (first != nullptr && first->NextOfKind(XTreeKind::Element) == nullptr) {
    return ReadDCDElement(node, kDcdGroupContentRow, &holder, bounds);
  }
  ElementDecl* nested = model_.MakeElement();
  nested->isGroup = true;
  nested->isChoice = isChoice;
  nested->isSequence = !isChoice;
  holder.AddParticle(nested, bounds.minOccurs, bounds.maxOccurs);
  return ReadDCDElement(node, kDcdGroupContentRow, nested, {});
}

// --- attributes --------------------------------------------------------------------------------

bool DcdReader::ReadDCDAttribute(const XTreeNode& node, ElementDecl& holder) {
  AttributeDecl& attribute = *model_.MakeAttribute();
  attribute.sourceNode = &node;
  const SchemaRow* row = &kDcdAttributeRow;
  const bool complete =
      ReadProperties(node, row, [&](Word word, const TQString& value, const XTreeNode& property) {
        return ReadAttributeProperty(word, value, property, attribute);
      });
  if (!complete) return false;
  attribute.implied = !attribute.fixed && !attribute.required;
  attribute.JoinEnumeration();
  holder.attributes.Set(&attribute);
  holder.hasDefaults = true;
  return true;
}

bool DcdReader::ReadAttributeProperty(Word word, const TQString& value, const XTreeNode& node,
                                      AttributeDecl& attribute) {
  if (word == Word::DcdName) {
    attribute.name.local = TrimView(value);
  } else if (word == Word::DcdDefault) {
    attribute.defaultValue = value;
  } else if (word == Word::DcdDatatype) {
    return SetXdrType(value, attribute) || Fail(ModelCode::BadValue, node, value);
  } else if (word == Word::DcdValues) {
    for (TQString& each : SplitValues(value)) attribute.enumeration.push_back(std::move(each));
  } else if (word == Word::DcdIDRole) {
    for (const Role& role : kRoles) {
      if (value == role.word) attribute.*role.flag = true;
    }
  } else if (word == Word::DcdOccurs) {
    attribute.required = value == u"Required";
  } else if (word == Word::DcdFixed) {
    attribute.fixed = value == u"True";
  }
  for (const FacetName& entry : kFacetNames) {
    if (entry.word == word) AddFacet(entry.facet, value, TypeCode::String, attribute.type);
  }
  return true;
}

}  // namespace

bool DocumentModel::ReadDCD(const SchemaSource& document) {
  return DcdReader(*this).Read(*document.root);
}

}  // namespace kelmora
