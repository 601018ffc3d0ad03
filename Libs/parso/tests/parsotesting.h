// What the tests of this directory share: grammars, texts and trees in one line.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "parso/parsoparser.h"

namespace kelmora {

inline TQString Wide(std::string_view latin1) {
  TQString text;
  for (const char unit : latin1) text += static_cast<char16_t>(static_cast<unsigned char>(unit));
  return text;
}

inline std::string Narrow(std::u16string_view text) {
  std::string narrow;
  for (const char16_t unit : text) narrow += unit < 128 ? static_cast<char>(unit) : '?';
  return narrow;
}

inline const ParsoGrammar& SystemGrammar(const char16_t* fileName) {
  static std::vector<std::pair<std::u16string, std::unique_ptr<ParsoGrammar>>> loaded;
  for (const auto& [name, grammar] : loaded) {
    if (name == fileName) return *grammar;
  }
  loaded.emplace_back(fileName, std::make_unique<ParsoGrammar>(fileName));
  return *loaded.back().second;
}

// "rule(child child 'text')": a node without children shows its text, a group is "*".
inline std::string Dump(const ParsoNode* root) {
  struct Level {
    const ParsoNode* node;
    bool open;
  };
  if (root == nullptr) return "no tree";
  std::string out;
  std::vector<Level> levels = {{root, false}};
  while (!levels.empty()) {
    Level& level = levels.back();
    const ParsoNode* node = level.node;
    if (!level.open) {
      const bool isGroup = node->rule->kind == ParsoKind::Group;
      out += isGroup ? "*" : Narrow(node->rule->name);
      if (node->firstChild != nullptr) {
        out += '(';
        level.open = true;
        levels.push_back({node->firstChild, false});
        continue;
      }
      out += " '" + Narrow(node->Text()) + "'";
    } else {
      out += ')';
    }
    levels.pop_back();
    if (node->next != nullptr && !levels.empty()) {
      out += ", ";
      levels.push_back({node->next, false});
    }
  }
  return out;
}

inline void UseDocumentMode() {
  ParsoMode::current = {.flatten = true, .dropEndNames = true, .compare = CompareExactly};
}

// As exact as CompareExactly, but not known to the machine: the plain interpreter runs.
inline bool CompareExactlyToo(const char16_t* a, const char16_t* b, std::size_t count) {
  return CompareExactly(a, b, count);
}

// The seed of a random comparison: another one in each run, and printed. --gtest_random_seed=N
// repeats the run with that seed.
inline unsigned FreshSeed() {
  static const unsigned seed = [] {
    constexpr unsigned kLargest = 99999;  // what the switch takes
    const auto given = static_cast<unsigned>(GTEST_FLAG_GET(random_seed));
    const unsigned chosen = given != 0 ? given : 1 + std::random_device()() % kLargest;
    std::printf("random seed %u\n", chosen);
    return chosen;
  }();
  return seed;
}

inline std::string ErrorOf(const ParsoParser& parser) {
  return std::to_string(parser.ErrorOffset()) + ": " + Narrow(parser.ErrorMessage());
}

}  // namespace kelmora
