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

void CheckPlace(XPathNode* node, std::int32_t parentCode, ElementRule::Place place) {
  const bool isTopLevel = parentCode == ElementCode::Stylesheet;
  const bool passes =
      place == ElementRule::Anywhere || isTopLevel == (place == ElementRule::TopLevel);
  if (!passes) throw TQXSLTError(XsltCode::UnexpectedChild, node);
}

// Several attributes of any code that XSLT does not know, or of use-attribute-sets, are no fault.
constexpr bool IsRepeatable(std::int32_t code) {
  return code == AttributeCode::Other || code == AttributeCode::UseAttributeSets;
}

// Enters the attributes in no namespace in `element`. A repeated one is reported at its second
// place, when the walk is at its first.
void CheckAttributes(CheckedElement& element, CodeSet allowed) {
  std::array<bool, AttributeCode::kCount> seen{};
  std::array<XPathNode*, AttributeCode::kCount> second{};
  const auto forEachAttribute = [&element](auto each) {
    for (XPathNode* child = element.node->firstChild; child != nullptr; child = child->next) {
      if (child->kind != XPathNodeKind::Attribute) continue;
      each(child, static_cast<std::size_t>(XsltAttributeNames::Code(child)));
    }
  };
  forEachAttribute([&](XPathNode* attribute, std::size_t code) {
    if (seen[code] && second[code] == nullptr) second[code] = attribute;
    seen[code] = true;
    XPathNode*& plain = element.attributes[code];
    if (attribute->namespaceURI == nullptr && plain == nullptr) plain = attribute;
  });
  forEachAttribute([&](XPathNode* attribute, std::size_t index) {
    const auto code = static_cast<std::int32_t>(index);
    if (Has(allowed, code)) {
      if (!IsRepeatable(code) && second[index] != nullptr) {
        throw TQXSLTError(XsltCode::RepeatedAttribute, second[index]);
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

void ElementDispatcher::Validate(std::int32_t parentCode, XPathNode* top) {
  std::vector<std::int32_t> parentCodes{parentCode};  // of the node and all that stand open
  XPathNode* node = top;
  while (true) {
    const std::int32_t code = CheckNode(node, parentCodes.back());
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

std::int32_t ElementDispatcher::CheckNode(XPathNode* node, std::int32_t parentCode) {
  const bool isElement = node->kind == XPathNodeKind::Element;
  const std::int32_t code = isElement ? XsltElementNames::Code(node) : ElementCode::Literal;
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
