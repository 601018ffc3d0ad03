// What an element of the result has to declare is worked out by its definition: each entry of the
// origin's scope against the scope at the output. That walk is left out where the same two scopes
// came to nothing before (Settled, SettledPair, Reconciled). Scopes compare by identity
// (PrefixMap::SharesWith) and never by content; a map that is held is never changed in place, so an
// outcome stays true as long as it is remembered.
//
// The trap: an outcome depends on more than the two scopes. All that Declare looks at beside them
// must stand in Settled and be compared in IsSettled. And a declaration changes the scope that the
// next entry is held against, so the order of entries is part of the result.
#include "result/resultscope.h"

#include <algorithm>

#include "names/xsltnames.h"
#include "tqcore/tqtext.h"
#include "xmltree/xpathtreebuilder.h"

namespace kelmora {

namespace {

bool IsXmlURI(InternedURI uri) {
  return uri != nullptr && *uri == kXmlNamespace;
}

bool SameSet(const URISet& a, const URISet& b) {
  return a == b || (a != nullptr && b != nullptr && *a == *b);
}

bool Holds(const URISet& set, InternedURI uri) {
  return uri != nullptr && Contains(set, uri);
}

}  // namespace

// ------------------------------------------------------------------------------- ProcessScope

namespace {

// The prefix of the element's own name decides about excluded URIs alone.
std::u16string_view DecidingPrefix(const ResultScopes::Origin& origin) {
  const bool hasSets = origin.excluded != nullptr || origin.extension != nullptr;
  return hasSets ? origin.prefix : std::u16string_view();
}

}  // namespace

bool ResultScopes::IsSettled(const PrefixMap& from, const PrefixMap& to, const Origin& origin) {
  for (Settled& known : settled_) {
    if (known.lastUse != 0 && known.from.SharesWith(from) && known.to.SharesWith(to) &&
        known.isLiteral == origin.isLiteral && known.keepsXslt == origin.keepsXslt &&
        known.aliasCount == origin.aliases.size() && known.prefix == DecidingPrefix(origin) &&
        SameSet(known.excluded, origin.excluded) && SameSet(known.extension, origin.extension)) {
      known.lastUse = ++settledUse_;
      return true;
    }
  }
  return false;
}

void ResultScopes::Settle(const PrefixMap& to, const Origin& origin) {
  Settled& oldest = *std::ranges::min_element(settled_, {}, &Settled::lastUse);
  oldest = {origin.node.ScopeMap(), to,
            origin.isLiteral,       origin.keepsXslt,
            DecidingPrefix(origin), origin.excluded,
            origin.extension,       origin.aliases.size(),
            ++settledUse_};
}

void ResultScopes::ProcessScope(XPathNode& copy, const Origin& origin) {
  if (IsSettled(origin.node.ScopeMap(), copy.ScopeMap(), origin)) return;
  if (!ProcessOwnDeclarations(copy, origin)) ProcessWholeScope(copy, origin);
  Settle(copy.ScopeMap(), origin);  // what it left out, it would leave out again
}

void ResultScopes::ProcessWholeScope(XPathNode& copy, const Origin& origin) {
  const PrefixMap& scope = origin.node.ScopeMap();
  // An entry for the empty prefix is what makes a child in no namespace write xmlns="" below a
  // default namespace. It sorts first.
  if (scope.Find(u"") == nullptr) Declare(copy, origin, u"", nullptr);
  for (const PrefixMap::Entry& entry : scope) Declare(copy, origin, entry.prefix, entry.uri);
}

// False, with nothing done, unless all that the node's parent has in scope is known to be settled
// at the output. The nodes must be those of a loaded tree, where a scope is that of the parent and
// what the element declares. With aliases one entry depends on another.
bool ResultScopes::ProcessOwnDeclarations(XPathNode& copy, const Origin& origin) {
  const XPathNode* parent = origin.node.parent;
  if (parent == nullptr || parent->orderNumber <= 0 || origin.node.orderNumber <= 0) return false;
  if (!origin.aliases.empty()) return false;
  if (!IsSettled(parent->ScopeMap(), copy.ScopeMap(), origin)) return false;
  std::vector<std::u16string_view> declared;
  const XPathNode* end = BehindAttributes(origin.node);
  for (const XPathNode* child = origin.node.firstChild; child != end; child = child->next) {
    if (child->kind != XPathNodeKind::Namespace) continue;
    declared.push_back(DeclaredPrefix(*child));
  }
  std::ranges::sort(declared);
  for (const std::u16string_view prefix : declared) {
    const PrefixMap::Entry* entry = origin.node.ScopeMap().Find(prefix);
    if (entry != nullptr) Declare(copy, origin, prefix, entry->uri);
  }
  return true;
}

// One entry of the origin's scope. Reads the scope of `copy` as the entries before have left it.
void ResultScopes::Declare(XPathNode& copy, const Origin& origin, std::u16string_view prefix,
                           InternedURI uri) {
  const PrefixMap& inForce = copy.ScopeMap();
  if (SameURI(inForce.Lookup(prefix), uri)) return;
  if (origin.isLiteral && !origin.keepsXslt && uri != nullptr && IsXsltURI(uri)) return;
  if (IsXmlURI(uri)) return;

  std::u16string_view declaredPrefix = prefix;
  InternedURI declaredURI = uri;
  if (!prefix.empty()) {
    const auto alias = origin.aliases.find(prefix);
    if (alias != origin.aliases.end()) {
      declaredPrefix = alias->second;
      declaredURI = origin.node.ScopeMap().Lookup(declaredPrefix);
      if (inForce.Find(declaredPrefix) != nullptr) return;
    }
  }
  if (declaredPrefix != origin.prefix) {
    if (origin.isLiteral && Holds(origin.excluded, declaredURI)) return;
    if (Holds(origin.extension, declaredURI)) return;
  }
  DeclareOn(copy, declaredPrefix, declaredURI);
}

// ------------------------------------------------------------------------------ copy-of repairs

namespace {

std::u16string_view TextOfURI(InternedURI uri) {
  return uri != nullptr ? uri->View() : std::u16string_view();
}

// Entries of a scope, in its order, that wait for a declaration to be found.
class OpenEntries {
 public:
  void Add(const PrefixMap::Entry& entry) {  // of a map that outlives this object
    entries_.push_back({&entry, false});
    ++open_;
  }
  bool IsEmpty() const { return open_ == 0; }
  void FindDeclarations(const XPathNode& element) {
    const XPathNode* end = BehindAttributes(element);
    for (const XPathNode* child = element.firstChild; child != end && open_ > 0;
         child = child->next) {
      if (child->kind != XPathNodeKind::Namespace) continue;
      Close(DeclaredPrefix(*child), child->GetValue());
    }
  }
  template <class Action>
  void ForEach(Action action) const {
    for (const Item& item : entries_) {
      if (!item.isDeclared) action(*item.entry);
    }
  }

