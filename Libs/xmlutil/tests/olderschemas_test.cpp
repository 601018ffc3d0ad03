// XDR and DCD.
#include <gtest/gtest.h>

#include <string>

#include "modeltesting.h"
#include "older/olderschematypes.h"

namespace kelmora {
namespace {

struct Row {
  const char* declarations;
  std::int32_t code;
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
    EXPECT_EQ(Error(), row.code);
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

// Whatever a document takes the file for, a DCD is read as one.
TEST_F(ModelTest, DCD) {
  const Row rows[] = {
      {"<ElementDef Type='r' Model='Elements'><AttributeDef Name='x' Default='1'/>"
       "<Group RDF:Order='Seq'><Element>a</Element></Group></ElementDef>"
       "<ElementDef><Type>a</Type><Model>Data</Model><Datatype>int</Datatype><Min>1</Min>"
       "<AttributeDef><Name>y</Name><Datatype>int</Datatype><Default>2</Default>"
       "<Occurs>Optional</Occurs></AttributeDef></ElementDef>",
       7500, "", "(r x=1(a y=2))"},
      {"<ElementDef Type='r'><Group RDF:Order='Alt' Occurs='OneOrMore'><Element>a</Element>"
       "<Group RDF:Order='Seq' Occurs='Optional'><Element>a</Element></Group></Group>"
       "<AttributeDef Name='x' Default='1' Values=\"a 'b c'\" ID-Role='ID' Fixed='True'/>"
       "</ElementDef><ElementDef Type='a'/>",
       7500, "", "(r x=1(a))"},
      {"<AttributeDef/><Description/><ElementDef Type='a' Content='x'/>", 7537,
       "- expected (Open | Closed)"},
      {"<ElementDef Content='x' Model='x'><AttributeDef Name='x' Default='1'/><Type>r</Type>"
       "<AttributeDef Name='y' Default='2'/></ElementDef>",
       7500, "", "(r y=2(a))"},
      {"<ElementType/>", 7536, "- expected: (ElementType | AttributeType | description)"},
      {"<ElementDef Name='r'/>", 7536,
       "- expected: (Attribute | AttributeDef | Datatype | Description | Element | Group | Type | "
       "Model | Content)"},
      {"<ElementDef Type='r'><Group><Model>Data</Model></Group></ElementDef>", 7536,
       "- expected: (Attribute | AttributeDef | Datatype | Description | Element | Group | Type | "
       "Model | Content)"},
      {"<ElementDef Type='r' Model='x'/>", 7537,
       "- expected (Empty | Data | Elements | Mixed | Any)"},
      {"<ElementDef Type='r' Datatype='x'/>", 7537, "x"},
      {"<ElementDef Type='r'><Group RDF:Order='x'/></ElementDef>", 7537, "- expected (Alt | Seq)"},
      {"<ElementDef Type='r'><Group Occurs='x'/></ElementDef>", 7537,
       "- expected (Required | Optional | OneOrMore | ZeroOrMore)"},
      {"<ElementDef Type='r'><Group Order='x'/></ElementDef>", 7536,
       "- expected attribute: (RDF:Order | Occurs)"},
      {"<ElementDef Type='r'><AttributeDef ID-Role='x'/></ElementDef>", 7537,
       "- expected (ID | IDREF | IDREFS)"},
      {"<ElementDef Type='r'><AttributeDef Occurs='x'/></ElementDef>", 7537,
       "- expected (Required | Optional)"},
      {"<ElementDef Type='r'><AttributeDef Fixed='x'/></ElementDef>", 7537,
       "- expected (True | False)"},
      {"<ElementDef Type='r'><AttributeDef Type='x'/></ElementDef>", 7536,
       "- expected attribute: (Name | Default | Datatype | Description | Occurs)"},
      {"<ElementDef Type='r'/><ElementDef Type='r'/>", 7512, "r"},
      {"<ElementDef Type='r'><Element>b</Element></ElementDef>", 7517, "b"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.declarations);
    Write("s.dcd", std::string("<DCD>") + row.declarations + "</DCD>");
    const std::string tree = Build("<r noNamespaceSchemaLocation='s.dcd'><a/></r>");
    if (row.tree != nullptr) {
      EXPECT_EQ(tree, row.tree);
    }
    EXPECT_EQ(Error(), row.code);
    EXPECT_EQ(ErrorText(), row.text);
  }
}

TEST(OlderSchemaTypes, ValuesInQuotes) {
  const std::vector<TQString> words = SplitValues(u"a 'b c' \"d\"  e");
  ASSERT_EQ(words.size(), 4u);
  EXPECT_EQ(ToNative(words[1]), "b c");
  EXPECT_EQ(ToNative(words[3]), "e");
}

}  // namespace
}  // namespace kelmora
