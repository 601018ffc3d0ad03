// The class of each element code, as one table.
#include <array>

#include "flow/applyimportsinstruction.h"
#include "flow/applytemplatesinstruction.h"
#include "flow/calltemplateinstruction.h"
#include "flow/conditionalinstructions.h"
#include "flow/fallbackinstructions.h"
#include "flow/foreachinstruction.h"
#include "flow/messageinstruction.h"
#include "flow/sortinstruction.h"
#include "keys/keyinstruction.h"
#include "modules/importinstruction.h"
#include "modules/stylesheetinstruction.h"
#include "modules/templateinstruction.h"
#include "modules/toplevelinstructions.h"
#include "names/xsltnames.h"
#include "numbers/numberinstruction.h"
#include "result/attributeinstruction.h"
#include "result/attributesetinstruction.h"
#include "result/commentinstruction.h"
#include "result/copyinstructions.h"
#include "result/elementinstruction.h"
#include "result/literalinstruction.h"
#include "result/processinginstructioninstruction.h"
#include "result/textinstructions.h"
#include "variables/bindinginstructions.h"

namespace kelmora {

namespace {

using Creator = std::unique_ptr<Instruction> (*)(XSLTProcessorBase* processor);

template <class Class>
std::unique_ptr<Instruction> Create(XSLTProcessorBase* processor) {
  return std::make_unique<Class>(processor);
}

// Codes that are not listed, those of elements that only the checks read among them, are literal.
constexpr std::array<Creator, kXsltElementCodes> MakeCreators() {
  std::array<Creator, kXsltElementCodes> creators{};
  creators.fill(&Create<LiteralInstruction>);
#define CREATOR(element) creators[IndexOf(XsltElement::element)] = &Create<element##Instruction>
  CREATOR(ApplyImports);
  CREATOR(ApplyTemplates);
  CREATOR(Attribute);
  CREATOR(AttributeSet);
  CREATOR(CallTemplate);
  CREATOR(Choose);
  CREATOR(Comment);
  CREATOR(Copy);
  CREATOR(CopyOf);
  CREATOR(DecimalFormat);
  CREATOR(Element);
  CREATOR(Fallback);
  CREATOR(ForEach);
  CREATOR(If);
  CREATOR(Import);
  CREATOR(Key);
  CREATOR(Message);
  CREATOR(NamespaceAlias);
  CREATOR(Number);
  CREATOR(Otherwise);
  CREATOR(Output);
  CREATOR(Param);
  CREATOR(ProcessingInstruction);
  CREATOR(Sort);
  CREATOR(Stylesheet);
  CREATOR(Template);
  CREATOR(Text);
  CREATOR(ValueOf);
  CREATOR(Variable);
  CREATOR(When);
  CREATOR(WithParam);
#undef CREATOR
  return creators;
}

constexpr std::array<Creator, kXsltElementCodes> kCreators = MakeCreators();

}  // namespace

std::unique_ptr<Instruction> MakeInstruction(XsltElement elementCode,
                                             XSLTProcessorBase* processor) {
  return kCreators[IndexOf(elementCode)](processor);
}

std::unique_ptr<Instruction> MakeUseAttributeSetsInstruction(XSLTProcessorBase* processor) {
  return std::make_unique<UseAttributeSetsInstruction>(processor);
}

std::unique_ptr<Instruction> MakeFallbackHostInstruction(XSLTProcessorBase* processor) {
  return std::make_unique<FallbackHostInstruction>(processor);
}

}  // namespace kelmora
