// XdrReader reads a schema of the XML-Data subset, in one pass: an element that is referred to is
// found or made, and what stays undeclared is found at the end.
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

constexpr View kSchemaNamespace = u"urn:schemas-microsoft-com:xml-data";
constexpr View kTypeNamespace = u"urn:schemas-microsoft-com:datatypes";
constexpr View kSchemaName = u"Schema";
constexpr View kDatatypeWarning = u"XML-Data <datatype>";

// --- what is allowed ---------------------------------------------------------------------------

constexpr View kContentWords[] = {u"empty", u"textOnly", u"eltOnly", u"mixed"};
constexpr ValueRule kContent{Form::OneOf, ModelCode::BadValue,
                             u"- expected (empty | textOnly | eltOnly | mixed)", kContentWords};
constexpr View kModelWords[] = {u"open", u"closed"};
constexpr ValueRule kModel{Form::OneOf, ModelCode::BadValue, u"- expected (open | closed)",
                           kModelWords};
constexpr View kOrderWords[] = {u"one", u"seq", u"many"};
constexpr ValueRule kOrder{Form::OneOf, ModelCode::BadValue, u"- expected (one | seq | many)",
                           kOrderWords};
constexpr View kRequiredWords[] = {u"yes", u"no"};
constexpr ValueRule kRequired{Form::OneOf, ModelCode::BadValue, u"- expected (yes | no)",
                              kRequiredWords};
constexpr View kMinWords[] = {u"0", u"1"};
constexpr ValueRule kMin{Form::OneOf, ModelCode::BadValue, u"- expected (0 | 1)", kMinWords};
constexpr View kMaxWords[] = {u"1", u"*"};
constexpr ValueRule kMax{Form::OneOf, ModelCode::BadValue, u"- expected (1 | *)", kMaxWords};

constexpr AttributeRule kElementTypeAttributes[] = {
    {Word::Name},        {Word::Content, &kContent}, {Word::DtType},         {Word::DtValues},
    {Word::DtMinLength}, {Word::DtMaxLength},        {Word::Model, &kModel}, {Word::Order, &kOrder},
};
constexpr Word kElementTypeChildren[] = {Word::Attribute,   Word::AttributeType, Word::Datatype,
                                         Word::Description, Word::Element,       Word::Group};
constexpr SchemaRow kXdrElementTypeRow{
    kElementTypeAttributes,
    u"- expected attribute: (name | model | dt:type | dt:minLength | dt:maxLength | content | "
    u"order)",
    kElementTypeChildren};

constexpr AttributeRule kAttributeTypeAttributes[] = {
    {Word::Name},
    {Word::Default},
    {Word::DtType},
    {Word::DtValues},
    {Word::DtMinLength},
    {Word::DtMaxLength},
    {Word::Required, &kRequired},
};
constexpr Word kAttributeTypeChildren[] = {Word::Datatype, Word::Description};
constexpr SchemaRow kXdrAttributeTypeRow{
    kAttributeTypeAttributes,
    u"- expected attribute: (name | default | dt:type | dt:values | required)",
    kAttributeTypeChildren, u"- expected: (datatype | description)"};

constexpr AttributeRule kAttributeAttributes[] = {
    {Word::Type}, {Word::Default}, {Word::Required, &kRequired}};
constexpr SchemaRow kXdrAttributeRow{
    kAttributeAttributes, u"- expected attribute: (type | default | required)", {}};
constexpr AttributeRule kElementAttributes[] = {
    {Word::Type}, {Word::MinOccurs, &kMin}, {Word::MaxOccurs, &kMax}};
constexpr SchemaRow kXdrElementRow{
    kElementAttributes, u"- expected attribute: (type | minOccurs | maxOccurs)", {}};
constexpr AttributeRule kGroupAttributes[] = {
    {Word::Order, &kOrder}, {Word::MinOccurs, &kMin}, {Word::MaxOccurs, &kMax}};
