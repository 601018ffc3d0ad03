// xsl:variable, xsl:param and xsl:with-param. A binding goes into the frame of the parent
// instruction, which later siblings inherit, or into the global maps. States:
//   Execute   the value of select, or the empty string, is bound; or the content starts with a
//             fragment as its output
//   Resume    the next content child starts; at the end the fragment is bound
#pragma once

#include "engine/instruction.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "variables/globalevaluation.h"

namespace kelmora {

class BindingInstruction : public Instruction {
 public:
  using Instruction::Instruction;
  bool Resume() override;

 protected:
  const BindingRecord& Binding() const { return static_cast<const BindingRecord&>(*Record); }
  // Evaluates select, takes the empty string, or starts the content.
  void MakeValue(bool sortNodes);
  virtual void Store(XPathValue value) = 0;
  virtual void AtEnd() {}

  XPathNode* Fragment = nullptr;  // kept by the processor
};

// What xsl:variable and xsl:param share: they exchange the roles of the two maps.
class DefinitionInstruction : public BindingInstruction {
 public:
  using BindingInstruction::BindingInstruction;
  bool Execute() override;

  XPathNode* DefiningNode = nullptr;

 protected:
  void Store(XPathValue value) override;
  void AtEnd() override;

 private:
  bool IsParameter() const { return ElementCode == XsltElement::Param; }
  GlobalEvaluation::Role Role() const {
    return IsParameter() ? GlobalEvaluation::Role::Parameter : GlobalEvaluation::Role::Variable;
  }
  TemplateFrame& Scope() const;
  void CheckLocalName() const;
};

class VariableInstruction final : public DefinitionInstruction {
 public:
  using DefinitionInstruction::DefinitionInstruction;
};

class ParamInstruction final : public DefinitionInstruction {
 public:
  using DefinitionInstruction::DefinitionInstruction;
};

class WithParamInstruction final : public BindingInstruction {
 public:
  using BindingInstruction::BindingInstruction;
  bool Execute() override;

 protected:
  void Store(XPathValue value) override;
};

}  // namespace kelmora
