#include "types/simpletype.h"

#include <algorithm>
#include <array>
#include <memory>

#include "tqcore/tqtext.h"
#include "types/datetimevalue.h"
#include "types/facet.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

struct BuiltinType {
  const char16_t* xsdName;
  const char16_t* xdrName;
  const char16_t* pattern;
  bool stopAtPartial;
};
constexpr BuiltinType kBuiltinTypes[] = {
#define BUILTIN(code, xsdName, xdrName, pattern, stopAtPartial) \
  {xsdName, xdrName, pattern, stopAtPartial},
#include "types/builtintype.def"
#undef BUILTIN
};
constexpr std::size_t kBuiltinCount = std::size(kBuiltinTypes);

// Further names, and those that mean another type in the XDR dialect, which are looked at first.
struct ExtraName {
  View name;
  std::int32_t code;
};
constexpr ExtraName kXdrNames[] = {{u"boolean", TypeCode::XdrBoolean},
                                   {u"time", TypeCode::XdrTime}};
constexpr ExtraName kExtraNames[] = {
    {u"anySimpleType", 0}, {u"r4", 2},        {u"r8", 3},       {u"number", 3},
    {u"dateTime.tz", 6},   {u"time.tz", 7},   {u"bin.hex", 14}, {u"bin.base64", 15},
    {u"uri", 16},          {u"notation", 18}, {u"idrefs", 22},  {u"entities", 23},
    {u"nmtoken", 24},      {u"nmtokens", 25}, {u"id", 28},      {u"idref", 29},
    {u"entity", 30},       {u"i8", 34},       {u"i4", 35},      {u"i2", 36},
    {u"i1", 37},           {u"ui8", 39},      {u"ui4", 40},     {u"ui2", 41},
    {u"ui1", 42},
};

// Integers from `Integer` to `PositiveInteger`: the signs that may stand in front, and bounds.
struct IntegerRange {
  View signs;
  View least;  // empty: none
  View most;
};
constexpr IntegerRange kIntegerRanges[] = {
    {u"+-", u"", u""},
    {u"-", u"", u"0"},
    {u"-", u"", u"-1"},
    {u"+-", u"-9223372036854775808", u"9223372036854775807"},
    {u"+-", u"-2147483648", u"2147483647"},
    {u"+-", u"-32768", u"32767"},
    {u"+-", u"-128", u"127"},
    {u"+", u"0", u""},
    {u"+", u"0", u"18446744073709551615"},
    {u"+", u"0", u"4294967295"},
    {u"+", u"0", u"65535"},
    {u"+", u"0", u"255"},
    {u"+", u"1", u""},
};

const XMLRegExp& PatternOf(std::int32_t code) {
  static std::array<std::unique_ptr<XMLRegExp>, kBuiltinCount> compiled;
  auto& entry = compiled[static_cast<std::size_t>(code)];
  if (entry == nullptr) {
    const BuiltinType& type = kBuiltinTypes[code];
    entry = std::make_unique<XMLRegExp>(type.pattern, type.stopAtPartial);
  }
  return *entry;
}

bool ConsistsOf(View text, View set) {
  return text.find_first_not_of(set) == View::npos;
}

TypeCheck CheckInteger(std::int32_t code, View text) {
  const IntegerRange& range = kIntegerRanges[code - TypeCode::Integer];
  View digits = text;
  const bool hasSign = !digits.empty() && range.signs.find(digits[0]) != View::npos;
  if (hasSign) digits.remove_prefix(1);
  if (digits.empty() || !ConsistsOf(digits, u"0123456789")) return TypeCheck::Lexical;
  if (code == TypeCode::NegativeInteger && !hasSign) return TypeCheck::Lexical;
  if (code == TypeCode::NonPositiveInteger && !hasSign && !ConsistsOf(digits, u"0")) {
    return TypeCheck::Lexical;
  }
  const bool below = !range.least.empty() && IsLess(text, range.least);
  const bool above = !range.most.empty() && IsLess(range.most, text);
  return below || above ? TypeCheck::Range : TypeCheck::Valid;
}

TypeCheck CheckSmallNumber(View text, int most) {
  const View digits = TrimView(text, u" \t\r\n-");
  int value = 0;
  for (char16_t digit : digits) value = std::min(value * 10 + (digit - u'0'), most + 1);
  return value >= 1 && value <= most ? TypeCheck::Valid : TypeCheck::Range;
}

