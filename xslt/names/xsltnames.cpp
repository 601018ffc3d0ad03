#include "names/xsltnames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelmora {

namespace {

template <class Code>
struct NameCode {
  std::u16string_view name;
  Code code;
};

template <class Row, std::size_t size>
constexpr std::array<Row, size> SortedByName(std::array<Row, size> table) {
  std::ranges::sort(table, {}, &Row::name);
  return table;
}

constexpr auto kElements = SortedByName(std::to_array<NameCode<XsltElement>>({
#define ELEMENT(code, enumerator, name) {name, XsltElement::enumerator},
#include "names/elementcodes.def"
#undef ELEMENT
    {u"transform", XsltElement::Stylesheet},
}));

constexpr auto kAttributes = SortedByName(std::to_array<NameCode<XsltAttribute>>({
#define ATTRIBUTE(code, enumerator, name) {name, XsltAttribute::enumerator},
#include "names/attributecodes.def"
#undef ATTRIBUTE
}));

template <class Code, std::size_t size>
Code CodeOf(const std::array<NameCode<Code>, size>& table, std::u16string_view name, Code other) {
  const auto row = std::ranges::lower_bound(table, name, {}, &NameCode<Code>::name);
  return row != table.end() && row->name == name ? row->code : other;
}

// The attributes that literal result elements take in the XSLT namespace.
constexpr bool IsGlobalAttribute(XsltAttribute code) {
  return code == XsltAttribute::ExcludeResultPrefixes ||
         code == XsltAttribute::ExtensionElementPrefixes ||
         code == XsltAttribute::UseAttributeSets || code == XsltAttribute::Version;
}

}  // namespace

bool IsXsltURI(InternedURI uri) {
  return uri != nullptr && uri->View() == kXsltNamespace;
}

XsltElement XsltElementNames::Code(const XPathNode* node) {
  return IsXsltURI(node->namespaceURI) ? Code(node->GetLocalName()) : XsltElement::Literal;
}

XsltElement XsltElementNames::Code(std::u16string_view localName) {
  return CodeOf(kElements, localName, XsltElement::Literal);
}

XsltAttribute XsltAttributeNames::Code(const XPathNode* attribute) {
  const InternedURI uri = attribute->namespaceURI;
  if (uri != nullptr && !IsXsltURI(uri)) return XsltAttribute::Other;
  const XsltAttribute code = CodeOf(kAttributes, attribute->GetLocalName(), XsltAttribute::Other);
  return uri == nullptr || IsGlobalAttribute(code) ? code : XsltAttribute::Other;
}

}  // namespace kelmora
