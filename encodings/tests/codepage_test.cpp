#include <gtest/gtest.h>

#include "codepage.h"

namespace kelmora {
namespace {

using namespace std::string_view_literals;

TEST(CodePages, NumberOfPairs) {
  const struct {
    int id;
    int pairs;
  } rows[] = {
      {1, 191},    {2, 191},    {3, 184},    {4, 191},    {5, 191},    {6, 146},  {7, 185},
      {8, 153},    {9, 191},    {11, 225},   {14, 191},   {15, 191},   {30, 128}, {31, 339},
      {40, 256},   {42, 256},   {41, 256},   {52, 251},   {50, 251},   {51, 255}, {53, 239},
      {54, 249},   {55, 233},   {56, 256},   {57, 244},   {58, 247},   {80, 225}, {92, 7915},
      {200, 7915}, {500, 7915}, {93, 21919}, {94, 17174}, {95, 13630}, {1001, 0}, {1000, 0},
      {2000, 0},   {3000, 0},   {4000, 0},
  };
  static_assert(std::size(rows) == kEncodingCount);
  for (const auto& row : rows) {
    const CodePage* const page = FindCodePage(EncodingId{row.id});
    ASSERT_EQ(page == nullptr, row.pairs == 0) << row.id;
    if (page == nullptr) continue;
    int codes = 0;
    for (const CodeRun& run : page->runs) codes += run.count;
    EXPECT_EQ(codes, row.pairs) << row.id;
    EXPECT_EQ(page->characters.size(), static_cast<std::size_t>(row.pairs)) << row.id;
  }
}

// EUC-JP writes the single-byte katakana as they stand, and reads their bytes as halves of a pair.
bool ComesBack(EncodingId id, char16_t character) {
  const bool isNarrowKatakana = character >= 0xFF61 && character <= 0xFF9F;
  return character != 0 && !(id == EncodingId::kEucJp && isNarrowKatakana);
}

TEST(CodePages, EveryCharacterComesBack) {
  for (int i = 0; i < kEncodingCount; ++i) {
    const EncodingId id = EncodingAt(i).id;
    const CodePage* const page = FindCodePage(id);
    if (page == nullptr) continue;
    SCOPED_TRACE(static_cast<int>(id));
    std::u16string text;
    for (const char16_t character : page->characters) {
      if (ComesBack(id, character)) text += character;
    }
    const auto bytes = EncodeText(text, id, ByteOrder::kNone, false, false);
    ASSERT_TRUE(bytes);
    // The not sign of EBCDIC has the code of the substitute.
    EXPECT_EQ(UnmappableChars(), id == EncodingId::kEbcdic ? u"\u00AC"sv : u""sv);
    const auto back = DecodeText(*bytes, id, ByteOrder::kNone);
    ASSERT_TRUE(back);
    EXPECT_TRUE(*back == text);
    EXPECT_EQ(UnmappableCount(), 0u);
  }
}

TEST(CodePages, KnownCodes) {
  const struct {
    int id;
    std::string_view bytes;
    std::u16string_view text;
  } rows[] = {
      {1, "A\xE9\t\x1F"sv, u"A\u00E9\t\x1F"sv},
      {6, "0\x39\xE0"sv, u"\u0660\u0669\u0640"sv},
      {7, "\xA1\xA2\xE1"sv, u"\u02BD\u02BC\u03B1"sv},
      {8, "\xAF\xE0"sv, u"\u203E\u05D0"sv},
      {11, "\x80\xA1"sv, u"\u20AC\u0E01"sv},
      {15, "\xA4"sv, u"\u20AC"sv},
      {31, "\xC1\x81\xF0\x15\x25\x6D\x05"sv, u"Aa0\u0085\n_\t"sv},
      {40, "\xB0\xE1\x7F"sv, u"\u2591\u00DF\x7F"sv},
      {41, "\xB0\xB1\xB2"sv, u"\u2591\u2592\u2593"sv},
      {42, "\xB0\xB1\xB2\xB3"sv, u"\u0153\u0152\u20AC\u2502"sv},
      {52, "\x80\x9F"sv, u"\u20AC\u0178"sv},
      {92, "\x93\xFA\x95\x5C\\\xB1"sv, u"日表\\\uFF71"sv},
      {200, "\xC6\xFC\xC9\xBD\\"sv, u"日表\\"sv},
      {500, "a\x1B$BF|I=\x1B(J\\\xB1\x1B$BF|"sv, u"a日表\\\uFF71日"sv},
      {93, "\xD6\xD0\xFD\x88"sv, u"中龍"sv},
      {94, "\xB0\xA1\xB6\xCB"sv, u"가똥"sv},
      {95, "\xA4\xA4\xA5\\"sv, u"中功"sv},
      // Characters with two codes: the one that the code page itself writes.
      {92, "\x81\xCA\xED\x40\x87\x54"sv, u"\uFFE2\u7E8A\u2160"sv},
      {200, "\xA2\xCC\xF9\xA1\xAD\xB5"sv, u"\uFFE2\u7E8A\u2160"sv},
      {95, "\xA4\x51\xA2\xA4"sv, u"\u5341\u2550"sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.id) + testing::PrintToString(row.bytes));
    const auto text = DecodeText(row.bytes, EncodingId{row.id}, ByteOrder::kNone);
    ASSERT_TRUE(text);
    EXPECT_TRUE(*text == row.text);
    EXPECT_EQ(EncodeText(row.text, EncodingId{row.id}, ByteOrder::kNone, true, true), row.bytes);
  }
}

// Code, or lead and trail byte, that an encoding has no character for.
TEST(CodePages, UnmappedCodes) {
  const struct {
    int id;
    std::string_view bytes;
    std::u16string_view text;
    std::u16string_view codes;
  } rows[] = {
      {1, "\x80\x7F\x80"sv, u"\uFFFD\uFFFD\uFFFD"sv, u"\x80\x7F"sv},
      {6, "x\xFF"sv, u"x\uFFFD"sv, u"\xFF"sv},
      {7, "\xA4"sv, u"\uFFFD"sv, u"\xA4"sv},
      {30, "\x80\xFF"sv, u"\uFFFD\uFFFD"sv, u"\x80\xFF"sv},
      {92, "\xF0\x40\x80\x41z"sv, u"\uFFFD\uFFFDz"sv, u"\xF040\x8041"sv},
      {93, "\x80\x41z"sv, u"\uFFFDz"sv, u"\x8041"sv},
      {94, "\xA2\xE6"sv, u"\uFFFD"sv, u"\xA2E6"sv},
      {95, "\xC6\xA1"sv, u"\uFFFD"sv, u"\xC6A1"sv},
      {95, "a\xA4"sv, u"a\uFFFD"sv, u"\xA400"sv},  // no trail byte
      {200, "\x8E\xB1"sv, u"\uFFFD"sv, u"\x8EB1"sv},
      {500, "\x1B$B\nF|"sv, u"\uFFFD\uFFFD"sv, u"\x0A46\x7C00"sv},
      {500, "\x1B$(D\x1B(Xz\x1B$"sv, u"z\x1B$"sv, u""sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.id) + testing::PrintToString(row.bytes));
    const auto text = DecodeText(row.bytes, EncodingId{row.id}, ByteOrder::kNone);
    ASSERT_TRUE(text);
    EXPECT_TRUE(*text == row.text);
    EXPECT_EQ(UnmappableChars(), row.codes);
  }
}

}  // namespace
}  // namespace kelmora
