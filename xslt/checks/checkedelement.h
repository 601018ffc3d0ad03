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
  XsltElement parentCode;
  XSLTProcessorBase& processor;
  std::array<XPathNode*, kXsltAttributeCodes> attributes{};  // those in no namespace, by code

  XPathNode* Attribute(XsltAttribute code) const { return attributes[IndexOf(code)]; }
  std::u16string_view Value(XsltAttribute code) const {
    return Attribute(code) != nullptr ? Attribute(code)->GetValue() : std::u16string_view();
  }
  bool IsYes(XsltAttribute code) const { return Value(code) == u"yes"; }
};

}  // namespace kelmora
