// The alternatives of a pattern, before anything is parsed.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelmora {

// Cuts the text at each "|" that stands in neither a string nor a predicate. `each` gets the
// alternatives in turn and whether it is the last; a text without "|" is its only one.
template <class Each>
void ForEachAlternative(std::u16string_view patterns, Each each) {
  std::size_t start = 0;
  char16_t closing = 0;  // ends the string or predicate that is open
  for (std::size_t at = 0; at < patterns.size(); ++at) {
    const char16_t unit = patterns[at];
    if (closing != 0) {
      if (unit == closing) closing = 0;
    } else if (unit == u'[') {
      closing = u']';
    } else if (unit == u'\'' || unit == u'"') {
      closing = unit;
    } else if (unit == u'|') {
      each(patterns.substr(start, at - start), false);
      start = at + 1;
    }
  }
  each(patterns.substr(start), true);
}

}  // namespace kelmora
