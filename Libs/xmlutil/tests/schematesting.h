// The fixture of the tests of XML Schema, and pieces of schemas.
#pragma once

#include <string>

#include "modeltesting.h"

#define IN_TYPE(content) \
  "<xs:element name='r'><xs:complexType>" content "</xs:complexType></xs:element>"
#define IN_SEQUENCE(content) IN_TYPE("<xs:sequence>" content "</xs:sequence>")
#define SIMPLE(content) "<xs:simpleType name='t'>" content "</xs:simpleType>"
#define CONTENT(kind, derivation, base, content)                                      \
  "<xs:complexType name='c'><xs:" kind "><xs:" derivation " base='" base "'>" content \
  "</xs:" derivation "></xs:" kind "></xs:complexType>"

namespace kelmora {

class SchemaTest : public ModelTest {
 protected:
  // Builds `<r>` with `content`, described by a schema of no namespace with `declarations`.
  std::string BuildWith(const std::string& declarations, const std::string& content = {}) {
    Write("s.xsd", InSchema(declarations));
    return Build(
        "<r xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
        " xsi:noNamespaceSchemaLocation='s.xsd'>" +
        content + "</r>");
  }
  static std::string InSchema(const std::string& declarations, const std::string& more = {}) {
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' " + more + ">" + declarations +
           "</xs:schema>";
  }
};

}  // namespace kelmora
