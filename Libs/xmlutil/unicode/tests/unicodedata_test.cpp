#include "unicode/unicodedata.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "ystreamimpl/embeddedfiles.h"

namespace kelmora {
namespace {

std::vector<std::string> Tokens(const std::string& line) {
  std::vector<std::string> tokens;  // empty fields make no token
  for (std::size_t start = 0; (start = line.find_first_not_of(";\r", start)) != line.npos;) {
    const std::size_t end = std::min(line.find_first_of(";\r", start), line.size());
    tokens.push_back(line.substr(start, end - start));
    start = end;
  }
  return tokens;
}

template <typename Visit>
void ForEachLine(std::u16string_view name, Visit visit) {
  const std::string_view data = LookupEmbeddedFileView(name);
  ASSERT_FALSE(data.empty());
  for (std::size_t start = 0; start < data.size();) {
    const std::size_t end = std::min(data.find('\n', start), data.size());
    const std::vector<std::string> tokens = Tokens(std::string(data.substr(start, end - start)));
    start = end + 1;
    if (tokens.empty()) continue;
    const unsigned long code = std::stoul(tokens[0], nullptr, 16);
    if (code > 0xFFFF || tokens.size() < 3) return;
    visit(code, tokens);
  }
}

std::u16string Widened(const std::string& text) {
  return {text.begin(), text.end()};
}

// Fills the table line by line: a listed unit, then the gap in front of it with what came before.
TEST(GeneralCategory, AgreesWithTheEmbeddedFile) {
  std::vector<std::u16string> expected(0x10000);
  std::u16string previousCategory = u"Cc";
  unsigned long previous = 0;
  ForEachLine(u"UnicodeData.txt", [&](unsigned long code, const std::vector<std::string>& tokens) {
    if (tokens[2].size() >= 3) return;
    expected[code] = Widened(tokens[2]);
    for (unsigned long c = previous + 1; c < code; ++c) expected[c] = previousCategory;
    previousCategory = expected[code];
    previous = code;
  });
  ASSERT_EQ(previous, 0xFFFDu);
  for (unsigned c = 0; c < expected.size(); ++c) {
    ASSERT_EQ(GeneralCategory(static_cast<char16_t>(c)), expected[c]) << std::hex << c;
  }
}

TEST(BlockName, AgreesWithTheEmbeddedFile) {
  std::vector<std::u16string> expected(0x10000);
  int blocks = 0;
  ForEachLine(u"Blocks.txt", [&](unsigned long code, const std::vector<std::string>& tokens) {
    const unsigned long last = std::stoul(tokens[1], nullptr, 16);
    for (unsigned long c = code; c <= last; ++c) expected[c] = Widened(tokens[2]);
    ++blocks;
  });
  EXPECT_EQ(blocks, 99);
  for (unsigned c = 0; c < expected.size(); ++c) {
    const char16_t* const name = BlockName(static_cast<char16_t>(c));
    ASSERT_EQ(name == nullptr ? u"" : name, expected[c]) << std::hex << c;
  }
}

TEST(UnicodeData, KnownUnits) {
  const struct {
    char16_t unit;
    std::u16string_view category;
    std::u16string_view block;
  } rows[] = {
      {0x0000, u"Cc", u"BasicLatin"},
      {u'A', u"Lu", u"BasicLatin"},
      {0x0378, u"Sk", u"GreekandCoptic"},  // not assigned; as U+0375
      {0x05BE, u"Po", u"Hebrew"},
      {0x10D0, u"Lo", u"Georgian"},  // lower case since
      {0x3000, u"Zs", u"CJKSymbolsandPunctuation"},
      {0x5000, u"Lo", u"CJKUnifiedIdeographs"},
      {0xD900, u"Cs", u"HighSurrogates"},
      {0xFFFE, u"", u"Specials"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(GeneralCategory(row.unit), row.category) << int{row.unit};
    EXPECT_EQ(BlockName(row.unit), row.block) << int{row.unit};
  }
  EXPECT_EQ(BlockName(0x0860), nullptr);
}

}  // namespace
}  // namespace kelmora