 private:
  struct Item {
    const PrefixMap::Entry* entry;
    bool isDeclared;
  };

  void Close(std::u16string_view prefix, std::u16string_view uri) {
    const auto found = std::lower_bound(entries_.begin(), entries_.end(), prefix,
                                        [](const Item& item, std::u16string_view text) {
                                          return item.entry->prefix.View() < text;
                                        });
    if (found == entries_.end() || found->isDeclared || found->entry->prefix != prefix) return;
    if (TextOfURI(found->entry->uri) != uri) return;
    found->isDeclared = true;
    --open_;
  }

  std::vector<Item> entries_;
  std::size_t open_ = 0;
};

}  // namespace

void ResultScopes::DeclareMissingNamespaces(XPathNode& copy, bool scopesDeclared) {
  const PrefixMap& scope = copy.ScopeMap();
  const PrefixMap& inForce = copy.parent->ScopeMap();
  if (scopesDeclared) {
    for (const SettledPair& known : declared_) {
      if (known.used && known.from.SharesWith(scope) && known.to.SharesWith(inForce)) return;
    }
  }

  OpenEntries missing;
  for (const PrefixMap::Entry& entry : scope) {
    if (entry.prefix == u"xml" || (entry.prefix.IsEmpty() && entry.uri == nullptr)) continue;
    if (scopesDeclared) {
      const PrefixMap::Entry* bound = inForce.Find(entry.prefix);
      if (bound != nullptr && SameURI(bound->uri, entry.uri)) continue;
    }
    missing.Add(entry);
  }
  if (missing.IsEmpty()) {
    if (scopesDeclared) {
      declared_[nextDeclared_] = {scope, inForce, true};
      nextDeclared_ = (nextDeclared_ + 1) % kRemembered;
    }
    return;
  }

  // A declaration further up counts even where a nearer one hides it. One under a root is not
  // written.
  for (const XPathNode* up = &copy; up != nullptr && !missing.IsEmpty(); up = up->parent) {
    if (up->kind == XPathNodeKind::Element) missing.FindDeclarations(*up);
  }
  missing.ForEach([&copy](const PrefixMap::Entry& entry) {
    copy.InsertChild(copy.firstChild, MakeDeclaration(entry.prefix, entry.uri).release());
  });
}

void ResultScopes::ReconcileNamespaces(XPathNode& copy, const XPathNode& output) {
  const PrefixMap& outer = output.ScopeMap();
  if (reconciled_.used && reconciled_.from.SharesWith(copy.ScopeMap()) &&
      reconciled_.to.SharesWith(outer)) {
    copy.OwnScope().scopeMap = reconciled_.completed;
    return;
  }
  const PrefixMap from = copy.ScopeMap();
  if (from.Find(u"") == nullptr) copy.OwnScope().scopeMap.Set(u"", outer.Lookup(u""));
  const PrefixMap completed = copy.ScopeMap();
  OpenEntries hidden;
  for (const PrefixMap::Entry& entry : completed) {
    const PrefixMap::Entry* bound = outer.Find(entry.prefix);
    if (bound != nullptr && !SameURI(bound->uri, entry.uri)) hidden.Add(entry);
  }
  if (hidden.IsEmpty()) {
    reconciled_ = {from, outer, completed, true};
    return;
  }
  hidden.FindDeclarations(copy);
  XPathNode* content = BehindAttributes(copy);
  hidden.ForEach([&copy, content](const PrefixMap::Entry& entry) {
    copy.InsertChild(content, MakeDeclaration(entry.prefix, entry.uri).release());
    NamespaceScope& own = copy.OwnScope();
    own.scopeMap.Set(entry.prefix, entry.uri);
    if (!entry.prefix.IsEmpty()) own.attributeScopeMap.Set(entry.prefix, entry.uri);
  });
}

// ------------------------------------------------------------------------------------- searches

const PrefixMap::Entry* ResultScopes::FindURI(const PrefixMap& map, std::u16string_view uri) {
  if (searched_ && searchedMap_.SharesWith(map) && searchedURI_ == uri) return foundEntry_;
  searchedMap_ = map;
  searchedURI_ = uri;
  searched_ = true;
  foundEntry_ = nullptr;
  for (const PrefixMap::Entry& entry : searchedMap_) {
    if (TextOfURI(entry.uri) == uri) {
      foundEntry_ = &entry;
      break;
    }
  }
  return foundEntry_;
}

}  // namespace kelmora
