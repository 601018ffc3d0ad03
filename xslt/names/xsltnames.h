// The names of XSLT: a code for each element and each attribute. Both tables lie in .def files.
//
// This room holds what the nodes of a stylesheet are and have: codes, records, and the index of
// both.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "xmltree/xpathnode.h"
#include "xpath/qualifiedname.h"

namespace kelmora {

// The elements by their codes.
enum class XsltElement : std::int32_t {
  None = 0,     // not looked at
  Literal = 1,  // anything that is no known element of XSLT
#define ELEMENT(code, enumerator, name) enumerator = code,
#include "names/elementcodes.def"
#undef ELEMENT
};
inline constexpr std::size_t kXsltElementCodes = 1 + std::max<std::size_t>({
// codes are below
#define ELEMENT(code, enumerator, name) code,
#include "names/elementcodes.def"
#undef ELEMENT
                                                     });

// The attributes by their codes.
enum class XsltAttribute : std::int32_t {
  Other = 25,  // any other name
#define ATTRIBUTE(code, enumerator, name) enumerator = code,
#include "names/attributecodes.def"
#undef ATTRIBUTE
};
inline constexpr std::size_t kXsltAttributeCodes = 1 + std::max<std::size_t>({
// codes are below
#define ATTRIBUTE(code, enumerator, name) code,
#include "names/attributecodes.def"
#undef ATTRIBUTE
                                                       });

constexpr std::size_t IndexOf(XsltElement code) {
  return static_cast<std::size_t>(code);
}
constexpr std::size_t IndexOf(XsltAttribute code) {
  return static_cast<std::size_t>(code);
}

bool IsXsltURI(InternedURI uri);

class XsltElementNames {
 public:
  // Literal outside of the XSLT namespace and for names that XSLT does not have.
  static XsltElement Code(const XPathNode* node);
  static XsltElement Code(std::u16string_view localName);  // in the XSLT namespace
};

class XsltAttributeNames {
 public:
  // The four names of every element are known with and without the XSLT namespace, all others
  // without a namespace only.
  static XsltAttribute Code(const XPathNode* attribute);
};

}  // namespace kelmora
