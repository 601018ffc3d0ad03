// Qualified names: their form as expressions know it, their expansion, and the namespace of XSLT.
#pragma once

#include <cstdint>
#include <string_view>

#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"

namespace kelmora {

inline constexpr std::u16string_view kXsltNamespace = u"http://www.w3.org/1999/XSL/Transform";

// No white space at the ends, and the QName rule takes it whole.
bool IsQName(std::u16string_view text);
bool IsNCName(std::u16string_view text);

// What stands for a name with a prefix that gives no URI.
enum class UnboundPrefix : std::uint8_t {
  KeepName,        // the name as it is written
  DropPrefix,      // the local part
  DropIfDeclared,  // the local part for a prefix that is declared as nothing, else the name
};

// "uri:local" when the map binds the prefix of the name to a URI. A name without a prefix stays.
TQString ExpandName(std::u16string_view name, const PrefixMap& map,
                    UnboundPrefix unbound = UnboundPrefix::KeepName);

}  // namespace kelmora
