// TemplateRule: one alternative of a match attribute, or a template that has only a name.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "base/expressiontext.h"
#include "engine/matchsets.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class SimplePattern;

// A mode is the number of its expanded name; see TemplateRules.
using ModeId = std::int32_t;
inline constexpr ModeId kNoMode = 0;   // the empty name
inline constexpr ModeId kAnyMode = 1;  // "?"

class TemplateRule {
 public:
  static constexpr std::int32_t kBuiltInPrecedence = -1;

  // Reads name and priority of the template. Raises codes 31, 40 and 48. `matchNode` may be null.
  TemplateRule(XPathNode* templateNode, XPathNode* matchNode, TQString pattern,
               std::int32_t precedence, std::int32_t sequence);
  ~TemplateRule();

  TQString Name;           // as written
  TQString ExpandedName;   // "uri:local", as written for a prefix without a URI
  ExpressionText Pattern;  // this alternative; empty for a template with only a name
  TQString RawMode;        // as written
  ModeId Mode = kNoMode;
  ModeId LastMode = kNoMode;  // in which the rule was last selected
  XPathNode* TemplateNode;
  XPathNode* MatchNode;
  double Priority;
  std::int32_t Precedence;
  std::int32_t Sequence;
  std::int32_t Rank = 0;                  // the greater, the nearer to the front of Rules
  MatchSets Matches;                      // of documents that a selection has reached
  std::unique_ptr<SimplePattern> Simple;  // tests a node directly; null: runs as a query

  // What the template comes to when it is no more than this; it can do so without its frames.
  enum class Shortcut : std::uint8_t {
    None,
    Nothing,  // it has no content
    Value,    // the value of the node, by xsl:value-of
    UnescapedValue
  };
  static constexpr std::size_t kShortcutFrames = 2;  // most that it saves: template, xsl:value-of
  Shortcut Effect = Shortcut::None;

  XPathNode* NamespaceNode() const { return MatchNode != nullptr ? MatchNode : TemplateNode; }
};

// A text search, not a parse: names that begin with "id" or "key" have 0.5.
double DefaultPriority(std::u16string_view pattern);

// The order of Rules: precedence, then priority, then sequence, the greater first. Total.
bool RuleBefore(const TemplateRule& a, const TemplateRule& b);

}  // namespace kelmora
