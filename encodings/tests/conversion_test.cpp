#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "encodings/encodings.h"

namespace kelmora {
namespace {

using namespace std::string_view_literals;

// From a block of exactly this size, so that a read beyond it is seen; and over the bytes, which
// must come to the same.
std::optional<TQString> DecodeExactly(std::string_view bytes, int id, int byteOrder) {
  EncodedBytes over;
  over.Resize(bytes.size() / 2);
  bytes.copy(over.Data(), over.Size());
  over.Resize(bytes.size());
  bytes.copy(over.Data() + bytes.size() / 2, bytes.size(), bytes.size() / 2);
  const auto inPlace = DecodeText(std::move(over), EncodingId{id}, ByteOrder{byteOrder});
  const auto block = std::make_unique<char[]>(bytes.size());
  bytes.copy(block.get(), bytes.size());
  auto text =
      DecodeText(std::string_view(block.get(), bytes.size()), EncodingId{id}, ByteOrder{byteOrder});
  EXPECT_EQ(inPlace, text) << id;
  return text;
}

TEST(DecodeText, Rows) {
  constexpr std::u16string_view kFails = u"(fails)";
  const struct {
    int id;
    int byteOrder;
    std::string_view bytes;
    std::u16string_view text;
    std::u16string_view unmappable;
  } rows[] = {
      {0, 0, "a\x80\xFF\x0D"sv, u"a\u0080\u00FF\r"sv, u""sv},
      {0, 0, "12345678ab\0cd4\0efg"sv, u"12345678ab"sv, u""sv},
      {10, 0, "a"sv, kFails, u""sv},
      {-5, 0, "a"sv, kFails, u""sv},
      // UTF-8: what a sequence adds up to counts, not what it is made of.
      {1000, 0, ""sv, u""sv, u""sv},
      {1000, 0,
       "\xEF\xBB\xBF\xEF\xBB\xBF"
       "a"sv,
       u"\uFEFFa"sv, u""sv},
      {1000, 0,
       "\xC1\x81,\xC3"
       "A,\xE0\x81\x81,\xED\xA0\xBD\xED\xB8\x80"sv,
       u"A,\u0081,A,\xD83D\xDE00"sv, u""sv},
      {1000, 0, "\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF"sv, u"\U0001F600\U0010FFFF"sv, u""sv},
      {1000, 0, "\xF4\x90\x80\x80\xC0\x41z"sv, u"\uFFFD\uFFFDz"sv, u"\xF4\xC0"sv},
      {1000, 0, "\x80z\xBFz"sv, u"\uFFFDz\uFFFDz"sv, u"\x80\xBF"sv},
      {1000, 0, "\xFE\x01\x40\x80\x81\x81z\xFF\xC0\x80\x80\x81\x81z"sv, u"AzAz"sv, u""sv},
      {1000, 0, "\xF8\x80\x80\x80\x80z\xF8\x88\x80\x80\x80"sv, u""sv, u"\xF8"sv},
      {1000, 0, "\xFC\x80\x80\x84\x84\x81z\xFD\xBF\xBF\xBF\xBF\xBF"sv, u"\U00004101z\uFFFD"sv,
       u"\xFD"sv},
      {1000, 0, "abc\xC0\x80z\xBF"sv, u"abc"sv, u"\xBF"sv},
      {1000, 0, "a\xC3"sv, kFails, u""sv},
      {1000, 0, "\xE2\x82"sv, kFails, u""sv},
      {1000, 0, "\0\xFD\xBF\xBF\xBF\xBF"sv, kFails, u""sv},
      // UTF-7
      {1001, 0, "A+ImIDkQ.+-+-b+AOk-c+AOk d~"sv, u"A\u2262\u0391.++b\u00E9c\u00E9 d~"sv, u""sv},
      {1001, 0, "+/v8-+2D3eAA-a+ZeU"sv, u"\U0001F600a\u65E5"sv, u""sv},
      {1001, 0, "+AAA-a"sv, u""sv, u""sv},
      {1001, 0, "a\x80"sv, kFails, u""sv},
      {1001, 0, "+AOk\x80"sv, kFails, u""sv},
      {1001, 0, "+ x"sv, kFails, u""sv},
      {1001, 0, "+A-"sv, kFails, u""sv},
      {1001, 0, "a+"sv, kFails, u""sv},
      {1001, 0, "+AOn-"sv, kFails, u""sv},  // a bit behind the unit
      // Two-byte units, the last byte of an odd number left out
      {2000, 1,
       "\xFF\xFE"
       "a\0\xAC\x20z"sv,
       u"a\u20AC"sv, u""sv},
      {2000, 2, "\xFE\xFF\0a\x20\xAC"sv, u"a\u20AC"sv, u""sv},
      {3000, 0,
       "\xFE\xFF"
       "a\0"sv,
       u"\uFFFEa"sv, u""sv},
      {2000, 1, "a\0\0\0b\0"sv, u"a"sv, u""sv},
      // Four-byte units: room for one character of two units
      {4000, 2, "\0\0\xFE\xFF\0\0\0a\0\0\x20\xAC\0"sv, u"a\u20AC"sv, u""sv},
      {4000, 1, "a\0\0\0\x01\x02\x03\x04"sv, u"a\uFFFD"sv, u"\uFFFD"sv},
      {4000, 4, "\0a\0\0\xF6\0\0\x01"sv, u"a\U0001F600"sv, u""sv},
      {4000, 8, "\0\0a\0\x01\0\0\xF6"sv, u"a\U0001F600"sv, u""sv},
      {4000, 2, "\0\1\xF6\0\0\1\xF6\0"sv, kFails, u""sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.id) + " " + testing::PrintToString(row.bytes));
    const auto text = DecodeExactly(row.bytes, row.id, row.byteOrder);
    if (row.text == kFails) {
      EXPECT_FALSE(text);
      continue;
    }
    ASSERT_TRUE(text);
    EXPECT_EQ(text->View(), row.text);
    EXPECT_EQ(text->Capacity(), text->Length());
    EXPECT_EQ(UnmappableChars(), row.unmappable);
  }
}

TEST(EncodeText, Rows) {
  const struct {
    int id;
    int byteOrder;
    bool withMark;
    std::u16string_view text;
    std::string_view bytes;
    std::u16string_view unmappable;
  } rows[] = {
      {0, 0, false, u"a\u20ACé"sv, "a\xAC\xE9"sv, u""sv},
      {1, 0, true, u"a_\u20AC\u0085\uFFFD\u20AC"sv, "a_____"sv, u"\u20AC\u0085"sv},
      {31, 0, false, u"_\u20AC"sv, "\x6D\x5F"sv, u"\u20AC"sv},
      {93, 0, false, u"中\u0100z"sv, "\xD6\xD0_z"sv, u"\u0100"sv},
      {500, 0, false, u"日\u0100日"sv, "\x1B$BF|\x1B(J_\x1B$BF|"sv, u"\u0100"sv},
      {200, 0, false, u"\uFF71"sv, "\xB1"sv, u""sv},
      {1000, 0, true, u"a\u0080\u07FF\u0800\uFFFF"sv,
       "\xEF\xBB\xBF"
       "a\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"sv,
       u""sv},
      {1000, 0, false, u"\xD83D\xDE00\xDE00\xD83D"sv, "\xF0\x9F\x98\x80\xED\xB8\x80\xED\xA0\xBD"sv,
       u""sv},
      {1001, 0, true, u"A é é,€. a=b <1>(x)\t\r\n"sv,
       "A +AOk- +AOk-,+IKw-. a+AD0-b +ADw-1+AD4-(x)\t\r\n"sv, u""sv},
      {1001, 0, false, u"1+1+é+\\~\U0001F600"sv, "1+-1+-+AOkAKwBcAH7YPd4A-"sv, u""sv},
      {2000, 1, true, u"a\u20AC"sv,
       "\xFF\xFE"
       "a\0\xAC\x20"sv,
       u""sv},
      {2000, 2, true, u"a\u20AC"sv, "\xFE\xFF\0a\x20\xAC"sv, u""sv},
      {3000, 0, false, u"a\u20AC"sv, "a\0\xAC\x20"sv, u""sv},
      {4000, 1, true, u"\U0001F600"sv, "\xFF\xFE\0\0\0\xF6\1\0"sv, u""sv},
      {4000, 2, true,
       u"\xD83D"
       u"a"sv,
       "\0\0\xFE\xFF\0\0\xD8\x3D\0\0\0a"sv, u""sv},
      {4000, 4, false, u"\U0001F600"sv, "\xF6\0\0\1"sv, u""sv},
      {4000, 8, true, u"a"sv, "\0\0\xFF\xFE\0\0a\0"sv, u""sv},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.id) + " " + testing::PrintToString(row.bytes));
    const auto bytes = EncodeText(row.text, EncodingId{row.id}, ByteOrder{row.byteOrder},
                                  row.withMark, row.withMark);
    EXPECT_EQ(bytes, row.bytes);
    EXPECT_EQ(UnmappableChars(), row.unmappable);
  }
  EXPECT_FALSE(EncodeText(u"a", EncodingId{59}, ByteOrder::kNone, false, false));
}

