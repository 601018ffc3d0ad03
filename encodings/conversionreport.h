// What the converters could not map in the conversion that runs now or ran last.
#pragma once

#include <cstddef>

namespace kelmora {

class ConversionReport {
 public:
  static constexpr std::size_t kMostListed = 40;

  void Clear() { *this = {}; }
  // `unit` is a code when decoding, a character when encoding. A unit listed before is counted.
  void Record(char16_t unit);

  bool memoryRanOut = false;
  std::size_t count = 0;
  std::size_t listed = 0;
  char16_t units[kMostListed + 1] = {};  // the different ones in order of appearance, then a 0
};

// The one report of the process.
ConversionReport& TheConversionReport();

}  // namespace kelmora
