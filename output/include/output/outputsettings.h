// OutputSettings: all xsl:output elements of a run, merged. A value whose flag is false was given
// by nobody and is read by nobody; defaults are applied where a value is read.
#pragma once

#include "tqcore/tqstring.h"

namespace kelmora {

struct OutputSettings {
  TQString Method;
  TQString Version;  // stored; nothing reads it
  TQString Encoding;
  TQString DoctypePublic;
  TQString DoctypeSystem;
  // Names with a blank in front of each: "uri:local", or the name alone in no namespace.
  TQString CdataElements;
  bool OmitDeclaration = false;
  bool Standalone = false;
  bool Indent = false;

  bool MethodGiven = false;
  bool VersionGiven = false;
  bool EncodingGiven = false;
  bool OmitDeclarationGiven = false;
  bool StandaloneGiven = false;
  bool DoctypePublicGiven = false;
  bool DoctypeSystemGiven = false;
  bool CdataElementsGiven = false;
  bool IndentGiven = false;
  bool MediaTypeGiven = false;  // media-type is accepted and has no effect

  void Reset();  // all flags to false
  void SetMethod(TQString value);
  void SetVersion(TQString value);
  void SetEncoding(TQString value);
  void SetDoctypePublic(TQString value);
  void SetDoctypeSystem(TQString value);
  void AddCdataElements(std::u16string_view names);  // lists of several elements add up
  void SetOmitDeclaration(bool value);
  void SetStandalone(bool value);
  void SetIndent(bool value);
};

}  // namespace kelmora
