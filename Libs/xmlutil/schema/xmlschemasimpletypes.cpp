// Simple types: restriction, list and union, and facets.
#include <utility>

#include "schema/xmlschemareader.h"
#include "tqcore/tqtext.h"
#include "types/facet.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

// The code of an error by the result of a check.
struct CheckCode {
  TypeCheck result;
  ModelCode code;
};
constexpr CheckCode kCheckCodes[] = {
    {TypeCheck::Lexical, ModelCode::ValueInvalid},
    {TypeCheck::Range, ModelCode::ValueOutOfRange},
    {TypeCheck::FacetRefused, ModelCode::ValueRefused},
};

}  // namespace

bool XmlSchemaReader::FoundType::IsFinalFor(View derivation) const {
  return entry != nullptr && entry->finalText.Find(derivation) != TQString::kNotFound;
}

XmlSchemaReader::TypeRef XmlSchemaReader::BuiltinType(const QName& name) {
  const TypeCode code = TypeCodeFromName(name.local, false);
  if (BuiltinOf(code).dialect != BuiltinRow::Dialect::Schema) return nullptr;
  if (builtinTypes_.empty()) builtinTypes_.resize(kBuiltinCount);
  TypeRef& type = builtinTypes_[static_cast<std::size_t>(code)];
  if (type == nullptr) type = std::make_shared<SimpleType>(code);
  return type;
}

bool XmlSchemaReader::ResolveSimpleType(const XTreeNode& node, View text, FoundType& found) {
  const QName name = ResolveName(node, text);
  if (IsSchemaName(name)) {
    found.type = BuiltinType(name);
    return found.type != nullptr || Fail(ModelCode::BadValue, node, text);
  }
  found.entry = FindByName(name, [&](const QName& wanted) -> const SimpleTypeEntry* {
    const auto entry = schema_.simpleTypes.find(wanted);
    return entry != schema_.simpleTypes.end() ? entry->second.get() : nullptr;
  });
  if (found.entry == nullptr) return LeaveOpen(name, ModelCode::BadValue, node, text);
  found.type = found.entry->type;
  return true;
}

bool XmlSchemaReader::CopyType(const XTreeNode& node, const TypeRef& from, TypeRef& to) {
  to = from != nullptr ? std::make_shared<SimpleType>(*from) : nullptr;
  return from == nullptr || ChargeCopies(node, from->facets.size());
}

bool XmlSchemaReader::ReadTopSimpleType(const XTreeNode& node) {
  SimpleTypeEntry read;
  SchemaValues values;
  if (!ReadSimpleType(node, read.type, values, read.base)) return false;
  if (MissesAttribute(node, values, Word::Name)) return false;
  read.name = TargetName(values[Word::Name]);
  read.finalText = values[Word::Final];
  read.sourceNode = &node;
  auto& entry = schema_.simpleTypes[read.name];
  if (entry == nullptr) entry = std::make_unique<SimpleTypeEntry>();
  *entry = std::move(read);
  return true;
}

bool XmlSchemaReader::ReadNestedSimpleType(const XTreeNode& node, TypeRef& type) {
  SchemaValues values;
  QName base;
  return ReadSimpleType(node, type, values, base);
}

bool XmlSchemaReader::ReadSimpleType(const XTreeNode& node, TypeRef& type, SchemaValues& values,
                                     QName& base) {
  if (!ReadAttributes(node, kSimpleTypeRow, values)) return false;
  return ReadChildren(node, kSimpleTypeRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Restriction) return ReadRestriction(child, type, base);
    if (word == Word::List) return ReadList(child, type);
    if (word == Word::Union) return ReadUnion(child, type);
    return true;
  });
}

bool XmlSchemaReader::ReadRestriction(const XTreeNode& node, TypeRef& type, QName& base) {
  SchemaValues values;
  if (!ReadAttributes(node, kRestrictionRow, values)) return false;
  FoundType found;
  bool hasBase = values.Has(Word::Base);
  if (hasBase) {
    base = ResolveName(node, values[Word::Base]);
    if (!ResolveSimpleType(node, values[Word::Base], found)) return false;
    if (found.IsFinalFor(u"restriction")) {
      return Fail(ModelCode::ForbiddenDerivation, node, found.entry->finalText);
    }
  }
  if (!CopyType(node, found.type, type)) return false;
  FacetTarget target{found.type, type};
  const bool complete = ReadChildren(node, kRestrictionRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) return true;
    if (word != Word::SimpleType) return ReadFacet(child, word, target);
    hasBase = true;
    if (!ReadNestedSimpleType(child, found.type)) return false;
    if (!CopyType(child, found.type, type)) return false;
    target = {found.type, type};
    return true;
  });
  if (!complete) return false;
  return hasBase || Fail(ModelCode::AttributeMissing, node, TextOf(Word::Base));
}

