// The ExpressionCache: every text is parsed once per run, for each kind of use.
#pragma once

#include <array>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

struct ParsedExpression {
  XPathParseNodeRef tree;  // null: the text does not parse
  XPathPatternKind kind = kNoPattern;
  bool variableInPattern = false;  // why it does not parse
  // What needs no evaluation: "." and "$name", the name being that of the variable.
  bool isContextNode = false;
  bool isVariable = false;
  std::u16string_view variable;
};

class ExpressionCache {
 public:
  // The reference lives as long as the cache.
  const ParsedExpression& Parse(const TQString& text, XPathPatternKind kind);

 private:
  static constexpr std::size_t kKinds = 3;
  using Entry = std::array<std::unique_ptr<const ParsedExpression>, kKinds>;

  std::unordered_map<TQString, Entry, TextHash, TextEqual> entries_;
};

}  // namespace kelmora
