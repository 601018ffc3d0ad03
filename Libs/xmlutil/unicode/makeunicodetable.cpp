// Makes unicodetable_generated.inc. A program of the build, not of the system.
//
// usage: makeunicodetable unicodedata.txt blocks.txt OUTPUT
//
// unicodedata.txt lists most characters one by one, but of large ranges only the first and the
// last; "<CJK Ideograph, First>" is a line like any other here. A listed code point passes its
// category on to all that follow it up to the next one listed, which fills those ranges, and gaps
// as well.
#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "unicodetable.h"

namespace {

using kelmora::kPages;
using kelmora::kPageUnits;
using kelmora::kUnits;
using Fields = std::vector<std::string>;

Fields Split(std::string line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
  Fields fields;
  for (std::size_t start = 0; start <= line.size();) {
    const std::size_t end = std::min(line.find(';', start), line.size());
    fields.push_back(line.substr(start, end - start));
    start = end + 1;
  }
  return fields;
}

// The fields of the lines up to the first code above the plane. Nothing if a line lacks a field.
std::optional<std::vector<Fields>> ReadLines(const char* path) {
  constexpr std::size_t kNeededFields = 3;
  std::ifstream file(path, std::ios::binary);
  std::vector<Fields> lines;
  std::string line;
  while (std::getline(file, line)) {
    Fields fields = Split(line);
    if (fields.size() < kNeededFields) return std::nullopt;
    if (std::stoul(fields[0], nullptr, 16) >= kUnits) break;
    lines.push_back(std::move(fields));
  }
  if (lines.empty()) return std::nullopt;
  return lines;
}

struct Categories {
  std::vector<std::string> names = {""};  // the first is that of units behind the last one listed
  std::vector<std::uint8_t> ofUnit = std::vector<std::uint8_t>(kUnits);

  std::uint8_t IndexOf(const std::string& name) {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found != names.end()) return static_cast<std::uint8_t>(found - names.begin());
    names.push_back(name);
    return static_cast<std::uint8_t>(names.size() - 1);
  }
};

Categories CategoriesOf(const std::vector<Fields>& lines) {
  Categories result;
  std::size_t next = 0;
  std::uint8_t previous = result.IndexOf("Cc");
  for (const Fields& fields : lines) {
    const std::size_t code = std::stoul(fields[0], nullptr, 16);
    while (next < code) result.ofUnit[next++] = previous;
    previous = result.IndexOf(fields[2]);
    result.ofUnit[next++] = previous;
  }
  return result;
}

template <typename Item>
void WriteNumbers(std::ostream& out, const Item& items) {
  constexpr std::size_t kInLine = 32;
  std::size_t written = 0;
  for (const std::size_t value : items) {
    out << (written++ % kInLine == 0 ? "\n    " : "") << value << ",";
  }
}

void WriteCategories(std::ostream& out, const Categories& categories) {
  out << "constexpr const char16_t* kCategoryNames[] = {";
  for (const std::string& name : categories.names) out << "u\"" << name << "\", ";
  out << "};\n";

  using Page = std::array<std::uint8_t, kPageUnits>;
  std::vector<Page> pages;
  std::vector<std::size_t> pageOfUnits;
  for (std::size_t i = 0; i < kPages; ++i) {
    Page page;
    std::copy_n(categories.ofUnit.begin() + static_cast<std::ptrdiff_t>(i * kPageUnits), kPageUnits,
                page.begin());
    const auto found = std::find(pages.begin(), pages.end(), page);
    pageOfUnits.push_back(static_cast<std::size_t>(found - pages.begin()));
    if (found == pages.end()) pages.push_back(page);
  }
  out << "constexpr std::uint8_t kPageOfUnits[kPages] = {";
  WriteNumbers(out, pageOfUnits);
  out << "};\nconstexpr CategoryPage kCategoryPages[] = {";
  for (const Page& page : pages) {
    out << "\n    {";
    WriteNumbers(out, page);
    out << "},";
  }
  out << "};\n";
}

void WriteBlocks(std::ostream& out, const std::vector<Fields>& lines) {
  out << "constexpr UnicodeBlock kBlocks[] = {\n";
  for (const Fields& fields : lines) {
    out << "    {{0x" << fields[0] << ", 0x" << fields[1] << "}, u\"" << fields[2] << "\"},\n";
  }
  out << "};\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: makeunicodetable unicodedata.txt blocks.txt OUTPUT\n", stderr);
    return 2;
  }
  const auto characters = ReadLines(argv[1]);
  const auto blocks = ReadLines(argv[2]);
  if (!characters || !blocks) {
    std::fputs("makeunicodetable: malformed data\n", stderr);
    return 1;
  }
  std::ofstream out(argv[3]);
  WriteCategories(out, CategoriesOf(*characters));
  WriteBlocks(out, *blocks);
  out.close();
  return out ? 0 : 1;
}
