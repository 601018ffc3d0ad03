// A schema that holds a document's declarations: the document is its own schema.
#include "fuzz.h"
#include "xmlutil/documentmodel.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  const std::string_view input = fuzz::Text(data, size);
  for (const std::string_view word : {"SYSTEM", "PUBLIC", "chemaLocation"}) {
    if (input.find(word) != std::string_view::npos) return 0;
  }
  TQString text = FromNative(input);
  text.ConvertLineEnds(u"\r");
  LoadError ignored;
  const auto tree = ParseXTree(fuzz::World::Instance().Row(GrammarKind::XML), text, {},
                               XTreeKind::Document, true, ignored);
  if (tree == nullptr) return 0;
  XPathTreeBuilder builder;
  DocumentModel model(&fuzz::World::Instance().Manager());
  try {
    XPathNode::DeleteTree(builder.Build(*tree->root, model, true, u""));
  } catch (const TQTreeLimitError&) {
  }
  return 0;
}
