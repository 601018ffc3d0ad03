#include "xmltree/fragmentparser.h"

#include <utility>

#include "parsetreewalk.h"
#include "parso/parsoparser.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

// The inner rules of an element declaration do not tell which group they are the inside of.
struct InnerRule {
  View name;
  XTreeDTDElement::Item item;
};
constexpr InnerRule kInnerRules[] = {
    {u"elementMixedI", XTreeDTDElement::Mixed},
    {u"elementSeqI", XTreeDTDElement::Sequence},
    {u"elementChoiceI", XTreeDTDElement::Choice},
};

void PrepareRoot(XTreeContainer& root, View startRule, int length) {
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

Place PlaceOf(View text, std::size_t offset) {
  Place place;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    const bool isBreak = text[i] == u'\r';
    place.line += isBreak ? 1 : 0;
    place.character = isBreak ? 1 : place.character + 1;
  }
  return place;
}

TQString DescribeFailure(const ParsoParser& parser, View text) {
  const Place place = PlaceOf(text, static_cast<std::size_t>(parser.ErrorOffset()));
  const TQString expected = parser.ErrorMessage();
  TQString message = TQString::Format(u"Line %d, character %d: ", {place.line, place.character});
  // Not through Format, which has a largest length.
  message += expected.IsEmpty() ? u"syntax error" : u"expected ";
  message += expected;
  return message;
}

// The one way in which documents, DTDs and entities are parsed, into a tree that is new. `text` has
// a 0 behind it.
bool ParseInto(XTree& tree, const DocumentKindRow& row, View text, View startRule,
               XTreeKind rootKind, bool normalize, LoadError& error) {
  tree.root = tree.MakeOfKind(rootKind)->AsContainer();
  PrepareRoot(*tree.root, startRule, static_cast<int>(text.size()));
  ParsoParser parser(row.grammar.get());
  // The parser's construction has reset the mode.
  ParsoMode::current = {.flatten = true, .dropEndNames = true, .compare = CompareExactly};
  if (!parser.Parse(text.data(), static_cast<std::int32_t>(text.size()), startRule)) {
    error.Set(LoadError::Parsing, LoadError::ParseFailed, DescribeFailure(parser, text));
    return false;
  }
  ParseTreeWalk walk(tree, text.data(), normalize);
  if (!walk.Run(*parser.Root(), *tree.root)) {
    error.Set(LoadError::Parsing, LoadError::WalkFailed);
    return false;
  }
  parser.ReleaseTree();
  if (normalize) walk.Tidy();
  return true;
}

std::shared_ptr<Arena> ArenaOfPieces() {
  static std::weak_ptr<Arena> shared;
  std::shared_ptr<Arena> arena = shared.lock();
  if (arena == nullptr) shared = arena = std::make_shared<Arena>();
  return arena;
}

}  // namespace

std::unique_ptr<XTree> ParseXTree(const DocumentKindRow& row, const TQString& text, View startRule,
                                  XTreeKind rootKind, bool normalize, LoadError& error) {
  auto tree = std::make_unique<XTree>();
  const bool parses = ParseInto(*tree, row, text, startRule, rootKind, normalize, error);
  return parses ? std::move(tree) : nullptr;
}

std::unique_ptr<XTree> ParseFragment(const DocumentKindRow& row, View text, View startRule,
                                     XTreeKind rootKind, bool normalize) {
  auto tree = std::make_unique<XTree>(ArenaOfPieces());
  LoadError ignored;
  const bool parses =
      ParseInto(*tree, row, tree->Keep(text), startRule, rootKind, normalize, ignored);
  return parses ? std::move(tree) : nullptr;
}

}  // namespace kelmora
