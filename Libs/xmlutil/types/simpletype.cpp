// The checks of a text against a type. A text is tested in three steps: by the type's lexical form,
// which is a pattern, a set of characters or, for integers, signs and digits; by the range of its
// values; by the facets. A list is taken apart at white space first, and a union asks its members
// in turn. The lexical forms are those of XML Schema Part 2 (W3C, 2001), as far as the patterns of
// the table go, with some more that XDR has.
//
// Numbers stay text: they are of any length, and are compared digit by digit. The trap is that a
// value which one member of a union refuses may be one of the next, so what a check costs
// multiplies with the members; XMLRegExp::steps counts it.
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

// Further names, and those that mean another type in the XDR dialect, which are looked at first.
struct ExtraName {
  View name;
  TypeCode code;
};
constexpr ExtraName kXdrNames[] = {{u"boolean", TypeCode::XdrBoolean},
                                   {u"time", TypeCode::XdrTime}};
constexpr ExtraName kExtraNames[] = {
    {u"anySimpleType", TypeCode::String},
    {u"r4", TypeCode::Float},
    {u"r8", TypeCode::Double},
    {u"number", TypeCode::Double},
    {u"dateTime.tz", TypeCode::DateTime},
    {u"time.tz", TypeCode::Time},
    {u"bin.hex", TypeCode::HexBinary},
    {u"bin.base64", TypeCode::Base64Binary},
    {u"uri", TypeCode::AnyURI},
    {u"notation", TypeCode::NOTATION},
    {u"idrefs", TypeCode::IDREFS},
    {u"entities", TypeCode::ENTITIES},
    {u"nmtoken", TypeCode::NMTOKEN},
    {u"nmtokens", TypeCode::NMTOKENS},
    {u"id", TypeCode::ID},
    {u"idref", TypeCode::IDREF},
    {u"entity", TypeCode::ENTITY},
    {u"i8", TypeCode::Long},
    {u"i4", TypeCode::Int},
    {u"i2", TypeCode::Short},
    {u"i1", TypeCode::Byte},
    {u"ui8", TypeCode::UnsignedLong},
    {u"ui4", TypeCode::UnsignedInt},
    {u"ui2", TypeCode::UnsignedShort},
    {u"ui1", TypeCode::UnsignedByte},
};

// Integers: the signs that may stand in front, and bounds.
struct IntegerRange {
  TypeCode code;
  View signs;
  View least;  // empty: none
  View most;
};
constexpr IntegerRange kIntegerRanges[] = {
    {TypeCode::Integer, u"+-", u"", u""},
    {TypeCode::NonPositiveInteger, u"-", u"", u"0"},
    {TypeCode::NegativeInteger, u"-", u"", u"-1"},
    {TypeCode::Long, u"+-", u"-9223372036854775808", u"9223372036854775807"},
    {TypeCode::Int, u"+-", u"-2147483648", u"2147483647"},
    {TypeCode::Short, u"+-", u"-32768", u"32767"},
    {TypeCode::Byte, u"+-", u"-128", u"127"},
    {TypeCode::NonNegativeInteger, u"+", u"0", u""},
    {TypeCode::UnsignedLong, u"+", u"0", u"18446744073709551615"},
    {TypeCode::UnsignedInt, u"+", u"0", u"4294967295"},
    {TypeCode::UnsignedShort, u"+", u"0", u"65535"},
    {TypeCode::UnsignedByte, u"+", u"0", u"255"},
    {TypeCode::PositiveInteger, u"+", u"1", u""},
};

const XMLRegExp& PatternOf(TypeCode code) {
  static std::array<std::unique_ptr<XMLRegExp>, kBuiltinCount> compiled;
  auto& entry = compiled[static_cast<std::size_t>(code)];
  if (entry == nullptr) {
    const BuiltinRow& type = BuiltinOf(code);
    entry = std::make_unique<XMLRegExp>(type.pattern, type.stopAtPartial);
  }
  return *entry;
}

bool ConsistsOf(View text, View set) {
  return text.find_first_not_of(set) == View::npos;
}

