#include <gtest/gtest.h>

#include "encodings/encodings.h"

namespace kelmora {
namespace {

using namespace std::string_view_literals;

TEST(EncodingTable, IndexAndIdAreInverse) {
  for (int i = 0; i < kEncodingCount; ++i) {
    EXPECT_EQ(IndexOfEncoding(EncodingAt(i).id), i);
    EXPECT_EQ(EncodingFromName(EncodingAt(i).name), EncodingAt(i).id) << i;
  }
  for (const int absent : {-1, 0, 10, 91, 999, 2001}) {
    EXPECT_EQ(IndexOfEncoding(EncodingId{absent}), -1) << absent;
  }
}

TEST(EncodingFromName, LongestAliasThenLastRow) {
  const struct {
    std::u16string_view name;
    int id;
  } rows[] = {
      {u"utf_8", 1000},
      {u"Windows-1252", 52},
      {u"iso_8859-1:1987", 1},
      {u"ISO-8859-15", 15},
      {u"8859-11", 11},
      {u"x-tis_620", 11},
      {u"x-sjis", 0},
      {u"", 0},
      {u"IBM850", 41},
      {u"TQDIK codepage-850", 42},
      {u"IBM", 31},
      {u"ibm037", 31},
      {u"IBM437", 40},
      {u"Big5-HKSCS", 95},
      {u"x-UHC", 94},
      {u"ms_kanji", 92},
      {u"euc-cn", 93},
      {u"ISO646-US", 0},
      {u"UCS-2 or UCS-4", 4000},
      {u"iso-2022-jp-2", 500},
      {u"ütf-8", 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(EncodingFromName(row.name), EncodingId{row.id}) << TQString(row.name).Length();
  }
}

TEST(DetectEncoding, Rows) {
  constexpr unsigned kMarked = kNoDeclarationUsed | kEncodingFound;
  constexpr unsigned kNothing = kNoDeclarationUsed;
  const struct {
    std::string_view bytes;
    int id;
    int byteOrder;
    bool hasMark;
    unsigned flags;
    std::u16string_view name;
  } rows[] = {
      {"\x00\x00\x00\x3C"sv, 4000, 2, false, kMarked, u""},
      {"\x00\x00\xFE\xFF"sv, 4000, 2, true, kMarked, u""},
      {"\x3C\x00\x00\x00"sv, 4000, 1, false, kMarked, u""},
      {"\xFF\xFE\x00\x00"sv, 4000, 1, true, kMarked, u""},
      {"\x00\x00\x3C\x00"sv, 4000, 8, false, kMarked, u""},
      {"\x00\x00\xFF\xFE"sv, 4000, 8, true, kMarked, u""},
      {"\x00\x3C\x00\x00"sv, 4000, 4, false, kMarked, u""},
      {"\xFE\xFF\x00\x00"sv, 4000, 4, true, kMarked, u""},
      {"\xFE\xFF\x00\x3C"sv, 2000, 2, true, kMarked, u""},
      {"\xFF\xFE\x3C\x00"sv, 2000, 1, true, kMarked, u""},
      {"\x00\x3C\x00\x3F"sv, 2000, 2, false, kMarked, u""},
      {"\x3C\x00\x3F\x00"sv, 2000, 1, false, kMarked, u""},
      {"\xEF\xBB\xBF<?xml encoding='ISO-8859-1'?>"sv, 1000, 0, true, kMarked, u""},
      {"\x4C\x6F\xA7\x94"sv, 31, 0, false, kMarked, u""},
      {"\xFE\xFF\x00"sv, 0, 0, false, 0, u""},  // three bytes
      {"<a/>"sv, 0, 0, false, kNothing, u""},
      {"<?xml version=\"1.0\" encoding='utf_8'?>"sv, 1000, 0, false, kEncodingFound, u"UTF_8"},
      {"<?xml EnCoDiNg x= y \"iso-8859-2'?>"sv, 2, 0, false, kEncodingFound, u"ISO-8859-2"},
      {"<?xml encoding='UTF-16'?>"sv, 0, 0, false, kNothing | kInconsistentDeclaration, u"UTF-16"},
      {"<?xml encoding='klingon'?>"sv, 0, 0, false, kNothing | kUnknownDeclaration, u"KLINGON"},
      {"<?xml encoding='utf-8"sv, 0, 0, false, kNothing, u""},
      // The closing quote is byte 79, then byte 80.
      {"<?xml version='1.0'                                            encoding='UTF-8'?>"sv, 1000,
       0, false, kEncodingFound, u"UTF-8"},
      {"<?xml version='1.0'                                             encoding='UTF-8'?>"sv, 0, 0,
       false, kNothing, u""},
      {"<a>\x1B$B</a>"sv, 500, 0, false, kMarked, u""},
      {"<a>\x1B(B\x1B$@"sv, 500, 0, false, kMarked, u""},
      {"<a>\x1B$"sv, 0, 0, false, kNothing, u""},
      {"<?xml encoding='Shift_JIS'?>\x1B$B"sv, 500, 0, false, kMarked | kInconsistentDeclaration,
       u"SHIFT_JIS"},
      {"<?xml encoding='what'?>\x1B$B"sv, 500, 0, false, kMarked | kUnknownDeclaration, u"WHAT"},
      {"<?xml encoding='UTF-8'?>\x1B$B"sv, 1000, 0, false, kEncodingFound, u"UTF-8"},
  };
  for (const auto& row : rows) {
    const DetectedEncoding found = DetectEncoding(row.bytes);
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    EXPECT_EQ(found.id, EncodingId{row.id});
    EXPECT_EQ(found.byteOrder, ByteOrder{row.byteOrder});
    EXPECT_EQ(found.hasMark, row.hasMark);
    EXPECT_EQ(found.flags, row.flags);
    EXPECT_EQ(found.name, row.name);
  }
}

}  // namespace
}  // namespace kelmora
