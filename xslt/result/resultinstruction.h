// ResultInstruction: what the instructions share that hang an element, attribute or copy into the
// result and may make it the output of their children.
#pragma once

#include <string_view>

#include "engine/instruction.h"
#include "engine/resultconstruction.h"

namespace kelmora {

class ResultInstruction : public Instruction {
 public:
  using Instruction::Instruction;
  ~ResultInstruction() override;

 protected:
  void EndChildren() override;
  // OutputNode gives way to its parent, where it was made here.
  void CloseOutput();
  // Appends a copy of `node` without its children and gives an element the declarations that it
  // needs. A literal copy takes the value of an attribute as a template. With `makeCurrent` the
  // copy becomes OutputNode. Null when it has no place in the result and was dropped.
  XPathNode* CopyResultNode(XPathNode& node, bool makeCurrent, bool literal);
  // Appends a new node and makes it OutputNode. False, with nothing changed, when it was dropped.
  bool AddResultNode(OwnedTree node);
  // The same for an attribute: one of the same URI pointer and local name takes its name instead
  // and becomes empty.
  void AddResultAttribute(OwnedTree attribute);

 private:
  // Renames the copy by xsl:namespace-alias. True when `node` has the new prefix bound to XSLT.
  bool ApplyAlias(XPathNode& copy, const XPathNode& node);

  std::u16string_view PrefixText;  // prefix of the name of the copy at work
  bool OwnsOutput = false;         // OutputNode was made here
};

// xsl:element and xsl:copy: the attribute sets run in front of the content.
class SetUsingInstruction : public ResultInstruction {
 public:
  using ResultInstruction::ResultInstruction;
  bool Resume() override;

 protected:
  void RunSetsAndChildren(XPathNode* useAttributeSets);  // null: there are none

  bool InAttributeSets = false;
};

// An attribute of code use-attribute-sets, in whatever namespace.
bool NamesAttributeSets(const XPathNode& node);

}  // namespace kelmora
