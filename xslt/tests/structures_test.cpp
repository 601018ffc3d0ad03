// The data structures beside the trees, against plain ones.
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <vector>

#include "base/nodemap.h"
#include "engine/matchsets.h"
#include "xslt/tqxslterror.h"
#include "xslt/variablemap.h"

namespace kelmora {
namespace {

TEST(VariableMapTest, EqualsPlainMaps) {
  std::vector<TQString> names;
  for (int i = 0; i < 200; ++i) names.push_back(TQString::Format(u"name%d", {i}));
  std::minstd_rand random(1);
  struct Scope {
    VariableMap map;
    std::map<TQString, double, TextLess> plain;
  };
  std::vector<Scope> scopes(1);  // like frames: each one borrows from those in front of it
  scopes.reserve(61);
  for (int step = 0; step < 6000; ++step) {
    const std::size_t action = random() % 100;
    if (action < 2 && scopes.size() <= 60) scopes.push_back(scopes.back());
    if (action == 99 && scopes.size() > 1) scopes.pop_back();
    const TQString& name = names[random() % names.size()];
    XPathValue value;
    value.SetNumber(step);
    scopes.back().map.Bind(name, std::move(value));
    scopes.back().plain[name] = step;
  }
  EXPECT_GT(scopes.size(), 20U);
  for (const Scope& scope : scopes) {
    for (const TQString& name : names) {
      const XPathValue* value = scope.map.Find(name);
      const auto expected = scope.plain.find(name);
      ASSERT_EQ(value != nullptr, expected != scope.plain.end());
      if (value != nullptr) {
        EXPECT_EQ(value->number, expected->second);
      }
    }
  }
}

TEST(MatchSetTest, ContainsWhatTheListHolds) {
  std::minstd_rand random(2);
  for (const unsigned stride : {1U, 3U, 500U}) {  // bits, bits, numbers
    std::vector<XPathNode*> nodes;
    for (int i = 0; i < 300; ++i) {
      nodes.push_back(XPathNode::Make(XPathNodeKind::Element));
      if (i % 10 != 0) nodes.back()->orderNumber = 1000 + i * static_cast<int>(stride);
    }
    XPathNodeList list;
    std::set<const XPathNode*> members;
    for (XPathNode* node : nodes) {
      if (random() % 2 != 0) continue;
      list.emplace_back(node);
      members.insert(node);
    }
    const MatchSet set(list);
    for (XPathNode* node : nodes) {
      EXPECT_EQ(set.Contains(node), members.contains(node));
      XPathNode::DeleteTree(node);
    }
  }
}

TEST(NodeMapTest, EqualsPlainMap) {
  NodeMap<int> map;
  std::map<std::uintptr_t, int> plain;
  std::minstd_rand random(3);
  for (int i = 1; i < 5000; ++i) {
    const std::uintptr_t address = (random() % 3000 + 1) * sizeof(XPathNode);
    map[reinterpret_cast<const XPathNode*>(address)] = i;
    plain[address] = i;
  }
  EXPECT_EQ(map.Size(), plain.size());
  for (std::uintptr_t address = 8; address < 3002 * sizeof(XPathNode); address += 8) {
    const int* found = map.Find(reinterpret_cast<const XPathNode*>(address));
    const auto expected = plain.find(address);
    ASSERT_EQ(found != nullptr, expected != plain.end());
    if (found != nullptr) {
      EXPECT_EQ(*found, expected->second);
    }
  }
}

TEST(TQXSLTErrorTest, Text) {
  const struct {
    XsltCode code;
    int xpathCode;
    int function;
    const char16_t* text;
  } rows[] = {
      {XsltCode::XPathFailed, 3, 0, u"Error in XPath expression, Too many parameters -> last"},
      {XsltCode::XPathFailed, 2, 13, u"Error in XPath expression, Too few parameters -> substring"},
      {XsltCode::XPathFailed, 1, -1, u"Error in XPath expression, Invalid prefix"},
      {XsltCode::XPathFailed, 17, 28,
       u"Error in XPath expression, key function called within a key definition -> key"},
      {XsltCode::XPathFailed, 18, 36, u"Error in XPath expression, "},
      {XsltCode::XPathFailed, 0, 35, u"Error in XPath expression,  -> function-available"},
      {XsltCode::RepeatedAttribute, 0, 0,
       u"An attribute which should only occur once occurs multiple times"},
      {XsltCode::ModeWithoutMatch, 0, 0, u"The template has a mode param but not a match"},
      {XsltCode::ElementsExpected, 0, 0, u"elements attribute expected"},
      {XsltCode::RecursiveVariable, 0, 0, u"Recursive variable definition"},
  };
  for (const auto& row : rows) {
    TQXSLTError error(row.code, nullptr);
    error.SetXPathError(row.xpathCode, row.function);
    EXPECT_EQ(error.Text(), row.text) << static_cast<int>(row.code) << " " << row.xpathCode;
    EXPECT_EQ(error.Text(), row.text);
  }
}

// A node that came out of an entity value is reported at the first ancestor with a place.
TEST(TQXSLTErrorTest, SyntheticNodes) {
  XPathNode* element = XPathNode::Make(XPathNodeKind::Element);
  XPathNode* child = XPathNode::Make(XPathNodeKind::Element);
  element->AppendChild(child);
  child->synthetic = true;
  EXPECT_EQ(TQXSLTError(XsltCode::UnexpectedFailure, child).Node(), element);
  element->synthetic = true;
  EXPECT_EQ(TQXSLTError(XsltCode::UnexpectedFailure, child).Node(), nullptr);
  XPathNode::DeleteTree(element);
}

}  // namespace
}  // namespace kelmora
