// What a DTD or schema supplies to an element that does not say it itself.
#include <algorithm>
#include <utility>

#include "declarationname.h"
#include "tqcore/texthash.h"
#include "tqcore/tqtext.h"
#include "treebuilderrun.h"

namespace kelmora {
namespace {

using Kind = XPathNodeKind;
using View = std::u16string_view;

constexpr std::size_t kFewAttributes = 8;  // up to here a loop beats a table

// Without a namespace of its own a declared name is compared whole, as a DTD does; else by local
// name and namespace.
bool IsSameAttribute(const DefaultedAttribute& declared, const XPathNode& present) {
  if (declared.uri == nullptr) return present.GetName() == declared.name.View();
  return present.namespaceURI == declared.uri &&
         present.GetLocalName() == LocalPartOf(declared.name);
}

struct AttributeKey {
  InternedURI uri;
  View name;
  bool operator==(const AttributeKey&) const = default;
};
struct AttributeKeyHash {
  std::size_t operator()(const AttributeKey& key) const { return HashName(key.name, key.uri); }
};

AttributeKey KeyOf(const DefaultedAttribute& declared) {
  const View name = declared.name;
  return {declared.uri, declared.uri == nullptr ? name : LocalPartOf(name)};
}

}  // namespace

void XPathTreeBuilder::Run::RemovePresent(const XPathNode& element) {
  std::size_t count = 0;
  for (const XPathNode* node = element.firstChild; node != nullptr; node = node->next) ++count;
  if (count <= kFewAttributes) {
    std::erase_if(defaults_, [&](const DefaultedAttribute& declared) {
      for (const XPathNode* node = element.firstChild; node != nullptr; node = node->next) {
        if (IsSameAttribute(declared, *node)) return true;
      }
      return false;
    });
    return;
  }
  std::unordered_set<AttributeKey, AttributeKeyHash> present;
  for (const XPathNode* node = element.firstChild; node != nullptr; node = node->next) {
    present.insert({nullptr, node->GetName()});
    if (node->namespaceURI != nullptr) present.insert({node->namespaceURI, node->GetLocalName()});
  }
  std::erase_if(defaults_, [&](const DefaultedAttribute& declared) {
    return present.contains(KeyOf(declared));
  });
}

// The children so far are attributes alone, so what is added stands behind them and in front of
// all content. Declarations come first: they may bind the prefixes of the others.
void XPathTreeBuilder::Run::AddDefaults(XPathNode& element) {
  bool declared = false;
  for (DefaultedAttribute& attribute : defaults_) {
    if (!IsDeclarationName(attribute.name)) continue;
    XPathNode* node = AppendDefault(element, Kind::Namespace, std::move(attribute.value));
    Declare(element, attribute.name, node->GetValue());
    node->SetOwnName(attribute.name);
    declared = true;
  }
  if (declared) ResolveAttributes(element);
  for (DefaultedAttribute& attribute : defaults_) {
    if (!IsDeclarationName(attribute.name)) AddDefaultAttribute(element, attribute);
  }
}

void XPathTreeBuilder::Run::AddDefaultAttribute(XPathNode& element, DefaultedAttribute& attribute) {
  XPathNode* node = AppendDefault(element, Kind::Attribute, std::move(attribute.value));
  ExpandValue(*node);
  node->namespaceURI = attribute.uri;
  if (attribute.uri == nullptr) {
    const View prefix = PrefixOf(attribute.name);
    if (!prefix.empty()) node->namespaceURI = element.AttributeScopeMap().Lookup(prefix);
    return node->SetOwnName(std::move(attribute.name));
  }
  // A declared namespace comes without a prefix: the first one that is bound to it serves.
  TQString name;
  for (const PrefixMap::Entry& entry : element.ScopeMap()) {
    if (entry.uri != attribute.uri) continue;
    if (!entry.prefix.IsEmpty()) name = entry.prefix + u":";
    break;
  }
  name += LocalPartOf(attribute.name);
  node->SetOwnName(std::move(name));
}

XPathNode* XPathTreeBuilder::Run::AppendDefault(XPathNode& element, XPathNodeKind kind,
                                                TQString value) {
  XPathNode* node = MakeStamped(kind, element.source, &element);
  node->synthetic = element.synthetic;
  node->SetOwnValue(std::move(value));
  element.AppendChild(node);
  return node;
}

}  // namespace kelmora
