// What an instruction reads of its attributes, taken out of the tree once. An expression or an
// attribute value template stays with its attribute node, since errors name that; names are
// expanded and switches decided, as far as the stylesheet alone settles them.
//
// The trap: makers run behind all checks of their element and in front of its children. They take
// a value for well-formed, and what they raise all the same, such as an unbound prefix in a list,
// comes after every other fault of the element.
#include "checks/recordmakers.h"

#include "base/namelist.h"
#include "engine/instruction.h"
#include "keys/keytables.h"
#include "tqcore/tqtext.h"
#include "xpath/qualifiedname.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora::makers {

namespace {

using A = XsltAttribute;

TQString ExpandedName(Element element) {
  return ExpandName(element.Value(A::Name), element.node->ScopeMap());
}

ExpressionText TextOf(Element element, XsltAttribute attribute) {
  XPathNode* node = element.Attribute(attribute);
  return node != nullptr ? ExpressionText(node) : ExpressionText();
}

TQString AliasPrefix(std::u16string_view value) {
  return value == u"#default" ? std::u16string_view() : value;
}

void SetUnit(char16_t& unit, Element element, XsltAttribute attribute) {
  if (element.Attribute(attribute) != nullptr) unit = element.Value(attribute).front();
}

void SetText(TQString& text, Element element, XsltAttribute attribute) {
  if (element.Attribute(attribute) != nullptr) text = element.Value(attribute);
}

}  // namespace

RecordPtr ApplyTemplates(Element element) {
  auto record = std::make_unique<ApplyTemplatesRecord>();
  record->Select = element.Attribute(A::Select);
  if (record->Select != nullptr) record->SelectText = TextOf(element, A::Select);
  record->Mode = element.Value(A::Mode);
  return record;
}

RecordPtr Attribute(Element element) {
  auto record = std::make_unique<AttributeRecord>();
  record->Name = element.Attribute(A::Name);
  record->Namespace = element.Attribute(A::Namespace);
  return record;
}

RecordPtr AttributeSet(Element element) {
  auto record = std::make_unique<AttributeSetRecord>();
  record->Name = element.Attribute(A::Name);
  record->UseAttributeSets = element.Attribute(A::UseAttributeSets);
  return record;
}

RecordPtr Binding(Element element) {
  auto record = std::make_unique<BindingRecord>();
  record->NameNode = element.Attribute(A::Name);
  record->SelectNode = element.Attribute(A::Select);
  record->Name = ExpandedName(element);
  record->SelectText = TextOf(element, A::Select);
  record->IsGlobal = element.parentCode == XsltElement::Stylesheet;
  return record;
}

RecordPtr CallTemplate(Element element) {
  auto record = std::make_unique<CallTemplateRecord>();
  record->NameNode = element.Attribute(A::Name);
  record->Name = ExpandedName(element);
  return record;
}

RecordPtr Copy(Element element) {
  auto record = std::make_unique<CopyRecord>();
  record->UseAttributeSets = element.Attribute(A::UseAttributeSets);
  return record;
}

RecordPtr DecimalFormatElement(Element element) {
  auto record = std::make_unique<DecimalFormatRecord>();
  record->NameNode = element.Attribute(A::Name);
  record->Name =
      ExpandName(element.Value(A::Name), element.node->ScopeMap(), UnboundPrefix::DropPrefix);
  DecimalFormat& format = record->Format;
  SetUnit(format.decimalSeparator, element, A::DecimalSeparator);
  SetUnit(format.groupingSeparator, element, A::GroupingSeparator);
  SetUnit(format.percent, element, A::Percent);
  SetUnit(format.perMille, element, A::PerMille);
  SetUnit(format.zeroDigit, element, A::ZeroDigit);
  SetUnit(format.digit, element, A::Digit);
  SetUnit(format.patternSeparator, element, A::PatternSeparator);
  SetUnit(format.minusSign, element, A::MinusSign);
  SetText(format.infinity, element, A::Infinity);
  SetText(format.nan, element, A::NaN);
  return record;
}

RecordPtr ElementElement(Element element) {
  auto record = std::make_unique<ElementElementRecord>();
  record->Name = element.Attribute(A::Name);
  record->Namespace = element.Attribute(A::Namespace);
  record->UseAttributeSets = element.Attribute(A::UseAttributeSets);
  return record;
}

RecordPtr Import(Element element) {
  auto record = std::make_unique<ImportRecord>();
  record->Href = element.Attribute(A::Href);
  return record;
}

RecordPtr Key(Element element) {
  KeyTable& table = (*element.processor.Keys)[ExpandedName(element)];
  table.Add(element.node, element.Value(A::Match), element.Value(A::Use));
  return nullptr;
}

RecordPtr Message(Element element) {
  auto record = std::make_unique<MessageRecord>();
  record->Terminate = element.IsYes(A::Terminate);
  return record;
}

RecordPtr NamespaceAlias(Element element) {
  auto record = std::make_unique<NamespaceAliasRecord>();
  record->StylesheetPrefix = AliasPrefix(element.Value(A::StylesheetPrefix));
  record->ResultPrefix = AliasPrefix(element.Value(A::ResultPrefix));
  return record;
}