TypeCheck OneOf(bool fits) {
  return fits ? TypeCheck::Valid : TypeCheck::Lexical;
}

constexpr View kHexDigits = u"0123456789abcdefABCDEF";
constexpr View kBase64Units =
    u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
constexpr int kDaysAtMost = 31;
constexpr int kMonthsAtMost = 12;

TypeCheck CheckLexical(std::int32_t code, const TQString& text) {
  const View view = text;
  if (code >= TypeCode::Integer && code <= TypeCode::PositiveInteger) {
    return CheckInteger(code, view);
  }
  switch (code) {
    case TypeCode::Boolean:
      return OneOf(view == u"0" || view == u"1" || view == u"true" || view == u"false");
    case TypeCode::XdrBoolean:
      return OneOf(view == u"0" || view == u"1");
    case TypeCode::Char:
      return OneOf(view.size() == 1);
    case TypeCode::HexBinary:
      return OneOf(ConsistsOf(view, kHexDigits));
    case TypeCode::Base64Binary:
      return OneOf(ConsistsOf(view, kBase64Units));
    case TypeCode::UserDefined:
      return TypeCheck::Valid;
    default:
      break;
  }
  if (PatternOf(code).Match(text) != XMLRegExp::kMatch) return TypeCheck::Lexical;
  switch (code) {
    case TypeCode::Time:
    case TypeCode::Date:
      return DateTimeValue::Parse(code, view) ? TypeCheck::Valid : TypeCheck::Range;
    case TypeCode::Day:
      return CheckSmallNumber(view, kDaysAtMost);
    case TypeCode::Month:
      return CheckSmallNumber(view, kMonthsAtMost);
    default:
      return TypeCheck::Valid;
  }
}

bool IsLengthFacet(const Facet& facet) {
  return facet.code <= FacetCode::MaxLength;
}

TQString Describe(const Facet& facet) {
  TQString text = facet.GetName();
  text += u"=\"";
  text += facet.GetValue();
  return text + u"\"";
}

void ApplyWhiteSpace(TQString& text, View mode) {
  if (mode == u"replace") {
    for (char16_t unit : {u'\t', u'\n', u'\r'}) text.Replace(unit, u' ');
  } else if (mode == u"collapse") {
    text.Squeeze(kXmlSpaces, u' ');
    text.TrimLeft(u' ');
    text.TrimRight(u' ');
  }
}

}  // namespace

std::int32_t TypeCodeFromName(View name, bool xdrDialect) {
  if (xdrDialect) {
    for (const ExtraName& entry : kXdrNames) {
      if (entry.name == name) return entry.code;
    }
  }
  for (std::size_t code = 0; code < kBuiltinCount; ++code) {
    if (kBuiltinTypes[code].xsdName == name) return static_cast<std::int32_t>(code);
  }
  for (const ExtraName& entry : kExtraNames) {
    if (entry.name == name) return entry.code;
  }
  return TypeCode::UserDefined;
}

SimpleType::SimpleType(std::int32_t code) : typeCode(code) {}

SimpleType::SimpleType(const SimpleType& other) = default;

// Members form a chain as long as the union; it is let go one by one.
SimpleType::~SimpleType() {
  while (next != nullptr && next.use_count() == 1) {
    next = std::shared_ptr<SimpleType>(next)->next;
  }
}

template <class NameOf>
TQString SimpleType::DisplayName(NameOf nameOf) const {
  const auto named = [&](const SimpleType& type) {
    const auto code = static_cast<std::size_t>(type.typeCode);
    const TQString name = code < kBuiltinCount ? nameOf(kBuiltinTypes[code]) : u"";
    return type.isList ? TQString(u"list of ") + name : name;
  };
  if (next == nullptr) return named(*this);
  TQString text = u"union of ";
  for (const SimpleType* member = this; member != nullptr; member = member->next.get()) {
    if (member != this) text += u", ";
    text += named(*member);
  }
  return text;
}

TQString SimpleType::GetXSDName() const {
  return DisplayName([](const BuiltinType& type) { return type.xsdName; });
}

TQString SimpleType::GetXDRName() const {
  return DisplayName([](const BuiltinType& type) { return type.xdrName; });
}

