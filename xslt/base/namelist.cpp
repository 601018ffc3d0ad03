#include "base/namelist.h"

#include "xslt/tqxslterror.h"

namespace kelmora {

std::vector<InternedURI> PrefixListURIs(XPathNode* attribute) {
  std::vector<InternedURI> uris;
  const PrefixMap& scope = attribute->parent->ScopeMap();
  ForEachName(attribute->GetValue(), [&](std::u16string_view prefix) {
    const PrefixMap::Entry* entry = scope.Find(prefix == u"#default" ? u"" : prefix);
    if (entry == nullptr) throw TQXSLTError(XsltCode::UndefinedPrefix, attribute);
    if (entry->uri != nullptr) uris.push_back(entry->uri);
  });
  return uris;
}

}  // namespace kelmora
