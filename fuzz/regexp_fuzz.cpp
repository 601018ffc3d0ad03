// A regular expression on the first line, the text behind it.
#include <algorithm>

#include "fuzz.h"
#include "xmlutil/xmlregexp.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  constexpr std::size_t kLongest = 200;  // the search is bounded, but its attempts are not short
  const std::string_view input = fuzz::Text(data, std::min(size, kLongest));
  const std::size_t end = std::min(input.find('\n'), input.size());
  const XMLRegExp expression(FromNative(input.substr(0, end)), false);
  expression.Match(FromNative(input.substr(std::min(end + 1, input.size()))));
  expression.Sample();
  return 0;
}
