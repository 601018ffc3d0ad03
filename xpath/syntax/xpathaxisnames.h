// Axis: the thirteen axes, and the names that expressions give them.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelmora {

enum class Axis : std::int8_t {
#define XPATH_AXIS(number, axis, name) axis = number,
#include "syntax/xpathaxes.def"
#undef XPATH_AXIS
};

struct AxisNameRow {
  std::u16string_view name;
  Axis axis;
};
inline constexpr AxisNameRow kAxisNames[] = {
#define XPATH_AXIS(number, axis, name) {name, Axis::axis},
#include "syntax/xpathaxes.def"
#undef XPATH_AXIS
};

}  // namespace kelmora
