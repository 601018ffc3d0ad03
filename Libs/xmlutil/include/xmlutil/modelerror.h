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

enum class ModelCode : std::int32_t {
#define MODEL_CODE(name, number, concerns) name = number,
#include "xmlutil/modelcode.def"
#undef MODEL_CODE
};

class ModelError {
 public:
  // Keeps or replaces the record. True for the warning of a redefinition, which is dropped; false
  // for everything else, so that a reader can return the result and stop.
  bool RecordError(ModelCode code, const XTreeNode* node, std::u16string_view text = {},
                   const ElementDecl* declaration = nullptr);
  void Clear();

  bool IsSet() const { return code_ != ModelCode::None; }
  ModelCode Code() const { return code_; }
  const XTreeNode* Node() const { return node_; }
  const ElementDecl* Declaration() const { return declaration_; }
  const TQString& Text() const { return text_; }

 private:
  bool Stays(ModelCode code, const XTreeNode* node) const;

  ModelCode code_ = ModelCode::None;
  const XTreeNode* node_ = nullptr;
  const ElementDecl* declaration_ = nullptr;
  TQString text_;
  std::vector<const XTreeNode*> path_;  // from the root to the node
};

}  // namespace kelmora
