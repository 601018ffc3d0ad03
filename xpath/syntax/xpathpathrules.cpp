#include "syntax/xpathaxisnames.h"
#include "syntax/xpathparser.h"

namespace kelmora {
namespace {

constexpr std::u16string_view kSeparators[] = {u"//", u"/"};
constexpr std::u16string_view kAbbreviatedSteps[] = {u"..", u"."};
constexpr std::u16string_view kNodeTypes[] = {u"comment", u"text", u"processing-instruction",
                                              u"node"};

}  // namespace

XPathParseNode* XPathParser::ParseLocationPath() {
  if (XPathParseNode* path = ParseRelativePath()) return MakeWith(XPathRule::LocationPath, path);
  std::size_t start = cursor_;
  XPathParseNode* absolute = nullptr;
  if (XPathParseNode* slashes = Token(u"//")) {
    if (XPathParseNode* path = ParseRelativePath()) {
      absolute = MakeWith(XPathRule::RootDescendantPath, slashes);
      Add(absolute, path);
    } else {
      cursor_ = start;
    }
  }
  if (absolute == nullptr) {
    XPathParseNode* slash = Token(u"/");
    if (slash == nullptr) return nullptr;
    absolute = MakeWith(XPathRule::RootPath, slash);
    if (XPathParseNode* path = ParseRelativePath()) Add(absolute, path);
  }
  return MakeWith(XPathRule::LocationPath, MakeWith(XPathRule::AbsoluteLocationPath, absolute));
}

XPathParseNode* XPathParser::ParseRelativePath() {
  XPathParseNode* step = ParseStep();
  if (step == nullptr) return nullptr;
  XPathParseNode* path = MakeWith(XPathRule::RelativeLocationPath, step);
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* token = AnyTokenOf(kSeparators, std::size(kSeparators));
    if (token == nullptr) return path;
    step = ParseStep();
    if (step == nullptr) {
      cursor_ = before;
      return path;
    }
    XPathParseNode* separated =
        MakeWith(XPathRule::SeparatedStep, MakeWith(XPathRule::StepSeparator, token));
    Add(separated, step);
    Add(path, separated);
  }
}

XPathParseNode* XPathParser::ParseStep() {
  if (XPathParseNode* full = ParseFullStep()) return MakeWith(XPathRule::Step, full);
  XPathParseNode* token = AnyTokenOf(kAbbreviatedSteps, std::size(kAbbreviatedSteps));
  if (token == nullptr) return nullptr;
  return MakeWith(XPathRule::Step, MakeWith(XPathRule::AbbreviatedStep, token));
}

XPathParseNode* XPathParser::ParseFullStep() {
  std::size_t start = cursor_;
  XPathParseNode* axis = ParseAxisSpecifier();
  XPathParseNode* test = ParseNodeTest();
  if (test == nullptr) {
    cursor_ = start;
    return nullptr;
  }
  XPathParseNode* step = MakeWith(XPathRule::FullStep, axis);
  Add(step, test);
  while (XPathParseNode* predicate = ParsePredicate()) Add(step, predicate);
  return step;
}

// Always succeeds: without "@" the leaf is empty.
XPathParseNode* XPathParser::ParseAxisSpecifier() {
  std::size_t start = cursor_;
  for (const AxisNameRow& row : kAxisNames) {
    XPathParseNode* name = Token(row.name);
    if (name == nullptr) continue;
    if (XPathParseNode* colons = Token(u"::")) {
      XPathParseNode* axis = MakeWith(XPathRule::NamedAxis, MakeWith(XPathRule::AxisName, name));
      Add(axis, colons);
      return MakeWith(XPathRule::AxisSpecifier, axis);
    }
    cursor_ = start;
    break;
  }
  XPathParseNode* at = Token(u"@");
  if (at == nullptr) {
    at = Make(XPathRule::Token);
    at->position = Remaining();
  }
  return MakeWith(XPathRule::AxisSpecifier, MakeWith(XPathRule::AbbreviatedAxis, at));
}

XPathParseNode* XPathParser::ParseNodeType() {
  XPathParseNode* token = AnyTokenOf(kNodeTypes, std::size(kNodeTypes));
  return token ? MakeWith(XPathRule::NodeType, token) : nullptr;
}

XPathParseNode* XPathParser::ParseNodeTest() {
  std::size_t start = cursor_;
  if (XPathParseNode* word = Token(u"processing-instruction")) {
    XPathParseNode* open = Token(u"(");
    XPathParseNode* target = open ? Literal() : nullptr;
    XPathParseNode* close = target ? Token(u")") : nullptr;
    if (close != nullptr) {
      XPathParseNode* test = MakeWith(XPathRule::PITest, word);
      for (XPathParseNode* part : {open, target, close}) Add(test, part);
      return MakeWith(XPathRule::NodeTest, test);
    }
    cursor_ = start;
  }
  if (XPathParseNode* type = ParseNodeType()) {
    XPathParseNode* open = Token(u"(");
    XPathParseNode* close = open ? Token(u")") : nullptr;
    if (close != nullptr) {
      XPathParseNode* test = MakeWith(XPathRule::NodeTypeTest, type);
      Add(test, open);
      Add(test, close);
      return MakeWith(XPathRule::NodeTest, test);
    }
    cursor_ = start;
  }
  XPathParseNode* name = Token(u"*");
  if (name == nullptr) name = PrefixWildcard(XPathRule::PrefixWildcard, XPathRule::NCName);
  if (name == nullptr) name = QName(XPathRule::QName, XPathRule::PrefixedName, XPathRule::NCName);
  if (name == nullptr) return nullptr;
  return MakeWith(XPathRule::NodeTest, MakeWith(XPathRule::NameTest, name));
}

