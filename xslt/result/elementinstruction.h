// xsl:element. States:
//   Execute           the element is made and appended
//   InAttributeSets   its attribute sets run
//   Resume            the content runs, child by child
#pragma once

#include "result/resultinstruction.h"

namespace kelmora {

struct ElementElementRecord;

class ElementInstruction final : public SetUsingInstruction {
 public:
  using SetUsingInstruction::SetUsingInstruction;
  bool Execute() override;

 private:
  // Give the new element, OutputNode, its URI and declare what is missing for it. They may change
  // the name.
  void ResolveByPrefix(const ElementElementRecord& record);
  void ResolveByNamespace();

  TQString Name;
  TQString Namespace;
};

}  // namespace kelmora
