// A pattern of format-number on the first line, the number behind it.
#include <algorithm>

#include "fuzz.h"
#include "xpath/decimalformat.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  const std::string_view input = fuzz::Text(data, size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  const DecimalFormat format;
  NumberPattern pattern(format);
  if (!pattern.ParsePattern(FromNative(input.substr(0, end)))) return 0;
  const TQString number = FromNative(input.substr(std::min(end + 1, input.size())));
  const double value = ParseDouble(number, nullptr);
  pattern.FormatNumber(value);
  pattern.FormatNumber(-value);
  return 0;
}
