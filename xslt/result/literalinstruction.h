// LiteralInstruction: a literal result element, each of its attributes, and text of the stylesheet;
// also the elements that finish at once. States:
//   Execute    the node is copied into the result; the first child runs, attributes included
//   Resume     the next child runs; at the end the copy stops being the output
//   extension  an extension element: nothing is copied, its first xsl:fallback has run or there is
//              none
#pragma once

#include "result/resultinstruction.h"

namespace kelmora {

class LiteralInstruction final : public ResultInstruction {
 public:
  using ResultInstruction::ResultInstruction;
  bool Execute() override;
  bool Resume() override;

 private:
  void RunFallback(const XPathNode& element);

  bool IsExtension = false;
};

}  // namespace kelmora