RecordPtr Number(Element element) {
  auto record = std::make_unique<NumberRecord>();
  record->Count = element.Attribute(A::Count);
  record->From = element.Attribute(A::From);
  record->Value = element.Attribute(A::Value);
  record->Format = element.Attribute(A::Format);
  record->Lang = element.Attribute(A::Lang);
  record->LetterValue = element.Attribute(A::LetterValue);
  record->GroupingSeparator = element.Attribute(A::GroupingSeparator);
  record->GroupingSize = element.Attribute(A::GroupingSize);
  record->CountText = TextOf(element, A::Count);
  record->FromText = TextOf(element, A::From);
  record->ValueText = TextOf(element, A::Value);
  SetText(record->Level, element, A::Level);
  return record;
}

RecordPtr Output(Element element) {
  auto record = std::make_unique<OutputRecord>();
  record->Method = element.Attribute(A::Method);
  record->Version = element.Attribute(A::Version);
  record->Encoding = element.Attribute(A::Encoding);
  record->OmitDeclaration = element.Attribute(A::OmitXmlDeclaration);
  record->Standalone = element.Attribute(A::Standalone);
  record->DoctypePublic = element.Attribute(A::DoctypePublic);
  record->DoctypeSystem = element.Attribute(A::DoctypeSystem);
  record->CdataElementsNode = element.Attribute(A::CdataSectionElements);
  record->Indent = element.Attribute(A::Indent);
  record->MediaType = element.Attribute(A::MediaType);
  ForEachName(element.Value(A::CdataSectionElements), [&](std::u16string_view name) {
    record->CdataElements += u' ';
    record->CdataElements += ExpandName(name, element.node->ScopeMap(), UnboundPrefix::DropPrefix);
  });
  record->OmitDeclarationValue = element.IsYes(A::OmitXmlDeclaration);
  record->StandaloneValue = element.IsYes(A::Standalone);
  record->IndentValue = element.IsYes(A::Indent);
  return record;
}

RecordPtr ProcessingInstruction(Element element) {
  auto record = std::make_unique<ProcessingInstructionRecord>();
  record->Name = element.Attribute(A::Name);
  return record;
}

RecordPtr Select(Element element) {
  auto record = std::make_unique<SelectRecord>();
  record->Select = element.Attribute(A::Select);
  record->SelectText = TextOf(element, A::Select);
  return record;
}

RecordPtr Sort(Element element) {
  auto record = std::make_unique<SortRecord>();
  record->Select = element.Attribute(A::Select);
  if (record->Select != nullptr) record->SelectText = TextOf(element, A::Select);
  record->Lang = element.Attribute(A::Lang);
  record->DataType = element.Attribute(A::DataType);
  record->Order = element.Attribute(A::Order);
  record->CaseOrder = element.Attribute(A::CaseOrder);
  return record;
}

RecordPtr Stylesheet(Element element) {
  auto record = std::make_unique<StylesheetRecord>();
  record->Version = element.Attribute(A::Version);
  record->ExtensionElementPrefixes = element.Attribute(A::ExtensionElementPrefixes);
  record->ExcludeResultPrefixes = element.Attribute(A::ExcludeResultPrefixes);
  return record;
}

RecordPtr Template(Element element) {
  auto record = std::make_unique<TemplateRecord>();
  record->Mode = element.Attribute(A::Mode);
  return record;
}

RecordPtr Test(Element element) {
  auto record = std::make_unique<TestRecord>();
  record->Test = element.Attribute(A::Test);
  record->TestText = TextOf(element, A::Test);
  return record;
}

RecordPtr Text(Element element) {
  auto record = std::make_unique<TextRecord>();
  const XPathNode* child = FirstContent(element.node);
  for (; child != nullptr; child = NextContent(child)) record->Text += child->GetValue();
  record->DisableOutputEscaping = element.IsYes(A::DisableOutputEscaping);
  return record;
}

RecordPtr ValueOf(Element element) {
  auto record = std::make_unique<ValueOfRecord>();
  record->Select = element.Attribute(A::Select);
  record->SelectText = TextOf(element, A::Select);
  record->DisableOutputEscaping = element.IsYes(A::DisableOutputEscaping);
  return record;
}

RecordPtr Literal(const XPathNode* element) {
  std::unique_ptr<LiteralRecord> record;
  const auto made = [&record]() -> LiteralRecord& {
    if (record == nullptr) record = std::make_unique<LiteralRecord>();
    return *record;
  };
  XPathNode* excluded = nullptr;
  XPathNode* extensions = nullptr;
  for (XPathNode* child = element->firstChild; child != nullptr; child = child->next) {
    if (child->kind != XPathNodeKind::Attribute) continue;
    const XsltAttribute code = XsltAttributeNames::Code(child);
    const bool isXslt = child->namespaceURI != nullptr;
    if (code == A::Version && !isXslt) {
      made().ForwardCompatible = child->GetValue() != u"1.0";
    } else if (code == A::ExcludeResultPrefixes && isXslt) {
      excluded = child;
    } else if (code == A::ExtensionElementPrefixes && isXslt) {
      extensions = child;
    }
  }
  // Of two faulty lists the excluded prefixes are reported, wherever they stand.
  if (excluded != nullptr) made().ExcludedPrefixes = PrefixListURIs(excluded);
  if (extensions != nullptr) {
    made().ExtensionPrefixes = PrefixListURIs(extensions);
  }
  return record;
}

}  // namespace kelmora::makers
