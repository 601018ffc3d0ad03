// The text writer: the text nodes as they stand. CDATA nodes have no place in it.
#include "resultwalk.h"
#include "resultwriter.h"

namespace kelmora {

namespace {

class TextWriter final : public ResultWriter {
 public:
  struct Level {};

  explicit TextWriter(const WriterInput& input) : ResultWriter(input) {}

  void WriteAll(const XPathNode& root) {
    WalkResult(root, *this, Level());
    Finish();
  }

  const XPathNode* Start(const XPathNode& node, Level /*level*/, Level& /*inner*/) {
    if (node.kind == XPathNodeKind::Text) Write(node.GetValue());
    const bool descends = node.kind == XPathNodeKind::Root || node.kind == XPathNodeKind::Element;
    return descends ? node.firstChild : nullptr;
  }
  void End(const XPathNode& /*node*/, Level /*inner*/) {}
};

}  // namespace

void WriteText(const WriterInput& input) {
  TextWriter(input).WriteAll(input.root);
}

}  // namespace kelmora
