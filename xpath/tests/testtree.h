// Small trees and evaluations for the tests of this directory.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tqcore/tqtext.h"
#include "xmltree/xpathnode.h"
#include "xmltree/xpathtreebuilder.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

inline std::string Narrow(std::u16string_view text) {
  return ToNative(text);
}
inline TQString Wide(std::string_view text) {
  return FromNative(text);
}

// A tree made from a piece of XML: elements, attributes, declarations, text, CDATA, comments,
// processing instructions, "<!D>" for a DOCTYPE with a comment inside. White space counts.
class TestTree {
 public:
  // `document` 0 makes a result tree fragment: no stamps, and a root without a source.
  TestTree(XPathTreeBuilder& builder, const std::string& xml, int document = 1)
      : builder_(builder), document_(document) {
    root_ = Make(XPathNodeKind::Root);
    if (document != 0) root_->source = &source_;
    root_->OwnScope().scopeMap.Set(u"xml", builder.XmlURI());
    root_->OwnScope().attributeScopeMap.Set(u"xml", builder.XmlURI());
    Parse(xml);
  }
  ~TestTree() { XPathNode::DeleteTree(root_); }
  TestTree(const TestTree&) = delete;
  TestTree& operator=(const TestTree&) = delete;

  XPathNode* Root() const { return root_; }
  const std::vector<XPathNode*>& Nodes() const { return nodes_; }  // in document order

 private:
  XPathNode* Make(XPathNodeKind kind) {
    XPathNode* node = XPathNode::Make(kind);
    if (document_ != 0) {
      node->documentNumber = document_;
      node->orderNumber = document_ * 1000000 + static_cast<int>(nodes_.size());
    }
    nodes_.push_back(node);
    return node;
  }

  XPathNode* Add(XPathNode* parent, XPathNodeKind kind, const std::string& name,
                 const std::string& value) {
    XPathNode* node = Make(kind);
    if (!name.empty()) node->SetOwnName(Wide(name));
    if (kind != XPathNodeKind::Element) node->SetOwnValue(Wide(value));
    parent->AppendChild(node);
    return node;
  }

  void Parse(const std::string& xml) {
    XPathNode* at = root_;
    std::size_t i = 0;
    auto until = [&](const char* mark) {
      std::size_t end = xml.find(mark, i);
      std::string piece = xml.substr(i, end - i);
      i = end + std::string(mark).size();
      return piece;
    };
    while (i < xml.size()) {
      if (xml.compare(i, 4, "<!--") == 0) {
        i += 4;
        Add(at, XPathNodeKind::Comment, "", until("-->"));
      } else if (xml.compare(i, 9, "<![CDATA[") == 0) {
        i += 9;
        Add(at, XPathNodeKind::CData, "", until("]]>"));
      } else if (xml.compare(i, 4, "<!D>") == 0) {
        i += 4;
        Add(Add(at, XPathNodeKind::DocType, "doctype", ""), XPathNodeKind::Comment, "", "inside");
      } else if (xml.compare(i, 2, "<?") == 0) {
        i += 2;
        std::string name = until(" ");
        Add(at, XPathNodeKind::PI, name, until("?>"));
      } else if (xml.compare(i, 2, "</") == 0) {
        until(">");
        at = at->parent;
      } else if (xml[i] == '<') {
        ++i;
        at = StartTag(at, until(">"));
      } else {
        std::size_t end = std::min(xml.find('<', i), xml.size());
        Add(at, XPathNodeKind::Text, "", xml.substr(i, end - i));
        i = end;
      }
    }
  }

  XPathNode* StartTag(XPathNode* parent, std::string tag) {
    bool empty = !tag.empty() && tag.back() == '/';
    if (empty) tag.pop_back();
    std::size_t nameEnd = std::min(tag.find(' '), tag.size());
    XPathNode* element = Add(parent, XPathNodeKind::Element, tag.substr(0, nameEnd), "");
    element->ShareScope(*parent);
    std::size_t i = nameEnd;
    while ((i = tag.find_first_not_of(' ', i)) < tag.size()) {
      std::size_t equals = tag.find('=', i);
      std::size_t close = tag.find('\'', equals + 2);
      std::string name = tag.substr(i, equals - i);
      std::string value = tag.substr(equals + 2, close - equals - 2);
      bool declares = name == "xmlns" || name.compare(0, 6, "xmlns:") == 0;
      Add(element, declares ? XPathNodeKind::Namespace : XPathNodeKind::Attribute, name, value);
      if (declares) Declare(*element, Wide(name == "xmlns" ? "" : name.substr(6)), Wide(value));
      i = close + 1;
    }
    element->namespaceURI = element->ScopeMap().Lookup(element->GetPrefix());
    for (XPathNode* child = element->firstChild; child; child = child->next) {
      if (child->kind == XPathNodeKind::Attribute && !child->GetPrefix().empty()) {
        child->namespaceURI = element->AttributeScopeMap().Lookup(child->GetPrefix());
      }
    }
    return empty ? parent : element;
  }

  void Declare(XPathNode& element, const TQString& prefix, const TQString& uri) {
    InternedURI interned = uri.IsEmpty() ? nullptr : builder_.InternURI(uri);
    element.OwnScope().scopeMap.Set(prefix, interned);
    if (!prefix.IsEmpty()) element.OwnScope().attributeScopeMap.Set(prefix, interned);
  }

  XPathTreeBuilder& builder_;
  int document_;
  XTreeDocument source_;
  XPathNode* root_ = nullptr;
  std::vector<XPathNode*> nodes_;
};

// What a node looks like in an expected result: "a", "@x", "'text'", "!comment", "?pi", "/",
// "ns:prefix".
inline std::string Show(const XPathNode& node) {
  std::string name = Narrow(node.GetName());
  std::string value = Narrow(node.GetValue());
  switch (XPathNodeRef::KindOf(&node)) {
    case XPathNodeRef::Root:
      return "/";
    case XPathNodeRef::Element:
      return name;
    case XPathNodeRef::Attribute:
      return "@" + name;
    case XPathNodeRef::Text:
      return "'" + value + "'";
    case XPathNodeRef::Comment:
      return "!" + value;
    case XPathNodeRef::PI:
      return "?" + name;
    case XPathNodeRef::Namespace:
      return "ns:" + name;
    default:
      return "declaration";
  }
}

inline std::string Show(const XPathValue& value) {
  if (value.kind == XPathValue::String) return "\"" + Narrow(value.string) + "\"";
  if (value.kind != XPathValue::NodeSet) return Narrow(ToString(value));
  std::string text;
  for (const XPathNodeRef& entry : value.nodes) {
    if (!text.empty()) text += ' ';
    text += Show(*entry.node);
  }
  return "[" + text + "]";
}

class TestVariables : public XPathVariables {
 public:
  std::map<TQString, XPathValue, TextLess> values;
  const XPathValue* Find(std::u16string_view key) const override {
    auto found = values.find(key);
    return found == values.end() ? nullptr : &found->second;
  }
};

}  // namespace kelmora
