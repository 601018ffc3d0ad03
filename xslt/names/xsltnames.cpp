#include "names/xsltnames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelmora {

namespace {

struct NameCode {
  std::u16string_view name;
  std::int32_t code;
};

template <std::size_t size>
constexpr std::array<NameCode, size> SortedByName(std::array<NameCode, size> table) {
  std::ranges::sort(table, {}, &NameCode::name);
  return table;
}

constexpr auto kElements = SortedByName(std::to_array<NameCode>({
#define ELEMENT(code, enumerator, name) {name, code},
#include "names/elementcodes.def"
#undef ELEMENT
    {u"transform", ElementCode::Stylesheet},
}));

constexpr auto kAttributes = SortedByName(std::to_array<NameCode>({
#define ATTRIBUTE(code, enumerator, name) {name, code},
#include "names/attributecodes.def"
#undef ATTRIBUTE
}));

template <class Table>
std::int32_t CodeOf(const Table& table, std::u16string_view name, std::int32_t other) {
  const auto row = std::ranges::lower_bound(table, name, {}, &NameCode::name);
  return row != table.end() && row->name == name ? row->code : other;
}

// The attributes that literal result elements take in the XSLT namespace.
constexpr bool IsGlobalAttribute(std::int32_t code) {
  return code == AttributeCode::ExcludeResultPrefixes ||
         code == AttributeCode::ExtensionElementPrefixes ||
         code == AttributeCode::UseAttributeSets || code == AttributeCode::Version;
}

}  // namespace

bool IsXsltURI(InternedURI uri) {
  return uri != nullptr && uri->View() == kXsltNamespace;
}

std::int32_t XsltElementNames::Code(const XPathNode* node) {
  if (!IsXsltURI(node->namespaceURI)) return ElementCode::Literal;
  return CodeOf(kElements, node->GetLocalName(), ElementCode::Literal);
}

std::int32_t XsltAttributeNames::Code(const XPathNode* attribute) {
  const InternedURI uri = attribute->namespaceURI;
  if (uri != nullptr && !IsXsltURI(uri)) return AttributeCode::Other;
  const std::int32_t code = CodeOf(kAttributes, attribute->GetLocalName(), AttributeCode::Other);
  return uri == nullptr || IsGlobalAttribute(code) ? code : AttributeCode::Other;
}

}  // namespace kelmora
