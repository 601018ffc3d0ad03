// This room reads the schema languages that came before XML Schema, XDR and DCD. What they have in
// common: types by their XDR names, and lists of values in quotes.
#pragma once

#include <memory>
#include <vector>

#include "tqcore/tqstring.h"
#include "types/simpletype.h"
#include "xmlutil/declarations.h"

namespace kelmora {

// Null for a name that no type has.
std::shared_ptr<SimpleType> XdrType(std::u16string_view name);
// Gives an attribute the type, and sets the flag that belongs to it. False for an unknown name.
bool SetXdrType(std::u16string_view name, AttributeDecl& attribute);
// Adds a facet; a type that is missing is made with this code.
void AddFacet(std::u16string_view facet, const TQString& value, TypeCode codeIfMissing,
              std::shared_ptr<SimpleType>& type);
// The words of a list; a part between ' or " is one word, without them.
std::vector<TQString> SplitValues(std::u16string_view text);

}  // namespace kelmora
