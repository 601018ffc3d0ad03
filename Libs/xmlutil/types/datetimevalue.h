// DateTimeValue: a date, a time or both as one comparable number of seconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "types/builtintype.h"

namespace kelmora {

struct DateTimeValue {
  std::int64_t seconds = 0;  // in UTC; without a zone the text counts as UTC
  double fraction = 0;       // of a second, from 0 up to but not including 1

  // `typeCode` is that of dateTime, time or date. Nothing for a day or time of day that does not
  // exist; a date may lack its day and month. The text must match the type's pattern.
  static std::optional<DateTimeValue> Parse(TypeCode typeCode, std::u16string_view text);

  friend auto operator<=>(const DateTimeValue&, const DateTimeValue&) = default;
};

}  // namespace kelmora
