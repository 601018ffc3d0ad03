// Runs a fuzz target without a fuzzer: every file of the folders given, every beginning of each,
// and a number of random edits of each, the same ones every time.
//
// usage: TARGET [--edits N] FOLDER...
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz.h"

namespace {

constexpr std::size_t kMostBeginnings = 4000;
constexpr unsigned kSeed = 20260101;

void Feed(const std::string& input) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

std::string Edited(std::string text, const std::vector<std::string>& all, std::mt19937& random) {
  const auto below = [&](std::size_t bound) { return random() % std::max<std::size_t>(bound, 1); };
  for (std::size_t edits = 1 + below(4); edits > 0; --edits) {
    const std::size_t at = below(text.size() + 1);
    const std::size_t length = std::min(below(12), text.size() - at);
    switch (below(4)) {
      case 0:
        text.erase(at, length);
        break;
      case 1:
        text.insert(at, 1, static_cast<char>(below(256)));
        break;
      case 2:
        text.insert(at, text.substr(at, length));
        break;
      default: {
        const std::string& other = all[below(all.size())];
        const std::size_t from = below(other.size());
        text.insert(at, other.substr(from, below(30)));
      }
    }
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  std::size_t edits = 100;
  std::vector<std::string> inputs;
  for (int i = 1; i < argc; ++i) {
    if (std::string_view(argv[i]) == "--edits" && i + 1 < argc) {
      edits = std::strtoul(argv[++i], nullptr, 10);
      continue;
    }
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
      paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    for (const auto& path : paths) {
      std::ifstream file(path, std::ios::binary);
      inputs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
  }
  if (inputs.empty()) {
    std::fprintf(stderr, "no inputs\n");
    return 1;
  }
  std::mt19937 random(kSeed);
  for (const std::string& input : inputs) {
    Feed(input);
    const std::size_t step = 1 + input.size() / kMostBeginnings;
    for (std::size_t size = 0; size < input.size(); size += step) Feed(input.substr(0, size));
    for (std::size_t i = 0; i < edits; ++i) Feed(Edited(input, inputs, random));
  }
  std::printf("%zu inputs\n", inputs.size());
  return 0;
}
