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

namespace kelmora {

using CodeSet = std::uint64_t;  // of element codes or attribute codes, one bit each

constexpr CodeSet Codes(std::initializer_list<int> codes) {
  CodeSet set = 0;
  for (const int code : codes) set |= CodeSet{1} << code;
  return set;
}
constexpr bool Has(CodeSet set, std::int32_t code) {
  return (set >> code & 1) != 0;
}

// One further check: `test` gets the attribute, null when the element lacks it, and raises `error`.
struct ElementCheck {
  using Test = void (*)(const CheckedElement& element, XPathNode* attribute, std::int32_t error);

  std::int32_t attribute;
  Test test;
  std::int32_t error;
};

struct ElementRule {
  enum Place { Instruction, TopLevel, Anywhere };
  using RecordMaker = std::unique_ptr<ElementRecord> (*)(const CheckedElement& element);

  std::int32_t code;
  Place place;
  CodeSet attributes;
  CodeSet children;
  std::span<const ElementCheck> checks;
  RecordMaker makeRecord = nullptr;
};

inline constexpr CodeSet kAnyChild = ~CodeSet{0};  // what the checks test by themselves

// Null for a code without a row: everything that is no element of XSLT.
const ElementRule* FindElementRule(std::int32_t code);

extern const CodeSet kContentChildren;  // of a template body

}  // namespace kelmora