bool XmlSchemaReader::ReadList(const XTreeNode& node, TypeRef& type) {
  SchemaValues values;
  if (!ReadAttributes(node, kListRow, values)) return false;
  FoundType item;
  if (values.Has(Word::ItemType)) {
    if (!ResolveSimpleType(node, values[Word::ItemType], item)) return false;
    if (item.IsFinalFor(u"list")) {
      return Fail(ModelCode::ForbiddenDerivation, node, item.entry->finalText);
    }
  }
  const bool complete = ReadChildren(node, kListRow, [&](Word word, const XTreeNode& child) {
    return word != Word::SimpleType || ReadNestedSimpleType(child, item.type);
  });
  if (!complete || item.type == nullptr) return complete;
  if (!CopyType(node, item.type, type)) return false;
  type->isList = true;
  return true;
}

// A member that is a union itself comes with all its members.
bool XmlSchemaReader::AddMember(const XTreeNode& node, const FoundType& member,
                                std::vector<TypeRef>& members) {
  if (member.IsFinalFor(u"union")) {
    return Fail(ModelCode::ForbiddenDerivation, node, member.entry->finalText);
  }
  for (const SimpleType* type = member.type.get(); type != nullptr; type = type->next.get()) {
    if (members.size() >= kUnionMembers) {
      return Fail(ModelCode::NotAllowed, node, u"- too many members");
    }
    members.push_back(std::make_shared<SimpleType>(*type));
    if (!ChargeCopies(node, type->facets.size() + 1)) return false;
  }
  return true;
}

bool XmlSchemaReader::ReadUnion(const XTreeNode& node, TypeRef& type) {
  SchemaValues values;
  if (!ReadAttributes(node, kUnionRow, values)) return false;
  std::vector<TypeRef> members;
  const TQString& names = values[Word::MemberTypes];
  int at = 0;
  for (TQString name = names.Tokenize(kXmlSpaces, at); !name.IsEmpty();
       name = names.Tokenize(kXmlSpaces, at)) {
    FoundType member;
    if (!ResolveSimpleType(node, name, member)) return false;
    if (!AddMember(node, member, members)) return false;
  }
  const bool complete = ReadChildren(node, kUnionRow, [&](Word word, const XTreeNode& child) {
    FoundType member;
    if (word != Word::SimpleType) return true;
    return ReadNestedSimpleType(child, member.type) && AddMember(child, member, members);
  });
  if (!complete || members.empty()) return complete;
  for (std::size_t i = 0; i < members.size(); ++i) {
    members[i]->next = i + 1 < members.size() ? members[i + 1] : nullptr;
  }
  type = members.front();
  return true;
}

// --- facets ------------------------------------------------------------------------------------

bool XmlSchemaReader::CheckPattern(const XTreeNode& node, const TQString& pattern) {
  if (XMLRegExp(pattern, false).IsCompiled()) return true;
  const TQString& expected = XMLRegExp::LastErrorMessage();
  if (expected.IsEmpty()) return Fail(ModelCode::BadPattern, node, u"parser error");
  const TQString text =
      TQString::Format(u"%s expected at position %d", {expected, XMLRegExp::LastErrorOffset()});
  return Fail(ModelCode::BadPattern, node, text);
}

// Several enumerations are one facet with many values; each is held against the base when it comes.
bool XmlSchemaReader::ReadFacet(const XTreeNode& node, Word word, FacetTarget& target) {
  SchemaValues values;
  if (!ReadAttributes(node, kFacetRow, values)) return false;
  const bool childrenFit =
      ReadChildren(node, kFacetRow, [](Word, const XTreeNode&) { return true; });
  if (!childrenFit) return false;
  const TQString& value = values[Word::Value];
  if (word == Word::Pattern && !CheckPattern(node, value)) return false;
  if (target.type == nullptr) return true;  // the base is not known yet
  std::shared_ptr<Facet> facet = CreateFacet(TextOf(word), value);
  if (word != Word::Pattern && !facet->IsValidFor(*target.base)) {
    return Fail(ModelCode::ValueInvalid, node, target.base->GetXSDName());
  }
  if (word == Word::Enumeration && target.enumeration != nullptr) {
    target.enumeration->SetValue(value);
    return CheckEffort(node);
  }
  if (word == Word::Enumeration) target.enumeration = facet.get();
  target.type->facets.push_back(std::move(facet));
  return CheckEffort(node);
}

bool XmlSchemaReader::CheckEffort(const XTreeNode& node) {
  return XMLRegExp::steps - stepsAtStart_ <= kSchemaMatchLimit ||
         Fail(ModelCode::NotAllowed, node, u"- values too hard to check");
}

bool XmlSchemaReader::CheckTypedValue(const XTreeNode& node, const SimpleType* type,
                                      const TQString& value) {
  if (type == nullptr) return true;
  TQString facetText;
  const TypeCheck result = type->CheckValue(value, facetText);
  for (const CheckCode& check : kCheckCodes) {
    if (check.result == result) return Fail(check.code, node, type->GetXSDName());
  }
  return CheckEffort(node);
}

}  // namespace kelmora
