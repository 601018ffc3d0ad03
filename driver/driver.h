// Driver: the whole program that a user sees. One source document, one stylesheet, one result file;
// the stages run in the order in which they stand here, each only when the one before succeeded.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>

#include "encodings/encodings.h"
#include "output/outputserializer.h"
#include "tqcore/console.h"
#include "tqcore/tqstring.h"
#include "xmltree/documentmanager.h"
#include "xmltree/xpathtreebuilder.h"
#include "xmlutil/documentmodel.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

class Driver {
 public:
  Driver() = default;
  ~Driver() = delete;  // it ends with the process
  Driver(const Driver&) = delete;
  Driver& operator=(const Driver&) = delete;

  // Takes the arguments of main, bytes in UTF-8, and returns the exit code, which is always 0: what
  // became of the run is told on the two streams. Nothing is thrown.
  int Main(int argc, const char* const* argv);

 private:
  void RunStages(int argc, const char* const* argv);
  void CreateObjects();
  // False: the usage text is wanted. A message, if there is one, has been written.
  [[nodiscard]] bool ParseArguments(int argc, const char* const* argv);
  [[nodiscard]] bool TakeStackLimit(const char* value);
  [[nodiscard]] bool CheckRequired() const;
  // The three below have written what went wrong when they return false.
  [[nodiscard]] bool LoadDocuments();
  [[nodiscard]] bool Run();
  void WriteResult();
  void Cleanup();

  // One of the two documents; null when it could not be loaded, and the words are written.
  LoadedDocument* LoadDocument(const TQString& path, GrammarKind kind, LoadError& loadError,
                               XTreeNode*& xtree);
  XPathNode* BuildTree(XTreeNode* xtree, const TQString& path);
  void ReportError(const TQXSLTError& error) const;
  static void WriteUsage();
  static void WriteLine(Console::Stream stream, std::u16string_view text);

  TQString OutFile;  // never made absolute
  TQString XmlFile;
  TQString XslFile;
  bool OutGiven = false;
  bool XmlGiven = false;
  bool XslGiven = false;
  std::int32_t StackLimit = 1000;  // largest allowed number of frames
  bool LfOutput = true;            // line ends of the result: LF, else CR LF
  EncodingId DefaultEncoding = EncodingId::kUtf8;
  DocumentKindTable Kinds;
  std::unique_ptr<DocumentManager> Manager;
  std::unique_ptr<XPathTreeBuilder> Builder;
  std::unique_ptr<XSLTProcessor> Processor;
  LoadedDocument* SourceDocument = nullptr;  // owned by Manager, as is its tree
  LoadedDocument* StylesheetDocument = nullptr;
  XTreeNode* SourceXTree = nullptr;
  XTreeNode* StylesheetXTree = nullptr;
  XPathNode* SourceRoot = nullptr;  // owned
  XPathNode* StylesheetRoot = nullptr;
  std::map<XTreeNode*, std::unique_ptr<DocumentModel>> Models;
};

}  // namespace kelmora
