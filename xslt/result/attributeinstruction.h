// xsl:attribute. States:
//   Execute   the attribute is made and placed, or it has no place and nothing happens; the first
//             content child starts, with a fragment as output
//   Resume    the next content child starts; at the end the texts directly in the fragment become
//             the value
#pragma once

#include "result/resultinstruction.h"

namespace kelmora {

struct AttributeRecord;

class AttributeInstruction final : public ResultInstruction {
 public:
  using ResultInstruction::ResultInstruction;
  bool Execute() override;
  bool Resume() override;

 private:
  // Give the URI of the new attribute and declare what is missing for it on OutputNode.
  InternedURI ResolveByNamespace();  // may change the name
  InternedURI ResolveByPrefix(const AttributeRecord& record);

  TQString Name;
  TQString Namespace;
  OwnedTree Fragment;
};

}  // namespace kelmora
