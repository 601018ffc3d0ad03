// What hostile entities may not do: grow, recur, take time without end.
#include <gtest/gtest.h>

#include <string>

#include "modeltesting.h"

namespace kelmora {
namespace {

TEST_F(ModelTest, EntitiesCannotGrowWithoutEnd) {
  std::string tenfold = "<!ENTITY e0 'xxxxxxxxxx'>";
  std::string parameters = "<!ENTITY % e0 'xxxxxxxxxx'>";
  for (int i = 1; i < 12; ++i) {
    tenfold += Numbered("<!ENTITY e# '", i);
    tenfold += Repeat(Numbered("&e#;", i - 1), 10);
    tenfold += "'>";
    parameters += Numbered("<!ENTITY % e# '", i);
    parameters += Repeat(Numbered("%e#;", i - 1), 10);
    parameters += "'>";
  }
  const std::string big(500000, 'y');
  const struct {
    const char* symptom;
    std::string subset;
    std::string content;
  } rows[] = {
      {"ten by ten", tenfold, "&e11;"},
      {"declared and not used", parameters, ""},
      {"one declaration with many references",
       "<!ENTITY b '" + big + "'><!ENTITY c '" + Repeat("&b;", 1000) + "'>", ""},
      {"one entity read as declarations again and again",
       "<!ENTITY % d '<!--" + big + "-->'>" + Repeat("%d;\n<!---->", 1000), ""},
      {"one entity in many lists",
       "<!ENTITY % a 'x CDATA #IMPLIED " + Repeat("xyz CDATA #IMPLIED ", 30000) + "'>" +
           Repeat("<!ATTLIST r %a;>", 1000),
       ""},
      {"used again and again", "<!ENTITY b '" + big + "'>", Repeat("<a>&b;</a>", 1000)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.symptom);
    EXPECT_THROW(Build("<!DOCTYPE r [" + row.subset + "]><r>" + row.content + "</r>"),
                 TQTreeLimitError);
  }
}

TEST_F(ModelTest, EntityTextIsBoundedExactly) {
  constexpr int kSize = 500000;
  const std::string entities = "<!ENTITY one 'x'><!ENTITY big '" + std::string(kSize, 'y') + "'>";
  const std::string atLimit = Repeat("&big;", static_cast<int>(kEntityTextLimit / kSize));
  const auto build = [&](const std::string& value) {
    Build("<!DOCTYPE r [" + entities + "<!ENTITY all '" + value + "'>]><r/>");
  };
  EXPECT_NO_THROW(build(atLimit));
  EXPECT_THROW(build(atLimit + "&one;"), TQTreeLimitError);
}

TEST_F(ModelTest, RecursiveEntitiesEnd) {
  EXPECT_EQ(Build("<!DOCTYPE a [<!ENTITY a 'x&b;y'><!ENTITY b 'p&a;q'>]><a>&a;</a>"),
            "(a'xpxyqy')");
  EXPECT_EQ(Build("<!DOCTYPE a [<!ENTITY s 'm&s;n'>]><a>&s;</a>"), "(a'mn')");
  Write("chain.dtd", "<!ENTITY % s SYSTEM 'other.dtd'>%s;");
  Write("other.dtd", "<!ENTITY % t SYSTEM 'chain.dtd'>%t;");
  Build("<!DOCTYPE a SYSTEM 'chain.dtd'><a/>");
  EXPECT_EQ(Error(), ModelCode::WrongEntityKind);
  Write("self.ent", "<b>&s;</b>");
  EXPECT_THROW(Build("<!DOCTYPE a [<!ENTITY s SYSTEM 'self.ent'>]><a>&s;</a>"), TQTreeLimitError);
}

}  // namespace
}  // namespace kelmora
