// XPathParseNode: one node of a parse tree, which is the executable form of an expression.
//
// There is a node for each level of the grammar, so a single digit stands below a dozen nodes.
// Evaluation does not walk them: when a parse has succeeded, every node is prepared once, from the
// leaves up. It learns its `effective` node (the first one below a chain of only children that has
// something to do) and resolves what the text alone decides: numbers, axes, functions. After that
// a tree never changes, so it can be evaluated while it is being evaluated.
//
// Nodes live in the arena of their XPathParseTree and have no destructor. Which class a rule has is
// the matter of those who evaluate: here a node is its links, its text and what was found about it.
#pragma once

#include <cstdint>
#include <string_view>

#include "syntax/xpathrule.h"

namespace kelmora {

class XPathParseTree;
class XPathValueNode;

class XPathParseNode {
 public:
  // Called once, after the children were prepared: sets the fields below and those of the class.
  virtual void Prepare(XPathParseTree& tree) = 0;

  void AddChild(XPathParseNode* child, std::int8_t asRole);
  bool HasOneChild() const { return firstChild != nullptr && firstChild == lastChild; }

  static constexpr std::int8_t kRuleRole = 3;       // a rule or a token
  static constexpr std::int8_t kCharacterRole = 2;  // a run of characters

  XPathParseNode* firstChild = nullptr;
  XPathParseNode* lastChild = nullptr;
  XPathParseNode* nextSibling = nullptr;
  const XPathValueNode* effective = nullptr;  // null for pieces that have no value of their own
  std::u16string_view text;                   // of tokens and runs; a piece of the expression
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
