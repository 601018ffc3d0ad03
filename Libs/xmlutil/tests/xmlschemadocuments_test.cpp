// Where schemas are, how they name one another, and what they may not cost.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "schema/schemawalker.h"
#include "schema/xmlschemareader.h"
#include "schematesting.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

TEST_F(SchemaTest, DocumentsThatNameOneAnother) {
  const std::string inU = "targetNamespace='u' xmlns:t='u' xmlns:v='v'";
  Write("s.xsd", InSchema("<xs:include schemaLocation='sub/more.xsd'/>"
                          "<xs:import namespace='v' schemaLocation='v.xsd'/>" IN_TYPE(
                              "<xs:attributeGroup ref='t:g'/><xs:attribute ref='v:w'/>"),
                          inU));
  std::filesystem::create_directories(directory_ / "sub");
  Write("sub/more.xsd", InSchema("<xs:include schemaLocation='../s.xsd'/>"
                                 "<xs:include schemaLocation='types.xsd'/>"
                                 "<xs:attributeGroup name='g'>"
                                 "<xs:attribute name='x' type='t:n' default='1'/>"
                                 "</xs:attributeGroup>",
                                 inU));
  // Without a namespace of its own, so its names are those of whoever includes it.
  Write("sub/types.xsd", InSchema("<xs:simpleType name='n'><xs:restriction base='m'/>"
                                  "</xs:simpleType><xs:simpleType name='m'>"
                                  "<xs:restriction base='xs:int'/></xs:simpleType>"));
  Write("v.xsd", InSchema("<xs:import namespace='u' schemaLocation='s.xsd'/>"
                          "<xs:attribute name='w' default='2'/>",
                          "targetNamespace='v'"));
  const std::string document =
      "<p:r xmlns:p='u' xmlns:q='v' xmlns:xsi='i' xsi:schemaLocation='u s.xsd'/>";
  const std::string tree = "(p:r";
  EXPECT_EQ(Build(document), tree + " x=1 q:w=2)");
  EXPECT_EQ(Error(), ModelCode::None);

  Write("s.xsd", InSchema("<xs:include schemaLocation='v.xsd'/>", inU));
  Build(document);
  EXPECT_EQ(Error(), ModelCode::OtherTargetNamespace);

  // The element of the including document is declared in the included one too.
  Write("s.xsd", InSchema("<xs:include schemaLocation='twice.xsd'/><xs:element name='r' "
                          "type='t:c'/>",
                          inU));
  Write("twice.xsd", InSchema("<xs:element name='a' type='xs:int'/>"
                              "<xs:element name='a' type='xs:byte'/>",
                              inU));
  Build(document);
  EXPECT_EQ(Error(), ModelCode::BadValue);

  Write("s.xsd", InSchema("<xs:redefine schemaLocation='base.xsd'>"
                          "<xs:complexType name='c'><xs:complexContent>"
                          "<xs:extension base='t:c'><xs:attribute name='y' default='2'/>"
                          "</xs:extension></xs:complexContent></xs:complexType>"
                          "</xs:redefine>",
                          inU));
  Write("base.xsd", InSchema("<xs:element name='r' type='t:c'/><xs:complexType name='c'>"
                             "<xs:attribute name='x' default='1'/></xs:complexType>"
                             "<xs:element name='s' type='t:c'/>",
                             inU));
  EXPECT_EQ(Build(document), tree + " x=1)");
  EXPECT_EQ(Error(), ModelCode::None);
}

