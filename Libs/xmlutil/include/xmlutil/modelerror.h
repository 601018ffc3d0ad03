// ModelError: the one problem that a DocumentModel keeps. Reading a DTD or schema never raises; the
// first problem ends the reading, and of several that are reported the one furthest along in the
// document stays. The codes have no texts in this system: a reader of the record sees code, node
// and the word that was wrong.
#pragma once

#include <cstdint>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

class ElementDecl;

namespace ModelCode {
enum : std::int32_t {
  None = 7500,
  NoNode = 7501,  // no node for a declaration, or no target for an element
  NotExternal = 7502,
  Redefinition = 7503,  // a warning: reading goes on
  NoGrammar = 7506,     // nothing is declared; harmless
  EmptyDoctype = 7508,
  LoadFailed = 7509,  // a DTD, an entity, or a document that a schema names
  BadContentModel = 7510,
  DeclaredTwice = 7512,
  LocalDeclaredTwice = 7513,
  AttributeDeclaredTwice = 7514,
  NeverDeclared = 7517,  // an element that is only referred to
  UnknownGroup = 7518,
  GroupInItself = 7519,
  UnknownAttribute = 7520,
  UnknownAttributeGroup = 7521,
  UnknownEntity = 7522,
  WrongEntityKind = 7523,
  ReplacementUnparsable = 7524,  // of a schema: a name or value that cannot be expanded
  BadSection = 7525,
  SecondID = 7526,
  IDWithDefault = 7527,
  NotAnExternalID = 7528,
  KindMismatch = 7529,         // what was found is not what was expected, or nothing was
  NoSchemaInformation = 7530,  // harmless
  SchemaLoadFailed = 7531,
  XdrWordsInSchema = 7532,  // or the reverse
  OldWordsInSchema = 7533,
  Schema1999 = 7534,
  Schema2000 = 7535,
  NotAllowed = 7536,  // an attribute, a child or a word that has no place there
  BadValue = 7537,    // or a type that is not known
  ElementWithoutType = 7538,
  NameAndRef = 7540,
  DefaultAndFixed = 7541,
  DefaultWithUse = 7542,
  ContentMissing = 7543,
  NoTargetNamespace = 7544,
  ConstraintDeclaredTwice = 7545,
  BadPath = 7546,
  BadPattern = 7547,
  NameWithColon = 7548,
  ForbiddenDerivation = 7549,
  AttributeMissing = 7563,  // the text names it
  DefaultNotInEnumeration = 7569,
  ContentWithDatatype = 7575,
  ContentOfEmpty = 7576,
  BadName = 7584,
  ReferenceWithoutEnd = 7585,
  ValueInvalid = 7587,  // the three results of a type's check of a value
  ValueOutOfRange = 7588,
  ValueRefused = 7590,
  NoSchemaPrefix = 7592,
  OtherTargetNamespace = 7593,
  LocalSubstitution = 7595,
  NoSubstitutionHead = 7596,
  DefaultWithoutText = 7610,  // on an element that has no simple content
};
}  // namespace ModelCode

class ModelError {
 public:
  // Keeps or replaces the record. True for the warning of a redefinition, which is dropped; false
  // for everything else, so that a reader can return the result and stop.
  bool RecordError(std::int32_t code, const XTreeNode* node, std::u16string_view text = {},
                   const ElementDecl* declaration = nullptr);
  void Clear();

  bool IsSet() const { return code_ != ModelCode::None; }
  std::int32_t Code() const { return code_; }
  const XTreeNode* Node() const { return node_; }
  const ElementDecl* Declaration() const { return declaration_; }
  const TQString& Text() const { return text_; }

 private:
  bool Stays(std::int32_t code, const XTreeNode* node) const;

  std::int32_t code_ = ModelCode::None;
  const XTreeNode* node_ = nullptr;
  const ElementDecl* declaration_ = nullptr;
  TQString text_;
  std::vector<const XTreeNode*> path_;  // from the root to the node
};

}  // namespace kelmora
