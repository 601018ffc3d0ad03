// Making nodes of result trees and fragments. There is no stream of events: an instruction makes a
// node and hangs it under its OutputNode at once. A result node has no source, or shares the source
// of the node that it was copied from, so that unchanged text is never copied.
#pragma once

#include <memory>
#include <string_view>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

struct TreeDeleter {
  void operator()(XPathNode* root) const { XPathNode::DeleteTree(root); }
};
using OwnedTree = std::unique_ptr<XPathNode, TreeDeleter>;

// The one road into a result tree: `node` becomes the last child, and all of its tree takes the
// document number and no order number.
// Raises TQXTreeException with code 1, and frees the node, where the data model has no such shape:
// anything but text in an attribute or declaration, an attribute in a root, an attribute or
// declaration behind content.
XPathNode* AppendResult(XPathNode& parent, OwnedTree node);
// The same for callers that drop what has no place: null then.
XPathNode* AppendOrDrop(XPathNode& parent, OwnedTree node);

OwnedTree MakeResultNode(XPathNodeKind kind, TQString name, TQString value);
// A node without its children and its place; it shares name and value with the source.
OwnedTree ShallowCopy(const XPathNode& node);
OwnedTree MakeText(TQString value);
// A text node with the string value as the last child of `parent`. With `joins`, a short text is
// added to a short text that is the last child already.
void AppendText(XPathNode& parent, const XPathValue& value, bool escapeOutput, bool joins);
void AppendText(XPathNode& parent, const XPathNode& node, bool escapeOutput, bool joins);
// The second half alone: false when nothing was added.
bool JoinText(XPathNode& parent, std::u16string_view text, bool escapeOutput);

// Adds a declaration to an element and enters it in the element's own scope. A null URI declares
// the prefix to nothing.
void DeclareOn(XPathNode& element, std::u16string_view prefix, InternedURI uri);
OwnedTree MakeDeclaration(std::u16string_view prefix, InternedURI uri);
// The prefix that a declaration declares, empty for the default namespace. Not for a node of the
// namespace axis, whose name is its prefix.
std::u16string_view DeclaredPrefix(const XPathNode& declaration);

// Whether an attribute can enter: an element without content.
bool TakesAttributes(const XPathNode& parent);

// Where leading attributes and declarations end: the first other child, null at the end.
XPathNode* BehindAttributes(const XPathNode& element);

inline bool IsAttributeLike(const XPathNode& node) {  // stands in a start tag
  return node.kind == XPathNodeKind::Attribute || node.kind == XPathNodeKind::Namespace;
}
// Equal as texts; both may be null, which is "no namespace" and differs from every text.
inline bool SameURI(InternedURI a, InternedURI b) {
  return a == b || (a != nullptr && b != nullptr && *a == *b);
}

}  // namespace kelmora
