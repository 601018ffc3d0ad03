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
  NoNode = 7501,
  NotExternal = 7502,
  Redefinition = 7503,  // a warning: reading goes on
  NoGrammar = 7506,
  EmptyDoctype = 7508,
  LoadFailed = 7509,
  BadContentModel = 7510,
  DeclaredTwice = 7512,
  UnknownEntity = 7522,
  WrongEntityKind = 7523,
  ReplacementUnparsable = 7524,
  BadSection = 7525,
  SecondID = 7526,
  IDWithDefault = 7527,
  NotAnExternalID = 7528,
  KindMismatch = 7529,
  NoSchemaInformation = 7530,
  SchemaLoadFailed = 7531,
  XdrWordsInSchema = 7532,
  OldWordsInSchema = 7533,
  Schema1999 = 7534,
  Schema2000 = 7535,
  DefaultNotInEnumeration = 7569,
  BadName = 7584,
  ReferenceWithoutEnd = 7585,
};
}  // namespace ModelCode

class ModelError {
 public:
  // Keeps or replaces the record. True for the warning of a redefinition, which is dropped; false
  // for everything else, so that a reader can return the result and stop.
  bool Record(std::int32_t code, const XTreeNode* node, std::u16string_view text = {},
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
