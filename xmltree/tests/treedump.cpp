#include "treedump.h"

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

template <class Node>
std::string DumpChildren(const Node* child) {
  std::string result;
  for (; child != nullptr; child = child->next) result += Join(" ", Dump(*child));
  return result;
}

template <class Node>
std::string InBrackets(const Node* child) {
  return child != nullptr ? Join("(", DumpChildren(child).substr(1), ")") : std::string();
}

// Texts and the like look alike in both trees.
std::string DumpLeaf(char mark, View name, View text) {
  const std::string value = ToNative(text);
  switch (mark) {
    case '\'':
      return Join("'", value, "'");
    case '[':
      return Join("[", value, "]");
    case '?':
      return Join("?", ToNative(name), text.empty() ? "" : ":", value);
    case '!':
      return Join("!", value);
    default:
      return Join(std::string(1, mark), ToNative(name), "=", value);
  }
}

}  // namespace

const DocumentKindTable& Kinds() {
  static DocumentKindTable kinds;
  static TQString errorText;
  static const bool isFilled = kinds.Fill(false, errorText);
  return isFilled ? kinds : kinds;
}

std::unique_ptr<ParsedText> ParseText(View text, GrammarKind kind, bool normalize) {
  auto parsed = std::make_unique<ParsedText>();
  parsed->text = text;
  const XTreeKind root = kind == GrammarKind::DTD      ? XTreeKind::DTDDocument
                         : kind == GrammarKind::Entity ? XTreeKind::Entity
                                                       : XTreeKind::Document;
  parsed->tree = ParseXTree(*Kinds().Find(kind), parsed->text, {}, root, normalize, parsed->error);
  return parsed;
}

std::string Dump(const XTreeNode& node) {
  const std::size_t kind = static_cast<std::size_t>(node.kind);
  const char mark = kind < 10 ? ".....@'[!?"[kind] : '.';
  if (mark != '.') return DumpLeaf(mark, node.GetName(), node.GetText());
  const bool isElement = node.kind == XTreeKind::Element;
  std::string result = isElement ? "<" : std::to_string(kind);
  if (!node.GetName().empty()) result += Join(isElement ? "" : ":", ToNative(node.GetName()));
  if (node.kind == XTreeKind::DTDElement) {
    const auto& element = static_cast<const XTreeDTDElement&>(node);
    result += Join(" i", std::to_string(element.item));
    if (element.repeat != 0) result += Join(" r", std::to_string(element.repeat));
  }
  if (node.kind == XTreeKind::DTDAttlist) {
    result += Join(" i", std::to_string(static_cast<const XTreeDTDAttlist&>(node).item));
  }
  if (!node.GetText().empty()) result += Join(" '", ToNative(node.GetText()), "'");
  if (isElement) return Join(result, DumpChildren(node.FirstChild()), ">");
  return result + InBrackets<XTreeNode>(node.FirstChild());
}

std::string Dump(const XPathNode& node) {
  const std::size_t kind = static_cast<std::size_t>(node.kind);
  const char mark = kind < 8 ? "..'@#?[!"[kind] : '.';
  const std::string space =
      node.namespaceURI != nullptr ? Join("{", ToNative(*node.namespaceURI), "}") : "";
  std::string result = node.synthetic ? "~" : "";
  if (mark == '@') {
    return Join(result, "@", space, DumpLeaf('@', node.GetName(), node.GetValue()).substr(1));
  }
  if (mark != '.') return result + DumpLeaf(mark, node.GetName(), node.GetValue());
  if (node.kind == XPathNodeKind::Element) {
    return Join(result, "<", space, ToNative(node.GetName()), DumpChildren(node.firstChild), ">");
  }
  return Join(result, std::to_string(kind), InBrackets(node.firstChild));
}

bool FakeDeclaration::GetDefaults(std::vector<DefaultedAttribute>& found, TQString& foundText) {
  found = attributes;
  foundText = text;
  return true;
}

bool FakeModel::ExpandEntityReferences(View text, TQString& out) {
  out.Clear();
  bool isComplete = true;
  while (!text.empty()) {
    const std::size_t start = std::min(text.find(u'&'), text.size());
    out += text.substr(0, start);
    text.remove_prefix(start);
    if (text.empty()) break;
    const std::size_t end = std::min(text.find(u';'), text.size() - 1);
    const auto entity = entities.find(text.substr(1, end - 1));
    if (entity == entities.end() && text[1] != u'#') isComplete = false;
    out += entity == entities.end() ? text.substr(0, end + 1) : entity->second.View();
    if (budget != nullptr) budget->Check(out.Length());
    text.remove_prefix(end + 1);
  }
  return isComplete;
}

std::unique_ptr<XTree> FakeModel::ParseContent(View text) {
  return ParseFragment(*Kinds().Find(GrammarKind::XML), text, u"content", XTreeKind::Element, true);
}

ElementDeclaration* FakeModel::FindDeclaration(View name, InternedURI, ElementDeclaration*) {
  const auto found = declarations.find(name);
  return found != declarations.end() ? &found->second : nullptr;
}

}  // namespace kelmora
