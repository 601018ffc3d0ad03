#include "xpath/xpathexpression.h"

#include "tqcore/tqtext.h"
#include "xpathcontext.h"
#include "xpathparser.h"

namespace kelmora {

XPathExpression::XPathExpression() = default;
XPathExpression::~XPathExpression() = default;

// A tree never changes, so a copy shares it.
XPathExpression::XPathExpression(const XPathExpression& other)
    : text_(other.text_),
      tree_(other.tree_),
      grammar_(other.grammar_),
      prefixMap_(other.prefixMap_),
      variableInPattern_(other.variableInPattern_),
      variables_(other.variables_),
      keyTable_(other.keyTable_),
      decimalFormats_(other.decimalFormats_),
      current_(other.current_),
      stylesheetNode_(other.stylesheetNode_),
      stylesheetRoot_(other.stylesheetRoot_),
      xsltFunctions_(other.xsltFunctions_),
      plainEvaluation_(other.plainEvaluation_),
      patternKind_(other.patternKind_) {}

void XPathExpression::SetExpression(const PrefixMap* prefixMap, const TQString& text,
                                    XPathPatternKind patternKind) {
  tree_.reset();
  text_ = text;
  text_.TrimLeft();
  text_.TrimRight();
  prefixMap_ = prefixMap;
  patternKind_ = patternKind;
}

bool XPathExpression::Parse(bool buildTree, XPathGrammar grammar) {
  auto tree = std::make_shared<XPathParseTree>(text_);
  XPathParser parser(*tree);
  XPathParseNode* root = grammar == kFieldGrammar      ? parser.ParseField()
                         : grammar == kSelectorGrammar ? parser.ParseSelector()
                                                       : parser.ParseExpr();
  variableInPattern_ = false;
  bool whole = parser.Remaining() == 0;
  if (!whole) errorPosition_ = parser.Furthest();
  bool parsed = root != nullptr && whole && !parser.IsTooDeep();
  if (root != nullptr) tree->Finish(root);
  if (patternKind_ != kNoPattern && root != nullptr && tree->HasVariable()) {
    variableInPattern_ = true;
    parsed = false;
  }
  tree_.reset();
  grammar_ = parsed ? grammar : kNoGrammar;
  if (parsed && buildTree) tree_ = std::move(tree);
  return parsed;
}

XPathParseNodeRef XPathExpression::TakeTree() { return std::move(tree_); }

void XPathExpression::UseTree(XPathParseNodeRef tree, XPathGrammar grammar) {
  borrowedTree_ = std::move(tree);
  grammar_ = grammar;
}

bool XPathExpression::Evaluate(XPathNode* documentNode, XPathNode* contextNode,
                               XPathValue& result, const XPathNodeList* inputNodes,
                               std::int32_t position, std::int32_t size, bool allowFragment) {
  // Everything that belongs to this run is taken out of the object before anything runs, so that
  // a host function may use the object for an evaluation of its own.
  XPathParseNodeRef tree = borrowedTree_ ? std::move(borrowedTree_) : tree_;
  borrowedTree_.reset();
  XPathEvaluation run;
  run.expression = this;
  run.prefixMap = prefixMap_;
  run.variables = std::exchange(variables_, nullptr);
  run.keyTable = std::exchange(keyTable_, nullptr);
  run.decimalFormats = std::exchange(decimalFormats_, nullptr);
  run.documentNode = documentNode;
  run.current = std::exchange(current_, nullptr);
  run.stylesheetNode = std::exchange(stylesheetNode_, nullptr);
  run.stylesheetRoot = std::exchange(stylesheetRoot_, nullptr);
  run.xsltFunctions = xsltFunctions_;
  run.plain = plainEvaluation_;
  run.patternKind = patternKind_;
  errorCode_ = XPathError::None;
  errorFunction_ = -1;
  errorPosition_ = 0;
  if (documentNode == nullptr || contextNode == nullptr || run.prefixMap == nullptr || !tree) {
    return false;
  }
  std::shared_ptr<const XPathParseTree::Bindings> bindings;
  if (!tree->Prefixes().empty()) {
    bindings = tree->ResolvePrefixes(*run.prefixMap);
    run.bindings = bindings.get();
  }

  XPathValue input;
  if (inputNodes == nullptr) {
    input.nodes.emplace_back(contextNode, 1);
  } else {
    input.nodes = *inputNodes;
  }
  XPathContext context(run, input);
  context.position = position;
  context.size = size;
  bool succeeded = Run(*tree->Root(), context);
  if (succeeded && !allowFragment && context.InputIsRefusedFragment()) {
    succeeded = run.Fail(XPathError::CannotUseFragment, tree->Root()->position);
  }
  if (succeeded) {
    result = context.TakeInput();
  } else {
    result.Clear();
  }
  errorCode_ = run.errorCode;
  errorFunction_ = run.errorFunction;
  errorPosition_ = run.errorPosition;
  return succeeded;
}

void XPathExpression::OnMissingVariable(std::u16string_view) {}
XPathNode* XPathExpression::LoadDocument(const TQString&, XPathNode*) { return nullptr; }
void XPathExpression::OnLocationPath(const XPathValue&) {}

}  // namespace kelmora
