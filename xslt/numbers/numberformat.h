// The formats of xsl:number. A format text is cut into tokens, each a run of letters and digits
// with what stands in front of it, and each token becomes a picture for the formatter of
// format-number(), under a private decimal format in which the digits of a picture are "2"
// (optional) and "3" (required).
//
// So a text around the numbers that has one of the signs of that format in it (2, 3, 4, 6, 7, 8)
// means to the formatter what it means there.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"
#include "xpath/decimalformat.h"

namespace kelmora {

struct NumberGrouping {
  std::int32_t GroupingSize = 0;   // 0 and below: none
  char16_t GroupingSeparator = 0;  // 0: none

  friend auto operator<=>(const NumberGrouping&, const NumberGrouping&) = default;
};

struct FormatToken {
  enum TokenKind : std::int32_t { Decimal = 0, Alphabetic = 1, Roman = 2 };

  TQString Picture;
  TokenKind Kind = Decimal;
  bool Upper = false;
};

// The tokens of a format without its leading and trailing signs.
std::vector<FormatToken> ParseFormat(std::u16string_view body, const NumberGrouping& grouping);

class NumberFormat {
 public:
  NumberFormat(std::u16string_view format, const NumberGrouping& grouping);
  NumberFormat(const NumberFormat&) = delete;
  NumberFormat& operator=(const NumberFormat&) = delete;

  // The numbers stand from the innermost to the outermost and come out the other way round. An
  // empty list gives the empty text. Raises code 31 when a token that is reached is no picture.
  TQString FormatNumbers(const std::vector<std::int32_t>& numbers);

 private:
  struct Token {
    FormatToken format;
    std::optional<NumberPattern> pattern;  // parsed when it is first reached
  };

  void AppendNumber(TQString& result, Token& token, std::int32_t number);

  DecimalFormat pictureFormat_;
  TQString prefix_;
  TQString suffix_;
  std::vector<Token> tokens_;  // at least one
};

}  // namespace kelmora
