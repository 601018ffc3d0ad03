#include "xmlutil/declarations.h"

#include <string>

#include "schematesting.h"

namespace kelmora {
namespace {

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

}  // namespace
}  // namespace kelmora
