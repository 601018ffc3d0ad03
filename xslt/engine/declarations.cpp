#include "engine/declarations.h"

#include "xslt/tqxslterror.h"

namespace kelmora {

const std::vector<XPathNode*>* Declarations::FindAttributeSet(
    std::u16string_view expandedName) const {
  const auto found = attributeSets_.find(expandedName);
  return found == attributeSets_.end() ? nullptr : &found->second;
}

void Declarations::AddAttributeSet(const TQString& expandedName, XPathNode* element) {
  attributeSets_[expandedName].push_back(element);
}

void Declarations::AddDecimalFormat(const TQString& name, const DecimalFormat& format,
                                    XPathNode* nameNode) {
  if (name.IsEmpty() && !DefaultFormatGiven) {
    formats_.erase(TQString());
    DefaultFormatGiven = true;
  }
  const auto [place, isNew] = formats_.try_emplace(name, format);
  if (!isNew && !(place->second == format)) {
    throw TQXSLTError(XsltCode::DecimalFormatExists, nameNode);
  }
}

}  // namespace kelmora
