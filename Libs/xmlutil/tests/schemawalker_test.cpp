// What the reading of a schema may not cost.
#include "schema/schemawalker.h"

#include <string>

#include "schema/xmlschemareader.h"
#include "schematesting.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

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

TEST_F(SchemaTest, DoublingEnds) {
  std::string doubling = "<xs:simpleType name='u0'><xs:restriction base='xs:int'/></xs:simpleType>";
  for (int i = 1; i < 40; ++i) {
    doubling += Numbered("<xs:simpleType name='u#'>", i);
    doubling += Numbered("<xs:union memberTypes='u# u#'/></xs:simpleType>", i - 1);
  }
  BuildWith(doubling);
  EXPECT_EQ(Error(), ModelCode::NotAllowed);
}

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
