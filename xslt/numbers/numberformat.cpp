#include "numbers/numberformat.h"

#include <algorithm>

#include "unicode/unicodedata.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

namespace {

constexpr std::size_t kFormatLimit = 260;  // units of a format that count

bool IsAlphanumeric(char16_t unit) {
  const char16_t category = GeneralCategory(unit)[0];
  return category == u'L' || category == u'N';
}

DecimalFormat PictureFormat(const NumberGrouping& grouping) {
  DecimalFormat format;
  format.digit = u'2';
  format.zeroDigit = u'3';
  format.minusSign = u'4';
  format.patternSeparator = u'6';
  format.percent = u'7';
  format.perMille = u'8';
  format.groupingSeparator = grouping.GroupingSeparator;
  return format;
}

// Nothing but whole digits between two texts.
bool IsPlain(const SubPattern& picture) {
  return !picture.percentBefore && !picture.percentAfter && !picture.isPercent &&
         !picture.isPerMille && !picture.hasGrouping && picture.requiredFractionDigits == 0;
}

// What the formatter makes of a plain picture, without the detour by a double.
void AppendPlain(TQString& result, const SubPattern& picture, std::int32_t number) {
  constexpr int kMostDigits = 10;  // of 32 bits
  char16_t digits[kMostDigits];
  int at = kMostDigits;
  for (; number > 0 || at == kMostDigits; number /= 10) {
    digits[--at] = static_cast<char16_t>(u'0' + number % 10);
  }
  result += picture.prefix;
  for (int count = kMostDigits - at; count < picture.requiredIntegerDigits; ++count) {
    result += u'0';
  }
  result += std::u16string_view(digits + at, static_cast<std::size_t>(kMostDigits - at));
  result += picture.suffix;
}

// One token off the front of `text`.
FormatToken TakeToken(std::u16string_view& text) {
  FormatToken token;
  TQString digits = u"2222222222";
  std::size_t at = 0;
  while (at < text.size() && !IsAlphanumeric(text[at])) ++at;
  const std::u16string_view lead = text.substr(0, at);

  char16_t previous = u'.';
  bool seen = false;  // what decides the kind
  for (; at < text.size() && IsAlphanumeric(text[at]); ++at) {
    const char16_t unit = text[at];
    if (!seen && unit == u'0') {
      if (previous == u'.' || previous == u'0') digits += u'3';
    } else if (!seen) {
      seen = true;
      digits += u'3';
      token.Upper = unit == u'A' || unit == u'I';
      if (unit == u'A' || unit == u'a') token.Kind = FormatToken::Alphabetic;
      if (unit == u'I' || unit == u'i') token.Kind = FormatToken::Roman;
    }
    previous = unit;
  }
  // A point behind the token stands as the decimal separator, with one optional digit that no whole
  // number shows.
  for (; at < text.size() && text[at] == u'.'; ++at) {
    if (previous != u'.') digits += u".2";
    previous = u'.';
  }
  token.Picture = TQString(lead) + digits;
  text.remove_prefix(at);
  return token;
}

}  // namespace

std::vector<FormatToken> ParseFormat(std::u16string_view body, const NumberGrouping& grouping) {
  std::vector<FormatToken> tokens;
  while (!body.empty()) {
    FormatToken token = TakeToken(body);
    // The count runs from the end of the whole picture, a fraction digit included.
    const std::int32_t size = grouping.GroupingSize;
    if (size > 0 && size <= token.Picture.Length()) {
      const char16_t separator = grouping.GroupingSeparator;
      token.Picture.Insert(std::u16string_view(&separator, 1), token.Picture.Length() - size);
    }
    tokens.push_back(std::move(token));
  }
  return tokens;
}

NumberFormat::NumberFormat(std::u16string_view format, const NumberGrouping& grouping)
    : pictureFormat_(PictureFormat(grouping)) {
  format = format.substr(0, kFormatLimit);
  const auto first = std::ranges::find_if(format, IsAlphanumeric);
  const auto behind = std::find_if(format.rbegin(), format.rend(), IsAlphanumeric).base();
  prefix_ = std::u16string_view(format.begin(), first);
  if (first != format.end()) {
    suffix_ = std::u16string_view(behind, format.end());
    for (FormatToken& token : ParseFormat(std::u16string_view(first, behind), grouping)) {
      tokens_.push_back({std::move(token), std::nullopt});
    }
  }
  if (tokens_.empty()) tokens_.push_back({{u"3", FormatToken::Decimal, false}, std::nullopt});
}

TQString NumberFormat::FormatNumbers(const std::vector<std::int32_t>& numbers) {
  TQString result;
  if (numbers.empty()) return result;
  result = prefix_;
  std::size_t at = 0;  // the last token serves all numbers that are left
  for (std::size_t left = numbers.size(); left > 0; --left) {
    AppendNumber(result, tokens_[at], numbers[left - 1]);
    if (at + 1 < tokens_.size()) ++at;
    if (left == 1 || result.IsEmpty()) continue;
    const bool touches =
        IsAlphanumeric(result.View().back()) && IsAlphanumeric(tokens_[at].format.Picture[0]);
    if (touches) result += u'.';
  }
  std::u16string_view suffix = suffix_;
  const bool repeats = !suffix.empty() && !result.IsEmpty() && result.View().back() == suffix[0];
  if (repeats) suffix.remove_prefix(1);
  result += suffix;
  return result;
}

void NumberFormat::AppendNumber(TQString& result, Token& token, std::int32_t number) {
  if (!token.pattern.has_value()) {
    token.pattern.emplace(pictureFormat_);
    if (!token.pattern->ParsePattern(token.format.Picture)) {
      throw TQXSLTError(XsltCode::UnexpectedValue, nullptr);
    }
  }
  const NumberPattern& pattern = *token.pattern;
  switch (token.format.Kind) {
    case FormatToken::Decimal:
      if (number >= 0 && IsPlain(pattern.Positive())) {
        AppendPlain(result, pattern.Positive(), number);
      } else {
        result += pattern.FormatNumber(number);
      }
      return;
    case FormatToken::Alphabetic:
      result += pattern.Positive().prefix;
      result += TQString::AlphabeticNumeral(number, token.format.Upper);
      return;
    case FormatToken::Roman:
      result += pattern.Positive().prefix;
      result += TQString::RomanNumeral(number, token.format.Upper);
      return;
  }
}

}  // namespace kelmora
