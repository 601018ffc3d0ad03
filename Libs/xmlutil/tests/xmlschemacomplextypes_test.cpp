#include <gtest/gtest.h>

#include <string>

#include "schematesting.h"

namespace kelmora {
namespace {

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

}  // namespace
}  // namespace kelmora
