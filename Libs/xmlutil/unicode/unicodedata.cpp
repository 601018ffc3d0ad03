#include "unicode/unicodedata.h"

#include <algorithm>
#include <iterator>

#include "unicodetable.h"

namespace kelmora {

namespace {

// kCategoryNames, kPageOfUnits, kCategoryPages and kBlocks, which ascends.
#include "unicodetable_generated.inc"

}  // namespace

const char16_t* GeneralCategory(char16_t unit) {
  const CategoryPage& page = kCategoryPages[kPageOfUnits[unit / kPageUnits]];
  return kCategoryNames[page[unit % kPageUnits]];
}

const char16_t* BlockName(char16_t unit) {
  const auto block = std::lower_bound(
      std::begin(kBlocks), std::end(kBlocks), unit,
      [](const UnicodeBlock& candidate, char16_t wanted) { return candidate.range.last < wanted; });
  return block != std::end(kBlocks) && block->range.first <= unit ? block->name : nullptr;
}

}  // namespace kelmora
