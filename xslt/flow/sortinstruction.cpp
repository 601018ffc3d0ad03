#include "flow/sortinstruction.h"

#include "flow/applytemplatesinstruction.h"
#include "flow/foreachinstruction.h"
#include "names/elementrecord.h"
#include "names/xsltnames.h"
#include "sorting/collation.h"
#include "xpath/xpathexpression.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool SortInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const SortRecord&>(*Record);
  GiveToParent(MakeKey(record));
  return true;
}

// The value of the key for each entry of the list, which is that of the parent instruction.
template <class Key, class Evaluate>
std::unique_ptr<SortKey> SortInstruction::Fill(std::unique_ptr<Key> key, Evaluate evaluate) {
  TemplateFrame& frame = Frame();
  frame.NodeList = frame.Parent->NodeList;
  const std::int32_t count = frame.ContextSize();
  key->Reserve(static_cast<std::size_t>(count));
  for (frame.Position = 1; frame.Position <= count; ++frame.Position) key->Add(evaluate());
  return key;
}

std::unique_ptr<SortKey> SortInstruction::MakeKey(const SortRecord& record) {
  const Collation* collation = &Processor->Collators->Present();
  if (record.Lang != nullptr) {
    const TQString language = Processor->ExpandAttributeValue(record.Lang, Frame());
    collation = &Processor->Collators->ForLanguage(language);
  }
  bool isNumber = false;
  if (record.DataType != nullptr) {
    const TQString type = Processor->ExpandAttributeValue(record.DataType, Frame());
    isNumber = type == u"number";
    if (!IsQName(type)) throw TQXSLTError(XsltCode::NotAQName, record.DataType);
  }
  const bool descending = ChoiceOf(record.Order, {u"ascending", u"descending"}) == 1;
  const int caseOrder = ChoiceOf(record.CaseOrder, {u"", u"upper-first", u"lower-first"});
  if (isNumber) {
    return Fill(std::make_unique<NumberSortKey>(descending),
                [&] { return Processor->EvaluateToNumber(record.SelectText, Frame()); });
  }
  TQString scratch;
  return Fill(
      std::make_unique<TextSortKey>(*collation, descending, static_cast<CaseOrder>(caseOrder)),
      [&] { return Processor->EvaluateToText(record.SelectText, Frame(), scratch); });
}

int SortInstruction::ChoiceOf(XPathNode* attribute, std::initializer_list<const char16_t*> values) {
  if (attribute == nullptr) return 0;
  const TQString written = Processor->ExpandAttributeValue(attribute, Frame());
  int index = 0;
  for (const char16_t* value : values) {
    if (*value != 0 && written == value) return index;
    ++index;
  }
  throw TQXSLTError(XsltCode::UnexpectedValue, attribute);
}

void SortInstruction::GiveToParent(std::unique_ptr<SortKey> key) {
  class Instruction* parent = Frame().Parent->Instruction.get();
  if (parent->ElementCode == XsltElement::ApplyTemplates) {
    static_cast<ApplyTemplatesInstruction*>(parent)->SortKeys.push_back(std::move(key));
    return;
  }
  auto* loop = static_cast<ForEachInstruction*>(parent);
  // An xsl:sort inside the body comes too late; its key would pile up with every pass.
  if (!loop->Sorted) loop->SortKeys.push_back(std::move(key));
}

}  // namespace kelmora
