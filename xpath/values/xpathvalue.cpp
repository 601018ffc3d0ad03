#include "xpath/xpathvalue.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <iterator>

#include "tqcore/tqtext.h"
#include "values/xpathnodeset.h"

namespace kelmora {

void XPathValue::SetBoolean(bool value) {
  Clear();
  kind = Boolean;
  boolean = value;
}

void XPathValue::SetNumber(double value) {
  Clear();
  kind = Number;
  number = value;
}

void XPathValue::SetString(TQString value) {
  Clear();
  kind = String;
  string = static_cast<TQString&&>(value);
}

void XPathValue::SetNodes(XPathNodeList value) {
  Clear();
  nodes = std::move(value);
}

void XPathValue::Clear() {
  kind = NodeSet;
  nodes.clear();
  boolean = false;
  number = 0;
  string.Clear();
}

bool XPathValue::IsFragment() const {
  if (kind != NodeSet || nodes.size() != 1) return false;
  const XPathNodeRef& only = nodes.front();
  return only.kind == XPathNodeRef::Root && only.node->source == nullptr;
}

bool ToBoolean(const XPathValue& value) {
  switch (value.kind) {
    case XPathValue::Boolean:
      return value.boolean;
    case XPathValue::Number:
      return NumberToBoolean(value.number);
    case XPathValue::String:
      return !value.string.IsEmpty();
    case XPathValue::NodeSet:
      break;
  }
  return !value.nodes.empty();
}

bool NumberToBoolean(double number) {
  return !std::isnan(number) && number != 0;
}

double ToNumber(const XPathValue& value) {
  switch (value.kind) {
    case XPathValue::Boolean:
      return value.boolean ? 1 : 0;
    case XPathValue::Number:
      return value.number;
    case XPathValue::String:
      return TextToNumber(value.string);
    case XPathValue::NodeSet:
      break;
  }
  TQString scratch;
  return TextToNumber(TextOf(value, scratch));
}

double TextToNumber(std::u16string_view text) {
  // A quiet NaN with its sign set.
  const double notANumber = std::bit_cast<double>(std::uint64_t{0xFFF8000000000000});
  while (!text.empty() && IsWideSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsWideSpace(text.back())) text.remove_suffix(1);
  if (text.empty()) return notANumber;

  constexpr std::size_t kExactDigits = 15;  // as many digits as an integer has for certain
  if (text.size() <= kExactDigits) {
    std::int64_t integer = 0;
    std::size_t at = 0;
    while (at < text.size() && text[at] >= u'0' && text[at] <= u'9') {
      integer = integer * 10 + (text[at++] - u'0');
    }
    if (at == text.size()) return static_cast<double>(integer);
  }
  std::size_t consumed = 0;
  double number = ParseDouble(text, &consumed);
  return consumed == text.size() ? number : notANumber;
}

std::u16string_view TextOf(const XPathValue& value, TQString& scratch) {
  switch (value.kind) {
    case XPathValue::Boolean:
      return value.boolean ? u"true" : u"false";
    case XPathValue::Number:
      scratch = NumberToText(value.number);
      return scratch;
    case XPathValue::String:
      return value.string;
    case XPathValue::NodeSet:
      break;
  }
  const XPathNode* first = FirstInDocumentOrder(value.nodes);
  return first ? first->StringValue(scratch) : std::u16string_view();
}

TQString ToString(const XPathValue& value) {
  TQString scratch;
  std::u16string_view text = TextOf(value, scratch);
  if (text.data() == scratch.c_str()) return scratch;
  return TQString(text);
}

namespace {

// The largest double has 309 digits, the least one 340 places.
constexpr std::size_t kMostUnits = 400;

TQString FromAscii(const char* text, std::size_t length) {
  char16_t units[kMostUnits];
  for (std::size_t i = 0; i < length; ++i) units[i] = static_cast<unsigned char>(text[i]);
  return TQString(std::u16string_view(units, length));
}

TQString IntegerToText(std::int64_t number) {
  char16_t units[24];
  char16_t* end = units + std::size(units);
  char16_t* at = end;
  std::uint64_t rest = static_cast<std::uint64_t>(number < 0 ? -number : number);
  do {
    *--at = static_cast<char16_t>(u'0' + rest % 10);
  } while ((rest /= 10) != 0);
  if (number < 0) *--at = u'-';
  return TQString(std::u16string_view(at, static_cast<std::size_t>(end - at)));
}

}  // namespace

// No exponents. The fraction has as many digits as a double can tell apart at this size: those of
// 2^52 less those of the integer part; then zeros at the end go.
TQString NumberToText(double number) {
  if (number == 0) return u"0";
  if (std::isnan(number)) return u"NaN";
  if (std::isinf(number)) return number > 0 ? u"Infinity" : u"-Infinity";
  constexpr double kExactIntegers = 4503599627370496.0;  // 2^52
  if (std::fabs(number) < kExactIntegers && number == std::trunc(number)) {
    return IntegerToText(static_cast<std::int64_t>(number));
  }
  double digits = std::log10(kExactIntegers) - std::log10(std::fabs(number));
  int places = digits > 0 ? static_cast<int>(digits) : 0;
  char buffer[kMostUnits];
  auto written =
      std::to_chars(buffer, buffer + sizeof(buffer), number, std::chars_format::fixed, places);
  std::size_t end = static_cast<std::size_t>(written.ptr - buffer);
  if (places > 0) {
    while (buffer[end - 1] == '0') --end;
    while (buffer[end - 1] == '.') --end;
  }
  return FromAscii(buffer, end);
}

}  // namespace kelmora
