#include "xmlutil/documentmodel.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"

namespace kelmora {
namespace {

// A document on disk with its files, loaded and built; prints its tree in one line.
class ModelTest : public testing::Test {
 protected:
  ModelTest() {
    TQString ignored;
    kinds_.Fill(false, ignored);
    manager_ = std::make_unique<DocumentManager>(kinds_);
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    directory_ = std::filesystem::path(testing::TempDir()) /
                 (std::string("model_") + info->name());
    std::filesystem::create_directories(directory_);
  }
  ~ModelTest() override {
    XPathNode::DeleteTree(root_);
    std::filesystem::remove_all(directory_);
  }

  void Write(const std::string& name, const std::string& text) {
    std::ofstream(directory_ / name, std::ios::binary) << text;
  }

  // Loads `text` as a document and builds it; the dump of the tree below the root.
  std::string Build(const std::string& text) {
    Write("in.xml", text);
    const TQString path = FromNative((directory_ / "in.xml").string());
    auto record = std::make_unique<LoadRecord>();
    auto document = manager_->CreateDocument();
    document->SetKind(manager_->RowFor(1));
    LoadError error;
    document->Load(path, error, record.get());
    record->document = std::move(document);
    EXPECT_FALSE(error.HasError()) << ToNative(error.message);
    XTreeNode* tree = manager_->AdoptRecord(std::move(record))->Root();
    if (tree == nullptr) return "no tree";
    model_ = std::make_unique<DocumentModel>(manager_.get());
    XPathNode::DeleteTree(root_);
    root_ = nullptr;
    root_ = builder_.Build(*tree, *model_, true, path);
    std::string out;
    for (XPathNode* child = root_->firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Element) Dump(*child, out);
    }
    return out;
  }

  std::int32_t Error() const { return model_->Error().Code(); }

  static void Dump(const XPathNode& node, std::string& out) {
    out += "(" + ToNative(node.GetName());
    for (XPathNode* child = node.firstChild; child != nullptr; child = child->next) {
      if (child->kind == XPathNodeKind::Element) {
        Dump(*child, out);
      } else if (child->kind == XPathNodeKind::Attribute) {
        out += " " + ToNative(child->GetName()) + "=" + ToNative(child->GetValue());
      } else {
        out += "'" + ToNative(child->GetValue()) + "'";
      }
    }
    out += ")";
  }

  std::filesystem::path directory_;
  DocumentKindTable kinds_;
  std::unique_ptr<DocumentManager> manager_;
  XPathTreeBuilder builder_;
  std::unique_ptr<DocumentModel> model_;
  XPathNode* root_ = nullptr;
};

struct DocumentRow {
  const char* symptom;
  const char* document;
  const char* tree;
  std::int32_t error = ModelCode::None;
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
      {"second ID",
       "<!DOCTYPE a [<!ATTLIST a x ID #IMPLIED><!ATTLIST a y ID #IMPLIED>]><a/>", "(a)",
       ModelCode::SecondID},
      {"ID with a default", "<!DOCTYPE a [<!ATTLIST a x ID 'v'>]><a/>", "(a x=v)",
       ModelCode::IDWithDefault},
      {"definitions from an entity",
       "<!DOCTYPE a [<!ENTITY % d \"x CDATA '1' y CDATA '2'\"><!ATTLIST a %d;>]><a/>",
       "(a x=1 y=2)"},
      {"default from an entity",
       "<!DOCTYPE a [<!ENTITY % d \"'1'\"><!ATTLIST a x CDATA %d; y CDATA '2'>]><a/>",
       "(a x=1 y=2)"},
      {"type from an entity",
       "<!DOCTYPE a [<!ENTITY % t '(p|q)'><!ATTLIST a x %t; 'q'>]><a/>", "(a x=q)"},
      {"content model from an entity",
       "<!DOCTYPE a [<!ENTITY % m '(b,c)*'><!ELEMENT a %m;><!ATTLIST a x CDATA '1'>]><a/>",
       "(a x=1)"},
      {"bad content model",
       "<!DOCTYPE a [<!ENTITY % m '(b,'><!ELEMENT a %m;><!ATTLIST a x CDATA '1'>]><a/>", "(a)",
       ModelCode::BadContentModel},
      {"nothing in it", "<!DOCTYPE a><a/>", "(a)", ModelCode::EmptyDoctype},
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
        "<![ IGNORE [<!ENTITY f 'ignored'><![INCLUDE[<!ENTITY f 'too'>]]>]]>"
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

TEST_F(ModelTest, EntitiesCannotGrowWithoutEnd) {
  std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
  for (int i = 1; i < 12; ++i) {
    bomb += "<!ENTITY e" + std::to_string(i) + " '";
    for (int k = 0; k < 10; ++k) bomb += "&e" + std::to_string(i - 1) + ";";
    bomb += "'>";
  }
  EXPECT_THROW(Build(bomb + "]><a>&e11;</a>"), TQTreeLimitError);
  EXPECT_EQ(Build("<!DOCTYPE a [<!ENTITY a '&b;x'><!ENTITY b '&a;y'>]><a>&a;</a>").substr(0, 3),
            "(a'");
}

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
      {"<a><b/><b><c xmlns='http://www.w3.org/2001/XMLSchema'/></b></a>",
       SchemaKind::XMLSchema2001, "", "http://www.w3.org/2001/XMLSchema"},
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
    std::int32_t error;
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
