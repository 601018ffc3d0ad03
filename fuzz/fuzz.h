// What every fuzz target shares: its entry, and documents made of text in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"
#include "xmltree/fragmentparser.h"
#include "xmltree/xpathtreebuilder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace kelmora::fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Long-lived objects of one process.
class World {
 public:
  static World& Instance();

  DocumentManager& Manager() { return *manager_; }
  const DocumentKindRow& Row(GrammarKind kind) { return *kinds_.Find(kind); }

 private:
  World();

  DocumentKindTable kinds_;
  std::unique_ptr<DocumentManager> manager_;
};

// A document, in the encoding that its bytes show, with its source tree and, when it parsed, the
// tree that XPath reads. What it names elsewhere is not loaded: a text that could name something is
// not built.
class Document {
 public:
  Document(XPathTreeBuilder& builder, std::string_view bytes);
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  XPathNode* Root() const { return root_; }

 private:
  TQString text_;
  std::unique_ptr<XTree> tree_;
  XPathNode* root_ = nullptr;
};

}  // namespace kelmora::fuzz
