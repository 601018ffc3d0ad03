// ElementRules: what an element of XSLT may have and must have, one row per element code. A row is
// where the element may stand, its attributes and children, a list of further checks in their
// order, and the maker of its record.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>

#include "checks/checkedelement.h"
#include "names/elementrecord.h"
#include "xmltree/xpathnode.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

using CodeSet = std::uint64_t;  // of element codes or attribute codes, one bit each

static_assert(kXsltElementCodes <= 64 && kXsltAttributeCodes <= 64);

template <class Code>
constexpr CodeSet Codes(std::initializer_list<Code> codes) {
  CodeSet set = 0;
  for (const Code code : codes) set |= CodeSet{1} << IndexOf(code);
  return set;
}
template <class Code>
constexpr bool Has(CodeSet set, Code code) {
  return (set >> IndexOf(code) & 1) != 0;
}

// One further check: `test` gets the attribute, null when the element lacks it, and raises `error`.
struct ElementCheck {
  using Test = void (*)(const CheckedElement& element, XPathNode* attribute, XsltCode error);

  XsltAttribute attribute;
  Test test;
  XsltCode error;
};

struct ElementRule {
  enum Place { Instruction, TopLevel, Anywhere };
  using RecordMaker = std::unique_ptr<ElementRecord> (*)(const CheckedElement& element);

  XsltElement code;
  Place place;
  CodeSet attributes;
  CodeSet children;
  std::span<const ElementCheck> checks;
  RecordMaker makeRecord = nullptr;
};

inline constexpr CodeSet kAnyChild = ~CodeSet{0};  // what the checks test by themselves

// Null for a code without a row: everything that is no element of XSLT.
const ElementRule* FindElementRule(XsltElement code);

extern const CodeSet kContentChildren;  // of a template body

}  // namespace kelmora
