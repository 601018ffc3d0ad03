#include "tqcore/tqstring.h"

#include <gtest/gtest.h>

#include <string>

#include "tqcore/tqexcept.h"
#include "tqcore/tqtext.h"

namespace kelmora {

// Found by GoogleTest: failures show the text instead of addresses.
void PrintTo(const TQString& text, std::ostream* out) {
  *out << '"' << ToNative(text) << '"';
}

namespace {

TEST(TQStringStorage, CapacityRules) {
  TQString text(u"abc");
  EXPECT_EQ(text.Capacity(), 3);
  text.Resize(50);
  EXPECT_EQ(text, u"abc");
  EXPECT_EQ(TQString(text).Capacity(), 3);
  text.Resize(2);
  EXPECT_EQ(text, u"ab");
  text.Resize(0);
  EXPECT_EQ(text.Capacity(), 0);
  EXPECT_EQ(text.c_str(), TQString().c_str());
  text += TQString();
  text += u"";
  EXPECT_EQ(text.c_str(), TQString().c_str());

  struct Row {
    int reserve, capacity;
  };
  for (const Row& row : {Row{1, 10}, Row{10, 10}, Row{11, 20}, Row{20, 20}, Row{0, 0}}) {
    TQString reserved;
    reserved.Reserve(row.reserve);
    EXPECT_EQ(reserved.Capacity(), row.capacity);
    EXPECT_TRUE(reserved.IsEmpty());
  }
}

TEST(TQStringStorage, AssignmentOfEmptyText) {
  TQString text(u"abc");
  text = TQString();
  EXPECT_EQ(text.Capacity(), 0);  // moved from the empty string
  text = u"abc";
  const TQString empty;
  text = empty;
  EXPECT_EQ(text.Capacity(), 10);
  EXPECT_TRUE(text.IsEmpty());
  text = u"";
  EXPECT_EQ(text.Capacity(), 0);
  text = static_cast<const char16_t*>(nullptr);
  EXPECT_TRUE(text.IsEmpty());
}

TEST(TQStringStorage, IndexIsCheckedAgainstTheCapacity) {
  TQString text(u"abc");
  text.Resize(5);
  EXPECT_EQ(text[3], 0);
  EXPECT_NO_THROW(static_cast<void>(text[5]));
  EXPECT_EQ(TQString()[0], 0);
  try {
    static_cast<void>(text[6]);
    FAIL();
  } catch (const TQExcept& error) {
    EXPECT_EQ(error.Code(), kIndexBeyondCapacity);
  }
  EXPECT_THROW(static_cast<void>(TQString()[1]), TQExcept);
}

TEST(TQStringStorage, ZeroUnitsEndATextHoweverItComesIn) {
  const std::u16string_view zero(u"ab\0cd", 5);
  TQString text(zero);
  EXPECT_EQ(text.Length(), 2);
  text += zero;
  EXPECT_EQ(text, u"abab");
  text.Insert(zero, 1);
  EXPECT_EQ(text, u"aabbab");
  int cursor = 1;
  text.AppendAt(zero, cursor, 0);
  EXPECT_EQ(text, u"aab");
  text.AppendUnitAt(0, cursor, 0);
  EXPECT_EQ(cursor, 3);
  text = zero;
  EXPECT_EQ(text, u"ab");
}

TEST(TQStringStorage, PartsOfTheStringItselfMayBeAddedToIt) {
  TQString text(u"0123456789");
  for (int i = 0; i < 5; ++i) text += text.View().substr(1);
  EXPECT_EQ(text.Length(), 9 * 32 + 1);
  EXPECT_EQ(text.Right(3), u"789");
  TQString other(u"ab");
  other.Insert(other.View(), 1);
  EXPECT_EQ(other, u"aabb");
  other = other.View().substr(2);
  EXPECT_EQ(other, u"bb");
  TQString cut(u"abcdef");
  int cursor = 2;
  cut.AppendAt(cut.View(), cursor, 0);
  EXPECT_EQ(cut, u"ababcdef");
}

TEST(TQStringStorage, AppendingIsAmortised) {
  constexpr int kUnits = 1 << 20;
  TQString byOperator;
  TQString byCursor;
  int blocks = 0;
  int cursor = 0;
  for (int i = 0; i < kUnits; ++i) {
    const int before = byOperator.Capacity() + byCursor.Capacity();
    byOperator += u'x';
    byCursor.AppendUnitAt(u'x', cursor, 10);
    blocks += before != byOperator.Capacity() + byCursor.Capacity();
  }
  EXPECT_EQ(byOperator, byCursor);
  EXPECT_LT(blocks, 80);
}

TEST(TQStringStorage, TooLongIsAnAllocationFailure) {
  TQString text;
  try {
    text.Resize(0x7FFFFFFF);
    FAIL();
  } catch (const TQExcept& error) {
    EXPECT_EQ(error.Code(), kAllocationFailed);
  }
}

TEST(TQStringSearch, Find) {
  struct Row {
    const char16_t *text, *find;
    int start, expected;
  };
  const Row rows[] = {
      {u"abcab", u"a", 5, -1},  {u"abcab", u"a", 0, 0},
      {u"abcab", u"ab", 1, 3},  {u"abcab", u"abx", 0, -1},
      {u"", u"", 0, -1},        {u"abc", u"", 1, 1},
      {u"aaab", u"aab", 0, 1},  {u"0123456789abcdef", u"f", 3, 15},
      {u"abc", u"abcd", 0, -1},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(TQString(row.text).Find(row.find, row.start), row.expected) << ToNative(row.find);
  }
  const TQString text(u"a/b\\c");
  EXPECT_EQ(text.FindOneOf(u"\\/"), 1);
  EXPECT_EQ(text.FindOneOf(u"\\/", 2), 3);
  EXPECT_EQ(text.FindOneOf(u"c", 5), -1);
  EXPECT_EQ(TQString(u"a.b.c").ReverseFind(u'.'), 3);
  EXPECT_EQ(TQString().ReverseFind(u'.'), -1);
}

// 200,000 false starts of 100,000 units each would take minutes.
TEST(TQStringSearch, RepetitiveNeedleIsLinear) {
  const std::u16string needle = std::u16string(100000, u'a') + u"b";
  const std::u16string text(300000, u'a');
  EXPECT_EQ(FindText(text, needle), std::u16string_view::npos);
  EXPECT_EQ(FindText(text + u"b", needle), 200000u);
}

TEST(TQStringEditing, Rows) {
  struct Row {
    const char16_t *before, *after;
    void (*edit)(TQString&);
  };
  const Row rows[] = {
      {u"abc", u"axbc", [](TQString& t) { t.Insert(u"x", 1); }},
      {u"abc", u"abcx", [](TQString& t) { t.Insert(u"x", 3); }},
      {u"abc", u"abc", [](TQString& t) { t.Insert(u"x", 4); }},
      {u"abc", u"a", [](TQString& t) { t.Delete(1, 9); }},
      {u"abc", u"abc", [](TQString& t) { t.Delete(3, 1); }},
      {u"aaa", u"bba", [](TQString& t) { t.Replace(u"a", u"b", 2); }},
      {u"aaa", u"aaaaaa", [](TQString& t) { t.Replace(u"a", u"aa", 0); }},
      {u"aaaa", u"bb", [](TQString& t) { t.Replace(u"aa", u"b", 0); }},
      {u"abab", u"", [](TQString& t) { t.Replace(u"ab", u"", 0); }},
      {u"aba", u"xbx", [](TQString& t) { t.Replace(u'a', u'x'); }},
      {u"ABÄΣЖ1", u"abäσж1", [](TQString& t) { t.MakeLower(); }},
      {u"xxaxx", u"axx", [](TQString& t) { t.TrimLeft(u'x'); }},
      {u"xxaxx", u"xxa", [](TQString& t) { t.TrimRight(u"yx"); }},
      {u"xx", u"", [](TQString& t) { t.TrimRight(u'x'); }},
      {u"\f\v a\u00A0", u"a\u00A0", [](TQString& t) { t.TrimLeft(), t.TrimRight(); }},
      {u"abc", u"abc", [](TQString& t) { t.TrimLeft(std::u16string_view()); }},
      {u" a \t\rb ", u"_a_b_", [](TQString& t) { t.Squeeze(kXmlSpaces, u'_'); }},
      {u"a  '  ' b", u"a '  ' b", [](TQString& t) { t.Squeeze(u" ", u' ', u"'"); }},
      {u"&#65;&amp;&#x42", u"A&amp;B", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"&#x41;&#66;", u"AB", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"a&#x1F600;b", u"a\uF600b", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"&#X41;&#6a;", u"\u0029F", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"ab&#0;cd", u"ab", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"ab&#", u"ab", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"a&", u"a&", [](TQString& t) { t.DecodeCharacterReferences(); }},
      {u"a b", u"a%20b", [](TQString& t) { t.EscapeUrl(); }},
      {u"\u00E9", u"%C3%A9", [](TQString& t) { t.EscapeUrl(); }},
      {u"\u20AC{}^`|<>\"%", u"%E2%82%AC%7B%7D%5E%60%7C%3C%3E%22%25",
       [](TQString& t) { t.EscapeUrl(); }},
      {u"http://h/a[1]\\~?x=#", u"http://h/a[1]\\~?x=#", [](TQString& t) { t.EscapeUrl(); }},
      {u"\r\na\rb\n\n", u"\na\nb\n\n", [](TQString& t) { t.ConvertLineEnds(u"\n"); }},
      {u"\r\na\rb\n\n", u"\r\na\r\nb\r\n\r\n", [](TQString& t) { t.ConvertLineEnds(u"\r\n"); }},
      {u"\r\na\rb\n\nabcdefgh\n\r\nabcdefghijk", u"\ra\rb\r\rabcdefgh\r\rabcdefghijk",
       [](TQString& t) { t.ConvertLineEnds(u"\r"); }},
      {u"a\rb", u"a\rb", [](TQString& t) { t.ConvertLineEnds(u"xyz"); }},
  };
  for (const Row& row : rows) {
    TQString text(row.before);
    row.edit(text);
    EXPECT_EQ(text, row.after) << ToNative(row.before);
    EXPECT_EQ(text.c_str()[text.Length()], 0);
  }
}

TEST(TQStringParts, Rows) {
  const TQString text(u"abcde");
  EXPECT_EQ(text.Left(2), u"ab");
  EXPECT_EQ(text.Left(9), u"abcde");
  EXPECT_EQ(text.Left(-1), u"");
  EXPECT_EQ(text.Right(2), u"de");
  EXPECT_EQ(text.Right(9), u"abcde");
  EXPECT_EQ(text.Mid(5), u"");
  EXPECT_EQ(text.Mid(1, 3), u"bcd");
  EXPECT_EQ(text.Mid(3, 9), u"de");
  EXPECT_EQ(u"x" + text + u"y" + TQString(u"z"), u"xabcdeyz");
  EXPECT_EQ(TQString(u"p:q:r").Prefix(), u"p");
  EXPECT_EQ(TQString(u"p:q:r").LocalPart(), u"q:r");
  EXPECT_EQ(TQString(u"q").Prefix(), u"");
  EXPECT_EQ(std::u16string_view(TQString(u"q").LocalPartPointer()), u"q");
  EXPECT_TRUE(TQString().IsBlank());
  EXPECT_TRUE(TQString(u" \t\r\n").IsBlank());
  EXPECT_FALSE(TQString(u" \v").IsBlank());
}

TEST(TQStringParts, Tokenize) {
  struct Row {
    const char16_t *text, *delimiters, *quotes, *tokens;
  };
  const Row rows[] = {
      {u"  a b  ", u" ", u"", u"[a][b]"},           {u"", u" ", u"", u""},
      {u"a 'b c' d", u" ", u"'", u"[a]['b c'][d]"}, {u"x='a b", u" ", u"'", u"[x='a b]"},
      {u"a,b;c", u",;", u"", u"[a][b][c]"},
  };
  for (const Row& row : rows) {
    const TQString text(row.text);
    TQString tokens;
    int position = 0;
    for (;;) {
      const TQString token = text.Tokenize(row.delimiters, position, row.quotes);
      if (token.IsEmpty()) break;
      tokens += u"[" + token + u"]";
    }
    EXPECT_EQ(tokens, row.tokens);
    EXPECT_EQ(position, text.Length());
  }
}

TEST(TQStringText, DetectLineEnd) {
  EXPECT_EQ(std::u16string_view(TQString(u"a\rb\n").DetectLineEnd()), u"\r");
  EXPECT_EQ(std::u16string_view(TQString(u"a\nb\r").DetectLineEnd()), u"\n");
  EXPECT_EQ(std::u16string_view(TQString(u"a\r\n\n").DetectLineEnd()), u"\r\n");
  EXPECT_EQ(std::u16string_view(TQString(u"a").DetectLineEnd()), u"\r\n");
}

TEST(TQStringText, Format) {
  EXPECT_EQ(TQString::Format(u"%s -> %s", {u"a", TQString(u"b")}), u"a -> b");
  EXPECT_EQ(TQString::Format(u"%d|%ld|%4d|%03d|%%", {-5, 7, 42, -4}), u"-5|7|  42|-04|%");
  EXPECT_EQ(TQString::Format(u"%%%02X|%X", {0xA, -1}), u"%0A|FFFFFFFF");
  EXPECT_EQ(TQString::Format(u"%ld", {std::int64_t{1} << 40}), u"1099511627776");
  EXPECT_EQ(TQString::Format(u"%d", {}), u"");
  const std::u16string longText(2000, u'x');
  EXPECT_EQ(TQString::Format(u"%s", {std::u16string_view(longText)}).Length(), 1030);
}

TEST(TQStringText, Numerals) {
  struct Row {
    int number;
    const char16_t *roman, *letters;
  };
  const Row rows[] = {{-1, u"", u""},
                      {0, u"", u""},
                      {4, u"IV", u"D"},
                      {26, u"XXVI", u"Z"},
                      {27, u"XXVII", u"AA"},
                      {52, u"LII", u"AZ"},
                      {53, u"LIII", u"BA"},
                      {703, u"DCCIII", u"AAA"},
                      {3999, u"MMMCMXCIX", u"EWU"},
                      {10000, u"", u"NTP"},
                      {0x7FFFFFFF, u"", u"FXSHRXW"}};
  for (const Row& row : rows) {
    EXPECT_EQ(TQString::RomanNumeral(row.number, true), row.roman);
    EXPECT_EQ(TQString::AlphabeticNumeral(row.number, true), row.letters);
  }
  EXPECT_EQ(TQString::RomanNumeral(9999, false), u"mmmmmmmmmcmxcix");
  EXPECT_EQ(TQString::AlphabeticNumeral(703, false), u"aaa");
}

// Sizes on both sides of where blocks become large, up and down again.
TEST(TQString, LargeBlocksKeepTheirText) {
  std::u16string expected;
  TQString text;
  int cursor = 0;
  for (char16_t unit = u'a'; expected.size() < 9'000'000; unit = unit == u'z' ? u'a' : unit + 1) {
    const std::u16string piece(700'001, unit);
    expected += piece;
    text.AppendAt(piece, cursor, 16000);
  }
  EXPECT_TRUE(text == expected);
  const TQString copy = text;
  for (const int length :
       {7'000'000, 1'048'572, 1'048'571, 1'048'570, 1'048'569, 125, 124, 123, 5}) {
    text.Resize(length);
    EXPECT_TRUE(text == std::u16string_view(expected).substr(0, static_cast<std::size_t>(length)));
  }
  text.Reserve(8'000'000);
  EXPECT_TRUE(text == u"aaaaa");
  EXPECT_TRUE(copy == expected);
}

}  // namespace
}  // namespace kelmora
