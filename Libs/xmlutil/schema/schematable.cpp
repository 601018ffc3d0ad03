// The rules of XML Schema (W3C, 2001) as rows: for each element its attributes, what their values
// may be, its children, and the message for anything else. The readers of XDR and DCD keep rows of
// the same form beside their code.
//
// A list serves the message, too: the children of a row are shown in its order, with the prefix
// that the document gives them. Lists that go on from one another are spans of one array. The traps
// are the rows without a message for attributes, which let every other one pass, and an element
// inside a parent, whose bounds stand in front of what an element at the top may have.
#include "schema/schematable.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace kelmora {
namespace {

using Word = SchemaWord;
using Form = ValueRule::Form;
using View = std::u16string_view;

constexpr View kTexts[] = {
#define SCHEMA_WORD(name, text) text,
#include "schema/schemaword.def"
#undef SCHEMA_WORD
};

// --- values ----------------------------------------------------------------------------------

constexpr ModelCode kBadWord = ModelCode::NotAllowed;
constexpr ModelCode kBadValue = ModelCode::BadValue;

constexpr ValueRule kName{Form::Name, ModelCode::NameWithColon, u""};

constexpr View kBooleanWords[] = {u"true", u"1", u"false", u"0"};
constexpr ValueRule kBoolean{Form::OneOf, kBadWord, u"- expected: (true | false)", kBooleanWords};

constexpr View kFormWords[] = {u"qualified", u"unqualified"};
constexpr ValueRule kForm{Form::OneOf, kBadWord, u"- expected: (qualified | unqualified)",
                          kFormWords};

constexpr View kProcessWords[] = {u"skip", u"lax", u"strict"};
constexpr ValueRule kProcess{Form::OneOf, kBadWord, u"- expected: (skip | lax | strict)",
                             kProcessWords};

constexpr View kUseWords[] = {u"optional", u"prohibited", u"required"};
constexpr ValueRule kUse{Form::OneOf, kBadValue, u"- expected: (optional | prohibited | required)",
                         kUseWords};

constexpr View kDerivationWords[] = {u"extension", u"restriction"};
constexpr ValueRule kDerivations{Form::ListOf, kBadWord,
                                 u"- expected: (#all | List of (extension | restriction) )",
                                 kDerivationWords, u"extension restriction"};

constexpr View kBlockWords[] = {u"extension", u"restriction", u"substitution"};
constexpr ValueRule kBlocks{
    Form::ListOf, kBadWord,
    u"- expected: (#all | List of (extension | restriction | substitution) )", kBlockWords,
    u"extension restriction substitution"};

constexpr View kSimpleFinalWords[] = {u"extension", u"list", u"restriction", u"union"};
constexpr ValueRule kSimpleFinals{
    Form::ListOf, kBadWord,
    u"- expected: (#all | List of (extension | list | restriction | union) )", kSimpleFinalWords,
    u"extension restriction list union"};

constexpr ValueRule kMinOccurs{Form::Count, kBadValue,
                               u"- expected: nonNegativeInteger or 'unbounded'"};
constexpr ValueRule kMaxOccurs{Form::CountOrAny, kBadValue,
                               u"- expected: nonNegativeInteger or 'unbounded'"};

// --- attributes ------------------------------------------------------------------------------

constexpr AttributeRule kSchemaAttributes[] = {
    {Word::TargetNamespace},
    {Word::ElementFormDefault, &kForm},
    {Word::AttributeFormDefault, &kForm},
    {Word::BlockDefault, &kBlocks},
    {Word::FinalDefault, &kDerivations},
};
constexpr AttributeRule kLocationAttributes[] = {{Word::SchemaLocation}};
constexpr AttributeRule kImportAttributes[] = {{Word::Namespace}, {Word::SchemaLocation}};
constexpr AttributeRule kComplexTypeAttributes[] = {
    {Word::Abstract, &kBoolean}, {Word::Block, &kDerivations}, {Word::Final, &kDerivations},
    {Word::Mixed, &kBoolean},    {Word::Name, &kName},
};
constexpr AttributeRule kMixedAttributes[] = {{Word::Mixed, &kBoolean}};
constexpr AttributeRule kBaseAttributes[] = {{Word::Base}};
constexpr AttributeRule kSimpleTypeAttributes[] = {{Word::Final, &kSimpleFinals},
                                                   {Word::Name, &kName}};
constexpr AttributeRule kItemTypeAttributes[] = {{Word::ItemType}};
constexpr AttributeRule kRestrictionAttributes[] = {{Word::Base}, {Word::Name, &kName}};
constexpr AttributeRule kMemberTypesAttributes[] = {{Word::MemberTypes}};
constexpr AttributeRule kValueAttributes[] = {{Word::Value}};
constexpr AttributeRule kGroupAttributes[] = {
    {Word::Name, &kName},
    {Word::Ref},
    {Word::MinOccurs, &kMinOccurs},
    {Word::MaxOccurs, &kMaxOccurs},
};
constexpr AttributeRule kAnyAttributes[] = {
    {Word::Namespace},
    {Word::ProcessContents, &kProcess},
    {Word::MinOccurs, &kMinOccurs},
    {Word::MaxOccurs, &kMaxOccurs},
};
constexpr AttributeRule kAnyAttributeAttributes[] = {{Word::Namespace},
                                                     {Word::ProcessContents, &kProcess}};
constexpr AttributeRule kReferenceAttributes[] = {{Word::Name, &kName}, {Word::Ref}};
constexpr AttributeRule kNotationAttributes[] = {
    {Word::Name, &kName}, {Word::Public}, {Word::System}};
constexpr AttributeRule kAttributeAttributes[] = {
    {Word::Default}, {Word::Fixed}, {Word::Form, &kForm}, {Word::Name, &kName},
    {Word::Ref},     {Word::Type},  {Word::Use, &kUse},
};
constexpr AttributeRule kLocalElementAttributes[] = {
    {Word::MaxOccurs, &kMaxOccurs},
    {Word::MinOccurs, &kMinOccurs},
    {Word::Abstract, &kBoolean},
    {Word::Block, &kBlocks},
    {Word::Default},
    {Word::SubstitutionGroup},
    {Word::Final, &kDerivations},
    {Word::Fixed},
    {Word::Form, &kForm},
    {Word::Name, &kName},
    {Word::Nillable, &kBoolean},
    {Word::Ref},
    {Word::Type},
};
// Those of an element inside a parent, but for the two bounds in front.
constexpr std::span<const AttributeRule> kTopElementAttributes =
    std::span(kLocalElementAttributes).subspan(2);
constexpr AttributeRule kKeyrefAttributes[] = {{Word::Name, &kName}, {Word::Refer}};
constexpr std::span<const AttributeRule> kConstraintAttributes =
    std::span(kKeyrefAttributes).first(1);
constexpr AttributeRule kPathAttributes[] = {{Word::Xpath}};

// --- children --------------------------------------------------------------------------------

// The words in front, the facets, and the words behind.
template <std::size_t Front, std::size_t Behind>
constexpr auto WithFacets(const Word (&front)[Front], const Word (&behind)[Behind]) {
  std::array<Word, Front + std::size(kFacetWords) + Behind> joined{};
  auto end = std::copy(std::begin(front), std::end(front), joined.begin());
  end = std::copy(std::begin(kFacetWords), std::end(kFacetWords), end);
  std::copy(std::begin(behind), std::end(behind), end);
  return joined;
}

constexpr Word kSchemaChildren[] = {
    Word::Include,    Word::Import,         Word::Redefine, Word::Annotation,
    Word::SimpleType, Word::ComplexType,    Word::Element,  Word::Group,
    Word::Attribute,  Word::AttributeGroup, Word::Notation,
};
constexpr Word kRedefineChildren[] = {Word::Annotation, Word::SimpleType, Word::ComplexType,
                                      Word::Group, Word::AttributeGroup};
constexpr Word kComplexTypeChildren[] = {
    Word::Annotation,   Word::SimpleContent, Word::ComplexContent,
    Word::Group,        Word::All,           Word::Choice,
    Word::Sequence,     Word::Attribute,     Word::AttributeGroup,
    Word::AnyAttribute,
};
constexpr Word kContentChildren[] = {Word::Annotation, Word::Restriction, Word::Extension};
constexpr Word kNestedTypeChildren[] = {Word::Annotation, Word::SimpleType};
constexpr Word kAttributeWords[] = {Word::Attribute, Word::AttributeGroup, Word::AnyAttribute};
constexpr auto kSimpleContentRestrictionChildren = WithFacets(kNestedTypeChildren, kAttributeWords);
// The same without the attributes.
constexpr std::span<const Word> kRestrictionChildren =
    std::span<const Word>(kSimpleContentRestrictionChildren)
        .first(std::size(kNestedTypeChildren) + std::size(kFacetWords));
constexpr Word kSimpleContentExtensionChildren[] = {Word::Annotation, Word::Attribute,
                                                    Word::AttributeGroup, Word::AnyAttribute};
constexpr Word kComplexContentDerivationChildren[] = {
    Word::Annotation, Word::Group,          Word::All,          Word::Choice, Word::Sequence,
    Word::Attribute,  Word::AttributeGroup, Word::AnyAttribute,
};
constexpr Word kSimpleTypeChildren[] = {Word::Annotation, Word::List, Word::Restriction,
                                        Word::Union};
constexpr Word kAnnotationChild[] = {Word::Annotation};
constexpr Word kGroupChildren[] = {Word::Annotation, Word::Element,  Word::Group, Word::All,
                                   Word::Choice,     Word::Sequence, Word::Any};
constexpr Word kAttributeGroupChildren[] = {Word::Annotation, Word::Attribute, Word::AttributeGroup,
                                            Word::AnyAttribute};
constexpr Word kAttributeChildren[] = {Word::Annotation, Word::SimpleType, Word::Enumeration};
constexpr Word kElementChildren[] = {Word::Annotation, Word::SimpleType, Word::ComplexType,
                                     Word::Unique,     Word::Key,        Word::Keyref};
constexpr Word kConstraintChildren[] = {Word::Annotation, Word::Selector, Word::Field};

struct Sweep {
  Word word;
  int number;
};
constexpr Sweep kSweepOfWord[] = {
    {Word::Include, 1},    {Word::Redefine, 1},       {Word::Import, 1},      {Word::Annotation, 1},
    {Word::SimpleType, 1}, {Word::Notation, 1},       {Word::ComplexType, 2}, {Word::Group, 3},
    {Word::Attribute, 3},  {Word::AttributeGroup, 3}, {Word::Element, 4},
};

constexpr const char16_t* kFacetMessage =
    u"- facets are only allowed inside simpleContent/restriction";
constexpr const char16_t* kLocationMessage = u"- expected: (id | schemaLocation)";

}  // namespace

