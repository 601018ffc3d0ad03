// The formatter works on the decimal digits of the number, not on the number: the double becomes
// 17 significant digits first, and these are cut at the last place of the pattern, a next digit
// of 5 or more carrying upwards. So rounding is half up, on the digits that one sees.

#include <charconv>
#include <cmath>
#include <string>

#include "unicode/unicodedata.h"
#include "xpath/decimalformat.h"

namespace kelmora {
namespace {

// One run over the text of a pattern.
class PatternParser {
 public:
  PatternParser(std::u16string_view text, const DecimalFormat& format)
      : text_(text), format_(format) {}

  bool AtEnd() const { return at_ == text_.size(); }
  bool Accept(char16_t unit) {
    if (AtEnd() || text_[at_] != unit) return false;
    ++at_;
    return true;
  }

  bool ParseSubPattern(SubPattern& sub, bool hasNegative, bool& minusSeen) {
    if (AtEnd()) return false;
    sub.percentBefore = ParseSign(sub);
    if (!ParseLiteral(sub.prefix, hasNegative, minusSeen)) return false;
    if (!ParseInteger(sub)) return false;
    sub.hasPoint = Accept(format_.decimalSeparator);
    if (sub.hasPoint) {
      while (Accept(format_.zeroDigit)) ++sub.requiredFractionDigits;
      while (Accept(format_.digit)) ++sub.optionalFractionDigits;
    }
    if (!ParseLiteral(sub.suffix, hasNegative, minusSeen)) return false;
    sub.percentAfter = ParseSign(sub);
    return true;
  }

 private:
  // The last sign of a subpattern decides.
  bool ParseSign(SubPattern& sub) {
    if (Accept(format_.percent)) {
      sub.isPercent = true;
      sub.isPerMille = false;
      return true;
    }
    if (Accept(format_.perMille)) {
      sub.isPercent = false;
      sub.isPerMille = true;
      return true;
    }
    return false;
  }

  bool IsLiteral(char16_t unit, bool hasNegative, bool& minusSeen) const {
    if (unit == format_.minusSign && !minusSeen) {
      minusSeen = hasNegative;
      return true;
    }
    return unit != format_.decimalSeparator && unit != format_.digit &&
           unit != format_.groupingSeparator && unit != format_.minusSign &&
           unit != format_.patternSeparator && unit != format_.zeroDigit &&
           unit != format_.percent && unit != format_.perMille;
  }

  // False for a quote that is not closed. Two apostrophes stand for one, quoted or not.
  bool ParseLiteral(TQString& literal, bool hasNegative, bool& minusSeen) {
    bool quoting = false;
    int cursor = 0;
    while (!AtEnd()) {
      char16_t unit = text_[at_];
      if (unit == u'\'') {
        ++at_;
        if (Accept(u'\'')) {
          literal.AppendUnitAt(u'\'', cursor, cursor);
        } else {
          quoting = !quoting;
        }
        continue;
      }
      if (!quoting && !IsLiteral(unit, hasNegative, minusSeen)) break;
      literal.AppendUnitAt(unit, cursor, cursor);
      ++at_;
    }
    return !quoting;
  }

  bool ParseInteger(SubPattern& sub) {
    bool endsInSeparator = false;
    auto run = [&](char16_t digit, int& count) {
      for (;;) {
        if (Accept(digit)) {
          ++count;
          ++sub.groupSize;
          endsInSeparator = false;
        } else if (Accept(format_.groupingSeparator)) {
          sub.hasGrouping = true;
          sub.groupSize = 0;
          endsInSeparator = true;
        } else {
          return;
        }
      }
    };
    run(format_.digit, sub.optionalIntegerDigits);
    run(format_.zeroDigit, sub.requiredIntegerDigits);
    return !endsInSeparator;
  }

