#include <gtest/gtest.h>

#include <chrono>

#include "tqcore/tqtext.h"
#include "treedump.h"
#include "xmltree/sourcewriter.h"

namespace kelmora {
namespace {

std::string BuildDump(std::u16string_view text, FakeModel& model) {
  XPathTreeBuilder builder;
  const auto parsed = ParseText(text);
  if (parsed->tree == nullptr) return ToNative(parsed->error.message);
  const OwnedTree root(builder.Build(*parsed->tree->root, model, false, u""));
  return Dump(*root);
}

struct Row {
  std::u16string_view text;
  const char* dump;
};

void ExpectBuilds(std::initializer_list<Row> rows, FakeModel& model) {
  for (const Row& row : rows) EXPECT_EQ(BuildDump(row.text, model), row.dump) << ToNative(row.text);
}

TEST(TreeBuilder, MirrorsTheSource) {
  FakeModel model;
  ExpectBuilds(
      {
          {u"<a>text</a>", "0(<a 'text'>)"},
          {u"<a x='1'>t<b/><![CDATA[]]> u</a>", "0(<a @x=1 't' <b> [] ' u'>)"},
          {u"<?xml version='1.0'?><!DOCTYPE a SYSTEM 's' [<!ELEMENT a ANY>%p;<!-- c -->]><?p "
           u"d?><a/>",
           "0(8(@version=1.0) 9(10 11 '%p;' ! c ) ?p:d <a>)"},
      },
      model);
}

TEST(TreeBuilder, ResolvesNamespaces) {
  FakeModel model;
  ExpectBuilds(
      {
          {u"<a xmlns='u'><b xmlns=''/><c/></a>", "0(<{u}a #xmlns=u <b #xmlns=> <{u}c>>)"},
          {u"<p:a xmlns:p='u'/>", "0(<{u}p:a #xmlns:p=u>)"},
          {u"<a p:x='1' xmlns:p='u'/>", "0(<a @{u}p:x=1 #xmlns:p=u>)"},
          {u"<a p:x='1' xmlns:p='u' p:y='2' xmlns:p='v'/>",
           "0(<a @{v}p:x=1 #xmlns:p=u @{v}p:y=2 #xmlns:p=v>)"},
          {u"<r xmlns:p='u'><a p:x='1' xmlns:p=''><p:b p:y='2'/></a></r>",
           "0(<r #xmlns:p=u <a @p:x=1 #xmlns:p= <p:b @p:y=2>>>)"},
          {u"<a x='1' xmlns='u'/>", "0(<{u}a @x=1 #xmlns=u>)"},
          {u"<p:a p:x=''/>", "0(<p:a @p:x=>)"},
          {u"<a xml:lang='de'/>", "0(<a @{http://www.w3.org/XML/1998/namespace}xml:lang=de>)"},
          {u"<a xmlns:xml='u'><b xml:c=''/></a>", "0(<a #xmlns:xml=u <b @{u}xml:c=>>)"},
          {u"<a xmlns:p='&lt;'><p:b/></a>", "0(<a #xmlns:p=&lt; <{&lt;}p:b>>)"},
          {u"<a xmlnsx='1' xmlns:='2'/>", "0(<{2}a @xmlnsx=1 #xmlns:=2>)"},
      },
      model);
}

TEST(TreeBuilder, SharesScopesThatDoNotChange) {
  FakeModel model;
  XPathTreeBuilder builder;
  const auto first = ParseText(u"<a xmlns:p='u'><b/><c xmlns:q='v' xmlns:q='w' xmlns='d'/></a>");
  const auto second = ParseText(u"<a xmlns:other='u'/>");
  const OwnedTree one(builder.Build(*first->tree->root, model, true, u"http://h/d.xml"));
  const OwnedTree two(builder.Build(*second->tree->root, model, false, u""));
  const XPathNode* a = one->firstChild;
  const XPathNode* b = a->firstChild->next;
  EXPECT_TRUE(a->HasOwnScope());
  EXPECT_EQ(b->Scope(), a->Scope());
  EXPECT_FALSE(b->HasOwnScope());
  EXPECT_EQ(a->ScopeMap().Size(), 2);
  EXPECT_EQ(b->next->ScopeMap().Size(), 4);
  EXPECT_EQ(b->next->AttributeScopeMap().Size(), 3);
  EXPECT_EQ(two->firstChild->ScopeMap().Lookup(u"other"), a->ScopeMap().Lookup(u"p"));
  EXPECT_EQ(a->ScopeMap().Lookup(u"p"), builder.InternURI(u"u"));
  EXPECT_EQ(a->BaseURI(), builder.InternURI(u"http://h/d.xml"));
  EXPECT_EQ(two->BaseURI(), nullptr);
  EXPECT_EQ(model.attachedUrl, u"http://h/d.xml");
  EXPECT_TRUE(DocumentOrderLess(*b, *two));
  EXPECT_EQ(two->documentNumber, one->documentNumber + 1);
  EXPECT_GT(two->orderNumber, b->next->orderNumber);
}

TEST(TreeBuilder, ExpandsReferences) {
  FakeModel model;
  model.entities[u"e"] = u"<b>x</b>";
  model.entities[u"open"] = u"<b>";
  model.entities[u"close"] = u"</b>";
  model.entities[u"half"] = u"<b";
  model.entities[u"deep"] = u"<c y='&#65;&lt;'>&e;<p:d xmlns:p='v' p:z='1'/>&plain;</c>";
  model.entities[u"plain"] = u"p&#38;q";
  model.entities[u"only"] = u"<![CDATA[>]]>";
  ExpectBuilds(
      {
          {u"<a>&lt;b&gt;</a>", "0(<a '<b>'>)"},
          {u"<a>&e;</a>", "0(<a ~<b ~'x'>>)"},
          {u"<a>1&e;2<c/>3</a>", "0(<a ~'1' ~<b ~'x'> ~'2' <c> '3'>)"},
          {u"<a x='&#65;&plain;'/>", "0(<a @x=Ap&q>)"},
          {u"<a x='&e;'/>", "0(<a @x=<b>x</b>>)"},
          {u"<a>&half;&#65;</a>", "0(<a '<bA'>)"},
          {u"<a>&open;&#65;</a>", "0(<a '<b>&#65;'>)"},
          {u"<a>&open;in&close;</a>", "0(<a ~<b ~'in'>>)"},
          {u"<a>&only;</a>", "0(<a ~[>]>)"},
          {u"<a>&unknown;&#65;</a>", "0(<a '&unknown;&#65;'>)"},
          {u"<a xmlns='u' xmlns:q='w'>&deep;</a>",
           "0(<{u}a #xmlns=u #xmlns:q=w ~<{u}c ~@y=A< ~<{u}b ~'x'> ~<{v}p:d ~#xmlns:p=v "
           "~@{v}p:z=1> ~'p&q'>>)"},
          {u"<a>&#0;x</a>", "0(<a ''>)"},
      },
      model);
  XPathTreeBuilder builder;
  const auto parsed = ParseText(u"<a x='B' y='&amp;'>&e;t</a>");
  const OwnedTree root(builder.Build(*parsed->tree->root, model, false, u""));
  const XPathNode* a = root->firstChild;
  EXPECT_FALSE(a->firstChild->HasOwnValue());
  EXPECT_TRUE(a->firstChild->next->HasOwnValue());
  EXPECT_EQ(a->lastChild->source->parent->parent, a->source);
}

TEST(TreeBuilder, AddsDefaults) {
  FakeModel model;
  XPathTreeBuilder builder;
  FakeDeclaration& a = model.declarations[u"a"];
  a.attributes = {{u"x", nullptr, u"1"}, {u"p:x", nullptr, u"&#50;"}, {u"xmlns:p", nullptr, u"u"}};
  a.text = u"de&lt;fault";
  model.declarations[u"e:b"].attributes = {{u"xmlns:e", nullptr, u"v"}};
  FakeDeclaration& c = model.declarations[u"c"];
  for (const char16_t* name : {u"k0", u"k1", u"k2", u"k3", u"k4", u"k5", u"k6", u"k7", u"k8"}) {
    c.attributes.push_back({name, nullptr, u"d"});
  }
  ExpectBuilds(
      {
          {u"<a/>", "0(<a #xmlns:p=u @x=1 @{u}p:x=2 'de<fault'>)"},
          {u"<a>own</a>", "0(<a #xmlns:p=u @x=1 @{u}p:x=2 'own'>)"},
          {u"<a p:x='' y=''><z/></a>", "0(<a @{u}p:x= @y= #xmlns:p=u @x=1 'de<fault' <z>>)"},
          {u"<a x='0'>&lt;<z/></a>", "0(<a @x=0 #xmlns:p=u @{u}p:x=2 '<' <z>>)"},
          {u"<a p:x='0' xmlns:p='own'/>", "0(<a @{own}p:x=0 #xmlns:p=own @x=1 'de<fault'>)"},
          {u"<e:b e:y='1'/>", "0(<{v}e:b @{v}e:y=1 #xmlns:e=v>)"},
          {u"<c k8='8' k3='3' a='' b='' d='' e='' f='' g='' k0='0'/>",
           "0(<c @k8=8 @k3=3 @a= @b= @d= @e= @f= @g= @k0=0 @k1=d @k2=d @k4=d @k5=d @k6=d @k7=d>)"},
      },
      model);
}

// A schema gives a namespace and no prefix: the first one that is bound to it serves.
TEST(TreeBuilder, GivesDefaultsOfANamespaceAPrefix) {
  FakeModel model;
  XPathTreeBuilder builder;
  const InternedURI uri = builder.InternURI(u"u");
  model.declarations[u"a"].attributes = {{u"x", uri, u"1"}, {u"y", uri, u"2"}};
  for (const Row& row : {
           Row{u"<a xmlns:q='u' xmlns:r='u' r:y=''/>",
               "0(<a #xmlns:q=u #xmlns:r=u @{u}r:y= @{u}q:x=1>)"},
           {u"<a x='' y=''/>", "0(<a @x= @y= @{u}x=1 @{u}y=2>)"},
       }) {
    const auto parsed = ParseText(row.text);
    const OwnedTree root(builder.Build(*parsed->tree->root, model, false, u""));
    EXPECT_EQ(Dump(*root), row.dump);
  }
}

TEST(TreeBuilder, RefusesShapesThatTheDataModelLacks) {
  FakeModel model;
  XPathTreeBuilder builder;
  for (const bool underRoot : {true, false}) {
    XTree tree;
    auto* document = tree.Make<XTreeDocument>();
    auto* element = tree.Make<XTreeElement>();
    document->AppendChild(element);
    element->AppendChild(tree.Make<XTreeComment>());
    (underRoot ? static_cast<XTreeContainer*>(document) : element)
        ->AppendChild(tree.Make<XTreeAttribute>());
    try {
      XPathNode::DeleteTree(builder.Build(*document, model, false, u""));
      ADD_FAILURE() << underRoot;
    } catch (const TQXTreeException& error) {
      EXPECT_EQ(error.code, 1);
    }
    EXPECT_EQ(model.budget, nullptr);
  }
}

TEST(TreeBuilder, EntitiesEndAtTheirBounds) {
  const auto nested = [](int levels) {
    FakeModel model;
    model.entities[u"e0"] = u"<b>end</b>";
    for (int i = 1; i < levels; ++i) {
      const TQString below = TQString::Format(u"<b>&e%d;</b>", {i - 1});
      model.entities[TQString::Format(u"e%d", {i})] = below;
    }
    const TQString text = TQString::Format(u"<a>&e%d;</a>", {levels - 1});
    return BuildDump(text, model);
  };
  EXPECT_EQ(nested(kEntityNesting).substr(0, 12), "0(<a ~<b ~<b");
  try {
    nested(kEntityNesting + 1);
    ADD_FAILURE();
  } catch (const TQTreeLimitError& error) {
    EXPECT_EQ(error.message, u"Entity references are nested more than 64 deep");
  }

  constexpr std::u16string_view kText = u"<a>&e;</a>";
  constexpr std::size_t kMost =
      ExpansionBudget::kBase + ExpansionBudget::kPerUnitOfInput * kText.size();
  FakeModel model;
  model.entities[u"e"] = TQString(std::u16string(kMost, u'x'));
  EXPECT_NO_THROW(BuildDump(kText, model));
  model.entities[u"e"] += u"x";
  EXPECT_THROW(BuildDump(kText, model), TQTreeLimitError);

  model.entities[u"self"] = u"<b>&self;&self;</b>";
  model.entities[u"k"] = TQString(std::u16string(1000, u'x'));
  std::u16string thousandfold;
  for (int i = 0; i < 1000; ++i) thousandfold += u"&k;";
  model.entities[u"flat"] = TQString(u"<b>" + thousandfold + u"</b>");
  model.entities[u"flat3"] = u"<c>&flat;</c><c>&flat;</c><c>&flat;</c>";
  EXPECT_NO_THROW(BuildDump(u"<a x='&k;'>&flat;</a>", model));
  const auto start = std::chrono::steady_clock::now();
  for (const std::u16string_view text : {u"<a>&self;</a>", u"<a>&flat3;</a>"}) {
    EXPECT_THROW(BuildDump(text, model), TQTreeLimitError) << ToNative(text);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(TreeBuilder, HandlesDepthAndBreadth) {
  constexpr int kMany = 100'000;
  FakeModel model;
  model.declarations[u"none"];
  const auto count = [&](const std::u16string& text) {
    XPathTreeBuilder builder;
    const auto parsed = ParseText(text);
    if (parsed->tree == nullptr) return -1;
    const OwnedTree root(builder.Build(*parsed->tree->root, model, false, u""));
    const OwnedTree copy(XPathNode::Copy(*root, true, nullptr));
    TQString out;
    int cursor = 0;
    WriteSource(*parsed->tree->root, out, cursor, 0, {});
    TQString value;
    copy->StringValue(value);
    int nodes = 0;
    for (const XPathNode* n = copy.get(); n != nullptr; n = n->NextInDocument(true)) ++nodes;
    return nodes;
  };
  std::u16string deep;
  std::u16string ends;
  std::u16string wide = u"<a";
  std::u16string nested;
  std::u16string children = u"<a>";
  for (int i = 0; i < kMany; ++i) {
    const std::u16string number(FromNative(std::to_string(i)).View());
    deep += u"<a>";
    ends += u"</a>";
    wide += u" p" + number + u":x='1' xmlns:p" + number + u"='u'";
    nested += u"<a xmlns:p" + number + u"='u'>";
    children += u"<b/>t";
  }
  EXPECT_EQ(count(deep + u"x" + ends), kMany + 2);
  EXPECT_EQ(count(nested + ends), 2 * kMany + 1);
  EXPECT_EQ(count(wide + u"/>"), 2 * kMany + 2);
  EXPECT_EQ(count(children + u"</a>"), 2 * kMany + 2);
}

TEST(TreeBuilder, KnowsTheNamespacesOfAnXTree) {
  XPathTreeBuilder builder;
  const auto parsed =
      ParseText(u"<a xmlns='1' xmlns:p='2'><b xmlns:p='3' p:y='z'><c/></b><d xmlns=''/></a>");
  XTreeNode& document = *parsed->tree->root;
  const auto uris = [&](const XTreeNode& node) {
    std::string result;
    for (const auto& [prefix, uri] : builder.ScopeAt(node)) {
      if (uri == builder.XmlURI()) continue;
      result += ToNative(prefix) + "=" + (uri != nullptr ? ToNative(*uri) : "-") + " ";
    }
    return result;
  };
  XTreeNode* a = document.FirstChild();
  XTreeNode* b = a->FirstChildOfKind(XTreeKind::Element);
  EXPECT_EQ(uris(*b->FirstChildOfKind(XTreeKind::Element)), "=1 p=3 ");
  EXPECT_EQ(uris(*b->FirstChildOfKind(XTreeKind::Attribute)->next), "=1 p=3 ");
  EXPECT_EQ(uris(*b->NextOfKind(XTreeKind::Element)), "=- p=2 ");
  EXPECT_EQ(uris(*a), "=1 p=2 ");
  EXPECT_EQ(uris(document), "");
  builder.CollectDeclarations(document);
  EXPECT_EQ(uris(document), "=- p=3 ");
  EXPECT_EQ(uris(*a), "=1 p=2 ");
}

}  // namespace
}  // namespace kelmora
