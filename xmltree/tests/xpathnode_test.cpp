#include "xmltree/xpathnode.h"

#include <gtest/gtest.h>

#include "tqcore/tqtext.h"
#include "treedump.h"

namespace kelmora {
namespace {

using Kind = XPathNodeKind;

XPathNode* Child(XPathNode* parent, Kind kind, std::u16string_view name,
                 std::u16string_view value = {}) {
  XPathNode* node = XPathNode::Make(kind);
  if (!name.empty()) node->SetOwnName(TQString(name));
  if (kind != Kind::Element) node->SetOwnValue(TQString(value));
  parent->AppendChild(node);
  return node;
}

struct BuiltTree {
  explicit BuiltTree(std::u16string_view text)
      : parsed(ParseText(text)), root(builder.Build(*parsed->tree->root, model, false, u"")) {}
  XPathNode* Find(std::u16string_view name) const {
    XPathNode* node = root.get();
    while (node != nullptr && node->GetName() != name) node = node->NextInDocument(true);
    return node;
  }

  FakeModel model;
  XPathTreeBuilder builder;
  std::unique_ptr<ParsedText> parsed;
  OwnedTree root;
};

TEST(XPathNode, StringValuesJoinTextsInOrder) {
  struct Row {
    std::u16string_view text;
    const char* value;
  };
  for (const Row& row : {
           Row{u"<a/>", ""},
           {u"<a x='no'>only</a>", "only"},
           {u"<a x='no'>1<b>2<!--no--></b><?no no?><![CDATA[3]]><c><d/>4</c></a>", "1234"},
           {u"<!DOCTYPE a [%no; <!ENTITY n 'no'>]><a>yes</a>", "yes"},
       }) {
    const BuiltTree tree(row.text);
    TQString scratch(u"old");
    EXPECT_EQ(ToNative(tree.root->StringValue(scratch)), row.value);
  }
  const BuiltTree single(u"<a><b>view</b></a>");
  TQString scratch;
  EXPECT_EQ(single.root->StringValue(scratch).data(), single.Find(u"b")->source->GetText().data());
}

TEST(XPathNode, WalksForthAndBack) {
  const BuiltTree tree(u"<a x='1'><b><c/></b><d>t</d><e/></a>");
  std::vector<const XPathNode*> order;
  for (const XPathNode* node = tree.root.get(); node != nullptr;
       node = node->NextInDocument(true)) {
    order.push_back(node);
  }
  ASSERT_EQ(order.size(), 8u);
  for (std::size_t i = 1; i < order.size(); ++i) {
    EXPECT_EQ(order[i]->NextInDocument(false), order[i - 1]);
    EXPECT_TRUE(DocumentOrderLess(*order[i - 1], *order[i]));
  }
  EXPECT_EQ(order[0]->NextInDocument(false), nullptr);
  const XPathNode* b = tree.Find(u"b");
  EXPECT_EQ(b->NextSkippingChildren(tree.root.get()), tree.Find(u"d"));
  EXPECT_EQ(b->firstChild->NextSkippingChildren(b), nullptr);
  EXPECT_EQ(b->Root(), tree.root.get());
}

TEST(XPathNode, ChildrenCanBePutInAndTakenOut) {
  OwnedTree root(XPathNode::Make(Kind::Root));
  XPathNode* b = Child(root.get(), Kind::Element, u"b");
  OwnedTree a(XPathNode::Make(Kind::Comment));
  root->InsertChild(b, a.get());
  Child(root.get(), Kind::Element, u"c");
  EXPECT_EQ(Dump(*root), "0(! <b> <c>)");
  root->RemoveChild(b);
  EXPECT_EQ(b->parent, nullptr);
  root->InsertChild(nullptr, b);
  root->RemoveChild(a.get());
  EXPECT_EQ(Dump(*root), "0(<c> <b>)");
  EXPECT_EQ(root->lastChild->previous, root->firstChild);
}

TEST(XPathNode, NamespaceNodesShowWhatIsInForce) {
  const BuiltTree tree(u"<a xmlns='d' xmlns:q='1' xmlns:p='2'><b xmlns='' xmlns:q='3'/></a>");
  XPathNode* b = tree.Find(u"b");
  std::string found;
  for (const XPathNode* node : b->NamespaceNodes()) {
    found += Dump(*node) + " ";
    EXPECT_EQ(node->parent, b);
    EXPECT_EQ(node->orderNumber, -1);
    EXPECT_TRUE(DocumentOrderLess(*node, *tree.root));
  }
  EXPECT_EQ(found, "#p=2 #q=3 #xml=http://www.w3.org/XML/1998/namespace ");
  EXPECT_EQ(&b->NamespaceNodes(), &b->NamespaceNodes());
  EXPECT_EQ(tree.Find(u"a")->NamespaceNodes().size(), 4u);
}

TEST(XPathNode, ScopesOutliveTheNodeThatMadeThem) {
  const TQString uri(u"u");
  XPathNode* owner = XPathNode::Make(Kind::Element);
  owner->OwnScope().scopeMap.Set(u"p", &uri);
  OwnedTree sharer(XPathNode::Make(Kind::Element));
  sharer->ShareScope(*owner);
  EXPECT_EQ(sharer->Scope(), owner->Scope());
  EXPECT_FALSE(sharer->HasOwnScope());
  owner->OwnScope().scopeMap.Set(u"q", &uri);
  XPathNode::DeleteTree(owner);
  EXPECT_EQ(sharer->ScopeMap().Lookup(u"q"), &uri);

  XPathNode* attribute = Child(sharer.get(), Kind::Attribute, u"x");
  sharer->OwnScope().attributeScopeMap.Set(u"r", &uri);
  EXPECT_EQ(attribute->ScopeMap().Lookup(u"r"), &uri);
  EXPECT_EQ(attribute->ScopeMap().Lookup(u"p"), nullptr);
  EXPECT_EQ(sharer->ScopeMap().Size(), 2);
  EXPECT_TRUE(OwnedTree(XPathNode::Make(Kind::Element))->ScopeMap().IsEmpty());
}

TEST(XPathNode, BaseUriIsThatOfTheNearestNodeThatMayHaveOne) {
  const TQString uris[] = {u"root", u"element", u"text"};
  OwnedTree root(XPathNode::Make(Kind::Root));
  XPathNode* element = Child(root.get(), Kind::Element, u"e");
  XPathNode* text = Child(element, Kind::Text, u"", u"t");
  EXPECT_EQ(text->BaseURI(), nullptr);
  text->SetBaseURI(&uris[2]);  // which a text does not answer with
  root->SetBaseURI(&uris[0]);
  EXPECT_EQ(text->BaseURI(), &uris[0]);
  element->SetBaseURI(&uris[1]);
  EXPECT_EQ(text->BaseURI(), &uris[1]);
}

TEST(XPathNode, CopiesAreNodesOfTheirOwn) {
  const TQString uri(u"u");
  BuiltTree tree(u"<a xmlns:p='1'><b x='&lt;'>t<p:c/></b></a>");
  XPathNode* b = tree.Find(u"b");
  b->SetBaseURI(&uri);
  b->escapeOutput = false;
  const OwnedTree deep(XPathNode::Copy(*b, true, nullptr));
  EXPECT_EQ(Dump(*deep), "<b @x=< 't' <{1}p:c>>");
  EXPECT_EQ(deep->BaseURI(), &uri);
  EXPECT_FALSE(deep->escapeOutput);
  EXPECT_EQ(deep->orderNumber, 0);
  EXPECT_TRUE(deep->lastChild->HasOwnScope());
  EXPECT_EQ(deep->ScopeMap().Size(), 2);

  XPathNode* a = tree.Find(u"a");
  const OwnedTree sharing(XPathNode::Copy(*b, false, a));
  EXPECT_EQ(sharing->firstChild, nullptr);
  EXPECT_EQ(sharing->parent, a);
  EXPECT_EQ(sharing->Scope(), a->Scope());
  EXPECT_FALSE(sharing->HasOwnScope());
  const OwnedTree other(XPathNode::Make(Kind::Element));
  const OwnedTree apart(XPathNode::Copy(*b, false, other.get()));
  EXPECT_TRUE(apart->HasOwnScope());
  EXPECT_EQ(apart->ScopeMap().Size(), 2);
}

}  // namespace
}  // namespace kelmora
