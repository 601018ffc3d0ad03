// CheckedElement: an element of a stylesheet while it is checked, with its attributes by code.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "names/xsltnames.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class XSLTProcessorBase;

struct CheckedElement {
  XPathNode* node;
  std::int32_t parentCode;
  XSLTProcessorBase& processor;
  std::array<XPathNode*, AttributeCode::kCount> attributes{};  // those in no namespace, by code

  XPathNode* Attribute(std::int32_t code) const {
    return attributes[static_cast<std::size_t>(code)];
  }
  std::u16string_view Value(std::int32_t code) const {
    return Attribute(code) != nullptr ? Attribute(code)->GetValue() : std::u16string_view();
  }
  bool IsYes(std::int32_t code) const { return Value(code) == u"yes"; }
};

}  // namespace kelmora
