// XPathRule: the numbers of the grammar rules. Parse nodes bear them.
#pragma once

#include <cstdint>

namespace kelmora {

enum class XPathRule : std::int16_t {
  None = -1,
#define XPATH_RULE(number, name) name = number,
#include "syntax/xpathrule.def"
#undef XPATH_RULE
};

}  // namespace kelmora
