// The tests that the rows of elementrules.cpp name. Where the node of the error is not said, it is
// the attribute.
#pragma once

#include <cstdint>

#include "checks/checkedelement.h"
#include "xslt/tqxslterror.h"

namespace kelmora::checks {

using Element = const CheckedElement&;

// Of any attribute.
void Required(Element element, XPathNode* attribute, XsltCode error);         // at the element
void RequiredNowhere(Element element, XPathNode* attribute, XsltCode error);  // with no node
void IsName(Element element, XPathNode* attribute, XsltCode error);           // a QName
void NotEmpty(Element element, XPathNode* attribute, XsltCode error);
void YesOrNo(Element element, XPathNode* attribute, XsltCode error);
void OneUnit(Element element, XPathNode* attribute, XsltCode error);
void PrefixBound(Element element, XPathNode* attribute, XsltCode error);
// Each of the names, separated by white space: a QName, else `error`, with a bound prefix, else 10.
void NameList(Element element, XPathNode* attribute, XsltCode error);

// Of one attribute or element.
void LevelValue(Element element, XPathNode* attribute, XsltCode error);
void MethodValue(Element element, XPathNode* attribute, XsltCode error);
void NoContentBeside(Element element, XPathNode* attribute, XsltCode error);    // at the element
void ParamPlace(Element element, XPathNode* attribute, XsltCode error);         // at the element
void IsDocumentElement(Element element, XPathNode* attribute, XsltCode error);  // with no node
void TextContent(Element element, XPathNode* attribute, XsltCode error);        // at the child

}  // namespace kelmora::checks
