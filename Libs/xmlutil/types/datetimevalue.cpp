#include "types/datetimevalue.h"

#include <algorithm>

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr std::int64_t kSecondsPerMinute = 60;
constexpr std::int64_t kSecondsPerHour = 3600;
constexpr std::int64_t kSecondsPerDay = 86400;
// Beyond this a year has no place in the count of seconds; such a date is not possible.
constexpr std::int64_t kLastYear = 1'000'000'000;

class Reader {
 public:
  explicit Reader(View text) : text_(text) {}

  bool Skip(char16_t unit) {
    if (!text_.starts_with(unit)) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool AtDigit() const { return !text_.empty() && text_[0] >= u'0' && text_[0] <= u'9'; }
  std::int64_t Number() {
    std::int64_t value = 0;
    for (; AtDigit(); text_.remove_prefix(1)) {
      value = std::min(value * 10 + (text_[0] - u'0'), kLastYear + 1);
    }
    return value;
  }
  double Fraction() {
    std::size_t digits = 0;
    while (digits < text_.size() && text_[digits] >= u'0' && text_[digits] <= u'9') ++digits;
    TQString decimal = u"0.";
    decimal += text_.substr(0, digits);
    text_.remove_prefix(digits);
    return ParseDouble(decimal, nullptr);
  }

 private:
  View text_;
};

bool IsLeapYear(std::int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int DaysInMonth(std::int64_t year, std::int64_t month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

// Days since 1970-01-01 in the Gregorian calendar, extended backwards.
std::int64_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
  if (month <= 2) --year;
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

bool ReadDate(Reader& reader, DateTimeValue& value) {
  const bool negative = reader.Skip(u'-');
  std::int64_t year = reader.Number();
  if (year > kLastYear) return false;
  if (negative) year = -year;
  std::int64_t month = 1;
  std::int64_t day = 1;
  if (reader.Skip(u'-') && reader.AtDigit()) month = reader.Number();
  if (reader.Skip(u'-') && reader.AtDigit()) day = reader.Number();
  if (month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month)) return false;
  value.seconds += DayNumber(year, month, day) * kSecondsPerDay;
  return true;
}

bool ReadTime(Reader& reader, DateTimeValue& value) {
  const std::int64_t hour = reader.Number();
  const std::int64_t minute = reader.Skip(u':') ? reader.Number() : 0;
  const std::int64_t second = reader.Skip(u':') ? reader.Number() : 0;
  if (reader.Skip(u'.')) value.fraction = reader.Fraction();
  if (hour > 23 || minute > 59 || second > 59) return false;
  value.seconds += hour * kSecondsPerHour + minute * kSecondsPerMinute + second;
  return true;
}

bool ReadZone(Reader& reader, DateTimeValue& value) {
  const bool ahead = reader.Skip(u'+');
  if (!ahead && !reader.Skip(u'-')) return true;
  const std::int64_t hours = reader.Number();
  const std::int64_t minutes = reader.Skip(u':') ? reader.Number() : 0;
  if (hours > 23 || minutes > 59) return false;
  const std::int64_t offset = hours * kSecondsPerHour + minutes * kSecondsPerMinute;
  value.seconds -= ahead ? offset : -offset;
  return true;
}

}  // namespace

std::optional<DateTimeValue> DateTimeValue::Parse(TypeCode typeCode, View text) {
  DateTimeValue value;
  Reader reader(TrimView(text));
  if (typeCode != TypeCode::Time && !ReadDate(reader, value)) return std::nullopt;
  if (typeCode == TypeCode::DateTime && !reader.Skip(u'T')) return std::nullopt;
  if (typeCode != TypeCode::Date && !ReadTime(reader, value)) return std::nullopt;
  if (!ReadZone(reader, value)) return std::nullopt;
  return value;
}

}  // namespace kelmora
