// What a kind of node may have and hold stands in one table, kTraits, in the order of XTreeKind; a
// set of kinds is a word with a bit for each. The nodes have neither destructor nor virtual table,
// so that a tree is given back as a whole with its arena.
//
// The trap: operations cast by `kind`, and nothing finds out a node whose kind does not fit its
// class. XTree::Make takes the class, and MakeOfKind alone pairs kinds with classes.
#include "xmltree/xtreenode.h"

#include <array>

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

constexpr std::size_t kKindCount = 16;

constexpr std::uint32_t Bit(XTreeKind kind) {
  return 1u << static_cast<unsigned>(kind);
}
constexpr std::uint32_t Bits(XTreeKind first, XTreeKind last) {
  return (Bit(last) << 1) - Bit(first);
}

struct KindTraits {
  const char16_t* typeName;
  bool hasName;  // one that can be set
  bool hasText;
  std::uint32_t children;  // a bit for each kind that it can contain
};

constexpr std::uint32_t kMisc = Bit(XTreeKind::Comment) | Bit(XTreeKind::PI);
constexpr std::uint32_t kContent = Bits(XTreeKind::Element, XTreeKind::PI);
constexpr std::uint32_t kDeclarations = Bits(XTreeKind::DTDElement, XTreeKind::DTDNotation);

constexpr std::array<KindTraits, kKindCount> kTraits{{
    {u"XML-Document", false, false,
     Bit(XTreeKind::XMLTag) | Bit(XTreeKind::Element) | kMisc | Bit(XTreeKind::DocType)},
    {u"XML-Entity", false, false, Bit(XTreeKind::XMLTag) | kContent},
    {u"DTD-Document", false, false,
     Bit(XTreeKind::XMLTag) | Bit(XTreeKind::Text) | kMisc | kDeclarations},
    {u"XML-Tag", false, false, Bit(XTreeKind::Attribute)},
    {u"Element", true, true, kContent},
    {u"Attribute", true, true, 0},
    {u"Text", false, true, 0},
    {u"CData", false, true, 0},
    {u"Comment", false, true, 0},
    {u"Processing instruction", true, true, 0},
    {u"DOCTYPE", true, false,
     Bit(XTreeKind::Text) | kMisc | Bit(XTreeKind::ExternalID) | kDeclarations},
    {u"DOCTYPE-ExternalID", true, true, 0},
    {u"DOCTYPE-ELEMENT", true, true, Bit(XTreeKind::DTDElement)},
    {u"DOCTYPE-ATTLIST", true, true, Bit(XTreeKind::DTDAttlist)},
    {u"DOCTYPE-ENTITY", true, true, 0},
    {u"DOCTYPE-NOTATION", true, true, 0},
}};

const KindTraits& Traits(XTreeKind kind) {
  return kTraits[static_cast<std::size_t>(kind)];
}

// The first sibling of the kind from `node` on.
XTreeNode* SeekKind(XTreeNode* node, XTreeKind kind) {
  while (node != nullptr && kind != XTreeKind::Any && node->kind != kind) node = node->next;
  return node;
}

}  // namespace

const char16_t* XTreeNode::GetTypeName() const {
  return Traits(kind).typeName;
}

std::u16string_view XTreeNode::GetLocalName() const {
  return LocalPartOf(GetName());
}

bool XTreeNode::HasPrefix() const {
  return GetName().find(u':') != std::u16string_view::npos;
}

void XTreeNode::SetName(std::u16string_view name) {
  if (CanHaveName()) static_cast<XTreeNamed*>(this)->name = name;
}

void XTreeNode::SetText(std::u16string_view text) {
  static_cast<XTreeTextual*>(this)->text = text;
}

bool XTreeNode::CanHaveName() const {
  return Traits(kind).hasName;
}

bool XTreeNode::CanHaveText() const {
  return Traits(kind).hasText && !HasChildren();
}

bool XTreeNode::CanContain(XTreeKind child) const {
  return child != XTreeKind::Any && (Traits(kind).children & Bit(child)) != 0;
}

XTreeNode* XTreeNode::FirstChildOfKind(XTreeKind wanted) const {
  return SeekKind(FirstChild(), wanted);
}

XTreeNode* XTreeNode::NextOfKind(XTreeKind wanted) const {
  return SeekKind(next, wanted);
}

int XTreeNode::CountChildren(XTreeKind wanted) const {
  int count = 0;
  for (XTreeNode* child = FirstChildOfKind(wanted); child != nullptr;
       child = child->NextOfKind(wanted)) {
    ++count;
  }
  return count;
}

const XTreeNode* XTreeNode::Root() const {
  const XTreeNode* node = this;
  while (node->parent != nullptr) node = node->parent;
  return node;
}

void XTreeContainer::InsertChild(XTreeNode* before, XTreeNode* child) {
  child->parent = this;
  child->next = before;
  child->previous = before != nullptr ? before->previous : last;
  (child->previous != nullptr ? child->previous->next : first) = child;
  (before != nullptr ? before->previous : last) = child;
  ++childCount;
}

void XTreeContainer::EraseChild(XTreeNode* child) {
  (child->previous != nullptr ? child->previous->next : first) = child->next;
  (child->next != nullptr ? child->next->previous : last) = child->previous;
  child->parent = nullptr;
  child->next = child->previous = nullptr;
  --childCount;
}

void XTreeContainer::GroupChildren(XTreeKind wanted, XTreeNode* start, XTreeKind stopKind) {
  XTreeNode* place = start;
  XTreeNode* following = nullptr;
  for (XTreeNode* child = start; child != nullptr; child = following) {
    following = child->next;
    if (child->kind != wanted) {
      if (stopKind != XTreeKind::Any && place->kind != stopKind) place = place->next;
    } else if (child == place) {
      place = place->next;
    } else {
      EraseChild(child);
      InsertChild(place, child);
    }
  }
}

XTreeNode* XTree::MakeOfKind(XTreeKind kind) {
  switch (kind) {
    case XTreeKind::Document:
      return Make<XTreeDocument>();
    case XTreeKind::Entity:
      return Make<XTreeEntity>();
    case XTreeKind::DTDDocument:
      return Make<XTreeDTDDocument>();
    case XTreeKind::XMLTag:
      return Make<XTreeXMLTag>();
    case XTreeKind::Element:
      return Make<XTreeElement>();
    case XTreeKind::Attribute:
      return Make<XTreeAttribute>();
    case XTreeKind::Text:
      return Make<XTreeText>();
    case XTreeKind::CData:
      return Make<XTreeCData>();
    case XTreeKind::Comment:
      return Make<XTreeComment>();
    case XTreeKind::PI:
      return Make<XTreePI>();
    case XTreeKind::DocType:
      return Make<XTreeDocType>();
    case XTreeKind::ExternalID:
      return Make<XTreeExternalID>();
    case XTreeKind::DTDElement:
      return Make<XTreeDTDElement>();
    case XTreeKind::DTDAttlist:
      return Make<XTreeDTDAttlist>();
    case XTreeKind::DTDEntity:
      return Make<XTreeDTDEntity>();
    case XTreeKind::DTDNotation:
      return Make<XTreeDTDNotation>();
    case XTreeKind::Any:
      return nullptr;
  }
  return nullptr;
}

}  // namespace kelmora
