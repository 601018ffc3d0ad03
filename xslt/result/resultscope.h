// ResultScopes: which prefixes are in force at the output, and which an instruction has to declare
// anew. The serializer computes nothing from names: it writes the declaration nodes that stand in
// the tree, so each instruction that makes an element or attribute works them out here.
//
// The plain work is a walk over a whole scope for each element. Consecutive elements mostly have
// the same two scopes, and the second of them has nothing to declare; so pairs of scopes with that
// outcome are remembered. A PrefixMap that is held can't change, which makes this safe. Where such
// a pair is known for the parent, an element's own declarations are all there is to look at.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/declarations.h"
#include "engine/resultconstruction.h"
#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"
#include "xmltree/xpathnode.h"
#include "xslt/templateframe.h"

namespace kelmora {

class ResultScopes {
 public:
  // How an element comes into the result.
  struct Origin {
    const XPathNode& node;  // of the stylesheet or source
    bool isLiteral;
    bool keepsXslt;              // an alias maps the element's own prefix to the XSLT namespace
    std::u16string_view prefix;  // of the element's own name
    const URISet& excluded;
    const URISet& extension;
    const NamespaceAliasMap& aliases;
  };

  // Declares on `copy`, an element that has just been appended, what its origin has in scope and
  // the output hasn't.
  void ProcessScope(XPathNode& copy, const Origin& origin);

  // The repairs of xsl:copy-of. `copy` is a deep copy of an element.
  //
  // For a copy out of a source tree that has been appended: what is in the copy's scope and is
  // declared nowhere at or above it becomes a declaration of `copy`, the last one first. In a tree
  // whose scopes hold nothing but what has been declared in it, `scopesDeclared`, the scope of the
  // parent answers; elsewhere the ancestors are searched.
  void DeclareMissingNamespaces(XPathNode& copy, bool scopesDeclared);
  // For an element out of a fragment, before it is appended to `output`: what `output` binds to
  // another URI is declared again.
  void ReconcileNamespaces(XPathNode& copy, const XPathNode& output);

  // The first entry of the map, in its order, with the text of `uri` (a null URI is an empty text);
  // null without one. The entry lives as long as the map.
  const PrefixMap::Entry* FindURI(const PrefixMap& map, std::u16string_view uri);

 private:
  // An outcome of ProcessScope: with these inputs there is nothing to declare.
  struct Settled {
    PrefixMap from;
    PrefixMap to;
    bool isLiteral = false;
    bool keepsXslt = false;
    TQString prefix;  // empty also where it makes no difference
    URISet excluded;
    URISet extension;
    std::size_t aliasCount = 0;
    std::uint64_t lastUse = 0;  // 0: an empty place
  };
  struct SettledPair {
    PrefixMap from;
    PrefixMap to;
    bool used = false;
  };
  struct Reconciled {  // nothing to declare; the copy's scope becomes `completed`
    PrefixMap from;
    PrefixMap to;
    PrefixMap completed;
    bool used = false;
  };
  static constexpr std::size_t kRemembered = 8;

  bool IsSettled(const PrefixMap& from, const PrefixMap& to, const Origin& origin);
  void Settle(const PrefixMap& to, const Origin& origin);
  bool ProcessOwnDeclarations(XPathNode& copy, const Origin& origin);
  void ProcessWholeScope(XPathNode& copy, const Origin& origin);
  void Declare(XPathNode& copy, const Origin& origin, std::u16string_view prefix, InternedURI uri);

  std::array<Settled, kRemembered> settled_;
  std::uint64_t settledUse_ = 0;
  std::array<SettledPair, kRemembered> declared_;  // DeclareMissingNamespaces, scopes declared
  std::size_t nextDeclared_ = 0;
  Reconciled reconciled_;
  PrefixMap searchedMap_;  // of the last FindURI
  TQString searchedURI_;
  const PrefixMap::Entry* foundEntry_ = nullptr;
  bool searched_ = false;
};

}  // namespace kelmora
