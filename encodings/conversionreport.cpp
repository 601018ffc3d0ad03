#include "conversionreport.h"

#include <algorithm>

#include "encodings/encodings.h"
#include "tqcore/processstate.h"

namespace kelmora {

void ConversionReport::Record(char16_t unit) {
  ++count;
  char16_t* const end = units + listed;
  if (listed < kMostListed && std::find(units, end, unit) == end) units[listed++] = unit;
}

ConversionReport& TheConversionReport() {
  return ProcessState::Of<ConversionReport>();
}

bool ConversionRanOutOfMemory() {
  return TheConversionReport().memoryRanOut;
}

std::size_t UnmappableCount() {
  return TheConversionReport().count;
}

std::u16string_view UnmappableChars() {
  const ConversionReport& report = TheConversionReport();
  return {report.units, report.listed};
}

}  // namespace kelmora
