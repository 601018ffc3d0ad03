// xsl:for-each. States:
//   Execute   the nodes are selected; none: the next step finishes
//   sorting   the leading xsl:sort children run (SortingPhase)
//   body      one child after the other for the node at Iteration, then again for the next node
#pragma once

#include <cstdint>

#include "engine/instruction.h"
#include "sorting/sortkey.h"

namespace kelmora {

class ForEachInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

  SortKeyList SortKeys;  // filled by the xsl:sort children
  bool Sorted = false;

 private:
  void BodyFrame(XPathNode* node);
  void NextIteration();

  std::int32_t Iteration = 1;
  XPathNode* FirstBodyNode = nullptr;
  bool SortingPhase = false;
};

}  // namespace kelmora
