#include "resulttree.h"

#include <list>
#include <string>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

// URIs compare by pointer in a tree; those of the tests live as long as the program.
InternedURI Intern(std::string_view text) {
  static std::list<TQString> uris;
  return &uris.emplace_back(FromNative(text));
}

class TreeReader {
 public:
  explicit TreeReader(std::string_view text) : rest_(text) {}

  XPathNode* Read() {
    XPathNode* root = XPathNode::Make(XPathNodeKind::Root);
    parent_ = root;
    while (!rest_.empty()) ReadNode();
    return root;
  }

 private:
  std::string_view TakeUntil(std::string_view end) {
    const std::string_view taken = rest_.substr(0, rest_.find(end));
    rest_.remove_prefix(std::min(rest_.size(), taken.size() + end.size()));
    return taken;
  }
  bool Take(std::string_view start) {
    if (!rest_.starts_with(start)) return false;
    rest_.remove_prefix(start.size());
    return true;
  }
  XPathNode* Add(XPathNodeKind kind, std::string_view name, std::string_view value) {
    XPathNode* node = XPathNode::Make(kind);
    if (!name.empty()) node->SetOwnName(FromNative(name));
    if (kind != XPathNodeKind::Element) node->SetOwnValue(FromNative(value));
    parent_->AppendChild(node);
    return node;
  }
  void ReadNode() {
    if (Take("{!")) {
      Add(XPathNodeKind::Text, "", TakeUntil("}"))->escapeOutput = false;
    } else if (Take("{")) {
      Add(XPathNodeKind::Text, "", TakeUntil("}"));
    } else if (Take("[")) {
      Add(XPathNodeKind::CData, "", TakeUntil("["));
    } else if (Take("<!--")) {
      Add(XPathNodeKind::Comment, "", TakeUntil("-->"));
    } else if (Take("<?")) {
      const std::string_view name = TakeUntil(" ");
      Add(XPathNodeKind::PI, name, TakeUntil("?>"));
    } else if (Take("</")) {
      TakeUntil(">");
      parent_ = parent_->parent;
    } else if (Take("<")) {
      ReadStartTag(TakeUntil(">"));
    }
  }
  void ReadStartTag(std::string_view tag) {
    const bool isEmpty = tag.ends_with('/');
    if (isEmpty) tag.remove_suffix(1);
    const TreeReader outer = *this;
    rest_ = tag;
    parent_ = Add(XPathNodeKind::Element, TakeUntil(" "), "");
    while (!rest_.empty()) {
      if (Take(" ")) continue;
      if (Take("@")) {
        parent_->namespaceURI = Intern(TakeUntil(" "));
        continue;
      }
      const std::string_view name = TakeUntil("='");
      const bool declares = name.starts_with("xmlns");
      Add(declares ? XPathNodeKind::Namespace : XPathNodeKind::Attribute, name, TakeUntil("'"));
    }
    rest_ = outer.rest_;
    if (isEmpty) parent_ = outer.parent_;
  }

  std::string_view rest_;
  XPathNode* parent_ = nullptr;
};

}  // namespace

ResultTree MakeResultTree(std::string_view text) {
  return ResultTree(TreeReader(text).Read());
}

OutputSettings MakeSettings(std::string_view text) {
  OutputSettings settings;
  while (!text.empty()) {
    const std::string_view item = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(text.size(), item.size() + 1));
    const std::string_view key = item.substr(0, item.find('='));
    const TQString value = FromNative(item.substr(key.size() + 1));
    if (key == "method") settings.SetMethod(value);
    if (key == "encoding") settings.SetEncoding(value);
    if (key == "public") settings.SetDoctypePublic(value);
    if (key == "system") settings.SetDoctypeSystem(value);
    if (key == "cdata") settings.AddCdataElements(u" " + value);
    if (key == "omit") settings.SetOmitDeclaration(value == u"yes");
    if (key == "standalone") settings.SetStandalone(value == u"yes");
    if (key == "indent") settings.SetIndent(value == u"yes");
  }
  return settings;
}

}  // namespace kelmora
