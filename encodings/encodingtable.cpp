#include <algorithm>
#include <array>
#include <string>

#include "encodings/encodings.h"

namespace kelmora {

namespace {

constexpr std::array<EncodingRow, kEncodingCount> kRows = {{
    {EncodingId{1}, u"ISO-8859-1", u"8859-1", u"ISO 8859-1 (Latin-1/West European)"},
    {EncodingId{2}, u"ISO-8859-2", u"8859-2", u"ISO 8859-2 (Latin-2/Central European)"},
    {EncodingId{3}, u"ISO-8859-3", u"8859-3", u"ISO 8859-3 (Latin-3/South European)"},
    {EncodingId{4}, u"ISO-8859-4", u"8859-4", u"ISO 8859-4 (Latin-4/North European)"},
    {EncodingId{5}, u"ISO-8859-5", u"8859-5", u"ISO 8859-5 (Cyrillic)"},
    {EncodingId{6}, u"ISO-8859-6", u"8859-6", u"ISO 8859-6 (Arabic)"},
    {EncodingId{7}, u"ISO-8859-7", u"8859-7", u"ISO 8859-7 (Greek)"},
    {EncodingId{8}, u"ISO-8859-8", u"8859-8", u"ISO 8859-8 (Hebrew)"},
    {EncodingId{9}, u"ISO-8859-9", u"8859-9", u"ISO 8859-9 (Latin-5/Turkish)"},
    {EncodingId{11}, u"ISO-8859-11", u"8859-11;TIS-620", u"ISO 8859-11/TIS-620 (Thai)"},
    {EncodingId{14}, u"ISO-8859-14", u"8859-14", u"ISO 8859-14 (Latin-8)"},
    {EncodingId{15}, u"ISO-8859-15", u"8859-15", u"ISO 8859-15 (Latin-9)"},
    {EncodingId{30}, u"US-ASCII", u"ASCII;ISO-646", u"US-ASCII (ISO-646-US)"},
    {EncodingId::kEbcdic, u"ebcdic-cp-us", u"EBCDIC;037;IBM", u"EBCDIC (IBM Mainframes)"},
    {EncodingId{40}, u"DOS codepage-437", u"437", u"Codepage 437 (DOS, US)"},
    {EncodingId{42}, u"TQDIK codepage-850", u"TQDIK", u"Codepage 850 (TQDIK)"},
    {EncodingId{41}, u"DOS codepage-850", u"850", u"Codepage 850 (DOS, Latin-1)"},
    {EncodingId{52}, u"windows-1252", u"1252", u"Codepage 1252 (Western)"},
    {EncodingId{50}, u"windows-1250", u"1250", u"Codepage 1250 (Central European)"},
    {EncodingId{51}, u"windows-1251", u"1251", u"Codepage 1251 (Cyrillic)"},
    {EncodingId{53}, u"windows-1253", u"1253", u"Codepage 1253 (Greek)"},
    {EncodingId{54}, u"windows-1254", u"1254", u"Codepage 1254 (Turkish)"},
    {EncodingId{55}, u"windows-1255", u"1255", u"Codepage 1255 (Hebrew)"},
    {EncodingId{56}, u"windows-1256", u"1256", u"Codepage 1256 (Arabic)"},
    {EncodingId{57}, u"windows-1257", u"1257", u"Codepage 1257 (Baltic)"},
    {EncodingId{58}, u"windows-1258", u"1258", u"Codepage 1258 (Vietnamese)"},
    {EncodingId{80}, u"windows-874", u"874", u"Codepage 874 (Thai)"},
    {EncodingId::kShiftJis, u"Shift_JIS", u"SHIFT-JIS;MS-KANJI", u"Shift-JIS (Japanese)"},
    {EncodingId::kEucJp, u"EUC-JP", u"EUC-JP", u"EUC-JP (Japanese)"},
    {EncodingId::kIso2022Jp, u"ISO-2022-JP", u"ISO-2022-JP", u"ISO-2022-JP (Japanese)"},
    {EncodingId::kGb2312, u"GB2312", u"2312;GBK;EUC-CN", u"GB2312 (Chinese)"},
    {EncodingId::kEucKr, u"EUC-KR", u"EUC-KR;UHC", u"EUC-KR (Korean)"},
    {EncodingId::kBig5, u"Big5", u"BIG5;FIVE", u"Big5 (Taiwanese)"},
    {EncodingId::kUtf7, u"UTF-7", u"UTF-7", u"Unicode UTF-7"},
    {EncodingId::kUtf8, u"UTF-8", u"UTF-8", u"Unicode UTF-8"},
    {EncodingId::kUtf16, u"UTF-16", u"UTF-16", u"Unicode UTF-16"},
    {EncodingId::kUcs2, u"ISO-10646-UCS-2", u"UCS-2", u"ISO-10646-UCS-2 (Unicode 16-bit)"},
    {EncodingId::kUcs4, u"ISO-10646-UCS-4", u"UCS-4", u"ISO-10646-UCS-4 (Unicode 32-bit)"},
}};

std::u16string ComparableName(std::u16string_view name) {
  std::u16string result(name);
  for (char16_t& unit : result) {
    if (unit >= u'a' && unit <= u'z') unit = static_cast<char16_t>(unit - u'a' + u'A');
    if (unit == u'_') unit = u'-';
  }
  return result;
}

// Length of the longest alias of `row` that `name` contains, 0 without one.
std::size_t LongestAliasIn(std::u16string_view name, const EncodingRow& row) {
  std::size_t longest = 0;
  for (std::size_t start = 0; start <= row.aliases.size();) {
    const std::size_t end = std::min(row.aliases.find(u';', start), row.aliases.size());
    const std::u16string_view alias = row.aliases.substr(start, end - start);
    if (name.find(alias) != name.npos) longest = std::max(longest, alias.size());
    start = end + 1;
  }
  return longest;
}

}  // namespace

const EncodingRow& EncodingAt(int index) {
  return kRows.at(static_cast<std::size_t>(index));
}

int IndexOfEncoding(EncodingId id) {
  const auto row =
      std::find_if(kRows.begin(), kRows.end(), [id](const EncodingRow& r) { return r.id == id; });
  return row == kRows.end() ? -1 : static_cast<int>(row - kRows.begin());
}

EncodingId EncodingFromName(std::u16string_view name) {
  const std::u16string comparable = ComparableName(name);
  EncodingId best = EncodingId::kNone;
  std::size_t bestLength = 0;
  // From the last row to the first, and only a longer alias replaces: of equals the last row wins.
  for (auto row = kRows.rbegin(); row != kRows.rend(); ++row) {
    const std::size_t length = LongestAliasIn(comparable, *row);
    if (length > bestLength) {
      best = row->id;
      bestLength = length;
    }
  }
  return best;
}

}  // namespace kelmora
