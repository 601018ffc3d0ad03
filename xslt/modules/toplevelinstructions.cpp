#include "modules/toplevelinstructions.h"

#include "engine/declarations.h"
#include "names/elementrecord.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

bool OutputInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const OutputRecord&>(*Record);
  OutputSettings& settings = Processor->Settings;
  if (record.Method != nullptr) settings.SetMethod(record.Method->GetValue());
  if (record.Version != nullptr) settings.SetVersion(record.Version->GetValue());
  if (record.Encoding != nullptr) settings.SetEncoding(record.Encoding->GetValue());
  if (record.OmitDeclaration != nullptr) settings.SetOmitDeclaration(record.OmitDeclarationValue);
  if (record.Standalone != nullptr) settings.SetStandalone(record.StandaloneValue);
  if (record.DoctypePublic != nullptr) settings.SetDoctypePublic(record.DoctypePublic->GetValue());
  if (record.DoctypeSystem != nullptr) settings.SetDoctypeSystem(record.DoctypeSystem->GetValue());
  if (record.CdataElementsNode != nullptr) settings.AddCdataElements(record.CdataElements);
  if (record.Indent != nullptr) settings.SetIndent(record.IndentValue);
  return true;
}

bool DecimalFormatInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const DecimalFormatRecord&>(*Record);
  Processor->Declared->AddDecimalFormat(record.Name, record.Format, record.NameNode);
  return true;
}

bool NamespaceAliasInstruction::Execute() {
  Begin();
  const auto& record = static_cast<const NamespaceAliasRecord&>(*Record);
  Processor->Declared->AddNamespaceAlias(record.StylesheetPrefix, record.ResultPrefix);
  return true;
}

}  // namespace kelmora