// --- rows ------------------------------------------------------------------------------------

const SchemaRow kSchemaRow{kSchemaAttributes, nullptr, kSchemaChildren};
const SchemaRow kIncludeRow{kLocationAttributes, kLocationMessage, {}};
const SchemaRow kRedefineRow{kLocationAttributes, kLocationMessage, kRedefineChildren};
const SchemaRow kImportRow{kImportAttributes, kLocationMessage, {}};
const SchemaRow kComplexTypeRow{kComplexTypeAttributes,
                                u"- expected: (abstract | block | final | id | mixed | name)",
                                kComplexTypeChildren};
const SchemaRow kSimpleContentRow{{}, nullptr, kContentChildren};
const SchemaRow kComplexContentRow{kMixedAttributes, u"- expected: (id | mixed)", kContentChildren};
const SchemaRow kSimpleContentRestrictionRow{kBaseAttributes, u"- expected: (id | base)",
                                             kSimpleContentRestrictionChildren};
const SchemaRow kSimpleContentExtensionRow{.attributes = kBaseAttributes,
                                           .otherAttribute = u"- expected: (id | base)",
                                           .children = kSimpleContentExtensionChildren,
                                           .otherFacet = kFacetMessage};
const SchemaRow kComplexContentDerivationRow{.attributes = kBaseAttributes,
                                             .otherAttribute = u"- expected: (id | base)",
                                             .children = kComplexContentDerivationChildren,
                                             .otherFacet = kFacetMessage};