// The last one is that of the most derived type.
View SimpleType::WhiteSpace() const {
  for (auto facet = facets.rbegin(); facet != facets.rend(); ++facet) {
    if ((*facet)->code == FacetCode::WhiteSpace) return (*facet)->value;
  }
  return {};
}

TypeCheck SimpleType::CheckBuiltin(const TQString& text, bool withFacets,
                                   const Facet** refusing) const {
  const TypeCheck result = CheckLexical(typeCode, text);
  if (result != TypeCheck::Valid || !withFacets) return result;
  for (const auto& facet : facets) {
    if (isList && IsLengthFacet(*facet)) continue;  // counted by CheckValue
    if (facet->Check(typeCode, text)) continue;
    if (refusing != nullptr) *refusing = facet.get();
    return TypeCheck::FacetRefused;
  }
  return TypeCheck::Valid;
}

TypeCheck SimpleType::CheckMembers(const TQString& value, TQString& facetText,
                                   bool withFacets) const {
  TypeCheck result = TypeCheck::Valid;
  for (const SimpleType* member = this; member != nullptr; member = member->next.get()) {
    const Facet* refusing = nullptr;
    result = member->CheckBuiltin(value, withFacets, &refusing);
    if (result == TypeCheck::Valid) return result;
    if (refusing != nullptr) facetText = Describe(*refusing);
  }
  return result;
}

TypeCheck SimpleType::CheckList(const TQString& value, TQString& facetText, bool withFacets) const {
  std::int64_t count = 0;
  int at = 0;
  for (TQString item = value.Tokenize(kXmlSpaces, at); !item.IsEmpty();
       item = value.Tokenize(kXmlSpaces, at)) {
    const TypeCheck result = CheckMembers(item, facetText, withFacets);
    if (result != TypeCheck::Valid) return result;
    ++count;
  }
  if (!withFacets) return TypeCheck::Valid;
  for (const auto& facet : facets) {
    if (!IsLengthFacet(*facet) || facet->CheckCount(count)) continue;
    facetText = Describe(*facet);
    return TypeCheck::FacetRefused;
  }
  return TypeCheck::Valid;
}

TypeCheck SimpleType::CheckValue(const TQString& text, TQString& facetText, bool withFacets) const {
  TQString value = text;
  value.DecodeCharacterReferences();
  if (withFacets) ApplyWhiteSpace(value, WhiteSpace());
  facetText.Clear();
  return isList ? CheckList(value, facetText, withFacets)
                : CheckMembers(value, facetText, withFacets);
}

namespace {

// A decimal text taken apart: digits before the point without leading zeros, and behind it
// without trailing ones.
struct DecimalText {
  bool negative = false;
  View whole;
  View fraction;

  explicit DecimalText(View text) {
    const std::size_t start = text.find_first_not_of(u" \t\r\n+");
    text = start == View::npos ? View() : text.substr(start);
    if (text.starts_with(u'-')) {
      negative = true;
      text.remove_prefix(1);
    }
    text.remove_prefix(std::min(text.find_first_not_of(u'0'), text.size()));
    const std::size_t point = std::min(text.find(u'.'), text.size());
    whole = text.substr(0, point);
    fraction = text.substr(std::min(point + 1, text.size()));
    while (fraction.ends_with(u'0')) fraction.remove_suffix(1);
    if (whole.empty() && fraction.empty()) negative = false;
  }
};

int CompareMagnitudes(const DecimalText& a, const DecimalText& b) {
  if (a.whole.size() != b.whole.size()) return a.whole.size() < b.whole.size() ? -1 : 1;
  if (const int whole = a.whole.compare(b.whole); whole != 0) return whole;
  return a.fraction.compare(b.fraction);
}

int CompareDecimals(View a, View b) {
  const DecimalText left(a);
  const DecimalText right(b);
  if (left.negative != right.negative) return left.negative ? -1 : 1;
  const int magnitude = CompareMagnitudes(left, right);
  return left.negative ? -magnitude : magnitude;
}

}  // namespace

bool IsLess(View a, View b) {
  return CompareDecimals(a, b) < 0;
}
TQString CanonicalDecimal(View text) {
  const DecimalText decimal(text);
  TQString canonical = decimal.negative ? u"-" : u"";
  canonical += decimal.whole;
  canonical += u'.';
  canonical += decimal.fraction;
  return canonical;
}

bool IsEqual(View a, View b) {
  return CompareDecimals(a, b) == 0;
}

}  // namespace kelmora
