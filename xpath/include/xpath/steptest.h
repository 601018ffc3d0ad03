// StepTest: the node test of one step, as a record with its prefix resolved.
#pragma once

#include <cstdint>
#include <string_view>

#include "xmltree/xpathnode.h"

namespace kelmora {

struct StepTest {
  enum Kind : std::uint8_t {
    None,     // no test at all: what the axis itself lets through
    AnyNode,  // always true
    Element,
    Text,
    Attribute,
    NamespaceNode,
    Comment,
    PI,            // with a non-empty `name`, only that target
    NotNamespace,  // anything but a namespace node
    Content,       // neither attribute nor namespace node
    Name,          // `name` as local name, in `uri`
    LocalName,     // `name` as local name of any node
    Namespace,     // any name in `uri`
  };

  Kind kind = None;
  InternedURI uri = nullptr;
  std::u16string_view name;  // borrowed from the parse tree

  bool Matches(const XPathNode& node) const;
  // Any name in no URI is no test at all.
  void SetUri(InternedURI resolved) {
    uri = resolved;
    if (kind == Namespace && resolved == nullptr) kind = None;
  }
};

}  // namespace kelmora
