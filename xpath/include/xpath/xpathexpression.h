// XPathExpression: an expression, its parse tree and the call that evaluates it. It owns the tree
// of its own text or is lent one for one evaluation, so that callers can keep trees by text.
//
// Failure: Parse and Evaluate return false; the reason stands in ErrorCode(), ErrorFunction() and
// ErrorPosition(). Exceptions of a host (a missing key's index, a document) pass through.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"
#include "xpath/decimalformat.h"
#include "xpath/qualifiedname.h"
#include "xpath/sharedhandle.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathParseTree;

// Shares one parse tree. Trees are immutable after the parse, so one tree may be evaluated anew
// while it is being evaluated.
using XPathParseNodeRef = SharedHandle<const XPathParseTree>;

enum class XPathError : std::int32_t {
  None = 0,
#define XPATH_ERROR(number, id, message) id = number,
#include "xpath/xpatherrors.def"
#undef XPATH_ERROR
};

enum XPathGrammar : std::int32_t {
  kNoGrammar = 0,
  kFieldGrammar = 1,
  kSelectorGrammar = 2,
  kExprGrammar = 3
};

// What an expression is used for: 1 and 2 refuse variables, 1 limits the axes outside predicates,
// 2 refuses key().
enum XPathPatternKind : std::int32_t { kNoPattern = 0, kTemplatePattern = 1, kKeyPattern = 2 };

// Implemented by the caller: what $name can reach. The key is "uri:local", or the name as written.
class XPathVariables {
 public:
  virtual ~XPathVariables() = default;
  // Null when there is no such variable. The value must live until the evaluation ends.
  virtual const XPathValue* Find(std::u16string_view key) const = 0;
};

// Implemented by the caller: the key tables.
class XPathKeys {
 public:
  virtual ~XPathKeys() = default;
  virtual bool HasKey(std::u16string_view expandedName) const = 0;
  // The nodes of the tree of `root` that have the value, in index order; null for none. The index
  // is made at the first request for a tree. The list is read at once and not kept.
  virtual const XPathNodeList* Lookup(std::u16string_view expandedName, XPathNode* root,
                                      std::u16string_view value) = 0;
};

// Where an evaluation starts; the meaning is that of the arguments of Evaluate.
struct XPathRequest {
  XPathNode* documentNode = nullptr;
  XPathNode* contextNode = nullptr;
  const XPathNodeList* inputNodes = nullptr;
  std::int32_t position = 1;
  std::int32_t size = 1;
};

class XPathExpression {
 public:
  XPathExpression();
  virtual ~XPathExpression();
  XPathExpression(const XPathExpression& other);
  XPathExpression& operator=(const XPathExpression&) = delete;

  // Drops the tree; the text is trimmed. The map is borrowed until the last evaluation. Names are
  // resolved when they are evaluated, not when they are parsed.
  void SetExpression(const PrefixMap* prefixMap, const TQString& text,
                     XPathPatternKind patternKind);
  // True when the whole text is a sentence of the grammar. Without `buildTree` only the syntax is
  // tested.
  [[nodiscard]] bool Parse(bool buildTree, XPathGrammar grammar);
  [[nodiscard]] bool ParseSelector(bool buildTree) { return Parse(buildTree, kSelectorGrammar); }
  [[nodiscard]] bool ParseField(bool buildTree) { return Parse(buildTree, kFieldGrammar); }
  XPathParseNodeRef TakeTree();
  void UseTree(XPathParseNodeRef tree, XPathGrammar grammar);  // for the next evaluation only
  // SetExpression and UseTree in one, for a caller that keeps trees: there is no text.
  void UseTree(const PrefixMap* prefixMap, const XPathParseNodeRef& tree,
               XPathPatternKind patternKind);
  // What a tree is when its value can be had without an evaluation: "." or, with its name, "$name".
  static bool IsContextNode(const XPathParseTree& tree);
  static bool IsVariable(const XPathParseTree& tree, std::u16string_view& name);

  // What the next evaluation works with; all borrowed, and forgotten when it ends.
  void SetVariables(const XPathVariables* variables) { variables_ = variables; }
  void SetKeyTable(XPathKeys* keys) { keyTable_ = keys; }
  void SetDecimalFormats(const DecimalFormatMap* formats) { decimalFormats_ = formats; }
  void SetCurrent(XPathNode* node) { current_ = node; }  // for current()
  void SetCurrentStylesheetNode(XPathNode* node) { stylesheetNode_ = node; }
  void SetStylesheetRoot(XPathNode* root) { stylesheetRoot_ = root; }  // document("")
  void SetXsltFunctions(bool on) { xsltFunctions_ = on; }

  // `documentNode` leads to the root of absolute paths. `inputNodes`, when given, are the input in
  // place of `contextNode`. With `allowFragment` false a result tree fragment taken from a variable
  // is error 11. On success the value stands in `result`. While host functions run, the same object
  // may be set up anew and evaluated.
  [[nodiscard]] bool Evaluate(XPathNode* documentNode, XPathNode* contextNode, XPathValue& result,
                              const XPathNodeList* inputNodes = nullptr, std::int32_t position = 1,
                              std::int32_t size = 1, bool allowFragment = true);

  // Evaluate and the conversion in one, without making the value where none is needed. A result
  // tree fragment is allowed.
  [[nodiscard]] bool EvaluateToBoolean(const XPathRequest& request, bool& result);
  [[nodiscard]] bool EvaluateToNumber(const XPathRequest& request, double& result);
  // The view lives until `scratch`, the documents or a variable's value change.
  [[nodiscard]] bool EvaluateToText(const XPathRequest& request, TQString& scratch,
                                    std::u16string_view& result);

  XPathError ErrorCode() const { return errorCode_; }
  std::int32_t ErrorFunction() const { return errorFunction_; }  // -1: no function
  std::int32_t ErrorPosition() const { return errorPosition_; }
  bool VariableInPattern() const { return variableInPattern_; }
  const TQString& Text() const { return text_; }

  // Called when $name is not found; the evaluation then fails with error 6.
  virtual void OnMissingVariable(std::u16string_view key);
  // Called by document(): the root of the tree, or null.
  virtual XPathNode* LoadDocument(const TQString& uri, XPathNode* baseNode);
  // Called by element-available(): whether XSLT has the element of this local name.
  virtual bool HasElement(std::u16string_view localName) const;
  // Called after each location path that is evaluated to a value.
  virtual void OnLocationPath(const XPathValue& value);

 private:
  class Evaluator;

  TQString text_;
  XPathParseNodeRef tree_;
  XPathParseNodeRef borrowedTree_;
  XPathGrammar grammar_ = kNoGrammar;
  const PrefixMap* prefixMap_ = nullptr;
  bool variableInPattern_ = false;
  XPathError errorCode_ = XPathError::None;
  std::int32_t errorFunction_ = -1;
  std::int32_t errorPosition_ = 0;
  const XPathVariables* variables_ = nullptr;
  XPathKeys* keyTable_ = nullptr;
  const DecimalFormatMap* decimalFormats_ = nullptr;
  XPathNode* current_ = nullptr;
  XPathNode* stylesheetNode_ = nullptr;
  XPathNode* stylesheetRoot_ = nullptr;
  bool xsltFunctions_ = false;
  XPathPatternKind patternKind_ = kNoPattern;
  std::vector<XPathNodeList> spareLists_;  // their memory serves the next evaluation
};

}  // namespace kelmora
