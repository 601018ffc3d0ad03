// Declarations: what top-level elements of the stylesheet have said so far in a run, by name:
// attribute sets, namespace aliases and decimal formats.
#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xpath/decimalformat.h"

namespace kelmora {

using NamespaceAliasMap = std::map<TQString, TQString, TextLess>;  // stylesheet -> result prefix

class Declarations {
 public:
  Declarations() { formats_.try_emplace(TQString()); }

  // All definitions of a name in the order of the run; null without one.
  const std::vector<XPathNode*>* FindAttributeSet(std::u16string_view expandedName) const;
  void AddAttributeSet(const TQString& expandedName, XPathNode* element);

  // They only grow during a run; the first alias of a prefix stays.
  const NamespaceAliasMap& NamespaceAliases() const { return aliases_; }
  void AddNamespaceAlias(const TQString& stylesheetPrefix, const TQString& resultPrefix) {
    aliases_.emplace(stylesheetPrefix, resultPrefix);
  }

  const DecimalFormatMap& DecimalFormats() const { return formats_; }
  // The empty name is the default format, which has its built-in values until it is given. Raises
  // code 4 at `nameNode` for another format of a name that was given.
  void AddDecimalFormat(const TQString& name, const DecimalFormat& format, XPathNode* nameNode);

 private:
  std::map<TQString, std::vector<XPathNode*>, TextLess> attributeSets_;
  NamespaceAliasMap aliases_;
  DecimalFormatMap formats_;
  bool DefaultFormatGiven = false;
};

}  // namespace kelmora