// One other character at each place of a stretch of ASCII, and a 0 at each place of the rest.
TEST(Conversions, StretchesOfEveryLength) {
  for (const std::u16string_view other :
       {u"\x7F"sv, u"é"sv, u"€"sv, u"\U0001F600"sv, u"\xDE00"sv}) {
    for (std::size_t length = 0; length < 70; ++length) {
      for (std::size_t place = 0; place <= length; ++place) {
        std::u16string text(length, u'a');
        text.insert(place, other);
        const auto bytes = EncodeText(text, EncodingId::kUtf8, ByteOrder::kNone, false, false);
        ASSERT_TRUE(bytes);
        ASSERT_TRUE(DecodeExactly(*bytes, 1000, 0) == TQString(text)) << length << " " << place;
        std::string cut(*bytes);
        cut[place] = '\0';
        const auto head = std::u16string(place, u'a');
        ASSERT_TRUE(DecodeExactly(cut, 0, 0) == TQString(head)) << length << " " << place;
      }
    }
  }
}

TEST(Conversions, LongTextOfAllSizesOfCharacters) {
  std::u16string text;
  for (char16_t unit = 1; text.size() < 20000; unit = static_cast<char16_t>(unit * 5 + 7)) {
    if (unit != 0) text += unit;
    if (unit % 11 == 0) text += u"\U0001F600 some words in ASCII "sv;
  }
  for (const int id : {1000, 1001, 2000}) {
    const auto bytes = EncodeText(text, EncodingId{id}, ByteOrder::kNone, false, false);
    ASSERT_TRUE(bytes);
    ASSERT_TRUE(DecodeExactly(*bytes, id, 0) == TQString(text)) << id;
  }
}

