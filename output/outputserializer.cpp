#include "output/outputserializer.h"

#include "resultnodes.h"
#include "resultwriter.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

// Whether the result begins with an element html of no namespace, but for white space.
bool BeginsLikeHtml(const XPathNode& root) {
  const XPathNode* first = FirstElement(root);
  if (first == nullptr) return false;
  for (const XPathNode* node = first->previous; node != nullptr; node = node->previous) {
    if (node->kind == XPathNodeKind::Text && !IsBlank(node->GetValue())) return false;
  }
  return first->namespaceURI == nullptr && EqualsIgnoringAsciiCase(first->GetLocalName(), u"html");
}

}  // namespace

const TQString& OutputSerializer::Serialize(const struct OutputSettings& settings) {
  if (ResultRoot == nullptr) return Text;
  ClearText();
  Settings = settings;
  const OutputMethod& method = ChooseMethod();
  const bool indent = Settings.IndentGiven ? Settings.Indent : method.indents;
  method.write({*ResultRoot, Settings, indent, LineEnd, Encoding, Text});
  return Text;
}

// A method that is given and has no row is a prefixed name, and chooses nothing.
const OutputMethod& OutputSerializer::ChooseMethod() {
  if (Settings.MethodGiven) {
    if (const OutputMethod* given = FindOutputMethod(Settings.Method)) return *given;
  }
  const OutputMethod* html = BeginsLikeHtml(*ResultRoot) ? FindOutputMethod(u"html") : nullptr;
  const OutputMethod& chosen = html != nullptr ? *html : DefaultOutputMethod();
  if (html != nullptr || FirstElement(*ResultRoot) == nullptr) Settings.SetMethod(chosen.name);
  return chosen;
}

}  // namespace kelmora
