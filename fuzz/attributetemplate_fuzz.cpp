// An attribute value template, run in a stylesheet of its own.
#include <string>

#include "fuzz.h"
#include "xmlutil/documentmodel.h"
#include "xslt/xsltprocessor.h"

namespace {

std::string Escaped(std::string_view text) {
  std::string out;
  for (const char unit : text) {
    switch (unit) {
      case '<':
        out += "&lt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += unit;
    }
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  const std::string_view input = fuzz::Text(data, size);
  if (input.find("document") != std::string_view::npos) return 0;
  std::string sheet =
      "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">"
      "<xsl:template match=\"/\"><a x=\"";
  sheet += Escaped(input);
  sheet += "\"/></xsl:template></xsl:stylesheet>";
  XPathTreeBuilder builder;
  const fuzz::Document stylesheet(builder, sheet);
  const fuzz::Document source(builder, "<a b='1'><c/></a>");
  if (stylesheet.Root() == nullptr) return 0;
  XSLTProcessor processor(&fuzz::World::Instance().Manager());
  try {
    processor.SetTreeBuilder(&builder);
    processor.Start(stylesheet.Root(), source.Root());
    while (!processor.CallStack().empty() && processor.Step()) continue;
  } catch (const TQXSLTError&) {
  }
  return 0;
}
