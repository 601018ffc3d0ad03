// xsl:number: done in Execute. The numbers come from `value` or from counting nodes at one of the
// three levels; their text, if there is a number at all, becomes one text node.
#pragma once

#include <cstdint>
#include <vector>

#include "engine/instruction.h"
#include "numbers/numberformat.h"

namespace kelmora {

struct NumberRecord;

class NumberInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;

 private:
  const NumberRecord& Numbering() const;
  void ReadGrouping();
  std::vector<std::int32_t> CountNodes(XPathNode* node);

  NumberGrouping Grouping;
};

}  // namespace kelmora
