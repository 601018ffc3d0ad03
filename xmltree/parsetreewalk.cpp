// From parse tree to XTree. Each rule that stands for something has one step in a table: it makes a
// node, fills the current one, or changes which node is current; all other rules only pass the
// current node on to their children. No text is copied.
//
// The trap is in what "current" means to siblings. An element with attributes arrives as `sTag` and
// `content` side by side, one without as `ElementName` and `content`, an empty one as `ElementName`
// and its attributes: the first of them makes the element, and it is current for the others.
#include "parsetreewalk.h"

#include <array>

#include "declarationname.h"

namespace kelmora {

namespace {

enum class Act : std::uint8_t {
  Pass,      // nothing: the children go on with the same node
  Make,      // a node of `kind`
  MakeText,  // a node of `kind` with the text
  Comment,
  StartTag,
  ElementName,
  Content,
  SetName,
  SetText,
  Declared,  // name given here, value the text
  Item,      // an item of an element declaration
  RawItem,   // the same with its text
  Repeat,
  SubName,
  Definition,  // one attribute of an attribute list
  AttlistItem,
  AttlistText,  // the same with its text
  RawAttlist,
};

using Element = XTreeDTDElement;
using Attlist = XTreeDTDAttlist;

}  // namespace

struct WalkStep {
  GrammarRule rule = GrammarRule::None;
  Act act = Act::Pass;
  XTreeKind kind = XTreeKind::Any;
  std::int32_t item = 0;
  const char16_t* name = nullptr;
};

namespace {

constexpr WalkStep Step(GrammarRule rule, Act act) {
  return {rule, act};
}
constexpr WalkStep Made(GrammarRule rule, XTreeKind kind) {
  return {rule, Act::Make, kind};
}
constexpr WalkStep Texts(GrammarRule rule) {
  return {rule, Act::MakeText, XTreeKind::Text};
}
constexpr WalkStep Named(GrammarRule rule, const char16_t* name) {
  return {rule, Act::Declared, XTreeKind::Any, 0, name};
}
constexpr WalkStep Items(GrammarRule rule, Act act, std::int32_t item) {
  return {rule, act, XTreeKind::Any, item};
}

using R = GrammarRule;

constexpr WalkStep kSteps[] = {
    Made(R::xmlDecl, XTreeKind::XMLTag),
    Made(R::versionInfo, XTreeKind::Attribute),
    Made(R::encodingDecl, XTreeKind::Attribute),
    Made(R::sdDecl, XTreeKind::Attribute),
    Named(R::VersionNum, u"version"),
    Named(R::EncName, u"encoding"),
    Named(R::SDValue, u"standalone"),
    Step(R::sTag, Act::StartTag),
    Step(R::ElementName, Act::ElementName),
    Step(R::content, Act::Content),
    Texts(R::TextData),
    Texts(R::DocTypeText),
    Made(R::attribute, XTreeKind::Attribute),
    Step(R::AttName, Act::SetName),
    Step(R::AttValue1, Act::SetText),
    Step(R::AttValue2, Act::SetText),
    Step(R::CommentText, Act::Comment),
    Made(R::pi, XTreeKind::PI),
    Step(R::PITarget, Act::SetName),
    Step(R::PIData, Act::SetText),
    Made(R::cdSect, XTreeKind::CData),
    Step(R::CData, Act::SetText),
    Made(R::doctypedecl, XTreeKind::DocType),
    Step(R::DocTypeName, Act::SetName),
    Made(R::externalID, XTreeKind::ExternalID),
    Step(R::ExtIDNameSys, Act::SetName),
    Step(R::ExtIDNamePub, Act::SetName),
    Step(R::ExtIDTextSys, Act::SetText),
    Step(R::ExtIDTextPub, Act::SetText),
    Made(R::elementdecl, XTreeKind::DTDElement),
    Made(R::elementGroup, XTreeKind::DTDElement),
    Step(R::ElementDeclName, Act::SetName),
    Items(R::ElementEMPTY, Act::Item, Element::Empty),
    Items(R::ElementANY, Act::Item, Element::AnyContent),
    Items(R::ElementPCDATA, Act::Item, Element::PCDATA),
    Items(R::elementMixed, Act::Item, Element::Mixed),
    Items(R::elementSeq, Act::Item, Element::Sequence),
    Items(R::elementChoice, Act::Item, Element::Choice),
    Items(R::ElementPERef, Act::RawItem, Element::PERef),
    Items(R::elementSpecUnformatted, Act::RawItem, Element::PERef),
    Step(R::ElementRepeat, Act::Repeat),
    Step(R::ElementSubName, Act::SubName),
    Made(R::attlistDecl, XTreeKind::DTDAttlist),
    Step(R::AttlistName, Act::SetName),
    Step(R::attDef, Act::Definition),
    Items(R::AttDefName, Act::AttlistText, Attlist::AttributeName),
    Items(R::AttDefPERef, Act::AttlistText, Attlist::AttributeName),
    Items(R::AttTypeCDATA, Act::AttlistItem, Attlist::TypeCDATA),
    Items(R::AttTypeID, Act::AttlistItem, Attlist::TypeID),
    Items(R::AttTypeIDREF, Act::AttlistItem, Attlist::TypeIDREF),
    Items(R::AttTypeIDREFS, Act::AttlistItem, Attlist::TypeIDREFS),
    Items(R::AttTypeENTITY, Act::AttlistItem, Attlist::TypeENTITY),
    Items(R::AttTypeENTITIES, Act::AttlistItem, Attlist::TypeENTITIES),
    Items(R::AttTypeNMTOKEN, Act::AttlistItem, Attlist::TypeNMTOKEN),
    Items(R::AttTypeNMTOKENS, Act::AttlistItem, Attlist::TypeNMTOKENS),
    Items(R::AttTypePERef, Act::AttlistText, Attlist::TypePERef),
    Items(R::attTypeNotation, Act::AttlistItem, Attlist::TypeNOTATION),
    Items(R::attTypeEnum, Act::AttlistItem, Attlist::TypeEnumeration),
    Items(R::AttTypeNotName, Act::AttlistText, Attlist::EnumerationName),
    Items(R::AttTypeEnumName, Act::AttlistText, Attlist::EnumerationName),
    Items(R::AttREQUIRED, Act::AttlistItem, Attlist::Required),
    Items(R::AttIMPLIED, Act::AttlistItem, Attlist::Implied),
    Items(R::AttFIXED, Act::AttlistItem, Attlist::Fixed),
    Items(R::attDefValue, Act::AttlistItem, Attlist::DefaultValue),
    Items(R::attlistRestUnformatted, Act::RawAttlist, Attlist::Unformatted),
    Made(R::geDecl, XTreeKind::DTDEntity),
    Made(R::peDecl, XTreeKind::DTDEntity),
    Step(R::GEName, Act::SetName),
    Step(R::PEName, Act::SetName),
    Step(R::GEDef, Act::SetText),
    Step(R::PEDef, Act::SetText),
    Made(R::notationDecl, XTreeKind::DTDNotation),
    Step(R::NotationName, Act::SetName),
    Step(R::NotationText, Act::SetText),
};

constexpr auto kStepOf = [] {
  std::array<WalkStep, kGrammarRuleCount + 1> table{};
  for (const WalkStep& step : kSteps) table[static_cast<std::size_t>(step.rule)] = step;
  return table;
}();

// "<!--" and "-->" lie outside the node of a comment's text.
constexpr std::int32_t kCommentStart = 4;
constexpr std::int32_t kCommentEnd = 3;

Element* AsDtdElement(XTreeNode* node) {
  return node->kind == XTreeKind::DTDElement ? static_cast<Element*>(node) : nullptr;
}
Attlist* AsAttlist(XTreeNode* node) {
  return node->kind == XTreeKind::DTDAttlist ? static_cast<Attlist*>(node) : nullptr;
}

std::int32_t RepeatOf(std::u16string_view text) {
  switch (text.empty() ? u'\0' : text[0]) {
    case u'?':
      return Element::Optional;
    case u'+':
      return Element::OneOrMore;
    case u'*':
      return Element::ZeroOrMore;
    default:
      return Element::Once;
  }
}

// Whether an element has to be looked at again when it gets a child of `kind`: for an attribute
// that is not in front, for two texts side by side, for a text that may stay the only child.
bool MayBeUntidy(const XTreeContainer& element, XTreeKind kind) {
  const XTreeNode* last = element.last;
  if (!element.text.empty()) return true;
  if (kind == XTreeKind::Attribute) return last != nullptr && last->kind != XTreeKind::Attribute;
  return kind == XTreeKind::Text && (last == nullptr || last->kind == XTreeKind::Text);
}

// White space is the whole content: one group that was pruned down to nothing.
bool IsBlankContent(const ParsoNode& node) {
  const ParsoNode* child = node.firstChild;
  return node.length != 0 && child != nullptr && child->next == nullptr &&
         child->firstChild == nullptr && child->rule->kind == ParsoKind::Group;
}

}  // namespace

void ParseTreeWalk::NoteUntidy(XTreeContainer& container) {
  if ((container.flags & XTreeNode::Untidy) != 0) return;
  container.flags |= XTreeNode::Untidy;
  untidy_.push_back(&container);
}

void ParseTreeWalk::Tidy() {
  for (XTreeContainer* container : untidy_) {
    container->Normalize(tree_);
    container->flags &= static_cast<std::uint8_t>(~XTreeNode::Untidy);
  }
  untidy_.clear();
}

void ParseTreeWalk::SetName(XTreeNode& node, std::u16string_view name) {
  node.SetName(name);
  if (node.kind != XTreeKind::Attribute) return;
  if (name.size() >= XTreeNode::kLongName || name.starts_with(kDeclarationName)) {
    plainAttributes_ = false;
  }
}

bool ParseTreeWalk::Run(const ParsoNode& top, XTreeContainer& container) {
  NoteUntidy(container);
  levels_.clear();
  Level level{nullptr, &container, GrammarRule::None};  // the innermost one
  const ParsoNode* node = &top;                         // whose siblings don't belong to the walk
  while (true) {
    level.next = node != &top ? node->next : nullptr;
    if (level.next != nullptr) __builtin_prefetch(level.next);
    bool skipChildren = false;
    XTreeNode* filled = Enter(*node, level, skipChildren);
    if (filled == nullptr) return false;
    if (node->firstChild != nullptr && !skipChildren) {
      levels_.push_back(level);
      level = {nullptr, filled, node->Rule()};
      node = node->firstChild;
      continue;
    }
    while (level.next == nullptr) {
      if (levels_.empty()) {
        if (plainAttributes_) container.flags |= XTreeNode::PlainAttributes;
        return true;
      }
      level = levels_.back();
      levels_.pop_back();
    }
    node = level.next;
  }
}

XTreeNode* ParseTreeWalk::Append(const ParsoNode& node, XTreeKind kind, XTreeNode* container) {
  XTreeContainer* parent = container->AsContainer();
  if (parent == nullptr) return nullptr;
  if (MayBeUntidy(*parent, kind)) NoteUntidy(*parent);
  XTreeNode* made = tree_.MakeOfKind(kind);
  if (kind != XTreeKind::Element && made->CanHaveChildren()) {
    NoteUntidy(static_cast<XTreeContainer&>(*made));
  }
  made->sourceStart = static_cast<std::int32_t>(node.text - textStart_);
  made->sourceEnd = made->sourceStart + node.length;
  parent->AppendChild(made);
  return made;
}

XTreeNode* ParseTreeWalk::Enter(const ParsoNode& node, Level& level, bool& skipChildren) {
  const WalkStep& step = kStepOf[static_cast<std::size_t>(node.Rule())];
  XTreeNode* current = level.current;
  switch (step.act) {
    case Act::Pass:
      return current;
    case Act::Make:
      return Append(node, step.kind, current);
    case Act::MakeText: {
      XTreeNode* text = Append(node, step.kind, current);
      if (text != nullptr) text->SetText(node.Text());
      return text;
    }
    case Act::Comment:
      return EnterComment(node, current);
    case Act::StartTag:
      return StartElement(node, level);
    case Act::ElementName: {
      XTreeNode* element = level.rule == GrammarRule::sTag ? current : StartElement(node, level);
      if (element != nullptr) element->SetName(node.Text());
      return element;
    }
    case Act::Content:
      return EnterContent(node, current, skipChildren);
    case Act::SetName:
      SetName(*current, node.Text());
      return current;
    case Act::SetText:
      current->SetText(node.Text());
      return current;
    case Act::Declared:
      current->SetName(step.name);
      current->SetText(node.Text());
      return current;
    case Act::Item:
    case Act::RawItem:
    case Act::Repeat:
    case Act::SubName:
      return EnterElementItem(node, current, step);
    case Act::Definition:
    case Act::AttlistItem:
    case Act::AttlistText:
    case Act::RawAttlist:
      return EnterAttlistItem(node, level, step);
  }
  return nullptr;
}

XTreeNode* ParseTreeWalk::StartElement(const ParsoNode& node, Level& level) {
  level.current = Append(node, XTreeKind::Element, level.current);
  return level.current;
}

XTreeNode* ParseTreeWalk::EnterComment(const ParsoNode& node, XTreeNode* current) {
  XTreeNode* comment = Append(node, XTreeKind::Comment, current);
  if (comment == nullptr) return nullptr;
  comment->SetText(node.Text());
  comment->sourceStart -= kCommentStart;
  comment->sourceEnd += kCommentEnd;
  return comment;
}

XTreeNode* ParseTreeWalk::EnterContent(const ParsoNode& node, XTreeNode* current,
                                       bool& skipChildren) {
  const ParsoNode* only = node.firstChild;
  if (only == nullptr || only->next != nullptr) return current;
  const bool isBlank = IsBlankContent(node);
  if (!isBlank && only->Rule() != GrammarRule::TextData) return current;
  if (foldTexts_ && current->kind == XTreeKind::Element && !current->HasChildren()) {
    current->SetText(isBlank ? node.Text() : only->Text());
    skipChildren = true;
    return current;
  }
  if (!isBlank) return current;
  XTreeNode* text = Append(node, XTreeKind::Text, current);
  if (text != nullptr) text->SetText(node.Text());
  return text;
}

XTreeNode* ParseTreeWalk::EnterElementItem(const ParsoNode& node, XTreeNode* current,
                                           const WalkStep& step) {
  Element* element = AsDtdElement(current);
  if (element == nullptr) return nullptr;
  if (step.act == Act::Repeat) {
    element->repeat = RepeatOf(node.Text());
    return current;
  }
  if (step.act == Act::SubName) {
    if (element->item == Element::Mixed) {
      element = AsDtdElement(Append(node, XTreeKind::DTDElement, current));
    }
    element->item = Element::SubName;
    element->name = node.Text();
    return element;
  }
  if (step.act == Act::RawItem) element->text = node.Text();
  element->item = step.item;
  return current;
}

XTreeNode* ParseTreeWalk::EnterAttlistItem(const ParsoNode& node, Level& level,
                                           const WalkStep& step) {
  Attlist* list = AsAttlist(level.current);
  if (list == nullptr) return nullptr;
  if (step.act == Act::Definition) {
    if (list->first == nullptr) return list;
    // A further definition has a list of its own, which those behind it go on from. The list of
    // a fragment is the root itself and has no parent to put it beside.
    XTreeContainer* parent = list->parent != nullptr ? list->parent : list;
    Attlist* further = AsAttlist(Append(node, XTreeKind::DTDAttlist, parent));
    further->name = list->name;
    if (list->parent != nullptr) level.current = further;
    return further;
  }
  if (step.act == Act::RawAttlist) {
    list->item = step.item;
    list->text = node.Text();
    return list;
  }
  Attlist* item = AsAttlist(Append(node, XTreeKind::DTDAttlist, list));
  item->item = step.item;
  if (step.act == Act::AttlistText) item->text = node.Text();
  return item;
}

}  // namespace kelmora
