// TQString: decoding, escaping, line ends, formatted text and numerals.
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "tqcore/resourcestrings.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqstring.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

constexpr char16_t kUpperDigits[] = u"0123456789ABCDEF";

// Values of the hexadecimal digits; every other unit counts 0, in a reference of either radix.
constexpr int DigitValue(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  return 0;
}

void AppendUtf8Units(TQString& text, char16_t unit, int& cursor, int margin) {
  const auto continuation = [](int bits) { return static_cast<char16_t>(0x80 | (bits & 0x3F)); };
  if (unit < 0x80) {
    text.AppendUnitAt(unit, cursor, margin);
  } else if (unit < 0x800) {
    text.AppendUnitAt(static_cast<char16_t>(0xC0 | (unit >> 6)), cursor, margin);
    text.AppendUnitAt(continuation(unit), cursor, margin);
  } else {
    text.AppendUnitAt(static_cast<char16_t>(0xE0 | (unit >> 12)), cursor, margin);
    text.AppendUnitAt(continuation(unit >> 6), cursor, margin);
    text.AppendUnitAt(continuation(unit), cursor, margin);
  }
}

constexpr bool NeedsUrlEscape(char16_t unit) {
  constexpr std::u16string_view kUnsafe = u"\"%<>^`{|}";
  return unit <= u' ' || unit > u'~' || kUnsafe.find(unit) != std::u16string_view::npos;
}

}  // namespace

// --- decoding and escaping -------------------------------------------------------------------

void TQString::DecodeCharacterReferences() {
  constexpr int kDecimal = 10;
  constexpr int kHexadecimal = 16;
  const std::u16string_view text = View();
  std::size_t in = FindUnit(text, u'&');
  if (in == std::u16string_view::npos) return;
  std::size_t out = in;  // never ahead of `in`: a reference is longer than its unit
  while (in < text.size()) {
    if (text[in] != u'&' || in + 1 == text.size() || text[in + 1] != u'#') {
      Text()[out++] = text[in++];
      continue;
    }
    in += 2;
    const bool isHexadecimal = in < text.size() && text[in] == u'x';
    if (isHexadecimal) ++in;
    const int radix = isHexadecimal ? kHexadecimal : kDecimal;
    char16_t value = 0;
    for (; in < text.size() && text[in] != u';'; ++in) {
      value = static_cast<char16_t>(radix * value + DigitValue(text[in]));
    }
    if (in < text.size()) ++in;
    if (value == 0) break;  // ends the text
    Text()[out++] = value;
  }
  SetLength(static_cast<int>(out));
}

void TQString::ToUtf8Units() {
  if (std::ranges::all_of(View(), [](char16_t unit) { return unit < 0x80; })) return;
  TQString result;
  int cursor = 0;
  for (char16_t unit : View()) AppendUtf8Units(result, unit, cursor, Length());
  *this = std::move(result);
}

void TQString::EscapeUrl() {
  ToUtf8Units();
  if (std::ranges::none_of(View(), NeedsUrlEscape)) return;
  TQString result;
  int cursor = 0;
  for (char16_t unit : View()) {
    if (NeedsUrlEscape(unit)) {
      const char16_t escape[] = {u'%', kUpperDigits[unit >> 4], kUpperDigits[unit & 0xF]};
      result.AppendAt({escape, std::size(escape)}, cursor, Length());
    } else {
      result.AppendUnitAt(unit, cursor, Length());
    }
  }
  *this = std::move(result);
}

// --- line ends -------------------------------------------------------------------------------

const char16_t* TQString::DetectLineEnd() const {
  const std::size_t first = FindLineEnd(View());
  if (first == std::u16string_view::npos) return u"\r\n";
  if (Text()[first] == u'\n') return u"\n";
  return Text()[first + 1] == u'\n' ? u"\r\n" : u"\r";
}

void TQString::ConvertLineEnds(std::u16string_view lineEnd) {
  if (lineEnd.empty() || lineEnd.size() > 2 || IsEmpty()) return;
  const std::u16string_view text = View();
  // Calls `take` with each stretch between line ends, and `takeBreak` with each line end's place.
  const auto forEachLine = [text](auto take, auto takeBreak) {
    std::size_t start = 0;
    while (true) {
      const std::size_t end = std::min(FindLineEnd(text, start), text.size());
      take(text.substr(start, end - start));
      if (end == text.size()) return;
      start = end + (text.substr(end).starts_with(u"\r\n") ? 2 : 1);
      takeBreak();  // may overwrite what has been looked at
    }
  };
  TQString result;
  char16_t* out = Text();
  if (lineEnd.size() == 2) {
    std::int64_t length = 0;
    forEachLine([&](std::u16string_view line) { length += std::ssize(line); },
                [&] { length += 2; });
    result.Reallocate(length, 0);
    out = result.Text();
  }
  // With one unit the text is converted where it is, and moves only behind the first CR LF.
  forEachLine(
      [&](std::u16string_view line) {
        if (out != line.data()) std::memmove(out, line.data(), line.size() * sizeof(char16_t));
        out += line.size();
      },
      [&] { out = std::ranges::copy(lineEnd, out).out; });
  if (lineEnd.size() == 1) return SetLength(static_cast<int>(out - Text()));
  result.SetLength(static_cast<int>(out - result.Text()));
  *this = std::move(result);
}

