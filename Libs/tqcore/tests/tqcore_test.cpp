// Text helpers, exceptions, singletons, factories and the string table.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include "tqcore/arena.h"
#include "tqcore/processstate.h"
#include "tqcore/resourcestrings.h"
#include "tqcore/tqexcept.h"
#include "tqcore/tqfactory.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

TEST(TQText, NativeTextSurvivesTheRoundTrip) {
  struct Row {
    const char* bytes;
    const char16_t* text;
  };
  const Row rows[] = {
      {"a\xC3\xA9", u"a\u00E9"},
      {"\xF0\x9F\x98\x80!", u"\xD83D\xDE00!"},
      {"\xEF\xBF\xBF", u"\uFFFF"},
      {"\xE9 x", u"\xDCE9 x"},                            // Latin-1
      {"\xC0\x80", u"\xDCC0\xDC80"},                      // overlong
      {"\xED\xA0\x80", u"\xDCED\xDCA0\xDC80"},            // a surrogate
      {"\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},  // beyond U+10FFFF
      {"\xE2\x82", u"\xDCE2\xDC82"},                      // cut off
      {"\xF0\x9F\x98\x80\xFF", u"\xD83D\xDE00\xDCFF"},
  };
  for (const Row& row : rows) {
    EXPECT_TRUE(FromNative(row.bytes) == row.text) << row.bytes;
    EXPECT_EQ(ToNative(row.text), row.bytes);
  }
  EXPECT_EQ(ToNative(u"\xD800x"), "\xEF\xBF\xBDx");
}

TEST(TQText, ParseDouble) {
  const double infinity = std::numeric_limits<double>::infinity();
  struct Row {
    std::u16string text;
    double value;
    std::size_t consumed;
  };
  const Row rows[] = {
      {u"12", 12, 2},
      {u"+1.5x", 1.5, 4},
      {u"-.5e1", -5, 5},
      {u"5.", 5, 2},
      {u" \t7", 7, 3},
      {u"1e", 1, 1},
      {u"1e+", 1, 1},
      {u"0x10", 0, 1},
      {u"9007199254740993", 9007199254740992.0, 16},
      {u"0.1", 0.1, 3},
      {u"1e400", infinity, 5},
      {u"-1e400", -infinity, 6},
      {u"1e-400", 0, 6},
      {u"1e99999999999999999999", infinity, 22},
      {u"0e99999999999999999999", 0, 22},
      {u"5e-324", 5e-324, 6},
      {std::u16string(400, u'1'), infinity, 400},
      {u"0." + std::u16string(400, u'0') + u"1", 0, 403},
      {u"", 0, 0},
      {u".", 0, 0},
      {u"-", 0, 0},
      {u"e5", 0, 0},
      {u"inf", 0, 0},
      {u"nan", 0, 0},
  };
  for (const Row& row : rows) {
    std::size_t consumed = 99;
    EXPECT_EQ(ParseDouble(row.text, &consumed), row.value) << ToNative(row.text);
    EXPECT_EQ(consumed, row.consumed) << ToNative(row.text);
  }
  EXPECT_TRUE(std::signbit(ParseDouble(u"-0", nullptr)));
}

TEST(TQText, Views) {
  EXPECT_EQ(TrimView(u" \ta b\r\n"), u"a b");
  EXPECT_EQ(TrimView(u"  "), u"");
  EXPECT_TRUE(EqualsIgnoringAsciiCase(u"UTF-8", u"utf-8"));
  EXPECT_FALSE(EqualsIgnoringAsciiCase(u"Ä", u"ä"));
  EXPECT_EQ(FindUnit(u"0123456789", u'9'), 9u);
  EXPECT_EQ(FindUnit(u"0123456789", u'3', 4), std::u16string_view::npos);
  EXPECT_EQ(FindUnit(u"\u0100\u0001x\uFFFF\u8000", u'\x8000'), 4u);
}

TEST(TQExcept, ErrorText) {
  const TQExcept error(kAllocationFailed, 12, u"..\\..\\libs\\a/b");
  const auto text = [&](std::int32_t language, bool withLocation) {
    ProcessState::Of<TQExcept::Language>().number = language;
    const std::string bytes = ToNative(error.GetErrorText(withLocation));
    ProcessState::Reset();
    return bytes;
  };
  EXPECT_EQ(text(0, false), "An error has occurred. (-1001)");
  EXPECT_EQ(text(9, true), "An error has occurred in line 12 of file \"a/b\". (-1001)");
  EXPECT_EQ(text(1, true), "Ein Fehler ist in Zeile 12 des Modules \"a/b\" aufgetreten. (-1001)");
  EXPECT_EQ(text(2, false), "Une erreur s'est glissee. (-1001)");
  EXPECT_EQ(text(3, true), "C'e stato un errore nella linea 12 del file \"a/b\". (-1001)");

  const std::u16string longName(300, u'x');
  const TQExcept longError(1, 1, longName.c_str());
  EXPECT_EQ(std::u16string_view(longError.GetErrorText(true)).size(), 257u);
}

struct Shape {
  explicit Shape(int count) : corners(count) {}
  int corners;
};
int registrations = 0;

class ShapeFactory : public TQFactory<Shape> {
 public:
  ShapeFactory() : TQFactory(&RegisterShapes) {}

 private:
  static void RegisterShapes(TQFactory& factory) {
    ++registrations;
    EXPECT_TRUE(factory.Register(3, [] { return std::make_unique<Shape>(3); }));
    EXPECT_TRUE(factory.Register(8192, [] { return std::make_unique<Shape>(8); }));
    EXPECT_TRUE(factory.Register(-4, [] { return std::make_unique<Shape>(4); }));
    EXPECT_FALSE(factory.Register(8192, [] { return std::make_unique<Shape>(9); }));
    EXPECT_FALSE(factory.Register(3, [] { return std::make_unique<Shape>(9); }));
  }
};

TEST(TQFactory, RegistersAllAtTheFirstCreate) {
  ShapeFactory& factory = TQSingleton<ShapeFactory>::Instance();
  EXPECT_EQ(registrations, 0);
  EXPECT_EQ(factory.Create(7), nullptr);
  EXPECT_EQ(factory.Create(8191), nullptr);
  EXPECT_EQ(factory.Create(3)->corners, 3);
  EXPECT_EQ(factory.Create(8192)->corners, 8);
  EXPECT_EQ(factory.Create(-4)->corners, 4);
  EXPECT_EQ(registrations, 1);
  EXPECT_EQ(&factory, &TQSingleton<ShapeFactory>::Instance());
}

struct OutOfMemory {
  OutOfMemory() { throw std::bad_alloc(); }
};

TEST(TQSingleton, CreationThatFailsIsRaised) {
  try {
    TQSingleton<OutOfMemory>::Instance();
    FAIL();
  } catch (const TQResultError& error) {
    EXPECT_EQ(error.code, kUnexpected);
  }
}

TEST(ResourceStrings, ByNumber) {
  struct Row {
    int id;
    const char* text;
  };
  const Row rows[] = {
      {7200, "An attribute set with this name has already been defined"},
      {7239, "XSLT stack overflow."},
      {7250, "Error in XPath expression, "},
      {7401, "Invalid prefix"},
      {7413, "last"},
      {7448, "function-available"},
      {7455, "key function called within a key definition"},
  };
  TQString text;
  for (const Row& row : rows) {
    EXPECT_TRUE(text.LoadResource(row.id));
    EXPECT_EQ(ToNative(text), row.text);
  }
  for (int id : {0, 7199, 7251, 7412, 7452, 7456}) EXPECT_FALSE(text.LoadResource(id)) << id;
  EXPECT_EQ(ToNative(text), rows[6].text);
}

TEST(Arena, KeepsAlignmentAndContents) {
  Arena arena;
  for (std::size_t i = 1; i < 3000; ++i) {
    const std::u16string text(i, static_cast<char16_t>(i));
    const std::u16string_view kept = arena.Keep(text);
    EXPECT_EQ(kept, text);
    EXPECT_EQ(kept.data()[i], 0);
    auto* number = arena.Make<double>(1.5);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(number) % alignof(double), 0u);
  }
}

}  // namespace
}  // namespace kelmora