constexpr SchemaRow kXdrGroupRow{kGroupAttributes, nullptr, kElementTypeChildren};

constexpr Word kSchemaChildren[] = {Word::ElementType, Word::AttributeType, Word::Description};
constexpr SchemaRow kXdrSchemaRow{{}, nullptr, kSchemaChildren};

// --- the reader --------------------------------------------------------------------------------

// Bounds of a particle by the words of XDR.
Particle BoundsOf(const SchemaValues& values) {
  Particle bounds;
  if (values[Word::MinOccurs] == u"0") bounds.minOccurs = 0;
  if (values[Word::MaxOccurs] == u"*") bounds.maxOccurs = Particle::kUnbounded;
  return bounds;
}

class XdrReader final : private SchemaWalker {
 public:
  XdrReader(DocumentModel& model, const SchemaSource& source)
      : SchemaWalker(model),
        source_(source),
        schemaNamespace_(model.Builder().InternURI(kSchemaNamespace)),
        typeNamespace_(model.Builder().InternURI(kTypeNamespace)),
        targetNamespace_(model.Builder().InternURI(source.targetNamespace)) {}

  bool Read();

 private:
  bool AttributeName(const XTreeNode& node, View name, TQString& key) override;
  View ElementName(const XTreeNode& element) override;
  TQString MessagePrefix() const override { return prefix_; }
  TQString DatatypePrefix() const override { return typePrefix_; }
  bool FindPrefix(const XTreeNode& node, InternedURI uri, TQString& prefix);

  bool ReadXDRElementType(const XTreeNode& node);
  bool ReadElementAttributes(const XTreeNode& node, const SchemaValues& values,
                             ElementDecl& element);
  bool ReadContent(const XTreeNode& node, const SchemaRow& row, ElementDecl& element,
                   ElementDecl& group);
  bool CheckContent(const XTreeNode& node, const ElementDecl& element);
  bool ReadXDRAttributeType(const XTreeNode& node, ElementDecl* holder);
  bool ReadAttributeReference(const XTreeNode& node, ElementDecl& holder);
  bool ReadElementReference(const XTreeNode& node, ElementDecl& group);
  bool ReadGroup(const XTreeNode& node, ElementDecl& element, ElementDecl& group);

  const SchemaSource& source_;
  const InternedURI schemaNamespace_;
  const InternedURI typeNamespace_;
  const InternedURI targetNamespace_;
  TQString prefix_;  // both with their colons
  TQString typePrefix_;
};

bool XdrReader::AttributeName(const XTreeNode& node, View name, TQString& key) {
  const View prefix = PrefixOf(name);
  if (name == u"xmlns" || prefix == u"xmlns") return false;
  const bool isOfTypes =
      !prefix.empty() && model_.Builder().ScopeAt(node).Lookup(prefix) == typeNamespace_;
  key = isOfTypes ? u"dt:" + TQString(LocalPartOf(name)) : TQString(name);
  return true;
}

View XdrReader::ElementName(const XTreeNode& element) {
  const PrefixMap& scope = model_.Builder().ScopeAt(element);
  const bool isOurs = scope.Lookup(PrefixOf(element.GetName())) == schemaNamespace_;
  return isOurs ? element.GetLocalName() : View();
}

bool XdrReader::FindPrefix(const XTreeNode& node, InternedURI uri, TQString& prefix) {
  for (const PrefixMap::Entry& entry : model_.Builder().ScopeAt(node)) {
    if (entry.uri != uri) continue;
    prefix = entry.prefix;
    if (!prefix.IsEmpty()) prefix += u':';
    return true;
  }
  return Fail(ModelCode::NoSchemaPrefix, node);
}

