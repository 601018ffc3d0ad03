#include "rules/templaterule.h"

#include <cmath>
#include <utility>

#include "engine/instruction.h"
#include "tqcore/tqtext.h"
#include "xpath/simplepattern.h"
#include "xpath/xpathexpression.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

constexpr double kPathPriority = 0.5;
constexpr double kNamePriority = 0;
constexpr double kNamespacePriority = -0.25;
constexpr double kTypePriority = -0.5;

bool Has(std::u16string_view text, std::u16string_view part) {
  return FindText(text, part) != std::u16string_view::npos;
}

double ReadPriority(XPathNode* attribute) {
  const double priority = TextToNumber(attribute->GetValue());
  if (!std::isfinite(priority)) throw TQXSLTError(XsltCode::UnexpectedValue, attribute);
  return priority;
}

}  // namespace

double DefaultPriority(std::u16string_view pattern) {
  if (Has(pattern, u"/") || pattern.starts_with(u"id") || pattern.starts_with(u"key") ||
      (Has(pattern, u"[") && Has(pattern, u"]"))) {
    return kPathPriority;
  }
  TQString rest(pattern);
  for (const std::u16string_view axis : {u"child::", u"attribute::", u"@"}) {
    rest.Replace(axis, u"", 0);
  }
  if (Has(rest, u"*")) return Has(rest, u":") ? kNamespacePriority : kTypePriority;
  if (!Has(rest, u"()") || Has(rest, u"processing-instruction")) return kNamePriority;
  return kTypePriority;
}

bool RuleBefore(const TemplateRule& a, const TemplateRule& b) {
  if (a.Precedence != b.Precedence) return a.Precedence > b.Precedence;
  if (a.Priority != b.Priority) return a.Priority > b.Priority;
  return a.Sequence > b.Sequence;
}

TemplateRule::TemplateRule(XPathNode* templateNode, XPathNode* matchNode, TQString pattern,
                           std::int32_t precedence, std::int32_t sequence)
    : TemplateNode(templateNode), MatchNode(matchNode), Precedence(precedence), Sequence(sequence) {
  if (XPathNode* name = FindAttribute(templateNode, u"name")) {
    if (!IsQName(name->GetValue())) throw TQXSLTError(XsltCode::NotAQName, name);
    Name = name->GetValue();
    ExpandedName = ExpandName(Name, templateNode->ScopeMap());
  }
  Pattern.Text = std::move(pattern);
  Pattern.Holder = matchNode;
  if (Pattern.Text.IsEmpty() && matchNode != nullptr) Pattern.Text = matchNode->GetValue();
  if (Name.IsEmpty() && matchNode == nullptr) {
    throw TQXSLTError(XsltCode::NameOrMatchExpected, templateNode);
  }
  XPathNode* priority = FindAttribute(templateNode, u"priority");
  Priority = priority != nullptr ? ReadPriority(priority) : DefaultPriority(Pattern.Text);
}

TemplateRule::~TemplateRule() = default;

}  // namespace kelmora