TypeCheck CheckInteger(const IntegerRange& range, View text) {
  View digits = text;
  const bool hasSign = !digits.empty() && range.signs.find(digits[0]) != View::npos;
  if (hasSign) digits.remove_prefix(1);
  if (digits.empty() || !ConsistsOf(digits, u"0123456789")) return TypeCheck::Lexical;
  if (range.code == TypeCode::NegativeInteger && !hasSign) return TypeCheck::Lexical;
  if (range.code == TypeCode::NonPositiveInteger && !hasSign && !ConsistsOf(digits, u"0")) {
    return TypeCheck::Lexical;
  }
  const bool below = !range.least.empty() && IsLess(text, range.least);
  const bool above = !range.most.empty() && IsLess(range.most, text);
  return below || above ? TypeCheck::Range : TypeCheck::Valid;
}

bool IsSmallNumber(View text, int most) {
  const View digits = TrimView(text, u" \t\r\n-");
  int value = 0;
  for (char16_t digit : digits) value = std::min(value * 10 + (digit - u'0'), most + 1);
  return value >= 1 && value <= most;
}

constexpr View kHexDigits = u"0123456789abcdefABCDEF";
constexpr View kBase64Units =
    u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/= \t\r\n";
constexpr int kDaysAtMost = 31;
constexpr int kMonthsAtMost = 12;

struct TextCheck {
  TypeCode code;
  bool (*fits)(View text);
};
// Types that are tested by their characters, in place of a pattern.
constexpr TextCheck kCharacterChecks[] = {
    {TypeCode::Boolean,
     [](View text) { return text == u"0" || text == u"1" || text == u"true" || text == u"false"; }},
    {TypeCode::XdrBoolean, [](View text) { return text == u"0" || text == u"1"; }},
    {TypeCode::Char, [](View text) { return text.size() == 1; }},
    {TypeCode::HexBinary, [](View text) { return ConsistsOf(text, kHexDigits); }},
    {TypeCode::Base64Binary, [](View text) { return ConsistsOf(text, kBase64Units); }},
    {TypeCode::UserDefined, [](View) { return true; }},
};
// Types of which a text that fits the pattern can still be out of range.
constexpr TextCheck kRangeChecks[] = {
    {TypeCode::Time,
     [](View text) { return DateTimeValue::Parse(TypeCode::Time, text).has_value(); }},
    {TypeCode::Date,
     [](View text) { return DateTimeValue::Parse(TypeCode::Date, text).has_value(); }},
    {TypeCode::Day, [](View text) { return IsSmallNumber(text, kDaysAtMost); }},
    {TypeCode::Month, [](View text) { return IsSmallNumber(text, kMonthsAtMost); }},
};

TypeCheck CheckLexical(TypeCode code, const TQString& text) {
  for (const IntegerRange& range : kIntegerRanges) {
    if (range.code == code) return CheckInteger(range, text);
  }
  for (const TextCheck& check : kCharacterChecks) {
    if (check.code == code) return check.fits(text) ? TypeCheck::Valid : TypeCheck::Lexical;
  }
  if (PatternOf(code).Match(text) != XMLRegExp::kMatch) return TypeCheck::Lexical;
  for (const TextCheck& check : kRangeChecks) {
    if (check.code == code) return check.fits(text) ? TypeCheck::Valid : TypeCheck::Range;
  }
  return TypeCheck::Valid;
}

bool IsLengthFacet(const Facet& facet) {
  return facet.code == FacetCode::Length || facet.code == FacetCode::MinLength ||
         facet.code == FacetCode::MaxLength;
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

TypeCode TypeCodeFromName(View name, bool xdrDialect) {
  if (xdrDialect) {
    for (const ExtraName& entry : kXdrNames) {
      if (entry.name == name) return entry.code;
    }
  }
  for (const BuiltinRow& type : kBuiltinTypes) {
    if (type.xsdName == name) return type.code;
  }
  for (const ExtraName& entry : kExtraNames) {
    if (entry.name == name) return entry.code;
  }
  return TypeCode::UserDefined;
}

SimpleType::SimpleType(TypeCode code) : typeCode(code) {}

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
    const TQString name = nameOf(BuiltinOf(type.typeCode));
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
  return DisplayName([](const BuiltinRow& type) { return type.xsdName; });
}

TQString SimpleType::GetXDRName() const {
  return DisplayName([](const BuiltinRow& type) { return type.xdrName; });
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
