// SimpleType: a simple type of XML Schema or XDR, which is one of a numbered table of built-in
// types, restricted by facets. Types check the default and fixed values of a schema while it is
// read; instances are never checked.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"

namespace kelmora {

class Facet;

// Numbers of the built-in types; those that code asks for by name. The others stand in
// builtintype.def.
namespace TypeCode {
enum : std::int32_t {
  String = 0,
  Boolean = 1,
  Float = 2,
  Double = 3,
  Decimal = 4,
  DateTime = 6,
  Time = 7,
  Date = 8,
  Day = 12,
  Month = 13,
  HexBinary = 14,
  Base64Binary = 15,
  NOTATION = 18,
  IDREFS = 22,
  ENTITIES = 23,
  NMTOKEN = 24,
  NMTOKENS = 25,
  ID = 28,
  IDREF = 29,
  ENTITY = 30,
  Integer = 31,
  NonPositiveInteger = 32,
  NegativeInteger = 33,
  NonNegativeInteger = 38,
  PositiveInteger = 43,
  Enumeration = 45,
  Char = 46,
  XdrTime = 48,
  XdrBoolean = 50,
  UserDefined = 53,
};
}  // namespace TypeCode

// Results of the checks.
enum class TypeCheck : std::int32_t { Valid = 0, Lexical = 1, Range = 2, FacetRefused = 4 };

// Exact comparison; UserDefined for a name that no built-in type has. The XDR dialect has a
// `boolean` and a `time` of its own.
std::int32_t TypeCodeFromName(std::u16string_view name, bool xdrDialect);

class SimpleType {
 public:
  explicit SimpleType(std::int32_t code = TypeCode::String);
  SimpleType(const SimpleType& other);  // shares the facets
  SimpleType& operator=(const SimpleType&) = delete;
  ~SimpleType();

  TQString GetXSDName() const;
  TQString GetXDRName() const;
  // Without regard to lists and unions; the facet that refused goes to `refusing` (may be null).
  TypeCheck CheckBuiltin(const TQString& text, bool withFacets,
                         const Facet** refusing = nullptr) const;
  // `facetText` holds name="value" of the facet that refused the value. Without facets, those of
  // the members of a union don't count either.
  TypeCheck CheckValue(const TQString& text, TQString& facetText, bool withFacets = true) const;
  // The value of the whiteSpace facet, empty without one.
  std::u16string_view WhiteSpace() const;

  std::int32_t typeCode = TypeCode::String;
  bool isList = false;  // a list, separated by white space, of values of the type
  std::vector<std::shared_ptr<Facet>> facets;
  std::shared_ptr<SimpleType> next;  // the next member of a union

 private:
  TypeCheck CheckList(const TQString& value, TQString& facetText, bool withFacets) const;
  TypeCheck CheckMembers(const TQString& value, TQString& facetText, bool withFacets) const;
  template <class NameOf>
  TQString DisplayName(NameOf nameOf) const;
};

// Decimal numbers of any length as text: white space and "+" in front and leading zeros don't
// count, missing digits are zeros.
bool IsLess(std::u16string_view a, std::u16string_view b);
bool IsEqual(std::u16string_view a, std::u16string_view b);
// The same text for all equal ones.
TQString CanonicalDecimal(std::u16string_view text);

}  // namespace kelmora
