// What the schema languages allow, as data: for each element the attributes and children that it
// may have, the words that an attribute's value may be, and the message for anything else.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "xmlutil/modelerror.h"

namespace kelmora {

enum class SchemaWord : std::uint8_t {
#define SCHEMA_WORD(name, text) name,
#include "schema/schemaword.def"
#undef SCHEMA_WORD
};
std::u16string_view TextOf(SchemaWord word);

// What an attribute's value may be.
struct ValueRule {
  enum class Form : std::uint8_t {
    Name,        // without a colon
    OneOf,       // of the words
    ListOf,      // words between blanks, or "#all"
    Count,       // digits
    CountOrAny,  // digits or "unbounded"
  };
  Form form;
  ModelCode code;
  const char16_t* message;
  std::span<const std::u16string_view> words = {};
  std::u16string_view all = {};  // what "#all" stands for
};

struct AttributeRule {
  SchemaWord word;
  const ValueRule* value = nullptr;  // null: any text
};

struct SchemaRow {
  std::span<const AttributeRule> attributes;
  const char16_t* otherAttribute;  // null: any other attribute passes
  std::span<const SchemaWord> children;
  // A text for any other child; null: the children in brackets, each with the prefix.
  const char16_t* otherChild = nullptr;
  bool isOneWord = false;                // without the brackets
  const char16_t* otherFacet = nullptr;  // a text for a facet that is not among the children
};

// --- XML Schema ------------------------------------------------------------------------------
extern const SchemaRow kSchemaRow;
extern const SchemaRow kIncludeRow;
extern const SchemaRow kRedefineRow;
extern const SchemaRow kImportRow;
extern const SchemaRow kComplexTypeRow;
extern const SchemaRow kSimpleContentRow;
extern const SchemaRow kComplexContentRow;
extern const SchemaRow kSimpleContentRestrictionRow;
extern const SchemaRow kSimpleContentExtensionRow;
extern const SchemaRow kComplexContentDerivationRow;
extern const SchemaRow kSimpleTypeRow;
extern const SchemaRow kListRow;
extern const SchemaRow kRestrictionRow;
extern const SchemaRow kUnionRow;
extern const SchemaRow kFacetRow;
extern const SchemaRow kGroupRow;
extern const SchemaRow kAnyRow;
extern const SchemaRow kAnyAttributeRow;
extern const SchemaRow kAttributeGroupRow;
extern const SchemaRow kNotationRow;
extern const SchemaRow kAttributeRow;
extern const SchemaRow kTopElementRow;
extern const SchemaRow kLocalElementRow;
extern const SchemaRow kConstraintRow;
extern const SchemaRow kKeyrefRow;
extern const SchemaRow kPathRow;

// The sweep over the children of `schema`, from 1 to kSweeps, that reads children of this name.
inline constexpr int kSweeps = 4;
int SweepOf(SchemaWord word);

inline constexpr SchemaWord kFacetWords[] = {
    SchemaWord::Length,         SchemaWord::MinLength,    SchemaWord::MaxLength,
    SchemaWord::WhiteSpace,     SchemaWord::Enumeration,  SchemaWord::TotalDigits,
    SchemaWord::FractionDigits, SchemaWord::Pattern,      SchemaWord::MinExclusive,
    SchemaWord::MinInclusive,   SchemaWord::MaxExclusive, SchemaWord::MaxInclusive,
};
bool IsFacetWord(SchemaWord word);

// Inside an `all` both bounds are 0 or 1.
extern const char16_t* const kMaxOccursInAll;
extern const char16_t* const kMinOccursInAll;

}  // namespace kelmora
