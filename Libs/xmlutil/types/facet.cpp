// What each facet asks of a value. There are six classes for the twelve facets: lengths, pattern,
// enumeration, white space, bounds and digits, after XML Schema Part 2 (W3C, 2001). How a value is
// counted and compared is not the facet's business: the measure and the comparison of its type
// stand in the table of the built-in types, and a facet that means nothing for a type accepts every
// value.
//
// Numbers of any length are compared as text, floating ones as doubles, dates as seconds. An
// enumeration of numbers holds canonical forms, so that a search among many values takes constant
// time. The trap is NaN: it equals nothing, so no enumeration and no bound accepts it.
#include "types/facet.h"

#include <algorithm>
#include <compare>
#include <limits>
#include <optional>
#include <unordered_set>
#include <utility>

#include "tqcore/texthash.h"
#include "tqcore/tqtext.h"
#include "types/datetimevalue.h"
#include "types/simpletype.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr const char16_t* kFacetNames[] = {
    u"length",       u"minLength",    u"maxLength",    u"pattern",
    u"enumeration",  u"whiteSpace",   u"maxInclusive", u"maxExclusive",
    u"minInclusive", u"minExclusive", u"totalDigits",  u"fractionDigits",
};

using Measure = BuiltinRow::Measure;
using Comparison = BuiltinRow::Comparison;

std::int64_t ReadUnsigned(View text) {
  text = TrimView(text);
  if (text.starts_with(u'+')) text.remove_prefix(1);
  std::int64_t value = 0;
  for (char16_t digit : text) {
    if (digit < u'0' || digit > u'9') break;
    value = std::min<std::int64_t>(value * 10 + (digit - u'0'),
                                   std::numeric_limits<std::uint32_t>::max());
  }
  return value;
}

std::int64_t CountItems(View text) {
  std::int64_t count = 0;
  bool inItem = false;
  for (char16_t unit : text) {
    const bool isSpace = IsXmlSpace(unit);
    count += !isSpace && !inItem ? 1 : 0;
    inItem = !isSpace;
  }
  return count;
}

double ReadFloating(View text) {
  text = TrimView(text);
  const bool isNegative = text.starts_with(u'-');
  const View word = isNegative || text.starts_with(u'+') ? text.substr(1) : text;
  if (word == u"NaN") return std::numeric_limits<double>::quiet_NaN();
  if (word != u"INF") return ParseDouble(text, nullptr);
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  return isNegative ? -kInfinity : kInfinity;
}

// Nothing when values of the type are not compared, or these two cannot be.
std::optional<std::partial_ordering> Compare(TypeCode typeCode, View a, View b) {
  switch (BuiltinOf(typeCode).comparison) {
    case Comparison::Decimal:
      if (IsEqual(a, b)) return std::partial_ordering::equivalent;
      return IsLess(a, b) ? std::partial_ordering::less : std::partial_ordering::greater;
    case Comparison::Floating:
      return ReadFloating(a) <=> ReadFloating(b);
    case Comparison::DateTime: {
      const auto left = DateTimeValue::Parse(typeCode, a);
      const auto right = DateTimeValue::Parse(typeCode, b);
      if (!left || !right) return std::nullopt;
      return *left <=> *right;
    }
    case Comparison::None:
      break;
  }
  return std::nullopt;
}

bool IsCount(const TQString& value) {
  return SimpleType(TypeCode::NonNegativeInteger).CheckBuiltin(value, false) == TypeCheck::Valid;
}

class LengthFacet final : public Facet {
 public:
  using Facet::Facet;
  bool Check(TypeCode typeCode, const TQString& text) const override {
    switch (BuiltinOf(typeCode).measure) {
      case Measure::Characters:
        return CheckCount(text.Length());
      case Measure::HalfCharacters:
        return CheckCount(text.Length() / 2);
      case Measure::Items:
        return CheckCount(CountItems(text));
      case Measure::None:
        break;
    }
    return true;
  }
  bool CheckCount(std::int64_t count) const override {
    const std::int64_t bound = ReadUnsigned(value);
    if (code == FacetCode::MinLength) return count >= bound;
    return code == FacetCode::MaxLength ? count <= bound : count == bound;
  }
  void FixValue(TQString& text) const override {
    constexpr std::int64_t kLongestPad = 1 << 16;
    const auto bound = static_cast<int>(std::min(ReadUnsigned(value), kLongestPad));
    if (code != FacetCode::MinLength && text.Length() > bound) text = text.Left(bound);
    while (code != FacetCode::MaxLength && text.Length() < bound) text += u'a';
  }
  bool IsValidFor(const SimpleType&) const override { return IsCount(value); }
  std::unique_ptr<Facet> Clone() const override { return std::make_unique<LengthFacet>(*this); }
};

class PatternFacet final : public Facet {
 public:
  using Facet::Facet;
  PatternFacet(const PatternFacet& other) : Facet(other) {}
  bool Check(TypeCode, const TQString& text) const override {
    if (expression_ == nullptr) expression_ = std::make_unique<XMLRegExp>(value, false);
    return expression_->Match(text) == XMLRegExp::kMatch;
  }
  void FixValue(TQString& text) const override { text = XMLRegExp(value, false).Sample(); }
  void SetValue(const TQString& text) override {
    value = text;
    expression_.reset();
  }
  bool IsValidFor(const SimpleType&) const override { return XMLRegExp(value, false).IsCompiled(); }
  std::unique_ptr<Facet> Clone() const override { return std::make_unique<PatternFacet>(*this); }

 private:
  mutable std::unique_ptr<XMLRegExp> expression_;  // made at the first check
};

// What a comparison of numbers counts for among the steps of checks.
constexpr std::int64_t kStepsPerComparison = 8;