const SchemaRow kSimpleTypeRow{kSimpleTypeAttributes, u"- expected: (id | final | name)",
                               kSimpleTypeChildren};
const SchemaRow kListRow{kItemTypeAttributes, nullptr, kNestedTypeChildren};
const SchemaRow kRestrictionRow{kRestrictionAttributes, u"- expected: (base | id | name)",
                                kRestrictionChildren};
const SchemaRow kUnionRow{kMemberTypesAttributes, nullptr, kNestedTypeChildren};
const SchemaRow kFacetRow{kValueAttributes, u"- expected: (id | value)", kAnnotationChild};
const SchemaRow kGroupRow{kGroupAttributes,
                          u"- expected: (id | minOccurs | maxOccurs | name | ref)", kGroupChildren};
const SchemaRow kAnyRow{kAnyAttributes,
                        u"- expected: (id | maxOccurs | minOccurs | namespace | processContents)",
                        kAnnotationChild, nullptr, true};
const SchemaRow kAnyAttributeRow{kAnyAttributeAttributes,
                                 u"- expected: (id | namespace | processContents)",
                                 kAnnotationChild, nullptr, true};
const SchemaRow kAttributeGroupRow{kReferenceAttributes, u"- expected: (id | name | ref)",
                                   kAttributeGroupChildren};
