// XPathFunction: the numbers of the functions, as errors carry them.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelmora {

enum class XPathFunction : std::int8_t {
  none = -1,
#define XPATH_FUNCTION(number, id, ...) id = number,
#define XSLT_FUNCTION(number, id, ...) id = number,
#include "xpath/xpathfunctions.def"
#undef XSLT_FUNCTION
#undef XPATH_FUNCTION
};

// As calls write it; empty for a number that no function has.
std::u16string_view NameOfFunction(std::int32_t number);

}  // namespace kelmora
