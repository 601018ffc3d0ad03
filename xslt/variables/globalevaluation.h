// GlobalEvaluation: the evaluation of top-level variables and parameters, which may refer to each
// other in any order within one xsl:stylesheet element.
//
// A definition begins, stores its value and ends. A reference to a global that nobody has bound
// fails like any other; while a definition is in evaluation, Retry answers the failure: what the
// definition began is taken back, a new try of it is pushed, and on top of that the definition that
// was missing, if the same stylesheet element has it. A definition that comes again while it is in
// evaluation refers to itself.
//
// This room holds xsl:variable, xsl:param and xsl:with-param.
#pragma once

#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

struct BindingRecord;

class GlobalEvaluation {
 public:
  enum class Role { Variable, Parameter };

  explicit GlobalEvaluation(XSLTProcessorBase* processor) : processor_(processor) {}

  // False when the definition has a value already; End is due all the same. Raises code 50 for one
  // that is in evaluation. The value of another stylesheet element of lower import precedence gives
  // way.
  bool Begin(XPathNode* definingNode, Role role, const BindingRecord& binding);
  void Store(const XPathNode* definingNode, Role role, const TQString& name, XPathValue value);
  void End(const XPathNode* definingNode);
  // True when the stack has been changed so that the next step may do better.
  bool Retry(const TQXSLTError& error);

 private:
  using ByName = std::unordered_map<std::u16string_view, XPathNode*, TextHash>;

  void MakeWay(const XPathNode* definingNode, Role role, const BindingRecord& binding);
  bool Remove(const XPathNode* definingNode, Role role, const TQString& name);
  XPathNode* FindDefinition(const XPathNode* stylesheetElement, std::u16string_view name);
  GlobalMap& Values(Role role) const;
  ByName& Definitions(Role role);

  XSLTProcessorBase* processor_;
  ByName VariableDefinitions;  // the stylesheet element whose child gave the value
  ByName ParameterDefinitions;
  std::vector<const XTreeNode*> InProgress;
  std::unordered_set<const XPathNode*> Finished;
  // The definitions among the children of an element, entered at the first question about it.
  std::unordered_map<const XPathNode*, ByName> children_;
};

}  // namespace kelmora
