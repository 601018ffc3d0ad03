// ResultInstruction: what the instructions share that hang an element, attribute or copy into the
// result and may make it the output of their children.
//
// This room holds the instructions that make nodes of the result, and the namespaces of what they
// make.
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
  // needs. A literal copy takes the value of an attribute as a template, another one binds its
  // prefix. With `makeCurrent` the copy becomes OutputNode. Null when it has no place in the result
  // and was dropped.
  XPathNode* CopyResultNode(XPathNode& node, bool makeCurrent, bool literal);
  // Appends a new node and makes it OutputNode. False, with nothing changed, when it was dropped.
  bool AddResultNode(OwnedTree node);
  // The same for an attribute, by StartTags; OutputNode must take attributes.
  void AddResultAttribute(OwnedTree attribute);
  // A copy of an attribute: where its prefix isn't bound to its URI it is declared, in front of it.
  XPathNode* AddCopiedAttribute(OwnedTree copy);
  // A copy of a node of the namespace axis. Null, and nothing is written, where it has no place or
  // the prefix stands for something else in the tag; also for "xml".
  XPathNode* AddDeclaration(std::u16string_view prefix, std::u16string_view value);
  // Declares the prefix of an attribute's name on OutputNode, which must take attributes. Without a
  // prefix, or where that one is taken in the tag, the name gets a generated one.
  void BindPrefix(TQString& name, InternedURI uri);

 private:
  XPathNode* CopyAttribute(XPathNode& node, OwnedTree copy, bool isRenamed, bool literal);
  bool ApplyAlias(XPathNode& copy);  // renames it by xsl:namespace-alias; false: there is none

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
