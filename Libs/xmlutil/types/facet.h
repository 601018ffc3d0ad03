// Facets: the restrictions of a simple type.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tqcore/tqstring.h"
#include "types/builtintype.h"

namespace kelmora {

class SimpleType;

enum class FacetCode : std::int32_t {
  Length = 0,
  MinLength = 1,
  MaxLength = 2,
  Pattern = 3,
  Enumeration = 4,
  WhiteSpace = 5,
  MaxInclusive = 6,
  MaxExclusive = 7,
  MinInclusive = 8,
  MinExclusive = 9,
  TotalDigits = 10,
  FractionDigits = 11,
};

class Facet {
 public:
  explicit Facet(FacetCode facetCode) : code(facetCode) {}
  virtual ~Facet() = default;

  virtual bool Check(TypeCode typeCode, const TQString& text) const = 0;
  // Changes a value so that it passes, as far as this is possible.
  virtual void FixValue(TQString& text) const = 0;
  const char16_t* GetName() const;
  virtual TQString GetValue() const { return value; }
  // The first string becomes the value; none clears it.
  virtual void SetValues(const std::vector<TQString>& values);
  virtual void SetValue(const TQString& text) { value = text; }
  // Whether the facet's own value is one for the type that it restricts.
  virtual bool IsValidFor(const SimpleType& type) const = 0;
  virtual std::unique_ptr<Facet> Clone() const = 0;

  // Of a list, the facet counts items: only the three length facets can.
  virtual bool CheckCount(std::int64_t) const { return true; }

  FacetCode code;
  TQString value;
};

// Null for a name that no facet has.
std::unique_ptr<Facet> CreateFacet(std::u16string_view name, const TQString& value);

}  // namespace kelmora
