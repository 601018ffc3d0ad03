#include "checks/elementchecks.h"

#include "base/namelist.h"
#include "engine/instruction.h"
#include "output/outputmethod.h"
#include "tqcore/tqtext.h"
#include "xpath/xpathexpression.h"
#include "xslt/tqxslterror.h"

namespace kelmora::checks {

namespace {

// Raises when the attribute is there and its value fails.
void CheckValue(bool passes, XPathNode* attribute, XsltCode error) {
  if (attribute != nullptr && !passes) throw TQXSLTError(error, attribute);
}

std::u16string_view ValueOf(const XPathNode* attribute) {
  return attribute != nullptr ? attribute->GetValue() : std::u16string_view();
}

bool IsPrefixBound(std::u16string_view name, const XPathNode* attribute) {
  const std::u16string_view prefix = PrefixOf(name);
  return prefix.empty() || attribute->ScopeMap().Find(prefix) != nullptr;
}

}  // namespace

void Required(Element element, XPathNode* attribute, XsltCode error) {
  if (attribute == nullptr) throw TQXSLTError(error, element.node);
}

void RequiredNowhere(Element /*element*/, XPathNode* attribute, XsltCode error) {
  if (attribute == nullptr) throw TQXSLTError(error, nullptr);
}

void IsName(Element /*element*/, XPathNode* attribute, XsltCode error) {
  CheckValue(attribute == nullptr || IsQName(ValueOf(attribute)), attribute, error);
}

void NotEmpty(Element /*element*/, XPathNode* attribute, XsltCode error) {
  CheckValue(!ValueOf(attribute).empty(), attribute, error);
}

void YesOrNo(Element /*element*/, XPathNode* attribute, XsltCode error) {
  CheckValue(ValueOf(attribute) == u"yes" || ValueOf(attribute) == u"no", attribute, error);
}

void OneUnit(Element /*element*/, XPathNode* attribute, XsltCode error) {
  CheckValue(ValueOf(attribute).size() == 1, attribute, error);
}

void PrefixBound(Element /*element*/, XPathNode* attribute, XsltCode error) {
  CheckValue(attribute == nullptr || IsPrefixBound(ValueOf(attribute), attribute), attribute,
             error);
}

void NameList(Element /*element*/, XPathNode* attribute, XsltCode error) {
  ForEachName(ValueOf(attribute), [&](std::u16string_view name) {
    CheckValue(IsQName(name), attribute, error);
    CheckValue(IsPrefixBound(name, attribute), attribute, XsltCode::UndefinedPrefix);
  });
}

void LevelValue(Element /*element*/, XPathNode* attribute, XsltCode error) {
  const std::u16string_view value = ValueOf(attribute);
  CheckValue(value == u"single" || value == u"multiple" || value == u"any", attribute, error);
}

void MethodValue(Element /*element*/, XPathNode* attribute, XsltCode error) {
  const std::u16string_view value = ValueOf(attribute);
  const OutputMethod* method = FindOutputMethod(value);
  const bool isKnown = method != nullptr && value == method->name;  // here the case counts
  CheckValue(isKnown || (IsQName(value) && !PrefixOf(value).empty()), attribute, error);
}

void NoContentBeside(Element element, XPathNode* attribute, XsltCode error) {
  if (attribute != nullptr && FirstContent(element.node) != nullptr) {
    throw TQXSLTError(error, element.node);
  }
}

// In a template nothing but parameters stands in front of one; the sibling in front has been
// checked for the same already.
void ParamPlace(Element element, XPathNode* /*attribute*/, XsltCode error) {
  bool passes = element.parentCode == XsltElement::Stylesheet;
  if (element.parentCode == XsltElement::Template) {
    const XPathNode* before = element.node->previous;
    while (before != nullptr &&
           (before->kind == XPathNodeKind::Comment || before->kind == XPathNodeKind::PI)) {
      before = before->previous;
    }
    passes = before == nullptr || before->kind == XPathNodeKind::Attribute ||
             before->kind == XPathNodeKind::Namespace ||
             XsltElementNames::Code(before) == XsltElement::Param;
  }
  if (!passes) throw TQXSLTError(error, element.node);
}

void IsDocumentElement(Element element, XPathNode* /*attribute*/, XsltCode error) {
  const XPathNode* parent = element.node->parent;
  if (parent == nullptr || parent->kind != XPathNodeKind::Root) throw TQXSLTError(error, nullptr);
}

void TextContent(Element element, XPathNode* /*attribute*/, XsltCode error) {
  XPathNode* child = FirstContent(element.node);
  for (; child != nullptr; child = NextContent(child)) {
    if (!child->IsText()) throw TQXSLTError(error, child);
  }
}

}  // namespace kelmora::checks
