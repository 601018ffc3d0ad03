#include "xmlutil/documentmodel.h"

#include <string>

#include "schematesting.h"

namespace kelmora {
namespace {

TEST_F(SchemaTest, WhereTheSchemaIs) {
  const struct {
    const char* symptom;
    const char* document;
    const char* tree;
    ModelCode error;
  } rows[] = {
      {"a schema for schemas describes itself",
       "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' "
       "targetNamespace='http://www.w3.org/2001/XMLSchema'>"
       "<xs:element name='element'><xs:complexType><xs:attribute name='x' default='1'/>"
       "</xs:complexType></xs:element></xs:schema>",
       "(xs:schema "
       "targetNamespace=http://www.w3.org/2001/XMLSchema(xs:element name=element x=1"
       "(xs:complexType(xs:attribute name=x default=1))))",
       ModelCode::None},
      {"a schema without the prefix is not read", "<r noNamespaceSchemaLocation='plain.xsd'/>",
       "(r)", ModelCode::NoTargetNamespace},
      {"no file", "<r noNamespaceSchemaLocation='none.xsd'/>", "(r)", ModelCode::SchemaLoadFailed},
      {"another language", "<r noNamespaceSchemaLocation='s.xdr'/>", "(r)",
       ModelCode::KindMismatch},
      {"an older namespace", "<r noNamespaceSchemaLocation='old.xsd'/>", "(r)",
       ModelCode::Schema1999},
      {"a DTD, with the prefix for its names", "<p:r xmlns:p='u' i:schemaLocation='u names.dtd'/>",
       "(p:r x=1)", ModelCode::None},
      {"a DTD without a prefix", "<r noNamespaceSchemaLocation='names.dtd'/>", "(r x=1)",
       ModelCode::None},
      {"entities stay when a schema is read as well",
       "<!DOCTYPE r [<!ENTITY e 'text'>]><r noNamespaceSchemaLocation='s.xsd'>&e;</r>",
       "(r x=1'text')", ModelCode::None},
  };
  Write("s.xsd", InSchema(IN_TYPE("<xs:attribute name='x' default='1'/>")));
  Write("plain.xsd",
        "<schema xmlns='http://www.w3.org/2001/XMLSchema'><element name='r'/>"
        "</schema>");
  Write("s.xdr", "<Schema xmlns='urn:schemas-microsoft-com:xml-data'/>");
  Write("old.xsd", "<x:schema xmlns:x='http://www.w3.org/1999/XMLSchema'/>");
  Write("names.dtd",
        "<!ENTITY % p 'none:'><!ENTITY % s ':none'><!ENTITY % r '%p;r'>"
        "<!ATTLIST %r; x CDATA '1'>");
  for (const auto& row : rows) {
    EXPECT_EQ(Build(row.document), row.tree) << row.symptom;
    EXPECT_EQ(Error(), row.error) << row.symptom;
  }
}

// --- limits ------------------------------------------------------------------------------------

}  // namespace
}  // namespace kelmora