  std::u16string_view text_;
  const DecimalFormat& format_;
  std::size_t at_ = 0;
};

// The digits of a number that were kept, and the place of the decimal point in them.
struct Digits {
  std::string digits;  // none for a number that was rounded to zero
  std::int64_t point = 0;
};

Digits RoundToPlaces(double magnitude, std::int64_t places) {
  constexpr int kSignificant = 17;
  char buffer[40];  // d.dddde+xx
  auto written = std::to_chars(buffer, buffer + sizeof(buffer), magnitude,
                               std::chars_format::scientific, kSignificant - 1);
  Digits result;
  result.digits.push_back(buffer[0]);
  result.digits.append(buffer + 2, kSignificant - 1);
  const char* exponent = buffer + kSignificant + 2;
  if (*exponent == '+') ++exponent;
  std::from_chars(exponent, written.ptr, result.point);
  ++result.point;

  std::int64_t kept = result.point + places;
  if (kept < kSignificant) {
    bool carries = kept >= 0 && result.digits[static_cast<std::size_t>(kept)] >= '5';
    result.digits.resize(static_cast<std::size_t>(kept > 0 ? kept : 0));
    for (std::size_t i = result.digits.size(); carries && i-- > 0;) {
      carries = result.digits[i] == '9';
      result.digits[i] = carries ? '0' : static_cast<char>(result.digits[i] + 1);
    }
    if (carries) {
      result.digits.insert(result.digits.begin(), '1');
      ++result.point;
    }
  }
  std::size_t last = result.digits.find_last_not_of('0');
  result.digits.resize(last == std::string::npos ? 0 : last + 1);
  return result;
}

// The digits in front of the point and behind it, without zeros at the end of the fraction.
void Split(const Digits& from, std::string& integer, std::string& fraction) {
  if (from.digits.empty() || from.point <= 0) {
    integer = "0";
    if (!from.digits.empty()) {
      fraction.assign(static_cast<std::size_t>(-from.point), '0');
      fraction += from.digits;
    }
    return;
  }
  std::size_t point = static_cast<std::size_t>(from.point);
  integer = from.digits.substr(0, point);
  integer.resize(point, '0');
  if (from.digits.size() > point) fraction = from.digits.substr(point);
}

}  // namespace

bool NumberPattern::ParsePattern(std::u16string_view text) {
  positive_ = SubPattern();
  negative_ = SubPattern();
  hasNegative_ = false;
  minusSeen_ = false;
  PatternParser parser(text, format_);
  if (!parser.ParseSubPattern(positive_, hasNegative_, minusSeen_)) return false;
  if (parser.Accept(format_.patternSeparator)) {
    hasNegative_ = true;
    if (!parser.ParseSubPattern(negative_, hasNegative_, minusSeen_)) return false;
  }
  return parser.AtEnd();
}

TQString NumberPattern::FormatNumber(double number) const {
  if (std::isnan(number)) return format_.nan;
  const SubPattern& sub = hasNegative_ && number < 0 ? negative_ : positive_;
  double scaled = std::fabs(number);
  if (sub.isPercent) scaled *= 100;
  if (sub.isPerMille) scaled *= 1000;
  if (std::isinf(scaled)) {
    return number < 0 ? format_.minusSign + format_.infinity : format_.infinity;
  }
  char16_t digitBase = GeneralCategory(format_.zeroDigit)[0] == u'L'
                           ? static_cast<char16_t>(format_.zeroDigit - u'0')
                           : u'\0';
  Digits digits =
      RoundToPlaces(scaled, std::int64_t{sub.requiredFractionDigits} + sub.optionalFractionDigits);
  std::string integer;
  std::string fraction;
  Split(digits, integer, fraction);
  std::size_t leastFraction = static_cast<std::size_t>(sub.requiredFractionDigits);
  if (fraction.size() < leastFraction) fraction.resize(leastFraction, '0');
  std::size_t leastInteger = static_cast<std::size_t>(sub.requiredIntegerDigits);
  if (integer.size() < leastInteger) integer.insert(0, leastInteger - integer.size(), '0');

  TQString result;
  int cursor = 0;
  auto append = [&](char16_t unit) { result.AppendUnitAt(unit, cursor, 32 + cursor); };
  auto appendDigit = [&](char digit) { append(static_cast<char16_t>(digit + digitBase)); };
  char16_t sign = sub.isPerMille ? format_.perMille : format_.percent;
  const bool isZero = digits.digits.empty();  // perhaps by rounding
  if (!hasNegative_ && number < 0 && !isZero) append(format_.minusSign);
  if (sub.percentBefore) append(sign);
  result.AppendAt(sub.prefix.View(), cursor, 32);
  std::size_t group = sub.hasGrouping ? static_cast<std::size_t>(sub.groupSize) : 0;
  for (std::size_t i = 0; i < integer.size(); ++i) {
    bool startsGroup = group != 0 && i != 0 && (integer.size() - i) % group == 0;
    if (startsGroup) append(format_.groupingSeparator);
    appendDigit(integer[i]);
  }
  if (sub.hasPoint && !fraction.empty()) {
    append(format_.decimalSeparator);
    for (char digit : fraction) appendDigit(digit);
  }
  if (sub.percentAfter) append(sign);
  result.AppendAt(sub.suffix.View(), cursor, 0);
  return result;
}

}  // namespace kelmora
