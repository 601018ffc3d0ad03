// The walk over a result tree that all writers share. It goes by the links of the nodes, with a
// stack on the heap for what an open node has to remember, since a result may be nested deeper than
// the machine stack allows.
//
// A writer has a type Level, what holds among the children of one node, and two operations:
//   const XPathNode* Start(const XPathNode& node, Level level, Level& inner)
//     writes what stands in front of the node's content, or all of it when nothing is left to walk;
//     gives the first child that is still to be written, null without one, and their level.
//   void End(const XPathNode& node, Level inner)
//     writes what stands behind the content of a node for which Start gave a child.
#pragma once

#include <vector>

#include "xmltree/xpathnode.h"

namespace kelmora {

template <class Writer>
void WalkResult(const XPathNode& top, Writer& writer, typename Writer::Level level) {
  std::vector<typename Writer::Level> outer;  // of the siblings of each open node
  const XPathNode* node = &top;
  while (true) {
    typename Writer::Level inner{};
    if (const XPathNode* content = writer.Start(*node, level, inner)) {
      outer.push_back(level);
      level = inner;
      node = content;
      continue;
    }
    while (node != &top && node->next == nullptr) {
      node = node->parent;
      writer.End(*node, level);
      level = outer.back();
      outer.pop_back();
    }
    if (node == &top) return;
    node = node->next;
  }
}

}  // namespace kelmora
