// AttributeTemplates: the attribute value templates of a run, each taken apart once. The parts keep
// the order of effects: a fault behind an expression shows after that expression ran.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "base/expressiontext.h"
#include "base/nodemap.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

struct TemplatePart {
  enum Kind { Literal, Expression, Fault };

  Kind kind = Literal;
  TQString literal;
  ExpressionText expression;
};

using AttributeTemplate = std::vector<TemplatePart>;

// Quotes in the literal part shield braces, "{{" and "}}" are single braces. The first fault is the
// last part. `holder` is the node of an error in an expression.
AttributeTemplate ParseAttributeTemplate(std::u16string_view text, XPathNode* holder);

// Without a brace a value is what it says.
inline bool HasBraces(std::u16string_view text) {
  return text.find_first_of(u"{}") != std::u16string_view::npos;
}

class AttributeTemplates {
 public:
  // Of an attribute of the stylesheet; lives as long as this object.
  const AttributeTemplate& Find(XPathNode* attribute);

 private:
  NodeMap<std::unique_ptr<const AttributeTemplate>> templates_;
};

}  // namespace kelmora
