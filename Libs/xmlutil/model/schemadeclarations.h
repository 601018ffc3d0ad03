// What a model keeps of schemas besides elements: types, groups, global attributes and identity
// constraints.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "types/simpletype.h"
#include "xmlutil/declarations.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

struct SimpleTypeEntry {
  QName name;
  QName base;
  TQString finalText;
  const XTreeNode* sourceNode = nullptr;
  std::shared_ptr<SimpleType> type;  // null while its base is not known
};

struct ComplexTypeEntry {
  QName name;
  QName base;
  ElementDecl* definition = nullptr;  // a template: elements of the type get a copy
  TQString blockText;
  TQString finalText;
  const XTreeNode* sourceNode = nullptr;
  const ComplexTypeEntry* baseEntry = nullptr;
};

class IdentityConstraint {
 public:
  enum class Kind : std::uint8_t { Unique = 0, Key = 1, Keyref = 2 };

  QName name;
  Kind kind = Kind::Unique;
  QName refer;
  XPathExpression selector;
  std::vector<std::unique_ptr<XPathExpression>> fields;
};

struct SchemaDeclarations {
  NameMap<std::unique_ptr<SimpleTypeEntry>> simpleTypes;
  NameMap<std::unique_ptr<ComplexTypeEntry>> complexTypes;
  DeclarationList<AttributeDecl> globalAttributes;
  NameMap<ElementDecl*> groups;
  NameMap<ElementDecl*> attributeGroups;
  NameMap<std::unique_ptr<IdentityConstraint>> constraints;
  TQString schemaDocumentation;
  std::int64_t copies = 0;  // what kSchemaCopyLimit bounds
};

}  // namespace kelmora
