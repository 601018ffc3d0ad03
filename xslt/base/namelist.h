// Lists of names in attribute values, separated by white space.
#pragma once

#include <string_view>
#include <vector>

#include "tqcore/tqtext.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

// Calls `each` with every name of the list, in order.
template <class Each>
void ForEachName(std::u16string_view list, Each each) {
  std::size_t at = 0;
  while (at < list.size()) {
    while (at < list.size() && IsXmlSpace(list[at])) ++at;
    const std::size_t start = at;
    while (at < list.size() && !IsXmlSpace(list[at])) ++at;
    if (at > start) each(list.substr(start, at - start));
  }
}

// URIs of a list of prefixes, as the value of `attribute`, "#default" being the empty one. Raises
// code 10 at the attribute for a prefix that is not bound.
std::vector<InternedURI> PrefixListURIs(XPathNode* attribute);

}  // namespace kelmora
