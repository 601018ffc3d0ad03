#include <gtest/gtest.h>

#include "modeltesting.h"

namespace kelmora {
namespace {

struct DetectionRow {
  const char* document;
  SchemaKind kind;
  const char* location;
  const char* uri;
};

TEST_F(ModelTest, DetectsWhatADocumentRefersTo) {
  const DetectionRow rows[] = {
      {"<a xmlns='x-schema: s.xml'/>", SchemaKind::XDRByNamespace, "s.xml", "x-schema: s.xml"},
      {"<a xmlns:i='i' i:noNamespaceSchemaLocation='s.xsd'/>", SchemaKind::XMLSchema2001, "s.xsd",
       ""},
      {"<a xmlns:i='i' i:schemaLocation='u1 l1  u2 l2'/>", SchemaKind::XMLSchema2001, "l1", "u1"},
      {"<include schemaLocation='l'/>", SchemaKind::None, "", ""},
      {"<x:schema xmlns:x='http://www.w3.org/2001/XMLSchema'/>", SchemaKind::XMLSchema2001, "",
       "http://www.w3.org/2001/XMLSchema"},
      {"<x:schema xmlns:x='http://www.w3.org/1999/XMLSchema'/>", SchemaKind::XMLSchema1999, "",
       "http://www.w3.org/1999/XMLSchema"},
      {"<a xmlns:x='http://www.w3.org/2001/XMLSchema'/>", SchemaKind::None, "", ""},
      {"<a><b/><b><c xmlns='http://www.w3.org/2001/XMLSchema'/></b></a>", SchemaKind::XMLSchema2001,
       "", "http://www.w3.org/2001/XMLSchema"},
      {"<!DOCTYPE a SYSTEM 'd.dtd'><a noNamespaceSchemaLocation='s'/>", SchemaKind::DTD, "d.dtd",
       ""},
      {"<!DOCTYPE a PUBLIC '-//P' 'd.dtd'><a/>", SchemaKind::DTD, "d.dtd", "-//P"},
      {"<a><b c='d'/></a>", SchemaKind::None, "", ""},
  };
  for (const DetectionRow& row : rows) {
    Build(row.document);
    const SchemaReference found = DocumentModel::DetectSchemaKind(*root_->source, false);
    EXPECT_EQ(found.kind, row.kind) << row.document;
    if (row.kind == SchemaKind::None) continue;
    EXPECT_EQ(ToNative(found.locations.at(0)), row.location) << row.document;
    EXPECT_EQ(ToNative(found.namespaces.at(0)), row.uri) << row.document;
  }
}

TEST_F(ModelTest, DetectsWhatAFileIs) {
  const struct {
    const char* document;
    SchemaKind kind;
    ModelCode error;
  } rows[] = {
      {"<DCD/>", SchemaKind::DCD, ModelCode::None},
      {"<Schema><ElementType/></Schema>", SchemaKind::XDRByNamespace, ModelCode::None},
      {"<Schema/>", SchemaKind::XDRByNamespace, ModelCode::None},
      {"<Schema><complexType/></Schema>", SchemaKind::None, ModelCode::XdrWordsInSchema},
      {"<schema><element/></schema>", SchemaKind::XMLSchema2001, ModelCode::None},
      {"<schema><attrDecl/></schema>", SchemaKind::None, ModelCode::OldWordsInSchema},
      {"<schema><ElementType/></schema>", SchemaKind::None, ModelCode::XdrWordsInSchema},
      {"<s:schema xmlns:s='http://www.w3.org/2000/10/XMLSchema'/>", SchemaKind::XMLSchema2000,
       ModelCode::None},
      {"<a><schema><element/></schema></a>", SchemaKind::None, ModelCode::None},
  };
  for (const auto& row : rows) {
    Build(row.document);
    model_->Error().Clear();
    EXPECT_EQ(model_->DetectFileKind(*root_->source), row.kind) << row.document;
    EXPECT_EQ(Error(), row.error) << row.document;
  }
}

}  // namespace
}  // namespace kelmora
