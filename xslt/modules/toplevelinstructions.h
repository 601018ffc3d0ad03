// The top-level instructions that only store something: done in Execute.
#pragma once

#include "engine/instruction.h"

namespace kelmora {

// xsl:output: what it sets replaces what an earlier one set; lists of CDATA elements add up.
class OutputInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

class DecimalFormatInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

// The first alias of a prefix to run stays, so an import's wins.
class NamespaceAliasInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
};

}  // namespace kelmora