bool XdrReader::Read() {
  model_.pass = 0;
  model_.EnterPredefinedEntities();
  const XTreeNode* schema = source_.root->FirstChildOfKind(XTreeKind::Element);
  while (schema != nullptr && schema->GetLocalName() != kSchemaName) {
    schema = schema->NextOfKind(XTreeKind::Element);
  }
  if (schema == nullptr) return CheckElements(*source_.root);
  if (!FindPrefix(*schema, schemaNamespace_, prefix_)) return false;
  if (!FindPrefix(*schema, typeNamespace_, typePrefix_)) return false;
  if (ElementName(*schema) != kSchemaName) {
    return Fail(ModelCode::NotAllowed, *schema, u"- expected: " + prefix_ + kSchemaName);
  }
  const bool complete =
      ReadChildren(*schema, kXdrSchemaRow, [&](Word word, const XTreeNode& child) {
        if (word == Word::ElementType) return ReadXDRElementType(child);
        if (word == Word::AttributeType) return ReadXDRAttributeType(child, nullptr);
        model_.Schema().schemaDocumentation = TextOfElement(child);
        return true;
      });
  return complete && CheckElements(*schema);
}

// --- elements ----------------------------------------------------------------------------------

bool XdrReader::ReadXDRElementType(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kXdrElementTypeRow, values)) return false;
  const TQString* name = values.Find(Word::Name);
  if (name == nullptr) return Fail(ModelCode::AttributeMissing, node, TextOf(Word::Name));
  ElementDecl& element = *model_.AddElement({*name, targetNamespace_});
  if (element.declared) return Fail(ModelCode::DeclaredTwice, node, *name);
  element.declared = element.isOpen = element.isSequence = true;
  element.sourceNode = &node;
  if (!ReadElementAttributes(node, values, element)) return false;
  if (!ReadContent(node, kXdrElementTypeRow, element, element)) return false;
  return CheckContent(node, element);
}

bool XdrReader::ReadElementAttributes(const XTreeNode& node, const SchemaValues& values,
                                      ElementDecl& element) {
  for (const auto& [word, value] : values) {
    if (word == Word::Content) {
      element.isEmpty = value == u"empty";
      element.hasSimpleContent |= value == u"textOnly";
      element.isMixed = value == u"mixed";
      if (value == u"eltOnly") element.isSequence = !element.isChoice;
      if (element.isEmpty || value == u"textOnly") element.isSequence = false;
    } else if (word == Word::Model) {
      element.isOpen = value == u"open";
    } else if (word == Word::Order) {
      element.isChoice = value == u"one";
      element.isAll = value == u"many";
      element.isSequence = value == u"seq";
    } else if (word == Word::DtType) {
      element.hasSimpleContent = true;
      element.isSequence = false;
      element.typeRef = XdrType(value);
      if (element.typeRef == nullptr) return Fail(ModelCode::BadValue, node, value);
    } else if (word == Word::DtValues) {
      for (const TQString& each : SplitValues(value)) {
        AddFacet(TextOf(Word::Enumeration), each, TypeCode::Enumeration, element.typeRef);
      }
    } else if (word == Word::DtMinLength || word == Word::DtMaxLength) {
      AddFacet(LocalPartOf(TextOf(word)), value, TypeCode::String, element.typeRef);
    }
  }
  return true;
}

// `group` is the element itself or a group inside of it; attributes are always the element's.
bool XdrReader::ReadContent(const XTreeNode& node, const SchemaRow& row, ElementDecl& element,
                            ElementDecl& group) {
  return ReadChildren(node, row, [&](Word word, const XTreeNode& child) {
    if (word == Word::AttributeType) return ReadXDRAttributeType(child, &element);
    if (word == Word::Attribute) return ReadAttributeReference(child, element);
    if (word == Word::Element) return ReadElementReference(child, group);
    if (word == Word::Group) return ReadGroup(child, element, group);
    if (word == Word::Datatype) {
      Warn(child, kDatatypeWarning);
      return true;
    }
    element.description = TextOfElement(child);
    return true;
  });
}

