// KeyTables: Keys of the processor, the keys of all stylesheets by their expanded names. Answers
// key() and indexes a tree when the first key() asks for it.
//
// This room holds xsl:key: the tables and their element.
#pragma once

#include <map>
#include <string_view>

#include "keys/keytable.h"
#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

class KeyTables final : public XPathKeys {
 public:
  explicit KeyTables(XSLTProcessorBase* processor) : processor_(processor) {}

  // The key of that name, made when it is new.
  KeyTable& operator[](const TQString& expandedName) { return tables_[expandedName]; }
  // For a tree that has been loaded while keys are in use. Raises what the expressions raise.
  void Index(XPathNode* root);
  void Forget(const XPathNode& root);  // its nodes are not what they were
  void Clear() { tables_.clear(); }

  bool HasKey(std::u16string_view expandedName) const override;
  const XPathNodeList* Lookup(std::u16string_view expandedName, XPathNode* root,
                              std::u16string_view value) override;

 private:
  XSLTProcessorBase* processor_;
  std::map<TQString, KeyTable, TextLess> tables_;
};

}  // namespace kelmora
