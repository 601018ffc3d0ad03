#include "xmlutil/modelerror.h"

#include <algorithm>

#include "xmlutil/declarations.h"

namespace kelmora {
namespace {

enum class Concern : std::uint8_t { Structure, Value };

Concern ConcernOf(ModelCode code) {
  switch (code) {
#define MODEL_CODE(name, number, concerns) \
  case ModelCode::name:                    \
    return Concern::concerns;
#include "xmlutil/modelcode.def"
#undef MODEL_CODE
  }
  return Concern::Structure;
}

std::vector<const XTreeNode*> PathTo(const XTreeNode* node) {
  std::vector<const XTreeNode*> path;
  for (; node != nullptr; node = node->parent) path.push_back(node);
  std::reverse(path.begin(), path.end());
  return path;
}

bool StandsBefore(const XTreeNode* first, const XTreeNode* second) {
  for (const XTreeNode* node = first; node != nullptr; node = node->next) {
    if (node == second) return true;
  }
  return false;
}

}  // namespace

bool ModelError::Stays(ModelCode code, const XTreeNode* node) const {
  if (!IsSet()) return false;
  if (declaration_ != nullptr && node_ == nullptr) return true;
  if (ConcernOf(code_) < ConcernOf(code)) return true;
  if (node == nullptr) return true;
  if (path_.empty()) return false;
  const auto path = PathTo(node);
  std::size_t depth = 0;
  while (depth < path.size() && depth < path_.size() && path[depth] == path_[depth]) ++depth;
  if (depth == path.size()) return true;    // the same node, or an ancestor of the recorded one
  if (depth == path_.size()) return false;  // below the recorded node
  return depth == 0 || StandsBefore(path[depth], path_[depth]);
}

bool ModelError::RecordError(ModelCode code, const XTreeNode* node, std::u16string_view text,
                             const ElementDecl* declaration) {
  if (code == ModelCode::Redefinition) return true;
  if (Stays(code, node)) return false;
  code_ = code;
  node_ = node;
  declaration_ = declaration;
  text_ = text.empty() && declaration != nullptr ? declaration->name.local.View() : text;
  path_ = PathTo(node);
  return false;
}

void ModelError::Clear() {
  code_ = ModelCode::None;
  node_ = nullptr;
  declaration_ = nullptr;
  text_.Clear();
  path_.clear();
}

}  // namespace kelmora
