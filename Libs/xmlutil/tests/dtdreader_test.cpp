// What declarations make of a document, what ends their reading, and what they may not cost.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "modeltesting.h"

namespace kelmora {
namespace {

struct DocumentRow {
  const char* symptom;
  const char* document;
  const char* tree;
  ModelCode error = ModelCode::None;
};

TEST_F(ModelTest, InternalSubset) {
  const DocumentRow rows[] = {
      {"first declaration binds", "<!DOCTYPE a [<!ENTITY e '1'><!ENTITY e '2'>]><a>&e;</a>",
       "(a'1')"},
      {"predefined ones", "<!DOCTYPE a [<!ENTITY lt 'x'><!ENTITY gt 'y'>]><a>&lt;&gt;</a>",
       "(a'<y')"},
      {"two tables", "<!DOCTYPE a [<!ENTITY % e 'x'><!ENTITY e 'y'>]><a>&e;</a>", "(a'y')"},
      {"used before its declaration", "<!DOCTYPE a [<!ENTITY f '[&e;]'><!ENTITY e 'x'>]><a>&f;</a>",
       "(a'[x]')"},
      {"parameter entity in a value",
       "<!DOCTYPE a [<!ENTITY % p 'x'><!ENTITY e '-%p;-'>]><a>&e;</a>", "(a'-x-')"},
      {"parameter entity as declarations",
       "<!DOCTYPE a [<!ENTITY % p \"<!ENTITY e 'x'>\">%p;]><a>&e;</a>", "(a'x')"},
      {"markup becomes nodes", "<!DOCTYPE a [<!ENTITY e '<b>x</b>y'>]><a>&e;</a>", "(a(b'x')'y')"},
      {"no parse, no markup", "<!DOCTYPE a [<!ENTITY e '<b>'>]><a>&e;</a>", "(a'<b>')"},
      {"unknown reference stays", "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&q;</a>", "(a'&q;')",
       ModelCode::UnknownEntity},
      {"undeclared without a DTD", "<a>&q;</a>", "(a'&q;')", ModelCode::KindMismatch},
      {"defaults in declaration order",
       "<!DOCTYPE a [<!ATTLIST b x CDATA '1' y (p|q) 'q'><!ATTLIST b x CDATA '2' z ID #IMPLIED>]>"
       "<a><b/><b y='p'/></a>",
       "(a(b x=2 y=q)(b y=p x=2))"},
      {"default of a prefixed name", "<!DOCTYPE p:a [<!ATTLIST p:a p:x CDATA '1'>]><p:a/>",
       "(p:a p:x=1)"},
      {"value outside the enumeration ends it",
       "<!DOCTYPE a [<!ATTLIST a x (p|q) 'r'><!ATTLIST a y CDATA '1'>]><a/>", "(a x=r)",
       ModelCode::DefaultNotInEnumeration},
      {"element declared twice",
       "<!DOCTYPE a [<!ELEMENT a EMPTY><!ELEMENT a ANY><!ATTLIST a y CDATA '1'>]><a/>", "(a)",
       ModelCode::DeclaredTwice},
      {"second ID", "<!DOCTYPE a [<!ATTLIST a x ID #IMPLIED><!ATTLIST a y ID #IMPLIED>]><a/>",
       "(a)", ModelCode::SecondID},
      {"ID with a default", "<!DOCTYPE a [<!ATTLIST a x ID 'v'>]><a/>", "(a x=v)",
       ModelCode::IDWithDefault},
      {"definitions from an entity",
       "<!DOCTYPE a [<!ENTITY % d \"x CDATA '1' y CDATA '2'\"><!ATTLIST a %d;>]><a/>",
       "(a x=1 y=2)"},
      {"default from an entity",
       "<!DOCTYPE a [<!ENTITY % d \"'1'\"><!ATTLIST a x CDATA %d; y CDATA '2'>]><a/>",
       "(a x=1 y=2)"},
      {"type from an entity", "<!DOCTYPE a [<!ENTITY % t '(p|q)'><!ATTLIST a x %t; 'q'>]><a/>",
       "(a x=q)"},
      {"content model from an entity",
       "<!DOCTYPE a [<!ENTITY % m '(b,c)*'><!ELEMENT a %m;><!ATTLIST a x CDATA '1'>]><a/>",
       "(a x=1)"},
      {"bad content model",
       "<!DOCTYPE a [<!ENTITY % m '(b,'><!ELEMENT a %m;><!ATTLIST a x CDATA '1'>]><a/>", "(a)",
       ModelCode::BadContentModel},
      {"nothing in it", "<!DOCTYPE a><a/>", "(a)", ModelCode::EmptyDoctype},
      {"entity whose value is declared further on",
       "<!DOCTYPE a [<!ENTITY e %p;><!ENTITY % p \"'E'\"><!ATTLIST a x CDATA '1'>]><a>&e;</a>",
       "(a x=1'E')", ModelCode::None},
      {"names and type that are declared further on",
       "<!DOCTYPE a [<!ATTLIST a x (p|%n;) 'q' y %t; '1'><!ENTITY % n 'q'><!ENTITY % t 'CDATA'>"
       "<!ATTLIST a z CDATA '2'>]><a/>",
       "(a x=q y=1 z=2)", ModelCode::None},
      {"declarations out of what is declared further on",
       "<!DOCTYPE a [<!ENTITY % d \"<!ATTLIST a x (p|%n;) 'q'>\">%d;<!ENTITY % n 'q'>"
       "<!ATTLIST a z CDATA '2'>]><a/>",
       "(a z=2 x=q)", ModelCode::None},
      {"unknown parameter entity", "<!DOCTYPE a [%p;<!ATTLIST a x CDATA '1'>]><a/>", "(a x=1)",
       ModelCode::UnknownEntity},
  };
  for (const DocumentRow& row : rows) {
    EXPECT_EQ(Build(row.document), row.tree) << row.symptom;
    EXPECT_EQ(Error(), row.error) << row.symptom;
  }
}

TEST_F(ModelTest, ExternalSubsetComesFirst) {
  Write("d.dtd",
        "<!ENTITY % sw 'INCLUDE'><![%sw;[<!ENTITY e 'external'>]]>"
        "<![ IGNORE [<!ENTITY f 'ignored'><![INCLUDE[<!ENTITY f 'too'>]]> ]]>"
        "<!ENTITY % more SYSTEM 'sub.mod'>%more;");
  Write("sub.mod", "<!ENTITY g 'module'>");
  Write("e.ent", "<?xml encoding='UTF-8'?><b>one</b><b>two</b>");
  EXPECT_EQ(Build("<!DOCTYPE a SYSTEM 'd.dtd' [<!ENTITY e 'internal'><!ENTITY f 'own'>"
                  "<!ENTITY x SYSTEM 'e.ent'><!ENTITY gone SYSTEM 'missing.ent'>]>"
                  "<a p='&e;&f;&g;'><c>&x;</c><c>&gone;</c></a>"),
            "(a p=externalownmodule(c(b'one')(b'two'))(c'&gone;'))");
  Write("self.dtd", "<!ENTITY % s SYSTEM 'self.dtd'><!ENTITY e 'x'>%s;");
  EXPECT_EQ(Build("<!DOCTYPE a SYSTEM 'self.dtd'><a>&e;</a>"), "(a'x')");
  EXPECT_EQ(Error(), ModelCode::WrongEntityKind);
  EXPECT_EQ(Build("<!DOCTYPE a SYSTEM 'none.dtd' [<!ENTITY e 'x'>]><a>&e;</a>"), "(a'&e;')");
}

TEST_F(ModelTest, SectionsAndReferencesBetweenDeclarations) {
  const DocumentRow rows[] = {
      {"switched on", "<!ENTITY % s 'INCLUDE'><![ %s; [<!ENTITY g '3'>]]>", "(r'123')"},
      {"switched off", "<!ENTITY % s 'IGNORE'><![%s;[ <!ENTITY g garbage]]>", "(r'12&g;')",
       ModelCode::UnknownEntity},
      {"neither", "<!ENTITY % s 'MAYBE'><![%s;[<!ENTITY g '3'>]]>", "(r'1&f;&g;')",
       ModelCode::WrongEntityKind},
      {"blanks around the word", "<!ENTITY % s ' INCLUDE '><![%s;[<!ENTITY g '3'>]]>",
       "(r'1&f;&g;')", ModelCode::WrongEntityKind},
      {"an external switch", "<!ENTITY % s SYSTEM 'INCLUDE'><![%s;[<!ENTITY g '3'>]]>",
       "(r'1&f;&g;')", ModelCode::WrongEntityKind},
      {"an unknown switch ends the second pass", "<![%s;[<!ENTITY g '3'>]]>", "(r'12&g;')",
       ModelCode::UnknownEntity},
      {"no declarations inside", "<!ENTITY % s 'INCLUDE'><![%s;[ garbage ]]>", "(r'1&f;&g;')",
       ModelCode::BadSection},
      {"no declarations in an entity", "<!ENTITY % s 'garbage'>%s;", "(r'1&f;&g;')",
       ModelCode::ReplacementUnparsable},
      {"no declarations in two", "<!ENTITY % s ' '>%s;%s;", "(r'1&f;&g;')", ModelCode::BadSection},
      {"nothing in one", "<!ENTITY % s ' '>%s;<!ENTITY g '3'>", "(r'123')"},
      {"declared behind its use", "%s;<!ENTITY g 'late'><!ENTITY % s \"<!ENTITY g '3'>\">",
       "(r'123')"},
      {"a file that is not there", "<!ENTITY % s SYSTEM 'none.dtd'>%s;", "(r'1&f;&g;')",
       ModelCode::LoadFailed},
  };
  for (const DocumentRow& row : rows) {
    Write("d.dtd", std::string("<!ENTITY e '1'>") + row.document + "<!ENTITY f '2'>");
    EXPECT_EQ(Build("<!DOCTYPE r SYSTEM 'd.dtd'><r>&e;&f;&g;</r>"), row.tree) << row.symptom;
    EXPECT_EQ(Error(), row.error) << row.symptom;
  }
}

TEST_F(ModelTest, WhatHangsOnAProvisionalValueWaits) {
  const DocumentRow rows[] = {
      {"the switch of a section is made of one that comes later",
       "<!ENTITY % s '%on;'><![%s;[<!ATTLIST r x CDATA '1'>]]>", "(r y=2 x=1(b))"},
      {"switched off by it", "<!ENTITY % s '%off;'><![%s;[<!ATTLIST r x CDATA '1'>]]>",
       "(r y=2(b))"},
      {"half a word is no switch",
       "<!ENTITY % s 'INCLUDE%suffix;'><![%s;[<!ATTLIST r x CDATA '1'>]]>", "(r y=2(b))",
       ModelCode::WrongEntityKind},
      {"a section in front of its switch", "<![%s;[<!ATTLIST r x CDATA '1'>]]><!ENTITY % s '%on;'>",
       "(r y=2 x=1(b))"},
      {"a switch in three steps",
       "<!ENTITY % s '%t;'><!ENTITY % t '%u;'><!ENTITY % u '%on;'>"
       "<![%s;[<!ATTLIST r x CDATA '1'>]]>",
       "(r y=2 x=1(b))"},
      {"a switch made of itself",
       "<!ENTITY % s '%t;'><!ENTITY % t '%s;'><![%s;[<!ATTLIST r x CDATA '1'>]]>"
       "<!ATTLIST b x CDATA 'too far'>",
       "(r y=2(b x=too far))", ModelCode::WrongEntityKind},
      {"a section inside one that is on",
       "<!ENTITY % s '%on;'><![INCLUDE[<![%s;[<!ATTLIST r x CDATA '1'>]]>]]>", "(r y=2 x=1(b))"},
      {"a section inside one that waits",
       "<!ENTITY % s '%on;'><![%s;[ <![%s;[<!ATTLIST r x CDATA '1'>]]> ]]>", "(r y=2 x=1(b))"},
      {"a section in a provisional text",
       "<!ENTITY % d \"<![%on;[<!ATTLIST r x CDATA '1'>]]>\">%d;", "(r y=2 x=1(b))"},
      {"half a name is that of another element",
       "<!ENTITY % n 'r%suffix;'><!ELEMENT %n; EMPTY><!ELEMENT r ANY>"
       "<!ATTLIST %n; x CDATA '1'><!ATTLIST r x CDATA '2'>",
       "(r x=2 y=2(b))"},
      {"half a name of an attribute",
       "<!ENTITY % n 'x%suffix;'><!ATTLIST r %n; CDATA '1' x CDATA '2'>", "(r x=2 y=2 x2=1(b))"},
      {"a content model in two steps",
       "<!ENTITY % m '%n;'><!ENTITY % n '%model;'><!ELEMENT r %m;><!ATTLIST r x CDATA '1'>",
       "(r x=1 y=2(b))"},
      {"a name in a content model", "<!ELEMENT r (a|%name;)*><!ATTLIST r x CDATA '1'>",
       "(r x=1 y=2(b))"},
      {"a definition without its default", "<!ATTLIST r x CDATA %value; z ID #IMPLIED>",
       "(r y=2 x=1(b))"},
      {"a type that is another one without its end",
       "<!ENTITY % t 'ID%ref;'><!ATTLIST r z %t; #IMPLIED i ID #IMPLIED x CDATA '1'>",
       "(r x=1 y=2(b))"},
      {"the same in a text",
       "<!ENTITY % d \"<!ATTLIST r z ID%ref; #IMPLIED i ID #IMPLIED x CDATA '1'>\">%d;",
       "(r x=1 y=2(b))"},
      {"half a location is that of another file",
       "<!ENTITY % f SYSTEM '%name;.mod'>%f;<!ATTLIST r z CDATA '3'>", "(r z=3 y=2 x=mod(b))"},
      {"a text that no other hangs on keeps what it had",
       "<!ENTITY e '[%t;]'><!ENTITY % t '%on;'><!ATTLIST b x CDATA '&e;'>", "(r y=2(b x=[]))"},
  };
  Write("b.mod", "<!ATTLIST r x CDATA 'mod'>");
  Write(".mod", "<!ATTLIST r x CDATA 'half'>");
  for (const DocumentRow& row : rows) {
    Write("d.dtd", std::string(row.document) + "<!ATTLIST r y CDATA '2'>");
    EXPECT_EQ(Build("<!DOCTYPE r SYSTEM 'd.dtd' [<!ENTITY % on 'INCLUDE'><!ENTITY % off 'IGNORE'>"
                    "<!ENTITY % suffix '2'><!ENTITY % ref 'REF'><!ENTITY % name 'b'>"
                    "<!ENTITY % model '(b)'><!ENTITY % value \"'1'\">]><r><b/></r>"),
              row.tree)
        << row.symptom;
    EXPECT_EQ(Error(), row.error) << row.symptom;
  }
}

TEST_F(ModelTest, LongAndDeepDeclarations) {
  constexpr int kMany = 20000;
  const std::string deep = Repeat("(", kMany) + "b" + Repeat(")", kMany);
  std::string names = "b0";
  std::string attributes;
  std::string redefinitions;
  for (int i = 1; i < kMany; ++i) {
    names += Numbered("|b#", i);
    attributes += Numbered(" a# CDATA ", i);
    attributes += "#IMPLIED";
    redefinitions += "<!ATTLIST a id ID #IMPLIED>";
  }
  const std::function<std::string(const std::string&)> withList = [](const std::string& list) {
    return "<!ATTLIST a" + list + " z CDATA 'last'>";
  };
  EXPECT_EQ(Build("<!DOCTYPE a [<!ELEMENT a " + deep + ">" + withList("") + "]><a/>"),
            "(a z=last)");
  EXPECT_EQ(Build("<!DOCTYPE a [<!ELEMENT a (" + names + ")*>" + withList(attributes) +
                  redefinitions + "]><a/>"),
            "(a z=last)");
}

}  // namespace
}  // namespace kelmora
