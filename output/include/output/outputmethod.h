// The methods of output, one row each in output/outputmethods.def: what `method` of xsl:output may
// say, and who writes the result then.
#pragma once

#include <string_view>

namespace kelmora {

struct WriterInput;

struct OutputMethod {
  std::u16string_view name;  // in lower case
  bool indents;              // when the settings do not say
  void (*write)(const WriterInput& input);
};

// The row of a name in any case; null for a name of no row. It lives for ever.
const OutputMethod* FindOutputMethod(std::u16string_view name);

// What a result is written with that neither has a method given nor begins like a page of html.
const OutputMethod& DefaultOutputMethod();

}  // namespace kelmora
