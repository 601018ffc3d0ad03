#include "types/simpletype.h"

#include <gtest/gtest.h>

#include "tqcore/tqtext.h"
#include "types/facet.h"

namespace kelmora {
namespace {

using Names = std::pair<const char16_t*, std::int32_t>;

std::int32_t NumberOf(const char16_t* name, bool xdrDialect) {
  return static_cast<std::int32_t>(TypeCodeFromName(name, xdrDialect));
}

TEST(SimpleType, NamesInBothDialects) {
  for (const auto& [name, code] :
       {Names{u"string", 0}, Names{u"anySimpleType", 0}, Names{u"number", 3}, Names{u"ui1", 42},
        Names{u"time", 7}, Names{u"boolean", 1}, Names{u"nmtokens", 25}, Names{u"price", 53},
        Names{u"String", 53}}) {
    EXPECT_EQ(NumberOf(name, false), code) << ToNative(name);
  }
  EXPECT_EQ(NumberOf(u"boolean", true), 50);
  EXPECT_EQ(NumberOf(u"time", true), 48);
  EXPECT_EQ(NumberOf(u"time.tz", true), 7);
  EXPECT_EQ(NumberOf(u"dateTime", true), 6);

  auto first = SimpleType(TypeCode::Decimal);
  auto second = std::make_shared<SimpleType>(TypeCode::Integer);
  second->isList = true;
  first.next = second;
  EXPECT_EQ(ToNative(first.GetXSDName()), "union of decimal, list of integer");
  EXPECT_EQ(ToNative(first.GetXDRName()), "union of number, list of int");
}

struct ValueRow {
  const char16_t* type;
  const char16_t* text;
  TypeCheck result;
};

TEST(SimpleType, BuiltinValues) {
  constexpr auto valid = TypeCheck::Valid;
  constexpr auto lexical = TypeCheck::Lexical;
  constexpr auto range = TypeCheck::Range;
  const ValueRow rows[] = {
      {u"int", u"+5", valid},
      {u"unsignedInt", u"+5", valid},
      {u"unsignedInt", u"-0", lexical},
      {u"byte", u"00000000000000000000000000000127", valid},
      {u"byte", u"128", range},
      {u"byte", u"-129", range},
      {u"long", u"9223372036854775808", range},
      {u"long", u"-9223372036854775808", valid},
      {u"integer", u"", lexical},
      {u"int", u" 5 ", lexical},
      {u"nonPositiveInteger", u"000", valid},
      {u"nonPositiveInteger", u"5", lexical},
      {u"negativeInteger", u"-0", range},
      {u"positiveInteger", u"0", range},
      {u"string", u"", valid},
      {u"hexBinary", u"0aG", lexical},
      {u"base64Binary", u"YQ==\n", valid},
      {u"boolean", u"true", valid},
      {u"boolean", u"yes", lexical},
      {u"gDay", u"---32", range},
      {u"gDay", u"---31", valid},
      {u"gMonth", u"--13--", range},
      {u"date", u"2001-02-30", range},
      {u"date", u"2000-02-29", valid},
      {u"date", u"2001-2-3", lexical},
      {u"time", u"24:00:00", range},
      {u"time", u"12:30:00.5Z", valid},
      {u"float", u"INF", valid},
      {u"float", u"", valid},
      {u"decimal", u"1.", lexical},
      {u"char", u"ab", lexical},
      {u"NCName", u"a:b", lexical},
      {u"QName", u"a:b", valid},
      {u"language", u"en-GB", valid},
      {u"uuid", u"01234567-89ab-cdef-0123-456789abcdef", valid},
      {u"fixed.14.4", u"1.23456", lexical},
      {u"token", u"a  b", valid},
      {u"normalizedString", u"a\tb", lexical},
  };
  for (const ValueRow& row : rows) {
    const SimpleType type(TypeCodeFromName(row.type, false));
    EXPECT_EQ(type.CheckBuiltin(row.text, false), row.result)
        << ToNative(row.type) << " '" << ToNative(row.text) << "'";
  }
}

struct FacetRow {
  const char16_t* type;
  const char16_t* facet;
  const char16_t* bound;
  const char16_t* text;
  bool passes;
};

TEST(SimpleType, Facets) {
  const FacetRow rows[] = {
      {u"string", u"length", u"3", u"abc", true},
      {u"string", u"maxLength", u"2", u"abc", false},
      {u"hexBinary", u"length", u"2", u"0a0b", true},
      {u"NMTOKENS", u"minLength", u"3", u"a b", false},
      {u"int", u"length", u"9", u"1", true},
      {u"int", u"maxInclusive", u"10", u"10", true},
      {u"int", u"maxExclusive", u"10", u"010", false},
      {u"decimal", u"minExclusive", u"-1.5", u"-1.49", true},
      {u"double", u"minInclusive", u"1e3", u"999.9", false},
      {u"date", u"maxInclusive", u"2001-01-31", u"2001-02-01", false},
      {u"int", u"enumeration", u"7", u"+07", true},
      {u"decimal", u"enumeration", u"-0.50", u"-.5", true},
      {u"double", u"enumeration", u"1e1", u"10", true},
      {u"double", u"maxInclusive", u"INF", u"1e300", true},
      {u"double", u"minExclusive", u"-INF", u"NaN", false},
      {u"date", u"enumeration", u"2001-01-31Z", u"2001-01-31", false},
      {u"gYearMonth", u"maxInclusive", u"2001-01", u"2001-02", true},
      {u"gYear", u"maxInclusive", u"2001", u"02002", false},
      {u"base64Binary", u"maxLength", u"1", u"QUJD", true},
      {u"string", u"enumeration", u"7", u"07", false},
      {u"string", u"pattern", u"a+", u"aa", true},
      {u"string", u"pattern", u"a+", u"ab", false},
      {u"decimal", u"totalDigits", u"3", u"12.34", false},
      {u"decimal", u"fractionDigits", u"2", u"123.45", true},
      {u"string", u"whiteSpace", u"collapse", u" a ", true},
  };
  for (const FacetRow& row : rows) {
    SimpleType type(TypeCodeFromName(row.type, false));
    type.facets.push_back(CreateFacet(row.facet, row.bound));
    const TypeCheck wanted = row.passes ? TypeCheck::Valid : TypeCheck::FacetRefused;
    EXPECT_EQ(type.CheckBuiltin(row.text, true), wanted)
        << ToNative(row.facet) << "=" << ToNative(row.bound) << " on " << ToNative(row.text);
  }
  EXPECT_EQ(CreateFacet(u"size", u"1"), nullptr);
  EXPECT_FALSE(CreateFacet(u"length", u"x")->IsValidFor(SimpleType(TypeCode::String)));
  EXPECT_FALSE(CreateFacet(u"maxInclusive", u"x")->IsValidFor(SimpleType(TypeCode::Int)));
  EXPECT_TRUE(CreateFacet(u"whiteSpace", u"x")->IsValidFor(SimpleType(TypeCode::String)));
  SimpleType base(TypeCode::Int);
  base.facets.push_back(CreateFacet(u"maxInclusive", u"5"));
  EXPECT_FALSE(CreateFacet(u"enumeration", u"6")->IsValidFor(base));
  EXPECT_TRUE(CreateFacet(u"minInclusive", u"6")->IsValidFor(base));  // facets don't count
  base.next = std::make_shared<SimpleType>(TypeCode::Boolean);
  EXPECT_TRUE(CreateFacet(u"minInclusive", u"true")->IsValidFor(base));
}

TEST(SimpleType, ListsUnionsAndWhiteSpace) {
  SimpleType list(TypeCodeFromName(u"int", false));
  list.isList = true;
  list.facets.push_back(CreateFacet(u"maxLength", u"2"));
  TQString facet;
  EXPECT_EQ(list.CheckValue(u"1 2", facet), TypeCheck::Valid);
  EXPECT_EQ(list.CheckValue(u"1 x", facet), TypeCheck::Lexical);
  EXPECT_EQ(list.CheckValue(u"1 2 3", facet), TypeCheck::FacetRefused);
  EXPECT_EQ(ToNative(facet), "maxLength=\"2\"");

  SimpleType either(TypeCodeFromName(u"int", false));
  either.next = std::make_shared<SimpleType>(TypeCodeFromName(u"boolean", false));
  EXPECT_EQ(either.CheckValue(u"true", facet), TypeCheck::Valid);
  EXPECT_EQ(either.CheckValue(u"x", facet), TypeCheck::Lexical);

  SimpleType spaced(TypeCodeFromName(u"int", false));
  EXPECT_EQ(spaced.CheckValue(u" &#53; ", facet), TypeCheck::Lexical);
  spaced.facets.push_back(CreateFacet(u"whiteSpace", u"collapse"));
  EXPECT_EQ(spaced.CheckValue(u" &#53; ", facet), TypeCheck::Valid);
}

TEST(SimpleType, DecimalText) {
  EXPECT_TRUE(IsLess(u"-10", u"-9.9"));
  EXPECT_TRUE(IsLess(u" +0009", u"10"));
  EXPECT_TRUE(IsLess(u"1.05", u"1.5"));
  EXPECT_FALSE(IsLess(u"-0", u"0"));
  EXPECT_TRUE(IsEqual(u"1.50", u"01.5"));
  EXPECT_TRUE(IsEqual(u"-0", u"0.0"));
  EXPECT_FALSE(IsEqual(u"1", u"-1"));
}

}  // namespace
}  // namespace kelmora
