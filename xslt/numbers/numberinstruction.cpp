#include "numbers/numberinstruction.h"

#include <cmath>
#include <limits>
#include <optional>

#include "engine/resultconstruction.h"
#include "names/elementrecord.h"
#include "numbers/numbercounter.h"
#include "numbers/numbercounts.h"
#include "numbers/numberformats.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

namespace {

// Truncated towards zero; NaN is 0, and what has no place ends at the limit.
std::int32_t ToInteger(double number) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (std::isnan(number)) return 0;
  if (number >= Limits::max()) return Limits::max();
  if (number <= Limits::min()) return Limits::min();
  return static_cast<std::int32_t>(number);
}

TQString DefaultCount(const XPathNode& node) {
  switch (node.kind) {
    case XPathNodeKind::Text:
    case XPathNodeKind::CData:
      return u"text()";
    case XPathNodeKind::Attribute:
      return u'@' + TQString(node.GetName());
    case XPathNodeKind::PI:
      return u"processing-instruction()";
    case XPathNodeKind::Comment:
      return u"comment()";
    case XPathNodeKind::Root:
    case XPathNodeKind::Element:
    case XPathNodeKind::Namespace:
    case XPathNodeKind::XMLDeclaration:
    case XPathNodeKind::DocType:
    case XPathNodeKind::ExternalID:
    case XPathNodeKind::DTDElement:
    case XPathNodeKind::DTDAttlist:
    case XPathNodeKind::DTDEntity:
    case XPathNodeKind::DTDNotation:
      break;
  }
  return node.GetName();
}

}  // namespace

const NumberRecord& NumberInstruction::Numbering() const {
  return static_cast<const NumberRecord&>(*Record);
}

bool NumberInstruction::Execute() {
  Begin();
  TemplateFrame& frame = Frame();
  const NumberRecord& record = Numbering();
  XPathNode* node = frame.ContextNode();
  std::optional<double> given;
  if (record.Value != nullptr) {
    XPathValue value;
    frame.Evaluate(record.ValueText, value);
    given = ToNumber(value);
  }
  TQString format = u"1";
  if (record.Format != nullptr) format = Processor->ExpandAttributeValue(record.Format, frame);
  if (record.Lang != nullptr) Processor->ExpandAttributeValue(record.Lang, frame);
  if (record.LetterValue != nullptr) {
    const TQString letters = Processor->ExpandAttributeValue(record.LetterValue, frame);
    if (letters != u"alphabetic" && letters != u"traditional") {
      throw TQXSLTError(XsltCode::UnexpectedValue, record.LetterValue);
    }
  }
  ReadGrouping();

  std::vector<std::int32_t> numbers;
  if (given.has_value()) {
    constexpr double kHalf = 0.5;
    numbers.push_back(ToInteger(*given + kHalf));
  } else {
    numbers = CountNodes(node);
  }
  if (numbers.empty()) return true;
  NumberFormat& formatter = Processor->NumberFormatting->FormatOf(format, Grouping);
  AppendResult(*OutputNode, MakeText(formatter.FormatNumbers(numbers)));
  return true;
}

void NumberInstruction::ReadGrouping() {
  const NumberRecord& record = Numbering();
  if (record.GroupingSeparator == nullptr) return;
  const TQString separator = Processor->ExpandAttributeValue(record.GroupingSeparator, Frame());
  if (separator.Length() != 1) {
    throw TQXSLTError(XsltCode::UnexpectedValue, record.GroupingSeparator);
  }
  Grouping.GroupingSeparator = separator[0];
  if (record.GroupingSize == nullptr) return;
  const TQString size = Processor->ExpandAttributeValue(record.GroupingSize, Frame());
  Grouping.GroupingSize = ToInteger(TextToNumber(size));
}

std::vector<std::int32_t> NumberInstruction::CountNodes(XPathNode* node) {
  const NumberRecord& record = Numbering();
  ExpressionText defaultCount;
  if (record.Count == nullptr) defaultCount.Text = DefaultCount(*node);
  const NumberQuery query{*Processor, Frame().CallingNode, record,
                          record.Count != nullptr ? record.CountText : defaultCount};
  NumberCounts& counts = *Processor->Counts;
  std::vector<std::int32_t> numbers;
  if (record.Level == u"single") {
    if (counts.CountSingle(query, node, numbers)) return numbers;
    return NumberCounter(query).CountSingle(node);
  }
  if (record.Level == u"multiple") {
    if (counts.CountMultiple(query, node, numbers)) return numbers;
    return NumberCounter(query).CountMultiple(node);
  }
  if (counts.CountAny(query, node, numbers)) return numbers;
  return NumberCounter(query).CountAny(node);
}

}  // namespace kelmora
