// This room holds simple types, as XML Schema and XDR have them: a numbered table of built-in ones,
// which stands here, restricted by facets (facet.h), joined to lists and unions (simpletype.h).
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

enum class TypeCode : std::uint8_t {
#define BUILTIN(name, xsdName, xdrName, dialect, measure, comparison, pattern, stopAtPartial) name,
#include "types/builtintype.def"
#undef BUILTIN
};

struct BuiltinRow {
  enum class Dialect : std::uint8_t { Schema, Xdr };
  enum class Measure : std::uint8_t { None, Characters, HalfCharacters, Items };
  enum class Comparison : std::uint8_t { None, Floating, Decimal, DateTime };

  TypeCode code;
  const char16_t* xsdName;
  const char16_t* xdrName;
  Dialect dialect;
  Measure measure;
  Comparison comparison;
  const char16_t* pattern;
  bool stopAtPartial;
};

inline constexpr BuiltinRow kBuiltinTypes[] = {
#define BUILTIN(name, xsdName, xdrName, dialect, measure, comparison, pattern, stopAtPartial) \
  {TypeCode::name,                                                                            \
   xsdName,                                                                                   \
   xdrName,                                                                                   \
   BuiltinRow::Dialect::dialect,                                                              \
   BuiltinRow::Measure::measure,                                                              \
   BuiltinRow::Comparison::comparison,                                                        \
   pattern,                                                                                   \
   stopAtPartial},
#include "types/builtintype.def"
#undef BUILTIN
};
inline constexpr std::size_t kBuiltinCount = sizeof kBuiltinTypes / sizeof *kBuiltinTypes;

inline constexpr const BuiltinRow& BuiltinOf(TypeCode code) {
  return kBuiltinTypes[static_cast<std::size_t>(code)];
}

}  // namespace kelmora
