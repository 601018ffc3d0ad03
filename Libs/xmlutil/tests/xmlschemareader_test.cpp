// What a document gets of its schema, and how schemas name one another.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "schematesting.h"

namespace kelmora {
namespace {

TEST_F(SchemaTest, Effects) {
  const struct {
    const char* symptom;
    const char* declarations;
    const char* content;
    const char* tree;
  } rows[] = {
      {"nothing to add", "<xs:element name='r'/>", "<a/>", "(r(a))"},
      {"attributes and elements",
       IN_SEQUENCE("<xs:element name='a' type='xs:int' default='1'/>"
                   "<xs:element name='b' type='xs:int' fixed='2'/>"),
       "<a/><b/><b>3</b>", "(r(a'1')(b'2')(b'3'))"},
      {"the local declaration comes before the global one",
       "<xs:element name='a' type='xs:string' default='global'/>" IN_SEQUENCE(
           "<xs:element name='a' type='xs:string' default='local'/>"),
       "<a/><x><a/></x>", "(r(a'local')(x(a'global')))"},
      {"through nested groups",
       "<xs:group name='g'><xs:choice><xs:element name='a' type='xs:string' default='1'/>"
       "</xs:choice></xs:group>" IN_SEQUENCE(
           "<xs:choice><xs:sequence><xs:group ref='g'/></xs:sequence></xs:choice>"),
       "<a/>", "(r(a'1'))"},
      {"of two declarations of a name the first one in the content counts",
       "<xs:group name='g'><xs:sequence><xs:element name='a' type='xs:int' default='1'/>"
       "</xs:sequence></xs:group>" IN_SEQUENCE(
           "<xs:group ref='g'/><xs:any/><xs:element name='a' type='xs:int' default='2'/>"),
       "<a/>", "(r(a'1'))"},
      {"a group that holds itself in an element",
       "<xs:group name='g'><xs:sequence><xs:element name='a'><xs:complexType><xs:sequence>"
       "<xs:group ref='g'/></xs:sequence><xs:attribute name='x' default='1'/></xs:complexType>"
       "</xs:element></xs:sequence></xs:group>" IN_TYPE("<xs:group ref='g'/>"),
       "<a><a/></a>", "(r(a x=1(a x=1)))"},
      {"types used in front of their definition",
       "<xs:element name='r' type='c'/>"
       "<xs:complexType name='c'><xs:complexContent><xs:extension base='b'>"
       "<xs:attribute name='x' default='c'/></xs:extension></xs:complexContent></xs:complexType>"
       "<xs:complexType name='b'><xs:attribute name='y' type='t' default='1'/></xs:complexType>"
       "<xs:simpleType name='t'><xs:restriction base='u'/></xs:simpleType>"
       "<xs:simpleType name='u'><xs:restriction base='xs:int'/></xs:simpleType>",
       "", "(r y=1 x=c)"},
      {"a restriction keeps attributes and overwrites them",
       "<xs:complexType name='b'><xs:sequence><xs:element name='a' type='xs:int' default='1'/>"
       "</xs:sequence><xs:attribute name='x' default='1'/><xs:attribute name='y' default='2'/>"
       "</xs:complexType>" CONTENT(
           "complexContent", "restriction", "b",
           "<xs:attribute name='y' default='3'/>") "<xs:element name='r' type='c'/>",
       "<a/>", "(r x=1 y=3(a))"},
      {"simple content from a complex type",
       "<xs:complexType name='b'><xs:simpleContent><xs:extension base='xs:int'>"
       "<xs:attribute name='x' "
       "default='1'/></xs:extension></xs:simpleContent></xs:complexType>" CONTENT(
           "simpleContent", "restriction", "b",
           "<xs:maxInclusive value='9'/>") "<xs:element name='r' type='c' default='9'/>",
       "", "(r x=1'9')"},
      {"groups of attributes in one another",
       "<xs:attributeGroup name='o'><xs:attributeGroup ref='i'/>"
       "<xs:attribute ref='g'/></xs:attributeGroup>"
       "<xs:attributeGroup name='i'><xs:attribute name='x' default='1'/></xs:attributeGroup>"
       "<xs:attribute name='g' default='2'/>" IN_TYPE("<xs:attributeGroup ref='o'/>"),
       "", "(r x=1 g=2)"},
      {"a reference overrides the default",
       "<xs:attribute name='g' default='1'/>" IN_TYPE("<xs:attribute ref='g' default='2'/>"), "",
       "(r g=2)"},
      {"the head of a substitution group",
       "<xs:element name='h'><xs:complexType><xs:attribute name='x' default='1'/>"
       "</xs:complexType></xs:element><xs:element name='a' substitutionGroup='h'/>",
       "<a/>", "(r(a x=1))"},
      {"the head of a substitution group with its default",
       "<xs:element name='h' type='xs:int' default='1'/><xs:element name='a' "
       "substitutionGroup='h'/>"
       "<xs:element name='b' substitutionGroup='h' default='2'/>"
       "<xs:element name='c' substitutionGroup='h' fixed='3'/>",
       "<a/><b/><c/>", "(r(a'1')(b'2')(c'3'))"},
      {"elements of one name share a declaration, the last type stays",
       "<xs:complexType name='c'><xs:attribute name='x' default='1'/></xs:complexType>"
       "<xs:complexType name='d'><xs:attribute name='x' default='2'/></xs:complexType>" IN_SEQUENCE(
           "<xs:element name='a' type='c'/><xs:choice><xs:element name='a' type='d'/></xs:choice>"),
       "<a/>", "(r(a x=2))"},
      {"what the first pass read stays when the second one fails in the middle of it",
       "<xs:group name='g'><xs:sequence><xs:group ref='none'/><xs:element name='a' type='xs:int' "
       "default='1'/></xs:sequence></xs:group>" IN_TYPE("<xs:group ref='g'/>"),
       "<a/>", "(r(a'1'))"},
      {"the same in a type of its own",
       IN_SEQUENCE("<xs:element name='a'><xs:complexType><xs:attributeGroup ref='none'/>"
                   "<xs:attribute name='x' default='1'/></xs:complexType></xs:element>"),
       "<a/>", "(r(a x=1))"},
      {"read up to a value that its type refuses",
       IN_SEQUENCE("<xs:element name='a'><xs:complexType><xs:attribute name='x' default='1'/>"
                   "<xs:attribute name='y' type='xs:int' default='z'/></xs:complexType>"
                   "</xs:element>") "<xs:element name='b' type='xs:int' default='z'/>",
       "<a/><b/>", "(r(a x=1)(b))"},
      {"text of any kind is content, markup is none",
       IN_SEQUENCE("<xs:element name='a' type='xs:string' default='1'/>"),
       "<a> </a><a><![CDATA[]]></a><a><b/></a><a></a>", "(r(a' ')(a'')(a'1'(b))(a'1'))"},
      {"lists, unions, entities and character references",
       "<xs:simpleType name='u'><xs:union memberTypes='xs:int'><xs:simpleType>"
       "<xs:restriction base='xs:string'><xs:enumeration value='y&#101;s'/>"
       "<xs:enumeration value='no'/></xs:restriction></xs:simpleType></xs:union>"
       "</xs:simpleType>" IN_TYPE(
           "<xs:attribute name='l' default='1 2'><xs:simpleType><xs:list itemType='xs:int'/>"
           "</xs:simpleType></xs:attribute>"
           "<xs:attribute name='u' default='no' type='u'/>"
           "<xs:attribute name='e' default='&lt;&#65;&amp;'/>"),
       "", "(r l=1 2 u=no e=<A&)"},
      {"foreign attributes and documentation",
       "<xs:annotation><xs:documentation xml:lang='en'>x</xs:documentation></xs:annotation>"
       "<xs:element name='r' f:x='1' xmlns:f='f' id='i'><xs:complexType id='j'>"
       "<xs:attribute name='x' default='1'><xs:annotation/></xs:attribute></xs:complexType>"
       "<xs:key name='k'><xs:selector xpath='a|.//b'/><xs:field xpath='@c'/></xs:key>"
       "</xs:element>",
       "", "(r x=1)"},
      {"read up to the problem",
       IN_TYPE("<xs:attribute name='x' default='1'/>") "<xs:element name='a' fixed='2'/>", "",
       "(r x=1)"},
      {"no element after an unknown child of the schema",
       IN_TYPE("<xs:attribute name='x' default='1'/>") "<xs:foo/>", "", "(r)"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(BuildWith(row.declarations, row.content), row.tree) << row.symptom;
  }
}

TEST_F(SchemaTest, Passes) {
  const auto chain = [](int length) {
    std::string types = "<xs:element name='r' type='t0'/>";
    for (int i = 0; i < length; ++i) {
      types += Numbered("<xs:complexType name='t#'><xs:complexContent>", i);
      types += Numbered("<xs:extension base='t#'/></xs:complexContent></xs:complexType>", i + 1);
    }
    return types += Numbered(
               "<xs:complexType name='t#'><xs:attribute name='x' default='1'/></xs:complexType>",
               length);
  };
  EXPECT_EQ(BuildWith(chain(3)), "(r x=1)");
  EXPECT_EQ(model_->pass, 4);
  EXPECT_EQ(BuildWith(chain(4)), "(r)");
  EXPECT_EQ(model_->pass, 4);
  BuildWith("<xs:element name='r' type='a'/><xs:complexType name='a'/>");
  EXPECT_EQ(model_->pass, 1);
  BuildWith(IN_SEQUENCE("<xs:group ref='g'/><xs:group ref='g'/>") "<xs:group name='g'/>");
  EXPECT_EQ(model_->pass, 1);
  BuildWith(
      "<xs:complexType name='a'><xs:group ref='g'/></xs:complexType>"
      "<xs:group name='g'/><xs:element name='r'/>");
  EXPECT_EQ(model_->pass, 2);
}

TEST_F(SchemaTest, Namespaces) {
  const std::string qualified =
      "targetNamespace='u' xmlns:t='u' elementFormDefault='qualified' "
      "attributeFormDefault='qualified'";
  const std::string declarations =
      IN_SEQUENCE("<xs:element name='a' type='t:c'/>")
      "<xs:complexType name='c'><xs:attribute name='x' default='1'/>"
      "<xs:attribute name='y' form='unqualified' default='2'/></xs:complexType>";
  Write("s.xsd", InSchema(declarations, qualified));
  const std::string location = " xsi:schemaLocation='u s.xsd' xmlns:xsi='i'";
  EXPECT_EQ(Build("<p:r xmlns:p='u'" + location + "><p:a/><a/></p:r>"), "(p:r(p:a p:x=1 y=2)(a))");
  // Of several prefixes the first one in their order serves, and the default namespace is none.
  EXPECT_EQ(Build("<r xmlns='u' xmlns:q='u' xmlns:b='u'" + location + "><a/></r>"),
            "(r(a x=1 y=2))");
  EXPECT_EQ(Build("<q:r xmlns:q='u' xmlns:b='u'" + location + "><q:a/></q:r>"),
            "(q:r(q:a b:x=1 y=2))");
  // A schema without a target namespace declares in that of the reference.
  Write("s.xsd", InSchema(IN_TYPE("<xs:attribute name='x' type='t' default='1'/>")
                              SIMPLE("<xs:restriction base='xs:int'/>")));
  EXPECT_EQ(Build("<r xmlns='u'" + location + "/>"), "(r x=1)");
}

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

}  // namespace
}  // namespace kelmora
