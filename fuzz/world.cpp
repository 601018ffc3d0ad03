#include "fuzz.h"

#include <optional>
#include <utility>

#include "encodings/encodings.h"
#include "xmlutil/documentmodel.h"

namespace kelmora::fuzz {

namespace {

// Words without which a document names no other: a fuzzer must not read files or reach a network.
constexpr std::u16string_view kNames[] = {u"SYSTEM",   u"PUBLIC",    u"chemaLocation",
                                          u"x-schema", u"XMLSchema", u"xml-data"};

bool NamesOtherDocuments(std::u16string_view text) {
  for (const std::u16string_view word : kNames) {
    if (text.find(word) != std::u16string_view::npos) return true;
  }
  return false;
}

}  // namespace

World::World() {
  TQString ignored;
  static_cast<void>(kinds_.Fill(false, ignored));
  manager_ = std::make_unique<DocumentManager>(kinds_);
}

World& World::Instance() {
  static World world;
  return world;
}

Document::Document(XPathTreeBuilder& builder, std::string_view bytes) {
  const DetectedEncoding encoding = DetectEncoding(bytes);
  std::optional<TQString> text = DecodeText(bytes, encoding.id, encoding.byteOrder);
  if (!text.has_value()) return;
  text_ = std::move(*text);
  text_.ConvertLineEnds(u"\r");
  LoadError ignored;
  tree_ = ParseXTree(World::Instance().Row(GrammarKind::XML), text_, {}, XTreeKind::Document, true,
                     ignored);
  if (tree_ == nullptr || NamesOtherDocuments(text_)) return;
  DocumentModel model(&World::Instance().Manager());
  try {
    root_ = builder.Build(*tree_->root, model, true, u"memory.xml");
  } catch (const TQTreeLimitError&) {
    root_ = nullptr;
  }
}

Document::~Document() {
  XPathNode::DeleteTree(root_);
}

}  // namespace kelmora::fuzz
