#include "xmltree/fragmentparser.h"

#include <utility>

#include "parsetreewalk.h"
#include "parso/parsoparser.h"

namespace kelmora {
namespace {

// The inner rules of an element declaration do not tell which group they are the inside of.
struct InnerRule {
  std::u16string_view name;
  XTreeDTDElement::Item item;
};
constexpr InnerRule kInnerRules[] = {
    {u"elementMixedI", XTreeDTDElement::Mixed},
    {u"elementSeqI", XTreeDTDElement::Sequence},
    {u"elementChoiceI", XTreeDTDElement::Choice},
};

void PrepareRoot(XTreeContainer& root, std::u16string_view startRule, int length) {
  root.sourceStart = 0;
  root.sourceEnd = length;
  if (root.kind != XTreeKind::DTDElement) return;
  for (const InnerRule& rule : kInnerRules) {
    if (rule.name == startRule) static_cast<XTreeDTDElement&>(root).item = rule.item;
  }
}

// Where a unit stands, both counted from 1. A CR is the only line end of a loaded text.
struct Place {
  int line = 1;
  int character = 1;
};

Place PlaceOf(std::u16string_view text, std::size_t offset) {
  Place place;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    const bool isBreak = text[i] == u'\r';
    place.line += isBreak ? 1 : 0;
    place.character = isBreak ? 1 : place.character + 1;
  }
  return place;
}

TQString DescribeFailure(const ParsoParser& parser, const TQString& text) {
  const Place place = PlaceOf(text, static_cast<std::size_t>(parser.ErrorOffset()));
  const TQString expected = parser.ErrorMessage();
  TQString message = TQString::Format(u"Line %d, character %d: ", {place.line, place.character});
  // Not through Format, which has a largest length.
  message += expected.IsEmpty() ? u"syntax error" : u"expected ";
  message += expected;
  return message;
}

// The one way in which documents, DTDs and entities are parsed. The parser's own construction
// resets the mode, so it is set behind that.
bool RunParser(ParsoParser& parser, const TQString& text, std::u16string_view startRule) {
  ParsoMode::current = {.flatten = true, .dropEndNames = true, .compare = CompareExactly};
  return parser.Parse(text, startRule);
}

}  // namespace

std::unique_ptr<XTree> ParseXTree(const DocumentKindRow& row, const TQString& text,
                                  std::u16string_view startRule, XTreeKind rootKind, bool normalize,
                                  LoadError& error) {
  auto tree = std::make_unique<XTree>();
  tree->root = tree->MakeOfKind(rootKind)->AsContainer();
  PrepareRoot(*tree->root, startRule, text.Length());
  ParsoParser parser(row.grammar.get());
  if (!RunParser(parser, text, startRule)) {
    error.Set(LoadError::Parsing, LoadError::ParseFailed, DescribeFailure(parser, text));
    return nullptr;
  }
  // The parse tree is given back before anything else is made.
  const std::unique_ptr<ParsoTree> parsed = parser.TakeTree();
  ParseTreeWalk walk(*tree, text.c_str(), normalize);
  if (!walk.Run(*parsed->root, *tree->root)) {
    error.Set(LoadError::Parsing, LoadError::WalkFailed);
    return nullptr;
  }
  if (normalize) tree->root->NormalizeTree(*tree);
  return tree;
}

std::unique_ptr<XTree> ParseFragment(const DocumentKindRow& row, std::u16string_view text,
                                     std::u16string_view startRule, XTreeKind rootKind,
                                     bool normalize) {
  TQString kept(text);
  LoadError ignored;
  auto tree = ParseXTree(row, kept, startRule, rootKind, normalize, ignored);
  if (tree != nullptr) tree->buffer = std::move(kept);
  return tree;
}

}  // namespace kelmora
