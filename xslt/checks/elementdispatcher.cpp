// One walk without recursion, with the codes of the open elements on a stack, since what a node may
// be depends on its parent's code alone. At each element the row of its code is applied column by
// column; a literal result has no row and is checked for its children only.
//
// The trap is the order of messages: the first fault ends the run, so what is looked at first is
// what a user reads. Attributes are therefore collected before any of them is judged, and a
// repeated one is reported when the walk is at the first of the two.
#include "checks/elementdispatcher.h"

#include <array>
#include <utility>

#include "checks/elementrules.h"
#include "checks/recordmakers.h"
#include "engine/instruction.h"
#include "names/stylesheetindex.h"
#include "xslt/tqxslterror.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

void CheckPlace(XPathNode* node, XsltElement parentCode, ElementRule::Place place) {
  const bool isTopLevel = parentCode == XsltElement::Stylesheet;
  const bool passes =
      place == ElementRule::Anywhere || isTopLevel == (place == ElementRule::TopLevel);
  if (!passes) throw TQXSLTError(XsltCode::UnexpectedChild, node);
}

// Several attributes of any code that XSLT does not know, or of use-attribute-sets, are no fault.
constexpr bool IsRepeatable(XsltAttribute code) {
  return code == XsltAttribute::Other || code == XsltAttribute::UseAttributeSets;
}

// Enters the attributes in no namespace in `element`. A repeated one is reported at its second
// place, when the walk is at its first.
void CheckAttributes(CheckedElement& element, CodeSet allowed) {
  std::array<bool, kXsltAttributeCodes> seen{};
  std::array<XPathNode*, kXsltAttributeCodes> second{};
  const auto forEachAttribute = [&element](auto each) {
    for (XPathNode* child = element.node->firstChild; child != nullptr; child = child->next) {
      if (child->kind != XPathNodeKind::Attribute) continue;
      each(child, XsltAttributeNames::Code(child));
    }
  };
  forEachAttribute([&](XPathNode* attribute, XsltAttribute code) {
    const std::size_t index = IndexOf(code);
    if (seen[index] && second[index] == nullptr) second[index] = attribute;
    seen[index] = true;
    XPathNode*& plain = element.attributes[index];
    if (attribute->namespaceURI == nullptr && plain == nullptr) plain = attribute;
  });
  forEachAttribute([&](XPathNode* attribute, XsltAttribute code) {
    if (Has(allowed, code)) {
      XPathNode* repeated = second[IndexOf(code)];
      if (!IsRepeatable(code) && repeated != nullptr) {
        throw TQXSLTError(XsltCode::RepeatedAttribute, repeated);
      }
    } else if (attribute->namespaceURI == nullptr) {
      throw TQXSLTError(XsltCode::UnexpectedAttribute, attribute);
    }
  });
}

// Literal results in a namespace may stand anywhere; text and elements in none count as code 1.
void CheckChildren(const XPathNode* node, CodeSet allowed) {
  for (XPathNode* child = FirstContent(node); child != nullptr; child = child->next) {
    if (child->kind == XPathNodeKind::Comment || child->kind == XPathNodeKind::PI) continue;
    const InternedURI uri = child->namespaceURI;
    if (uri != nullptr && !IsXsltURI(uri)) continue;
    if (Has(allowed, XsltElementNames::Code(child))) continue;
    throw TQXSLTError(XsltCode::UnexpectedChild, child);
  }
}

}  // namespace

void ElementDispatcher::Validate(XsltElement parentCode, XPathNode* top) {
  std::vector<XsltElement> parentCodes{parentCode};  // of the node and all that stand open
  XPathNode* node = top;
  while (true) {
    const XsltElement code = CheckNode(node, parentCodes.back());
    if (node->firstChild != nullptr) {
      parentCodes.push_back(code);
      node = node->firstChild;
      continue;
    }
    while (node != top && node->next == nullptr) {
      node = node->parent;
      parentCodes.pop_back();
    }
    if (node == top) return;
    node = node->next;
  }
}

XsltElement ElementDispatcher::CheckNode(XPathNode* node, XsltElement parentCode) {
  const bool isElement = node->kind == XPathNodeKind::Element;
  const XsltElement code = isElement ? XsltElementNames::Code(node) : XsltElement::Literal;
  if (!isElement && node->kind != XPathNodeKind::Root) return code;

  const ElementRule* rule = FindElementRule(code);
  std::unique_ptr<ElementRecord> record;
  if (rule == nullptr) {
    CheckChildren(node, kContentChildren);
    record = makers::Literal(node);
  } else {
    CheckPlace(node, parentCode, rule->place);
    CheckedElement element{.node = node, .parentCode = parentCode, .processor = *processor_};
    CheckAttributes(element, rule->attributes);
    if (rule->children != kAnyChild) CheckChildren(node, rule->children);
    for (const ElementCheck& check : rule->checks) {
      check.test(element, element.Attribute(check.attribute), check.error);
    }
    if (rule->makeRecord != nullptr) record = rule->makeRecord(element);
  }
  processor_->Index->Enter(node, code, std::move(record));
  return code;
}

}  // namespace kelmora
