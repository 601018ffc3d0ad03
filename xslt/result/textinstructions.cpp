#include "result/textinstructions.h"

#include "engine/resultconstruction.h"
#include "names/elementrecord.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool TextInstruction::Execute() {
  const XPathNode* element = Begin();
  const auto& record = static_cast<const TextRecord&>(*Record);
  const XPathNode* content = FirstContent(element);
  if (JoinsTexts() && JoinText(*OutputNode, record.Text, !record.DisableOutputEscaping))
    return true;
  const bool isOneText = content != nullptr && content->next == nullptr;
  OwnedTree text;
  if (isOneText && content->source != nullptr && !content->HasOwnValue()) {
    text.reset(XPathNode::Make(XPathNodeKind::Text));  // shares the text of the stylesheet
    text->source = content->source;
  } else {
    text = MakeText(record.Text);
  }
  text->escapeOutput = !record.DisableOutputEscaping;
  AppendResult(*OutputNode, std::move(text));
  return true;
}

bool ValueOfInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const ValueOfRecord&>(*Record);
  XPathValue scratch;
  const XPathValue& value = Processor->ViewExpression(record.SelectText, Frame(), scratch);
  AppendText(*OutputNode, value, !record.DisableOutputEscaping, JoinsTexts());
  return true;
}

}  // namespace kelmora
