// What the tables and the readers behind them do not allow.
#include "schema/schematable.h"

#include <span>
#include <string>

#include "schematesting.h"

namespace kelmora {
namespace {

struct ErrorRow {
  const char* declarations;
  std::int32_t number;
  const char* text = "";
};

constexpr ErrorRow kNotAllowed[] = {
    {"<xs:foo/>", 7536,
     "- expected: (xs:include | xs:import | xs:redefine | xs:annotation | xs:simpleType | "
     "xs:complexType | xs:element | xs:group | xs:attribute | xs:attributeGroup | xs:notation)"},
    {"<element name='x'/>", 7536,
     "- expected: (xs:include | xs:import | xs:redefine | xs:annotation | xs:simpleType | "
     "xs:complexType | xs:element | xs:group | xs:attribute | xs:attributeGroup | xs:notation)"},
    {"<xs:include name='x'/>", 7536, "- expected: (id | schemaLocation)"},
    {"<xs:import uri='x'/>", 7536, "- expected: (id | schemaLocation)"},
    {"<xs:complexType name='c' base='x'/>", 7536,
     "- expected: (abstract | block | final | id | mixed | name)"},
    {"<xs:complexType name='c'><xs:element name='x'/></xs:complexType>", 7536,
     "- expected: (xs:annotation | xs:simpleContent | xs:complexContent | xs:group | xs:all | "
     "xs:choice | xs:sequence | xs:attribute | xs:attributeGroup | xs:anyAttribute)"},
    {"<xs:complexType name='c'><xs:complexContent a=''/></xs:complexType>", 7536,
     "- expected: (id | mixed)"},
    {"<xs:complexType name='c'><xs:simpleContent a=''><xs:list/></xs:simpleContent>"
     "</xs:complexType>",
     7536, "- expected: (xs:annotation | xs:restriction | xs:extension)"},
    {CONTENT("simpleContent", "extension", "xs:int", "<xs:length value='1'/>"), 7536,
     "- facets are only allowed inside simpleContent/restriction"},
    {CONTENT("complexContent", "restriction", "xs:anyType", "<xs:pattern value='1'/>"), 7536,
     "- facets are only allowed inside simpleContent/restriction"},
    {CONTENT("complexContent", "extension", "xs:anyType", "<xs:any/>"), 7536,
     "- expected: (xs:annotation | xs:group | xs:all | xs:choice | xs:sequence | xs:attribute | "
     "xs:attributeGroup | xs:anyAttribute)"},
    {"<xs:complexType name='c'><xs:simpleContent><xs:extension type='x'/></xs:simpleContent>"
     "</xs:complexType>",
     7536, "- expected: (id | base)"},
    {"<xs:simpleType kind='x'/>", 7536, "- expected: (id | final | name)"},
    {SIMPLE("<xs:element/>"), 7536,
     "- expected: (xs:annotation | xs:list | xs:restriction | xs:union)"},
    {SIMPLE("<xs:list itemType='xs:int' other='passes'><xs:union/></xs:list>"), 7536,
     "- expected: (xs:annotation | xs:simpleType)"},
    {SIMPLE("<xs:restriction type='x'/>"), 7536, "- expected: (base | id | name)"},
    {SIMPLE("<xs:restriction base='xs:int'><xs:attribute/></xs:restriction>"), 7536,
     "- expected: (xs:annotation | xs:simpleType | xs:length | xs:minLength | xs:maxLength | "
     "xs:whiteSpace | xs:enumeration | xs:totalDigits | xs:fractionDigits | xs:pattern | "
     "xs:minExclusive | xs:minInclusive | xs:maxExclusive | xs:maxInclusive)"},
    {SIMPLE("<xs:restriction base='xs:int'><xs:length value='1' fixed='true'/></xs:restriction>"),
     7536, "- expected: (id | value)"},
    {"<xs:group name='g' max='1'/>", 7536, "- expected: (id | minOccurs | maxOccurs | name | ref)"},
    {IN_SEQUENCE("<xs:attribute/>"), 7536,
     "- expected: (xs:annotation | xs:element | xs:group | xs:all | xs:choice | xs:sequence | "
     "xs:any)"},
    {IN_SEQUENCE("<xs:any name='x'/>"), 7536,
     "- expected: (id | maxOccurs | minOccurs | namespace | processContents)"},
    {IN_SEQUENCE("<xs:any><xs:element/></xs:any>"), 7536, "- expected: xs:annotation"},
    {IN_TYPE("<xs:anyAttribute minOccurs='0'/>"), 7536,
     "- expected: (id | namespace | processContents)"},
    {"<xs:attributeGroup type='x'/>", 7536, "- expected: (id | name | ref)"},
    {"<xs:notation uri='x'/>", 7536, "- expected: (id | name | public | system)"},
    {"<xs:attribute name='a' nillable='x'/>", 7536,
     "- expected: (default | fixed | form | id | name | ref | type | use)"},
    {"<xs:element name='a' minOccurs='0'/>", 7536,
     "- expected: (abstract | block | default | substitutionGroup | final | fixed | form | id | "
     "name | nillable | ref | type)"},
    {IN_SEQUENCE("<xs:element name='a' use='x'/>"), 7536,
     "- expected: (abstract | block | default | substitutionGroup | final | fixed | form | id | "
     "maxOccurs | minOccurs | name | nillable | ref | type)"},
    {"<xs:element name='a'><xs:unique name='u'><xs:key/></xs:unique></xs:element>", 7536,
     "- expected: (xs:annotation | xs:selector | xs:field)"},
};

constexpr ErrorRow kBadValues[] = {
    {"<xs:element name='a' abstract='yes'/>", 7536, "- expected: (true | false)"},
    {"<xs:element name='a' form='x'/>", 7536, "- expected: (qualified | unqualified)"},
    {"<xs:element name='a' final='substitution'/>", 7536,
     "- expected: (#all | List of (extension | restriction) )"},
    {"<xs:element name='a' block='list'/>", 7536,
     "- expected: (#all | List of (extension | restriction | substitution) )"},
    {"<xs:simpleType name='t' final='x'/>", 7536,
     "- expected: (#all | List of (extension | list | restriction | union) )"},
    {IN_SEQUENCE("<xs:any processContents='x'/>"), 7536, "- expected: (skip | lax | strict)"},
    {IN_TYPE("<xs:attribute name='a' use='x'/>"), 7537,
     "- expected: (optional | prohibited | required)"},
    {IN_SEQUENCE("<xs:element name='a' minOccurs='unbounded'/>"), 7537,
     "- expected: nonNegativeInteger or 'unbounded'"},
    {IN_TYPE("<xs:all><xs:element name='a' maxOccurs='2'/></xs:all>"), 7537,
     "- expected: 0 or 1 (maxOccurs inside an 'all' group is limited to these values)"},
    {IN_TYPE("<xs:all><xs:element name='a' minOccurs='2'/></xs:all>"), 7537,
     "- expected: 0 or 1 (minOccurs inside an 'all' group is limited to these values)"},
    {"<xs:element name='a:b'/>", 7548},
    {IN_TYPE("<xs:attribute name='a' type='xs:int' default='x'/>"), 7587, "int"},
    {IN_TYPE("<xs:attribute name='a' type='xs:byte' fixed='300'/>"), 7588, "byte"},
    {"<xs:element name='a' default='3'><xs:simpleType><xs:restriction base='xs:int'>"
     "<xs:enumeration value='1'/><xs:enumeration value='2'/></xs:restriction></xs:simpleType>"
     "</xs:element>",
     7590, "int"},
    {"<xs:element name='a' type='xs:int' default=' 5 '/>", 7587, "int"},
    {SIMPLE("<xs:restriction base='xs:int'><xs:enumeration value='x'/></xs:restriction>"), 7587,
     "int"},
    {SIMPLE("<xs:restriction base='xs:string'><xs:length value='x'/></xs:restriction>"), 7587,
     "string"},
    {SIMPLE("<xs:restriction base='xs:string'><xs:pattern value='a('/></xs:restriction>"), 7547,
     "{ expected at position 1"},
    {"<xs:element name='a'><xs:key name='k'><xs:selector xpath='.//a/@b'/></xs:key></xs:element>",
     7546, ".//a/@b"},
};

constexpr ErrorRow kMissingAndDouble[] = {
    {"<xs:include/>", 7563, "schemaLocation"},
    {"<xs:include schemaLocation='none.xsd'/>", 7509, "none.xsd"},
    {"<xs:import namespace='u'/>", 7506},
    {"<xs:notation name='n'/>", 7563, "public"},
    {SIMPLE("<xs:restriction/>"), 7563, "base"},
    {"<xs:element/>", 7563, "name or ref"},
    {"<xs:element name='a' default='x' fixed='y'/>", 7541},
    {IN_TYPE("<xs:attribute name='a' default='x' fixed='y'/>"), 7541},
    {IN_TYPE("<xs:attribute name='a' default='x' use='required'/>"), 7542},
    {IN_TYPE("<xs:attribute name='a' ref='g'/>") "<xs:attribute name='g'/>", 7540},
    {IN_SEQUENCE("<xs:group name='a' ref='g'/>"), 7540},
    {"<xs:attributeGroup name='a' ref='g'/>", 7540},
    {IN_TYPE("<xs:attribute name='a' type='xs:int'><xs:simpleType/></xs:attribute>"), 7536,
     "- only one of type or simpleType may be used"},
    {"<xs:element name='a' type='xs:int'><xs:complexType/></xs:element>", 7536,
     "- only one of type, simpleType, or complexType may be used"},
    {"<xs:element name='a' type='xs:int'/><xs:element name='a' type='xs:string'/>", 7512, "a"},
    {"<xs:element name='a' type='xs:int'/><xs:element name='a' type='xs:int'/>", 7500},
    {IN_SEQUENCE("<xs:element name='a' type='xs:int'/><xs:element name='a' type='xs:byte'/>"), 7513,
     "a"},
    {IN_TYPE("<xs:attribute name='a'/><xs:attribute name='a'/>"), 7514, "a"},
    {"<xs:element name='a'><xs:key name='k'/><xs:key name='k'/></xs:element>", 7545, "k"},
    {"<xs:element name='a'><xs:complexType/></xs:element><xs:element name='b' default='1'>"
     "<xs:complexType/></xs:element>",
     7610},
};

constexpr ErrorRow kReferences[] = {
    {"<xs:element name='a' type='xs:foo'/>", 7537, "xs:foo"},
    {"<xs:element name='a' type='xs:uuid'/>", 7537, "xs:uuid"},
    {"<xs:element name='a' type='foo'/>", 7537, "foo"},
    {IN_SEQUENCE("<xs:group ref='g'/>"), 7518, "g"},
    {IN_TYPE("<xs:attribute ref='g'/>"), 7520, "g"},
    {IN_TYPE("<xs:attributeGroup ref='g'/>"), 7521, "g"},
    {IN_SEQUENCE("<xs:element ref='g'/>"), 7517, "g"},
    {"<xs:group name='g'><xs:sequence><xs:group ref='g'/></xs:sequence></xs:group>"
     "<xs:element name='r'/>",
     7519},
    {"<xs:group name='g'><xs:choice><xs:group ref='h'/></xs:choice></xs:group>"
     "<xs:group name='h'><xs:sequence><xs:choice><xs:group ref='g'/></xs:choice></xs:sequence>"
     "</xs:group><xs:element name='r'/>",
     7519},
    {CONTENT("complexContent", "restriction", "xs:anyType",
             "<xs:attribute name='a' use='prohibited'/>") "<xs:element name='r' type='c'/>",
     7520, "a"},
    {"<xs:simpleType name='s'><xs:list itemType='xs:int'/></xs:simpleType>" CONTENT(
         "simpleContent", "restriction", "s", ""),
     7537,
     "- you must use a complexType instead of 's', because a simpleContent/restriction can't be "
     "based on a simpleType"},
    {"<xs:complexType name='b'><xs:sequence/></xs:complexType>" CONTENT("simpleContent",
                                                                        "extension", "b", ""),
     7536, "- simpleContent can not have a base that is a complexType with complexContent"},
    {"<xs:complexType name='b' final='#all'/>" CONTENT("complexContent", "extension", "b", ""),
     7549, "extension restriction"},
    {"<xs:simpleType name='b' final='list'><xs:restriction base='xs:int'/></xs:simpleType>" SIMPLE(
         "<xs:list itemType='b'/>"),
     7549, "list"},
    {"<xs:simpleType name='b' final='union'><xs:restriction base='xs:int'/></xs:simpleType>" SIMPLE(
         "<xs:union memberTypes='xs:int b'/>"),
     7549, "union"},
    {IN_SEQUENCE("<xs:element name='a' substitutionGroup='r'/>"), 7595},
    {"<xs:element name='a' substitutionGroup='h'/>", 7596},
    {"<xs:element name='h' block='#all'/><xs:element name='a' substitutionGroup='h'/>", 7549,
     "extension restriction substitution"},
};

class SchemaErrorTest : public SchemaTest,
                        public testing::WithParamInterface<std::span<const ErrorRow>> {};

TEST_P(SchemaErrorTest, FirstErrorIsRecorded) {
  for (const ErrorRow& row : GetParam()) {
    SCOPED_TRACE(row.declarations);
    BuildWith(row.declarations);
    EXPECT_EQ(static_cast<std::int32_t>(Error()), row.number);
    EXPECT_EQ(ErrorText(), row.text);
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, SchemaErrorTest,
                         testing::Values(std::span(kNotAllowed), std::span(kBadValues),
                                         std::span(kMissingAndDouble), std::span(kReferences)));

}  // namespace
}  // namespace kelmora
