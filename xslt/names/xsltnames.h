// The names of XSLT: a code for each element and each attribute. Both tables lie in .def files.
#pragma once

#include <cstdint>
#include <string_view>

#include "xmltree/xpathnode.h"

namespace kelmora {

inline constexpr std::u16string_view kXsltNamespace = u"http://www.w3.org/1999/XSL/Transform";

namespace ElementCode {
enum : std::int32_t {
  Literal = 1,  // anything that is no known element of XSLT
#define ELEMENT(code, enumerator, name) enumerator = code,
#include "names/elementcodes.def"
#undef ELEMENT
};
}  // namespace ElementCode

namespace AttributeCode {
enum : std::int32_t {
  Other = 25,  // any other name
#define ATTRIBUTE(code, enumerator, name) enumerator = code,
#include "names/attributecodes.def"
#undef ATTRIBUTE
};
inline constexpr int kCount = 51;  // codes are below
}  // namespace AttributeCode

bool IsXsltURI(InternedURI uri);

class XsltElementNames {
 public:
  // ElementCode::Literal outside of the XSLT namespace and for names that XSLT does not have.
  static std::int32_t Code(const XPathNode* node);
};

class XsltAttributeNames {
 public:
  // The four names of every element are known with and without the XSLT namespace, all others
  // without a namespace only.
  static std::int32_t Code(const XPathNode* attribute);
};

}  // namespace kelmora
