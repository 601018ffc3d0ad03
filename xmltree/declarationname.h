// Names of attributes that declare a namespace: "xmlns", and what has "xmlns" as its prefix.
#pragma once

#include <string_view>

namespace kelmora {

inline constexpr std::u16string_view kDeclarationName = u"xmlns";

inline bool IsDeclarationName(std::u16string_view name) {
  if (!name.starts_with(kDeclarationName)) return false;
  return name.size() == kDeclarationName.size() || name[kDeclarationName.size()] == u':';
}

// The prefix that such a name declares; empty for the default namespace.
inline std::u16string_view DeclaredPrefix(std::u16string_view name) {
  return name.size() == kDeclarationName.size() ? std::u16string_view{}
                                                : name.substr(kDeclarationName.size() + 1);
}

}  // namespace kelmora
