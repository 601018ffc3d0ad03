// xsl:attribute-set, and the use-attribute-sets attribute that runs sets.
#pragma once

#include <cstddef>
#include <vector>

#include "engine/instruction.h"
#include "tqcore/tqstring.h"

namespace kelmora {

// States:
//   Execute        at the top level the set is registered and done (Registered); reached from a
//                  use-attribute-sets attribute it goes on with one of the next two
//   InUsedSets     the sets that it uses itself run
//   then           its xsl:attribute children run, but for those that the using element has itself
//   Registered     Resume finishes
class AttributeSetInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  void Register();
  // Starts the first xsl:attribute at or behind `child` that isn't set; with none the work is done.
  void RunAttributes(XPathNode* child);
  bool AttributeIsSet(XPathNode* child) const;

  bool Registered = false;
  bool InUsedSets = false;
};

// A use-attribute-sets attribute: runs all definitions of the first name, then of the next. States:
//   Execute   the names are read; the first definition of the first one starts
//   Resume    the next definition starts, as long as there is one
class UseAttributeSetsInstruction final : public Instruction {
 public:
  using Instruction::Instruction;
  bool Execute() override;
  bool Resume() override;

 private:
  void OpenSet();
  void RunDefinition();

  std::vector<TQString> Names;
  std::size_t NameCursor = 0;
  const std::vector<XPathNode*>* Definitions = nullptr;  // of the name at work; of the processor
  std::size_t DefinitionCursor = 0;
};

}  // namespace kelmora
