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
    EXPECT_EQ(static_cast<std::int32_t>(Error()), row.number);
    EXPECT_EQ(ErrorText(), row.text);
  }
}

}  // namespace
}  // namespace kelmora