TEST(Conversions, AnyBytesInAnyEncoding) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 200; ++round) {
    std::string bytes(random() % 64, '\0');
    // Half of the bytes from those that mean something to a converter.
    constexpr std::string_view kSpecial = "\x1B$B(+-\x80\xA1\xC0\xE0\xF0\xFC\xFE\xFF\0"sv;
    for (char& byte : bytes) {
      const auto value = static_cast<std::size_t>(random());
      byte =
          value % 2 == 0 ? static_cast<char>(value >> 8) : kSpecial[(value >> 8) % kSpecial.size()];
    }
    for (int i = 0; i < kEncodingCount; ++i) {
      for (const int order : {0, 1, 2, 4, 8}) {
        const auto id = static_cast<int>(EncodingAt(i).id);
        const auto text = DecodeExactly(bytes, id, order);
        ASSERT_TRUE(text || id == 1000 || id == 1001 || id == 4000) << id;
        ASSERT_LE(text ? static_cast<std::size_t>(text->Length()) : 0, bytes.size());
      }
    }
  }
}

TEST(Report, CountsAllListsForty) {
  std::u16string text;
  for (char16_t i = 0; i < 41; ++i) text += static_cast<char16_t>(0x400 + i);
  text += text;
  ASSERT_TRUE(EncodeText(text, EncodingId{1}, ByteOrder::kNone, false, false));
  EXPECT_EQ(UnmappableCount(), 82u);
  EXPECT_EQ(UnmappableChars(), text.substr(0, 40));
  ASSERT_FALSE(DecodeText("\xC3", EncodingId::kUtf8, ByteOrder::kNone));
  EXPECT_EQ(UnmappableCount(), 0u);
  EXPECT_TRUE(UnmappableChars().empty());
}

}  // namespace
}  // namespace kelmora
