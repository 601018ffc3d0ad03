// xsl:fallback, and the element of a later version of XSLT that hosts it.
#pragma once

#include "flow/conditionalinstructions.h"

namespace kelmora {

// Runs its content wherever it stands in the run.
class FallbackInstruction final : public ContentInstruction {
 public:
  using ContentInstruction::ContentInstruction;
};

// An element of the XSLT namespace that this version doesn't know, in forward-compatible mode: its
// xsl:fallback children run, one after the other; other children are stepped over.
class FallbackHostInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  bool RunFallback(XPathNode* child);  // from `child` on; false without one
};

}  // namespace kelmora
