#include <gtest/gtest.h>

#include <string>

#include "modeltesting.h"

namespace kelmora {
namespace {

struct Row {
  const char* declarations;
  std::int32_t number;
  const char* text;
  const char* tree = nullptr;  // null: not looked at
};

class XdrTest : public ModelTest {
 protected:
  std::string BuildWith(const std::string& declarations, const std::string& content) {
    Write("s.xdr",
          "<Schema xmlns='urn:schemas-microsoft-com:xml-data' "
          "xmlns:d='urn:schemas-microsoft-com:datatypes'>" +
              declarations + "</Schema>");
    return Build("<r xmlns='x-schema:s.xdr'>" + content + "</r>");
  }
};

TEST_F(XdrTest, Rows) {
  const Row rows[] = {
      {"<ElementType name='r'><AttributeType name='x' default='1'/><element type='a'/>"
       "</ElementType><ElementType name='a' content='textOnly'><attribute type='y' default='3'/>"
       "</ElementType>",
       7520, "y", "(r x=1(a))"},
      {"<AttributeType name='y' default='2' d:type='int'/>"
       "<ElementType name='r'><element type='a' minOccurs='0' maxOccurs='*'/></ElementType>"
       "<ElementType name='a' d:type='string' content='textOnly' model='closed'>"
       "<attribute type='y'/><description>x</description><datatype/></ElementType>",
       7500, "", "(r(a y=2))"},
      {"<AttributeType name='y' default='2'/><ElementType name='r' content='empty'>"
       "<attribute type='y' default='3' required='yes'/></ElementType>",
       7500, "", "(r y=3(a))"},
      {"<ElementType name='r' order='many'><group order='many'><element type='r'/></group>"
       "</ElementType>",
       7500, "", "(r(a))"},
      {"<foo/>", 7536, "- expected: (ElementType | AttributeType | description)"},
      {"<ElementType name='r' size='1'/>", 7536,
       "- expected attribute: (name | model | d:type | d:minLength | d:maxLength | content | "
       "order)"},
      {"<ElementType name='r'><any/></ElementType>", 7536,
       "- expected: (attribute | AttributeType | datatype | description | element | group)"},
      {"<ElementType name='r' content='x'/>", 7537,
       "- expected (empty | textOnly | eltOnly | mixed)"},
      {"<ElementType name='r' model='x'/>", 7537, "- expected (open | closed)"},
      {"<ElementType name='r' order='x'/>", 7537, "- expected (one | seq | many)"},
      {"<ElementType name='r' d:type='foo'/>", 7537, "foo"},
      {"<ElementType name='r'><element type='r' minOccurs='2'/></ElementType>", 7537,
       "- expected (0 | 1)"},
      {"<ElementType name='r'><element type='r' maxOccurs='2'/></ElementType>", 7537,
       "- expected (1 | *)"},
      {"<ElementType name='r'><element/></ElementType>", 7538, ""},
      {"<ElementType name='r'><element name='x'/></ElementType>", 7536,
       "- expected attribute: (type | minOccurs | maxOccurs)"},
      {"<ElementType name='r'><attribute name='x'/></ElementType>", 7536,
       "- expected attribute: (type | default | required)"},
      {"<AttributeType name='x' required='x'/>", 7537, "- expected (yes | no)"},
      {"<AttributeType name='x' fixed='x'/>", 7536,
       "- expected attribute: (name | default | d:type | d:values | required)"},
      {"<AttributeType name='x'><group/></AttributeType>", 7536,
       "- expected: (datatype | description)"},
      {"<ElementType name='r' content='empty'><element type='r'/></ElementType>", 7576, "r"},
      {"<ElementType name='r' content='textOnly'><element type='r'/></ElementType>", 7575, "r"},
      {"<ElementType name='r'/>", 7543, "r"},
      {"<ElementType name='r' content='empty'/><ElementType name='r'/>", 7512, "r"},
      {"<ElementType name='r'><element type='a'/></ElementType>", 7517, "a"},
      {"", 7506, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.declarations);
    const std::string tree = BuildWith(row.declarations, "<a/>");
    if (row.tree != nullptr) {
      EXPECT_EQ(tree, row.tree);
    }
    EXPECT_EQ(static_cast<std::int32_t>(Error()), row.number);
    EXPECT_EQ(ErrorText(), row.text);
  }
}

TEST_F(XdrTest, PrefixesAreNeededAndShown) {
  Write("s.xdr",
        "<x:Schema xmlns:x='urn:schemas-microsoft-com:xml-data' "
        "xmlns:dt='urn:schemas-microsoft-com:datatypes'><x:foo/></x:Schema>");
  Build("<p:r xmlns:p='x-schema:s.xdr'/>");
  EXPECT_EQ(ErrorText(), "- expected: (x:ElementType | x:AttributeType | x:description)");
  Write("s.xdr",
        "<Schema xmlns='urn:schemas-microsoft-com:xml-data'>"
        "<AttributeType name='x' default='1'/></Schema>");
  Build("<p:r xmlns:p='x-schema:s.xdr'/>");
  EXPECT_EQ(Error(), ModelCode::NoSchemaPrefix);
}

}  // namespace
}  // namespace kelmora
