// DecimalFormat: the symbols of one xsl:decimal-format, and the formatter that format-number() and
// xsl:number share.
#pragma once

#include <map>

#include "tqcore/tqstring.h"

namespace kelmora {

struct DecimalFormat {
  char16_t decimalSeparator = u'.';
  char16_t groupingSeparator = u',';
  TQString infinity = u"Infinity";
  char16_t minusSign = u'-';
  TQString nan = u"NaN";
  char16_t percent = u'%';
  char16_t perMille = u'\u2030';
  char16_t zeroDigit = u'0';
  char16_t digit = u'#';
  char16_t patternSeparator = u';';

  friend bool operator==(const DecimalFormat&, const DecimalFormat&) = default;
};

// Keyed by expanded name; "" is the default format.
using DecimalFormatMap = std::map<TQString, DecimalFormat, TextLess>;

struct SubPattern {
  bool percentBefore = false;
  bool percentAfter = false;
  bool hasPoint = false;
  int optionalIntegerDigits = 0;
  int requiredIntegerDigits = 0;
  int optionalFractionDigits = 0;
  int requiredFractionDigits = 0;
  int groupSize = 0;
  bool hasGrouping = false;
  bool isPercent = false;
  bool isPerMille = false;
  TQString prefix;
  TQString suffix;
};

class NumberPattern {
 public:
  explicit NumberPattern(const DecimalFormat& format) : format_(format) {}
  // False for a text that is no pattern, text left behind the pattern included.
  [[nodiscard]] bool ParsePattern(std::u16string_view text);
  TQString FormatNumber(double number) const;
  const SubPattern& Positive() const { return positive_; }

 private:
  const DecimalFormat& format_;
  SubPattern positive_;
  SubPattern negative_;
  bool hasNegative_ = false;
  bool minusSeen_ = false;
};

}  // namespace kelmora
