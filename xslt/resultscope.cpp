#include "resultscope.h"

#include <algorithm>
#include <functional>

#include "tqcore/tqtext.h"
#include "xmltree/xpathtreebuilder.h"
#include "xsltnames.h"

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

bool ResultScopes::IsSettled(const PrefixMap& to, const Origin& origin) const {
  for (const Settled& known : settled_) {
    if (known.used && known.from.SharesWith(origin.scope) && known.to.SharesWith(to) &&
        known.isLiteral == origin.isLiteral && known.keepsXslt == origin.keepsXslt &&
        known.aliasCount == origin.aliases.size() && known.prefix == origin.prefix &&
        SameSet(known.excluded, origin.excluded) && SameSet(known.extension, origin.extension)) {
      return true;
    }
  }
  return false;
}

void ResultScopes::Settle(const PrefixMap& to, const Origin& origin) {
  settled_[nextSettled_] = {origin.scope,
                            to,
                            origin.isLiteral,
                            origin.keepsXslt,
                            origin.prefix,
                            origin.excluded,
                            origin.extension,
                            origin.aliases.size(),
                            true};
  nextSettled_ = (nextSettled_ + 1) % kRemembered;
}

void ResultScopes::ProcessScope(XPathNode& copy, const Origin& origin) {
  if (IsSettled(copy.ScopeMap(), origin)) return;
  bool declared = false;
  // An entry for the empty prefix is what makes a child in no namespace write xmlns="" below a
  // default namespace. It sorts first.
  if (origin.scope.Find(u"") == nullptr) declared = Declare(copy, origin, u"", nullptr);
  for (const PrefixMap::Entry& entry : origin.scope) {
    if (Declare(copy, origin, entry.prefix, entry.uri)) declared = true;
  }
  if (!declared) Settle(copy.ScopeMap(), origin);
}

// One entry of the origin's scope. Reads the scope of `copy` as the entries before have left it.
bool ResultScopes::Declare(XPathNode& copy, const Origin& origin, std::u16string_view prefix,
                           InternedURI uri) {
  const PrefixMap& inForce = copy.ScopeMap();
  if (SameURI(inForce.Lookup(prefix), uri)) return false;
  if (origin.isLiteral && !origin.keepsXslt && uri != nullptr && IsXsltURI(uri)) return false;
  if (IsXmlURI(uri)) return false;

  std::u16string_view declaredPrefix = prefix;
  InternedURI declaredURI = uri;
  if (!prefix.empty()) {
    const auto alias = origin.aliases.find(prefix);
    if (alias != origin.aliases.end()) {
      declaredPrefix = alias->second;
      declaredURI = origin.scope.Lookup(declaredPrefix);
      if (inForce.Find(declaredPrefix) != nullptr) return false;
    }
  }
  if (declaredPrefix != origin.prefix) {
    if (origin.isLiteral && Holds(origin.excluded, declaredURI)) return false;
    if (Holds(origin.extension, declaredURI)) return false;
  }
  DeclareOn(copy, declaredPrefix, declaredURI);
  return true;
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
      Close(child->GetLocalName(), child->GetValue());
      if (child->GetName() == u"xmlns") Close(u"", child->GetValue());
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

  // A declaration further up counts even where a nearer one hides it.
  for (const XPathNode* up = &copy; up != nullptr && !missing.IsEmpty(); up = up->parent) {
    missing.FindDeclarations(*up);
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

XPathNode* ResultScopes::FindAttribute(XPathNode& element, InternedURI uri,
                                       std::u16string_view localName) {
  if (indexed_ == &element) return FindIndexed(element, uri, localName);
  int seen = 0;
  for (XPathNode* child = element.firstChild; child != nullptr && IsAttributeLike(*child);
       child = child->next) {
    if (child->kind == XPathNodeKind::Attribute && child->namespaceURI == uri &&
        child->GetLocalName() == localName) {
      return child;
    }
    if (++seen > kIndexedAttributes) {
      attributes_.clear();
      indexed_ = &element;
      lastIndexed_ = nullptr;
      return FindIndexed(element, uri, localName);
    }
  }
  return nullptr;
}

XPathNode* ResultScopes::FindIndexed(XPathNode& element, InternedURI uri,
                                     std::u16string_view localName) {
  XPathNode* child = lastIndexed_ != nullptr ? lastIndexed_->next : element.firstChild;
  for (; child != nullptr && IsAttributeLike(*child); child = child->next) {
    if (child->kind == XPathNodeKind::Attribute) attributes_.insert(child);  // the first one stays
    lastIndexed_ = child;
  }
  const auto found = attributes_.find(AttributeKey{uri, localName});
  return found != attributes_.end() ? *found : nullptr;
}

std::size_t ResultScopes::AttributeHash::operator()(const AttributeKey& key) const {
  constexpr std::size_t kSpread = 0x9E3779B97F4A7C15u;
  return std::hash<std::u16string_view>()(key.localName) ^
         (std::hash<InternedURI>()(key.uri) * kSpread);
}

std::size_t ResultScopes::AttributeHash::operator()(const XPathNode* node) const {
  return (*this)(AttributeKey{node->namespaceURI, node->GetLocalName()});
}

bool ResultScopes::AttributeEqual::operator()(const AttributeKey& key,
                                              const XPathNode* node) const {
  return key.uri == node->namespaceURI && key.localName == node->GetLocalName();
}

bool ResultScopes::AttributeEqual::operator()(const XPathNode* a, const XPathNode* b) const {
  return (*this)(AttributeKey{a->namespaceURI, a->GetLocalName()}, b);
}

}  // namespace kelmora
