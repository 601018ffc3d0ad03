// xsl:copy and xsl:copy-of.
#pragma once

#include "result/resultinstruction.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

// States:
//   Execute           the context node is copied, a root excepted, and becomes the output
//   InAttributeSets   its attribute sets run
//   Resume            the content runs, child by child
class CopyInstruction final : public SetUsingInstruction {
 public:
  using SetUsingInstruction::SetUsingInstruction;
  bool Execute() override;
};

// Done in Execute. A fragment's children are copied with the scope of the output repaired, other
// nodes with the declarations that their place lacks, any other value as text. A copy without a
// place in the result is dropped.
class CopyOfInstruction final : public ResultInstruction {
 public:
  using ResultInstruction::ResultInstruction;
  bool Execute() override;

 private:
  void CopyFragment(const XPathNode& root);
  void CopyNode(const XPathNode& node);
};

}  // namespace kelmora
