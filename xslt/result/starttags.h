// StartTags: what enters the start tag of a result element. An attribute or a declaration that
// comes by a literal attribute, an attribute set, xsl:attribute, xsl:copy or xsl:copy-of arrives
// here, so that a name stands in a tag once and a prefix means one thing in it.
//
// An element is read child by child while it has few attributes. Beyond that there is an index of
// the one element at work, so that a thousand attributes cost a thousand steps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/resultconstruction.h"
#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class StartTags {
 public:
  // Appends an attribute. One of the same URI pointer and local name that is there already takes
  // the new name and value instead, loses its children and keeps its place. Gives the attribute
  // that stands in the tree, null when it has no place there and was dropped.
  XPathNode* AddAttribute(XPathNode& parent, OwnedTree attribute);

  // Declares a prefix on an element and gives the declaration, also where the element has the same
  // one already. Null, with nothing done, where it has no place or the prefix stands for another
  // URI in this tag: by a declaration, by the element's own name or by that of an attribute.
  XPathNode* AddDeclaration(XPathNode& parent, std::u16string_view prefix, InternedURI uri);

  TQString GeneratePrefix() {  // "prefix_1", "prefix_2", ...
    return TQString::Format(u"prefix_%d", {++PrefixCounter});
  }

  // For every node that stops being the output: an element is at work no more and may be deleted.
  void Close(const XPathNode& node) {
    if (&node == indexed_) indexed_ = nullptr;
  }

 private:
  static constexpr int kIndexedChildren = 16;  // a tag with more of them has an index

  struct AttributeKey {
    InternedURI uri;
    std::u16string_view localName;
  };
  struct AttributeHash {
    using is_transparent = void;
    std::size_t operator()(const AttributeKey& key) const;
    std::size_t operator()(const XPathNode* node) const;
  };
  struct AttributeEqual {
    using is_transparent = void;
    bool operator()(const AttributeKey& key, const XPathNode* node) const;
    bool operator()(const XPathNode* a, const XPathNode* b) const;
  };

  XPathNode* FindAttribute(XPathNode& element, InternedURI uri, std::u16string_view localName);
  // Whether a child of the tag uses the prefix for another URI; without one, the declaration of the
  // prefix in this tag.
  struct Use {
    bool isTaken = false;
    XPathNode* declaration = nullptr;
  };
  Use FindUse(XPathNode& element, std::u16string_view prefix, InternedURI uri);
  bool UpdateIndex(XPathNode& element);  // false: the element has few children

  std::int32_t PrefixCounter = 0;
  XPathNode* indexed_ = nullptr;      // the element at work, when it has an index
  XPathNode* lastIndexed_ = nullptr;  // the last of its children that the index has seen
  std::unordered_set<XPathNode*, AttributeHash, AttributeEqual> attributes_;
  // Attributes and declarations by prefix, a declaration in front. A node that was renamed also
  // stays under its old prefix.
  std::unordered_map<TQString, std::vector<XPathNode*>, TextHash, TextEqual> uses_;
};

}  // namespace kelmora