// Numbers are compared as such, and all else as text, dates too.
class EnumerationFacet final : public Facet {
 public:
  using Facet::Facet;
  bool Check(TypeCode typeCode, const TQString& text) const override {
    switch (BuiltinOf(typeCode).comparison) {
      case Comparison::None:
      case Comparison::DateTime:
        return texts_.contains(text);
      case Comparison::Decimal:
        if (decimals_.empty()) {
          for (const TQString& candidate : values_) decimals_.insert(CanonicalDecimal(candidate));
        }
        return decimals_.contains(CanonicalDecimal(text));
      case Comparison::Floating:
        break;
    }
    XMLRegExp::steps += kStepsPerComparison * static_cast<std::int64_t>(values_.size());
    return std::any_of(values_.begin(), values_.end(), [&](const TQString& candidate) {
      return ReadFloating(text) == ReadFloating(candidate);
    });
  }
  void FixValue(TQString& text) const override {
    if (!values_.empty()) text = values_.front();
  }
  TQString GetValue() const override {
    TQString joined;
    for (const TQString& candidate : values_) {
      if (!joined.IsEmpty()) joined += u" | ";
      joined += candidate;
    }
    return joined;
  }
  void SetValues(const std::vector<TQString>& values) override {
    values_ = values;
    texts_ = {values.begin(), values.end()};
    decimals_.clear();
    Facet::SetValues(values);
  }
  void SetValue(const TQString& text) override {  // collects
    values_.push_back(text);
    texts_.insert(text);
    decimals_.clear();
    value = values_.front();
  }
  bool IsValidFor(const SimpleType& type) const override {
    TQString ignored;
    return std::all_of(values_.begin(), values_.end(), [&](const TQString& candidate) {
      return type.CheckValue(candidate, ignored) == TypeCheck::Valid;
    });
  }
  std::unique_ptr<Facet> Clone() const override {
    return std::make_unique<EnumerationFacet>(*this);
  }

 private:
  std::vector<TQString> values_;
  using Texts = std::unordered_set<TQString, TextHash, TextEqual>;

  Texts texts_;
  mutable Texts decimals_;  // in canonical form, made at the first check
};

class WhiteSpaceFacet final : public Facet {
 public:
  using Facet::Facet;
  bool Check(TypeCode, const TQString&) const override { return true; }
  void FixValue(TQString&) const override {}
  bool IsValidFor(const SimpleType&) const override { return true; }  // other words preserve
  std::unique_ptr<Facet> Clone() const override { return std::make_unique<WhiteSpaceFacet>(*this); }
};

class BoundFacet final : public Facet {
 public:
  using Facet::Facet;
  bool Check(TypeCode typeCode, const TQString& text) const override {
    const std::optional<std::partial_ordering> order = Compare(typeCode, text, value);
    if (!order) return true;
    if (code == FacetCode::MaxInclusive) return *order <= 0;
    if (code == FacetCode::MaxExclusive) return *order < 0;
    return code == FacetCode::MinInclusive ? *order >= 0 : *order > 0;
  }
  void FixValue(TQString& text) const override { text = value; }
  bool IsValidFor(const SimpleType& type) const override {
    TQString ignored;
    return type.CheckValue(value, ignored, false) == TypeCheck::Valid;
  }
  std::unique_ptr<Facet> Clone() const override { return std::make_unique<BoundFacet>(*this); }
};

class DigitsFacet final : public Facet {
 public:
  using Facet::Facet;
  bool Check(TypeCode, const TQString& text) const override {
    View counted = text;
    if (code == FacetCode::FractionDigits) {
      counted = counted.substr(std::min(counted.find(u'.'), counted.size()));
    }
    const auto digits = std::count_if(counted.begin(), counted.end(),
                                      [](char16_t unit) { return unit >= u'0' && unit <= u'9'; });
    return digits <= ReadUnsigned(value);
  }
  void FixValue(TQString&) const override {}
  bool IsValidFor(const SimpleType&) const override { return IsCount(value); }
  std::unique_ptr<Facet> Clone() const override { return std::make_unique<DigitsFacet>(*this); }
};

std::unique_ptr<Facet> MakeFacet(FacetCode code) {
  switch (code) {
    case FacetCode::Length:
    case FacetCode::MinLength:
    case FacetCode::MaxLength:
      return std::make_unique<LengthFacet>(code);
    case FacetCode::Pattern:
      return std::make_unique<PatternFacet>(code);
    case FacetCode::Enumeration:
      return std::make_unique<EnumerationFacet>(code);
    case FacetCode::WhiteSpace:
      return std::make_unique<WhiteSpaceFacet>(code);
    case FacetCode::MaxInclusive:
    case FacetCode::MaxExclusive:
    case FacetCode::MinInclusive:
    case FacetCode::MinExclusive:
      return std::make_unique<BoundFacet>(code);
    case FacetCode::TotalDigits:
    case FacetCode::FractionDigits:
      return std::make_unique<DigitsFacet>(code);
  }
  return nullptr;
}

}  // namespace

const char16_t* Facet::GetName() const {
  return kFacetNames[static_cast<int>(code)];
}

void Facet::SetValues(const std::vector<TQString>& values) {
  value = values.empty() ? TQString() : values.front();
}

std::unique_ptr<Facet> CreateFacet(View name, const TQString& value) {
  for (std::size_t code = 0; code < std::size(kFacetNames); ++code) {
    if (name != kFacetNames[code]) continue;
    std::unique_ptr<Facet> facet = MakeFacet(static_cast<FacetCode>(code));
    facet->SetValue(value);
    return facet;
  }
  return nullptr;
}

}  // namespace kelmora
