// xsl:sort: Execute computes its key for every node of the list of the parent instruction and hands
// the keys to it. It sorts nothing; the parent does, when the last xsl:sort has run.
#pragma once

#include <memory>

#include "engine/instruction.h"
#include "sorting/sortkey.h"

namespace kelmora {

struct SortRecord;

class SortInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;

 private:
  // Reads the attributes, then evaluates the key for each entry of the list.
  std::unique_ptr<SortKey> MakeKey(const SortRecord& record);
  template <class Key, class Evaluate>
  std::unique_ptr<SortKey> Fill(std::unique_ptr<Key> key, Evaluate evaluate);
  // The index of the attribute's value in `values`; 0 without the attribute. Raises code 31.
  int ChoiceOf(XPathNode* attribute, std::initializer_list<const char16_t*> values);
  void GiveToParent(std::unique_ptr<SortKey> key);
};

}  // namespace kelmora
