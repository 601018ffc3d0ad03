// A whole run: stylesheet and source, parted by a line of three percent signs, up to the text of
// the result. Without the parting the stylesheet is its own source.
#include <string>

#include "fuzz.h"
#include "xmlutil/documentmodel.h"
#include "xslt/xsltprocessor.h"

namespace {

constexpr std::string_view kParting = "\n%%%\n";
constexpr std::size_t kMostFrames = 300;
constexpr int kMostSteps = 20000;  // stylesheets that do not end are not what is sought here

void Run(std::string_view stylesheet, std::string_view source) {
  using namespace kelmora;
  XPathTreeBuilder builder;
  const fuzz::Document sheet(builder, stylesheet);
  const fuzz::Document input(builder, source);
  if (sheet.Root() == nullptr || input.Root() == nullptr) return;
  XSLTProcessor processor(&fuzz::World::Instance().Manager());
  processor.SetTreeBuilder(&builder);
  processor.Start(sheet.Root(), input.Root());
  for (int step = 0; step < kMostSteps && !processor.CallStack().empty(); ++step) {
    if (processor.CallStack().size() > kMostFrames || !processor.Step()) return;
    if (processor.MessagePending()) return;
  }
  processor.ResultText();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = kelmora::fuzz::Text(data, size);
  // Nothing is loaded from elsewhere.
  for (const std::string_view word : {"import", "include", "document"}) {
    if (input.find(word) != std::string_view::npos) return 0;
  }
  const std::size_t parting = input.find(kParting);
  const bool hasSource = parting != std::string_view::npos;
  try {
    Run(input.substr(0, parting), hasSource ? input.substr(parting + kParting.size()) : input);
  } catch (const kelmora::TQXSLTError& error) {
    static_cast<void>(error.Text());
  }
  return 0;
}