XPathParseNode* XPathParser::ParsePredicate() {
  std::size_t start = cursor_;
  if (XPathParseNode* open = Token(u"[")) {
    if (XPathParseNode* expr = ParseExpr()) {
      if (XPathParseNode* close = Token(u"]")) {
        XPathParseNode* predicate = MakeWith(XPathRule::Predicate, open);
        Add(predicate, MakeWith(XPathRule::PredicateExpr, expr));
        Add(predicate, close);
        return predicate;
      }
    }
  }
  cursor_ = start;
  return nullptr;
}

// --- the restricted paths of identity constraints ---------------------------------------------

XPathParseNode* XPathParser::ParseIdentityStep(bool field) {
  if (XPathParseNode* self = Token(u".")) {
    return MakeWith(field ? XPathRule::FieldStep : XPathRule::SelectorStep, self);
  }
  XPathParseNode* name = Token(u"*");
  if (name == nullptr) {
    name = field ? PrefixWildcard(XPathRule::FieldPrefixWildcard, XPathRule::FieldName)
                 : PrefixWildcard(XPathRule::SelectorPrefixWildcard, XPathRule::SelectorName);
  }
  if (name == nullptr) {
    name = field ? QName(XPathRule::FieldQName, XPathRule::FieldPrefixedName, XPathRule::FieldName)
                 : QName(XPathRule::SelectorQName, XPathRule::SelectorPrefixedName,
                         XPathRule::SelectorName);
  }
  if (name == nullptr) return nullptr;
  return field ? MakeWith(XPathRule::FieldStep, MakeWith(XPathRule::FieldNameTest, name))
               : MakeWith(XPathRule::SelectorStep, MakeWith(XPathRule::SelectorNameTest, name));
}

XPathParseNode* XPathParser::ParseSelectorPath() {
  std::size_t start = cursor_;
  XPathParseNode* path = Make(XPathRule::SelectorPath);
  if (XPathParseNode* descend = Token(u".//")) {
    Add(path, MakeWith(XPathRule::SelectorDescendantStart, descend));
  }
  XPathParseNode* step = ParseIdentityStep(false);
  if (step == nullptr) {
    cursor_ = start;
    return nullptr;
  }
  Add(path, step);
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* slash = Token(u"/");
    step = slash ? ParseIdentityStep(false) : nullptr;
    if (step == nullptr) {
      cursor_ = before;
      return path;
    }
    XPathParseNode* separated = MakeWith(XPathRule::SelectorSeparatedStep, slash);
    Add(separated, step);
    Add(path, separated);
  }
}

XPathParseNode* XPathParser::ParseFieldPath() {
  std::size_t start = cursor_;
  XPathParseNode* path = Make(XPathRule::FieldPath);
  if (XPathParseNode* descend = Token(u".//")) {
    Add(path, MakeWith(XPathRule::FieldDescendantStart, descend));
  }
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* step = ParseIdentityStep(true);
    XPathParseNode* slash = step ? Token(u"/") : nullptr;
    if (slash == nullptr) {
      cursor_ = before;
      break;
    }
    XPathParseNode* separated = MakeWith(XPathRule::FieldSeparatedStep, step);
    Add(separated, slash);
    Add(path, separated);
  }
  XPathParseNode* last = ParseIdentityStep(true);
  if (last == nullptr) {
    XPathParseNode* at = Token(u"@");
    XPathParseNode* step = at ? ParseIdentityStep(true) : nullptr;
    // "@." is no attribute: the sign needs a name test behind it.
    if (step == nullptr || step->firstChild->rule != XPathRule::FieldNameTest) {
      cursor_ = start;
      return nullptr;
    }
    last = MakeWith(XPathRule::FieldAttribute, at);
    Add(last, step->firstChild);
  }
  Add(path, MakeWith(XPathRule::FieldLastStep, last));
  return path;
}

XPathParseNode* XPathParser::ParseSelector() {
  XPathParseNode* path = ParseSelectorPath();
  if (path == nullptr) return nullptr;
  XPathParseNode* selector = MakeWith(XPathRule::Selector, path);
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* bar = Token(u"|");
    path = bar ? ParseSelectorPath() : nullptr;
    if (path == nullptr) {
      cursor_ = before;
      return selector;
    }
    XPathParseNode* tail = MakeWith(XPathRule::SelectorTail, bar);
    Add(tail, path);
    Add(selector, tail);
  }
}

XPathParseNode* XPathParser::ParseField() {
  XPathParseNode* path = ParseFieldPath();
  if (path == nullptr) return nullptr;
  XPathParseNode* field = MakeWith(XPathRule::Field, path);
  for (;;) {
    std::size_t before = cursor_;
    XPathParseNode* bar = Token(u"|");
    path = bar ? ParseFieldPath() : nullptr;
    if (path == nullptr) {
      cursor_ = before;
      return field;
    }
    XPathParseNode* tail = MakeWith(XPathRule::FieldTail, bar);
    Add(tail, path);
    Add(field, tail);
  }
}

}  // namespace kelmora