bool XdrReader::CheckContent(const XTreeNode& node, const ElementDecl& element) {
  const bool hasType = element.hasSimpleContent || element.typeRef != nullptr;
  if (!element.particles.empty()) {
    if (element.isEmpty) return Fail(ModelCode::ContentOfEmpty, node, element.name.local);
    return !hasType || Fail(ModelCode::ContentWithDatatype, node, element.name.local);
  }
  return hasType || element.isEmpty || element.isMixed ||
         Fail(ModelCode::ContentMissing, node, element.name.local);
}

bool XdrReader::ReadElementReference(const XTreeNode& node, ElementDecl& group) {
  SchemaValues values;
  if (!ReadAttributes(node, kXdrElementRow, values)) return false;
  const TQString* type = values.Find(Word::Type);
  if (type == nullptr) return Fail(ModelCode::ElementWithoutType, node);
  ElementDecl* element = model_.AddElement({*type, targetNamespace_});
  if (element->sourceNode == nullptr) element->sourceNode = &node;
  const Particle bounds = BoundsOf(values);
  group.AddParticle(element, bounds.minOccurs, bounds.maxOccurs);
  return true;
}

bool XdrReader::ReadGroup(const XTreeNode& node, ElementDecl& element, ElementDecl& group) {
  SchemaValues values;
  if (!ReadAttributes(node, kXdrGroupRow, values)) return false;
  const TQString& order = values[Word::Order];
  if (order == u"many") Warn(node, u"order=\"many\"");
  ElementDecl* nested = model_.MakeElement();
  nested->isGroup = true;
  nested->isChoice = order == u"one";
  nested->isSequence = order == u"seq";
  const Particle bounds = BoundsOf(values);
  group.AddParticle(nested, bounds.minOccurs, bounds.maxOccurs);
  return ReadContent(node, kXdrGroupRow, element, *nested);
}

// --- attributes --------------------------------------------------------------------------------

bool XdrReader::ReadXDRAttributeType(const XTreeNode& node, ElementDecl* holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kXdrAttributeTypeRow, values)) return false;
  AttributeDecl& attribute = *model_.MakeAttribute();
  attribute.name.local = values[Word::Name];
  attribute.defaultValue = values[Word::Default];
  attribute.required = values[Word::Required] == u"yes";
  attribute.sourceNode = &node;
  for (const auto& [word, value] : values) {
    if (word == Word::DtType && !SetXdrType(value, attribute)) {
      return Fail(ModelCode::BadValue, node, value);
    }
    if (word == Word::DtValues) attribute.enumeration = SplitValues(value);
    if (word == Word::DtMinLength || word == Word::DtMaxLength) {
      AddFacet(LocalPartOf(TextOf(word)), value, TypeCode::String, attribute.type);
    }
  }
  attribute.JoinEnumeration();
  const bool complete =
      ReadChildren(node, kXdrAttributeTypeRow, [&](Word word, const XTreeNode& child) {
        if (word == Word::Datatype) Warn(child, kDatatypeWarning);
        return true;
      });
  if (!complete) return false;
  attribute.implied = !attribute.fixed && !attribute.required;
  (holder != nullptr ? holder->attributes : model_.Schema().globalAttributes).Set(&attribute);
  return true;
}

bool XdrReader::ReadAttributeReference(const XTreeNode& node, ElementDecl& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kXdrAttributeRow, values)) return false;
  const NameKey name{values[Word::Type], nullptr};
  const AttributeDecl* known = holder.attributes.Find(name);
  if (known == nullptr) known = model_.Schema().globalAttributes.Find(name);
  if (known == nullptr) return Fail(ModelCode::UnknownAttribute, node, values[Word::Type]);
  AttributeDecl& attribute = *model_.MakeAttribute();
  attribute = *known;
  attribute.sourceNode = &node;
  if (const TQString* value = values.Find(Word::Default)) attribute.defaultValue = *value;
  if (const TQString* required = values.Find(Word::Required)) {
    attribute.required = *required == u"yes";
  }
  holder.attributes.Set(&attribute);
  return true;
}

}  // namespace

bool DocumentModel::ReadXDR(const SchemaSource& document) {
  return XdrReader(*this, document).Read();
}

}  // namespace kelmora
