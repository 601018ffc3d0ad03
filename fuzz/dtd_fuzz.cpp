// An internal subset, and content that refers to what it declares. The two are parted by a line
// that holds a percent sign alone.
#include <string>

#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  constexpr std::string_view kParting = "\n%\n";
  const std::string_view input = fuzz::Text(data, size);
  const std::size_t parting = std::min(input.find(kParting), input.size());
  const std::string_view content = input.substr(std::min(parting + kParting.size(), input.size()));
  std::string text = "<?xml version='1.0' encoding='UTF-8'?><!DOCTYPE a [";
  text += input.substr(0, parting);
  text += "]><a>";
  text += content;
  text += "</a>";
  XPathTreeBuilder builder;
  const fuzz::Document document(builder, text);
  return 0;
}
