// XPathParseNode: one node of a parse tree, which is the executable form of an expression.
//
// There is a node for each level of the grammar, so a single digit stands below a dozen nodes.
// Evaluation does not walk them: when a parse has succeeded, every node is prepared once, from the
// leaves up. It learns its `effective` node (the first one below a chain of only children that has
// something to do) and resolves what the text alone decides: numbers, axes, function slots. After
// that a tree never changes, so it can be evaluated while it is being evaluated.
//
// Nodes live in the arena of their XPathParseTree and have no destructor.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "syntax/xpathrule.h"
#include "tqcore/arena.h"
#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"
#include "xpath/sharedhandle.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

class XPathContext;
class XPathParseTree;

// The value of an operand: its own or one that stands elsewhere until the evaluation ends.
struct XPathOperand {
  XPathOperand() = default;
  XPathOperand(const XPathOperand&) = delete;
  XPathOperand& operator=(const XPathOperand&) = delete;

  const XPathValue* value = &own;
  XPathValue own;
};

// Is shown nodes, one after the other; false asks for no more.
class NodeVisitor {
 public:
  virtual bool Visit(XPathNode& node) = 0;

 protected:
  ~NodeVisitor() = default;
};

class XPathParseNode {
 public:
  // The value in the input of the context becomes the value of this node. False: an error stands
  // in the evaluation.
  virtual bool Evaluate(XPathContext& context) const = 0;

  // The same as an operand, seen from a context that stays as it is. Each form must agree with
  // Evaluate in a private copy of the context, followed by the conversion; nodes override those
  // that they can answer without making the value. They are the fast road: plain evaluation takes
  // the forms of this class.
  virtual bool EvaluateOperand(const XPathContext& context, XPathOperand& operand) const;
  virtual bool EvaluateBoolean(const XPathContext& context, bool& value) const;
  virtual bool EvaluateNumber(const XPathContext& context, double& value) const;
  // `result` may point into `scratch`, into the tree of the expression or into a document.
  virtual bool EvaluateText(const XPathContext& context, TQString& scratch,
                            std::u16string_view& result) const;

  // True when VisitNodes can serve: the value is a node set that needs not be made, and making it
  // could not fail.
  virtual bool CanVisit(const XPathContext& context) const;
  // Shows the nodes of the value without making it, in any order and some perhaps twice. False,
  // and nothing was shown, when this node cannot do that here.
  virtual bool VisitNodes(const XPathContext& context, NodeVisitor& visitor) const;
  // The number of nodes in the value, under the same conditions.
  virtual bool CountNodes(const XPathContext& context, std::size_t& count) const;

  // Called once, after the children were prepared: sets the fields below and those of the class.
  virtual void Prepare(XPathParseTree& tree) = 0;

  void AddChild(XPathParseNode* child, std::int8_t asRole);
  bool HasOneChild() const { return firstChild != nullptr && firstChild == lastChild; }

  static constexpr std::int8_t kRuleRole = 3;       // a rule or a token
  static constexpr std::int8_t kCharacterRole = 2;  // a run of characters

  XPathParseNode* firstChild = nullptr;
  XPathParseNode* lastChild = nullptr;
  XPathParseNode* nextSibling = nullptr;
  const XPathParseNode* effective = nullptr;
  std::u16string_view text;    // of tokens and runs; a piece of the expression
  std::int32_t position = -1;  // units of the expression that remained where the node starts
  XPathRule rule = XPathRule::None;
  std::int8_t role = 0;
  // What the text alone tells of the value.
  enum class Type : std::int8_t { Unknown, NodeSet, Boolean, Number, String };
  Type type = Type::Unknown;
  // Evaluation can neither fail nor have an effect, provided that all prefixes of the tree are
  // bound and no axis is refused.
  bool harmless = false;
  // The value depends on the position or the size of the context, not on the context node alone.
  bool usesPosition = false;

 protected:
  XPathParseNode() = default;
  ~XPathParseNode() = default;
};

// Evaluates its children in order. Rules that only group are nodes of this class, and so are
// tokens, which have none.
class XPathGenericNode final : public XPathParseNode {
 public:
  bool Evaluate(XPathContext& context) const override;
  void Prepare(XPathParseTree& tree) override;
};

// A parsed expression: its text, its nodes, and what is shared by them.
class XPathParseTree final : public SharedCount {
 public:
  explicit XPathParseTree(const TQString& text) : text_(text) {}

  const TQString& Text() const { return text_; }
  XPathParseNode* MakeNode(XPathRule rule);  // of the rule's class
  Arena& GetArena() { return arena_; }

  // Sets the root and prepares every node below it. Walks with a stack on the heap. `nesting` is
  // the depth of nested expressions, and so of an evaluation's recursion.
  void Finish(XPathParseNode* root, int nesting);
  int Nesting() const { return nesting_; }
  const XPathParseNode* Root() const { return root_; }
  bool HasVariable() const { return hasVariable_; }
  // False when nothing but operators stands between variables and literals.
  bool ReadsContext() const { return readsContext_; }

  // Prefixes that steps refer to; the number stays valid as long as the tree.
  int AddPrefix(std::u16string_view prefix);
  const std::vector<std::u16string_view>& Prefixes() const { return prefixes_; }
  // A result per prefix for the given map; kept for the next evaluation with the same map.
  struct Binding {
    InternedURI uri = nullptr;
    bool bound = false;
  };
  struct Bindings final : SharedCount {
    PrefixMap map;
    std::vector<Binding> entries;
    bool allBound = true;
  };
  SharedHandle<const Bindings> ResolvePrefixes(const PrefixMap& map) const;

 private:
  Arena arena_;
  TQString text_;
  XPathParseNode* root_ = nullptr;
  bool hasVariable_ = false;
  bool readsContext_ = false;
  int nesting_ = 0;
  std::vector<std::u16string_view> prefixes_;
  mutable SharedHandle<const Bindings> bindings_;  // of the map that came last
};

// The text of a name, number or token: of its own or of the only leaf below.
std::u16string_view LeafText(const XPathParseNode& node);

// A qualified name, taken apart. White space around the colon is not part of it.
struct ParsedName {
  std::u16string_view prefix;
  std::u16string_view local;
  bool hasPrefix = false;
};
ParsedName NameOf(const XPathParseNode& qualifiedName);

}  // namespace kelmora
