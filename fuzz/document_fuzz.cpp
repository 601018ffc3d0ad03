// A whole document: grammar, source tree, namespaces, entities, written back as source.
#include "fuzz.h"
#include "xmltree/sourcewriter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  XPathTreeBuilder builder;
  const fuzz::Document document(builder, fuzz::Text(data, size));
  if (document.Root() == nullptr) return 0;
  TQString text;
  int cursor = 0;
  WriteSource(*document.Root()->source, text, cursor, 0, {});
  return 0;
}