// A definition that one pass made is the one that the next pass fills: what was copied of a type
// that was not known to its end is completed, on all levels.
TEST_F(SchemaTest, TypesThatHoldOneAnother) {
  const std::string x = "<xs:attribute name='x' default='1'/>";
  const auto type = [](const std::string& name, const std::string& particles,
                       const std::string& more) {
    return "<xs:complexType name='" + name + "'><xs:sequence>" + particles + "</xs:sequence>" +
           more + "</xs:complexType>";
  };
  const auto derived = [](const std::string& name, const std::string& derivation,
                          const std::string& base, const std::string& content) {
    return "<xs:complexType name='" + name + "'><xs:complexContent><xs:" + derivation + " base='" +
           base + "'>" + content + "</xs:" + derivation + "></xs:complexContent></xs:complexType>";
  };
  const std::string a = "<xs:element name='a' type='c'/>";
  const std::string root = "<xs:element name='r' type='c'/>";
  const struct {
    const char* symptom;
    std::string declarations;
    std::string content;
    std::string tree;
  } rows[] = {
      {"a type that holds itself", root + type("c", a, x), "<a><a><a><a/></a></a></a>",
       "(r x=1(a x=1(a x=1(a x=1(a x=1)))))"},
      {"what stands in front of it and behind it",
       root + type("c",
                   "<xs:choice><xs:element name='b' type='xs:int' default='2'/>" + a +
                       "</xs:choice><xs:element name='d' type='xs:int' default='3'/>",
                   x),
       "<a><a><b/><a><b/><d/></a></a></a>", "(r x=1(a x=1(a x=1(b'2')(a x=1(b'2')(d'3')))))"},
      {"through another type",
       root + type("c", "<xs:element name='a' type='d'/>", x) +
           type("d", "<xs:element name='b' type='c'/>", "<xs:attribute name='y' default='2'/>"),
       "<a><b><a><b><a/></b></a></b></a>", "(r x=1(a y=2(b x=1(a y=2(b x=1(a y=2))))))"},
      {"with a group of attributes and one of elements that come later",
       root +
           type("c", a + "<xs:group ref='g'/>",
                "<xs:attributeGroup ref='g'/><xs:attribute ref='z'/>") +
           "<xs:attributeGroup name='g'>" + x +
           "</xs:attributeGroup><xs:attribute name='z' default='3'/><xs:group name='g'>"
           "<xs:sequence><xs:element name='b' type='xs:int' default='2'/></xs:sequence></xs:group>",
       "<a><a><a/><b/></a></a>", "(r x=1 z=3(a x=1 z=3(a x=1 z=3(a x=1 z=3)(b'2'))))"},
      {"in an extension of it",
       root + derived("c", "extension", "d", "<xs:sequence>" + a + "</xs:sequence>" + x) +
           type("d", "<xs:element name='b' type='c'/>", "<xs:attribute name='y' default='2'/>"),
       "<a><b><a><b/></a></b></a>", "(r y=2 x=1(a y=2 x=1(b y=2 x=1(a y=2 x=1(b y=2 x=1)))))"},
      {"in a restriction of it",
       root + derived("c", "restriction", "d", "<xs:sequence>" + a + "</xs:sequence>") +
           type("d", "<xs:element name='a' type='d'/>", x),
       "<a><a><a/></a></a>", "(r x=1(a x=1(a x=1(a x=1))))"},
      {"in a type without a name",
       "<xs:element name='r'><xs:complexType><xs:sequence>" + a +
           "</xs:sequence></xs:complexType></xs:element>" +
           type("c",
                "<xs:element name='b'><xs:complexType><xs:sequence>" + a + "</xs:sequence>" + x +
                    "</xs:complexType></xs:element>",
                x),
       "<a><b><a><b><a/></b></a></b></a>", "(r(a x=1(b x=1(a x=1(b x=1(a x=1))))))"},
      {"as the head of a substitution group",
       "<xs:element name='h' type='c'/><xs:element name='r' substitutionGroup='h'/>" +
           type("c", a, x),
       "<a><a><a/></a></a>", "(r x=1(a x=1(a x=1(a x=1))))"},
      {"read up to a problem", root + type("c", a, x) + type("d", "<xs:group ref='no'/>", ""),
       "<a><a><a/></a></a>", "(r x=1(a x=1(a x=1(a x=1))))"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(BuildWith(row.declarations, row.content), row.tree) << row.symptom;
  }
}

// The chain of types from the top down: what each holds is known to its end in the second pass.
TEST_F(SchemaTest, TypesFromTheTopDown) {
  constexpr int kTypes = 40;
  std::string declarations = "<xs:element name='r' type='t0'/>";
  std::string content;
  std::string tree;
  for (int i = 0; i < kTypes; ++i) {
    declarations += Numbered("<xs:complexType name='t#'><xs:sequence>", i);
    declarations += Numbered("<xs:element name='e#' ", i) + Numbered("type='t#'/>", i + 1);
    declarations += Numbered("</xs:sequence><xs:attribute name='x' default='#'/>", i);
    declarations += "</xs:complexType>";
    content = Numbered("<e#>", kTypes - 1 - i) + content + Numbered("</e#>", kTypes - 1 - i);
    tree += Numbered(" x=#", i) + Numbered("(e#", i);
  }
  declarations += Numbered("<xs:complexType name='t#'/>", kTypes);
  EXPECT_EQ(BuildWith(declarations, content), "(r" + tree + Repeat(")", kTypes + 1));
}

TEST_F(SchemaTest, TypesThatHoldOneAnotherInSeveralDocuments) {
  const std::string x = "<xs:attribute name='x' default='1'/>";
  const std::string y = "<xs:attribute name='y' default='2'/>";
  const auto type = [](const std::string& name, const std::string& element) {
    return "<xs:complexType name='" + name + "'><xs:sequence>" + element + "</xs:sequence>";
  };
  const std::string document = "<a><b><a><b/></a></b></a>";
  // Each includes the other, and neither has a namespace of its own.
  Write("c.xsd", InSchema("<xs:include schemaLocation='d.xsd'/>" +
                          type("c", "<xs:element name='a' type='d'/>") + x + "</xs:complexType>"));
  Write("d.xsd", InSchema("<xs:include schemaLocation='c.xsd'/>" +
                          type("d", "<xs:element name='b' type='c'/>") + y + "</xs:complexType>"));
  EXPECT_EQ(
      BuildWith("<xs:include schemaLocation='c.xsd'/><xs:element name='r' type='c'/>", document),
      "(r x=1(a y=2(b x=1(a y=2(b x=1)))))");
  // A redefinition adds to what it redefines on all levels.
  EXPECT_EQ(BuildWith("<xs:redefine schemaLocation='c.xsd'><xs:complexType name='c'>"
                      "<xs:complexContent><xs:extension base='c'>"
                      "<xs:attribute name='z' default='3'/></xs:extension></xs:complexContent>"
                      "</xs:complexType></xs:redefine><xs:element name='r' type='c'/>",
                      document),
            "(r x=1 z=3(a y=2(b x=1 z=3(a y=2(b x=1 z=3)))))");
}

TEST_F(SchemaTest, WhereTheSchemaIs) {
  const struct {
    const char* symptom;
    const char* document;
    const char* tree;
    std::int32_t error;
  } rows[] = {
      {"a schema for schemas describes itself",
       "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
       "targetNamespace='http://www.w3.org/2001/XMLSchema'>"
       "<xs:element name='element'><xs:complexType><xs:attribute name='x' default='1'/>"
       "</xs:complexType></xs:element></xs:schema>",
       "(xs:schema "
       "targetNamespace=http://www.w3.org/2001/XMLSchema(xs:element name=element x=1"
       "(xs:complexType(xs:attribute name=x default=1))))",
       ModelCode::None},
      {"a schema without the prefix is not read", "<r noNamespaceSchemaLocation='plain.xsd'/>",
       "(r)", ModelCode::NoTargetNamespace},
      {"no file", "<r noNamespaceSchemaLocation='none.xsd'/>", "(r)", ModelCode::SchemaLoadFailed},
      {"another language", "<r noNamespaceSchemaLocation='s.xdr'/>", "(r)",
       ModelCode::KindMismatch},
      {"an older namespace", "<r noNamespaceSchemaLocation='old.xsd'/>", "(r)",
       ModelCode::Schema1999},
      {"a DTD, with the prefix for its names", "<p:r xmlns:p='u' i:schemaLocation='u names.dtd'/>",
       "(p:r x=1)", ModelCode::None},
      {"a DTD without a prefix", "<r noNamespaceSchemaLocation='names.dtd'/>", "(r x=1)",
       ModelCode::None},
      {"entities stay when a schema is read as well",
       "<!DOCTYPE r [<!ENTITY e 'text'>]><r noNamespaceSchemaLocation='s.xsd'>&e;</r>",
       "(r x=1'text')", ModelCode::None},
  };
  Write("s.xsd", InSchema(IN_TYPE("<xs:attribute name='x' default='1'/>")));
  Write("plain.xsd",
        "<schema xmlns='http://www.w3.org/2001/XMLSchema'><element name='r'/>"
        "</schema>");
  Write("s.xdr", "<Schema xmlns='urn:schemas-microsoft-com:xml-data'/>");
  Write("old.xsd", "<x:schema xmlns:x='http://www.w3.org/1999/XMLSchema'/>");
  Write("names.dtd",
        "<!ENTITY % p 'none:'><!ENTITY % s ':none'><!ENTITY % r '%p;r'>"
        "<!ATTLIST %r; x CDATA '1'>");
  for (const auto& row : rows) {
    EXPECT_EQ(Build(row.document), row.tree) << row.symptom;
    EXPECT_EQ(Error(), row.error) << row.symptom;
  }
}

// --- limits ------------------------------------------------------------------------------------

TEST_F(SchemaTest, NestingIsBounded) {
  const auto nested = [](int depth) {
    return IN_TYPE("<xs:attribute name='x' default='1'/>") "<xs:group name='g'>" +
           Repeat("<xs:sequence>", depth) + Repeat("</xs:sequence>", depth) + "</xs:group>";
  };
  EXPECT_EQ(BuildWith(nested(kSchemaNesting - 2)), "(r x=1)");
  EXPECT_EQ(Error(), ModelCode::None);
  for (int depth : {kSchemaNesting - 1, 100000}) {
    EXPECT_EQ(BuildWith(nested(depth)), "(r)");
    EXPECT_EQ(Error(), ModelCode::NotAllowed);
  }
}

// Each element has the large group in a content of its own. What they leave is for the last one.
TEST_F(SchemaTest, SearchesForChildrenAreBoundedExactly) {
  constexpr int kGroupSize = 10000;
  constexpr int kElements = 99;
  constexpr int kSteps = kGroupSize + 6;  // with the reference, the group, and the ends of each
  constexpr int kMost = static_cast<int>(kIndexedParticles) - kElements * kSteps - 1;
  std::string declarations = "<xs:group name='g'><xs:sequence>";
  for (int i = 0; i < kGroupSize; ++i) declarations += Numbered("<xs:element name='c#'/>", i);
  declarations += "</xs:sequence></xs:group>";
  std::string content;
  for (int i = 0; i < kElements; ++i) {
    declarations += Numbered("<xs:element name='e#'><xs:complexType><xs:sequence>", i);
    declarations += "<xs:element ref='e0'/><xs:group ref='g'/></xs:sequence></xs:complexType>";
    declarations += "</xs:element>";
    content += Numbered("<e#><c1/>", i) + Numbered("</e#>", i);
  }
  declarations += "<xs:element name='e'><xs:complexType><xs:sequence>";
  content += "<e><last/></e>";
  for (const bool beyond : {false, true}) {
    std::string own;
    for (int i = 0; i < kMost + beyond; ++i) own += Numbered("<xs:element name='o#'/>", i);
    own += "<xs:element name='last' type='xs:int' default='1'/></xs:sequence></xs:complexType>";
    const std::string tree = BuildWith(declarations + own + "</xs:element>", content);
    EXPECT_TRUE(tree.ends_with(beyond ? "(e(last)))" : "(e(last'1')))"));
  }
}

TEST_F(SchemaTest, CopiesAndMembersAreBoundedExactly) {
  const auto members = [](int count) {
    return "<xs:element name='r'/><xs:simpleType name='u'><xs:union memberTypes='" +
           Repeat("xs:int ", count) + "'/></xs:simpleType>";
  };
  const auto copies = [](int attributes, int references) {
    std::string text = "<xs:attributeGroup name='g'>";
    for (int i = 0; i < attributes; ++i) text += Numbered("<xs:attribute name='a#'/>", i);
    return text + "</xs:attributeGroup><xs:element name='r'><xs:complexType>" +
           Repeat("<xs:attributeGroup ref='g'/>", references) + "</xs:complexType></xs:element>";
  };
  constexpr int kMembers = static_cast<int>(kUnionMembers);
  static_assert(kSchemaCopyLimit == 2000 * 2000);
  const struct {
    std::string atBound;
    std::string beyond;
  } rows[] = {
      {members(kMembers), members(kMembers + 1)},
      {copies(2000, 2000), copies(2000, 2001)},
  };
  for (const auto& row : rows) {
    BuildWith(row.atBound);
    EXPECT_EQ(Error(), ModelCode::None);
    BuildWith(row.beyond);
    EXPECT_EQ(Error(), ModelCode::NotAllowed);
  }
}

// Unions of unions double with each step.
TEST_F(SchemaTest, DoublingEnds) {
  std::string doubling = "<xs:simpleType name='u0'><xs:restriction base='xs:int'/></xs:simpleType>";
  for (int i = 1; i < 40; ++i) {
    doubling += Numbered("<xs:simpleType name='u#'>", i);
    doubling += Numbered("<xs:union memberTypes='u# u#'/></xs:simpleType>", i - 1);
  }
  BuildWith(doubling);
  EXPECT_EQ(Error(), ModelCode::NotAllowed);
}

// Each default is tried against the pattern in vain, for long, before the other member takes it.
TEST_F(SchemaTest, ChecksOfValuesAreBoundedExactly) {
  const auto stepsFor = [this](std::int64_t defaults) {
    std::string text =
        "<xs:simpleType name='p'><xs:restriction base='xs:string'>"
        "<xs:pattern value='((a*)*|b*)*c'/></xs:restriction></xs:simpleType>"
        "<xs:simpleType name='u'><xs:union memberTypes='p xs:string'/></xs:simpleType>"
        "<xs:element name='r'/>";
    for (int i = 0; i < defaults; ++i) {
      text += Numbered("<xs:attribute name='a#' type='u' default='", i);
      text += std::string(40, 'a') + "'/>";
    }
    const std::int64_t before = XMLRegExp::steps;
    BuildWith(text);
    return XMLRegExp::steps - before;
  };
  const std::int64_t one = stepsFor(1);
  EXPECT_EQ(stepsFor(2), 2 * one);
  stepsFor(kSchemaMatchLimit / one);
  EXPECT_EQ(Error(), ModelCode::None);
  stepsFor(kSchemaMatchLimit / one + 1);
  EXPECT_EQ(Error(), ModelCode::NotAllowed);
}

}  // namespace
}  // namespace kelmora