// --- formatted text --------------------------------------------------------------------------

// Writes into a buffer it doesn't own and drops what no longer fits.
class FormatWriter {
 public:
  explicit FormatWriter(std::span<char16_t> buffer) : buffer_(buffer) {}

  std::size_t Write(std::u16string_view format,
                    std::initializer_list<TQString::FormatArgument> arguments) {
    const auto* argument = arguments.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
      if (format[i] != u'%') {
        Put(format[i]);
        continue;
      }
      Directive directive = Read(format, i);
      if (directive.kind == u'%') {
        Put(u'%');
      } else if (argument != arguments.end()) {
        PutArgument(directive, *argument++);
      }
    }
    buffer_[used_] = 0;
    return used_;
  }

 private:
  struct Directive {
    char16_t kind = 0;
    int width = 0;
    char16_t fill = u' ';
  };

  // `i` stands on the "%" and afterwards on the unit that names the kind.
  static Directive Read(std::u16string_view format, std::size_t& i) {
    constexpr int kLargestWidth = 1024;
    Directive directive;
    ++i;
    if (i < format.size() && format[i] == u'0') directive.fill = u'0';
    for (; i < format.size() && format[i] >= u'0' && format[i] <= u'9'; ++i) {
      directive.width = std::min(directive.width * 10 + (format[i] - u'0'), kLargestWidth);
    }
    while (i < format.size() && format[i] == u'l') ++i;
    if (i < format.size()) directive.kind = format[i];
    return directive;
  }

  void PutArgument(const Directive& directive, const TQString::FormatArgument& argument) {
    if (argument.isText_) return PutPadded(argument.text_, directive, false);
    constexpr int kMostDigits = 20;
    char16_t digits[kMostDigits];
    char16_t* first = std::end(digits);
    const bool isHexadecimal = directive.kind == u'X';
    const bool isNegative = argument.number_ < 0 && !isHexadecimal;
    auto rest = static_cast<std::uint64_t>(argument.number_);
    if (isNegative) rest = 0 - rest;
    if (isHexadecimal) rest &= 0xFFFFFFFF;
    const std::uint64_t radix = isHexadecimal ? 16 : 10;
    do {
      *--first = kUpperDigits[rest % radix];
      rest /= radix;
    } while (rest != 0);
    const auto size = static_cast<std::size_t>(std::end(digits) - first);
    PutPadded({first, size}, directive, isNegative);
  }

  void PutPadded(std::u16string_view text, const Directive& directive, bool isNegative) {
    const auto size = static_cast<int>(text.size()) + (isNegative ? 1 : 0);
    const bool signFirst = directive.fill == u'0';
    if (isNegative && signFirst) Put(u'-');
    for (int i = size; i < directive.width; ++i) Put(directive.fill);
    if (isNegative && !signFirst) Put(u'-');
    for (char16_t unit : text) Put(unit);
  }

  void Put(char16_t unit) {
    if (used_ + 1 < buffer_.size()) buffer_[used_++] = unit;
  }

  std::span<char16_t> buffer_;
  std::size_t used_ = 0;
};

std::size_t TQString::FormatInto(std::span<char16_t> buffer, std::u16string_view format,
                                 std::initializer_list<FormatArgument> arguments) {
  return FormatWriter(buffer).Write(format, arguments);
}

TQString TQString::Format(std::u16string_view format,
                          std::initializer_list<FormatArgument> arguments) {
  constexpr std::size_t kLargestResult = 1030;
  std::array<char16_t, kLargestResult + 1> buffer;
  return TQString(std::u16string_view(buffer.data(), FormatInto(buffer, format, arguments)));
}

bool TQString::LoadResource(int id) {
  const std::u16string_view text = ResourceText(id);
  if (text.empty()) return false;
  *this = text;
  return true;
}

// --- numerals --------------------------------------------------------------------------------

TQString TQString::RomanNumeral(int number, bool upperCase) {
  constexpr int kBeyondLargest = 10000;
  constexpr int kThousand = 1000;
  if (number < 1 || number >= kBeyondLargest) return {};
  const char16_t* letters = upperCase ? u"IVXLCDM" : u"ivxlcdm";
  // Digits 0 to 9 as offsets from the letter of the decimal place.
  static constexpr std::u16string_view kShapes[] = {u"",  u"0",  u"00",  u"000",  u"01",
                                                    u"1", u"10", u"100", u"1000", u"02"};
  TQString numeral;
  for (int i = 0; i < number / kThousand; ++i) numeral += letters[6];
  for (int power = 100, place = 4; power > 0; power /= 10, place -= 2) {
    for (char16_t offset : kShapes[number / power % 10]) {
      numeral += letters[place + (offset - u'0')];
    }
  }
  return numeral;
}

TQString TQString::AlphabeticNumeral(int number, bool upperCase) {
  constexpr int kLetters = 26;
  constexpr int kMostLetters = 7;  // 26 to the 7th is more than 2 to the 31st
  char16_t letters[kMostLetters];
  char16_t* first = std::end(letters);
  for (; number > 0; number = (number - 1) / kLetters) {
    *--first = static_cast<char16_t>((upperCase ? u'A' : u'a') + (number - 1) % kLetters);
  }
  return TQString(std::u16string_view(first, static_cast<std::size_t>(std::end(letters) - first)));
}

}  // namespace kelmora
