#include "older/olderschematypes.h"

#include "tqcore/tqtext.h"
#include "types/facet.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

struct TypeFlag {
  TypeCode code;
  bool AttributeDecl::*flag;
};
constexpr TypeFlag kTypeFlags[] = {
    {TypeCode::NOTATION, &AttributeDecl::isNOTATION},
    {TypeCode::IDREFS, &AttributeDecl::isIDREFS},
    {TypeCode::ENTITIES, &AttributeDecl::isENTITIES},
    {TypeCode::NMTOKEN, &AttributeDecl::isNMTOKEN},
    {TypeCode::NMTOKENS, &AttributeDecl::isNMTOKENS},
    {TypeCode::ID, &AttributeDecl::isID},
    {TypeCode::IDREF, &AttributeDecl::isIDREF},
    {TypeCode::ENTITY, &AttributeDecl::isENTITY},
    {TypeCode::Enumeration, &AttributeDecl::isEnumeration},
};

bool IsQuote(char16_t unit) {
  return unit == u'\'' || unit == u'"';
}

}  // namespace

std::shared_ptr<SimpleType> XdrType(View name) {
  const TypeCode code = TypeCodeFromName(name, true);
  return code != TypeCode::UserDefined ? std::make_shared<SimpleType>(code) : nullptr;
}

bool SetXdrType(View name, AttributeDecl& attribute) {
  attribute.type = XdrType(name);
  if (attribute.type == nullptr) return false;
  for (const TypeFlag& entry : kTypeFlags) {
    if (entry.code == attribute.type->typeCode) attribute.*entry.flag = true;
  }
  return true;
}

void AddFacet(View facet, const TQString& value, TypeCode codeIfMissing,
              std::shared_ptr<SimpleType>& type) {
  if (type == nullptr) type = std::make_shared<SimpleType>(codeIfMissing);
  type->facets.push_back(CreateFacet(facet, value));
}

std::vector<TQString> SplitValues(View text) {
  std::vector<TQString> words;
  std::size_t at = text.find_first_not_of(kXmlSpaces);
  while (at != View::npos) {
    const bool isQuoted = IsQuote(text[at]);
    const std::size_t start = at + (isQuoted ? 1 : 0);
    std::size_t end = isQuoted ? text.find(text[at], start) : text.find_first_of(kXmlSpaces, at);
    if (end == View::npos) end = text.size();
    words.emplace_back(text.substr(start, end - start));
    at = text.find_first_not_of(kXmlSpaces, std::min(end + (isQuoted ? 1 : 0), text.size()));
  }
  return words;
}

}  // namespace kelmora
