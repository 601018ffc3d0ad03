// The element and attribute names that the html method treats in a way of their own. Names compare
// without regard to case, in ASCII.
#pragma once

#include <cstdint>
#include <string_view>

namespace kelmora {

enum HtmlElementTrait : std::uint8_t {
  HtmlEmpty = 1,     // no end tag, ever
  HtmlNonEmpty = 2,  // an end tag also without content
  HtmlBlock = 4,     // breaks and indentation around it
  HtmlRaw = 8,       // its own text goes out unescaped
  HtmlHead = 16,     // takes the META element
};
enum HtmlAttributeTrait : std::uint8_t {
  HtmlBoolean = 1,  // written without a value
  HtmlUri = 2,      // the value is escaped like a URL
};

// The traits of a name, 0 for a name of no list. Constant cost.
unsigned HtmlElementTraits(std::u16string_view name);
unsigned HtmlAttributeTraits(std::u16string_view name);

}  // namespace kelmora
