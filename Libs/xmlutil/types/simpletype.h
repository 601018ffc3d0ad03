// SimpleType: a simple type of XML Schema or XDR, which is one of a numbered table of built-in
// types, restricted by facets. Types check the default and fixed values of a schema while it is
// read; instances are never checked.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"
#include "types/builtintype.h"

namespace kelmora {

class Facet;

// Results of the checks.
enum class TypeCheck : std::int32_t { Valid = 0, Lexical = 1, Range = 2, FacetRefused = 4 };

// Exact comparison; UserDefined for a name that no built-in type has. The XDR dialect has a
// `boolean` and a `time` of its own.
TypeCode TypeCodeFromName(std::u16string_view name, bool xdrDialect);

class SimpleType {
 public:
  explicit SimpleType(TypeCode code = TypeCode::String);
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

  TypeCode typeCode = TypeCode::String;
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