const SchemaRow kNotationRow{kNotationAttributes, u"- expected: (id | name | public | system)",
                             kAnnotationChild};
const SchemaRow kAttributeRow{
    kAttributeAttributes, u"- expected: (default | fixed | form | id | name | ref | type | use)",
    kAttributeChildren};
const SchemaRow kTopElementRow{
    kTopElementAttributes,
    u"- expected: (abstract | block | default | substitutionGroup | final | fixed | form | id | "
    u"name | nillable | ref | type)",
    kElementChildren};
const SchemaRow kLocalElementRow{
    kLocalElementAttributes,
    u"- expected: (abstract | block | default | substitutionGroup | final | fixed | form | id | "
    u"maxOccurs | minOccurs | name | nillable | ref | type)",
    kElementChildren};
const SchemaRow kConstraintRow{kConstraintAttributes, nullptr, kConstraintChildren};
const SchemaRow kKeyrefRow{kKeyrefAttributes, nullptr, kConstraintChildren};
const SchemaRow kPathRow{kPathAttributes, nullptr, kAnnotationChild};

const char16_t* const kMaxOccursInAll =
    u"- expected: 0 or 1 (maxOccurs inside an 'all' group is limited to these values)";
const char16_t* const kMinOccursInAll =
    u"- expected: 0 or 1 (minOccurs inside an 'all' group is limited to these values)";

View TextOf(SchemaWord word) {
  return kTexts[static_cast<std::size_t>(word)];
}

int SweepOf(SchemaWord word) {
  for (const Sweep& sweep : kSweepOfWord) {
    if (sweep.word == word) return sweep.number;
  }
  return 0;
}

bool IsFacetWord(SchemaWord word) {
  return std::find(std::begin(kFacetWords), std::end(kFacetWords), word) != std::end(kFacetWords);
}

}  // namespace kelmora
