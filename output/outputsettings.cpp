#include "output/outputsettings.h"

#include <utility>

namespace kelmora {

void OutputSettings::Reset() {
  MethodGiven = VersionGiven = EncodingGiven = false;
  OmitDeclarationGiven = StandaloneGiven = false;
  DoctypePublicGiven = DoctypeSystemGiven = false;
  CdataElementsGiven = IndentGiven = MediaTypeGiven = false;
}

void OutputSettings::SetMethod(TQString value) {
  Method = std::move(value);
  MethodGiven = true;
}

void OutputSettings::SetVersion(TQString value) {
  Version = std::move(value);
  VersionGiven = true;
}

void OutputSettings::SetEncoding(TQString value) {
  Encoding = std::move(value);
  EncodingGiven = true;
}

void OutputSettings::SetDoctypePublic(TQString value) {
  DoctypePublic = std::move(value);
  DoctypePublicGiven = true;
}

void OutputSettings::SetDoctypeSystem(TQString value) {
  DoctypeSystem = std::move(value);
  DoctypeSystemGiven = true;
}

void OutputSettings::AddCdataElements(std::u16string_view names) {
  if (!CdataElementsGiven) CdataElements.Clear();  // what a former run left
  CdataElements += names;
  CdataElementsGiven = true;
}

void OutputSettings::SetOmitDeclaration(bool value) {
  OmitDeclaration = value;
  OmitDeclarationGiven = true;
}

void OutputSettings::SetStandalone(bool value) {
  Standalone = value;
  StandaloneGiven = true;
}

void OutputSettings::SetIndent(bool value) {
  Indent = value;
  IndentGiven = true;
}

}  // namespace kelmora
