// XSLTProcessor: the engine. A stylesheet stays an XPathNode tree; one walk checks it, and an
// Instruction is made for a stylesheet node when the run reaches that node. All nesting lives in
// CallStack, and a run is the driver calling Step until that vector is empty.
#pragma once

#include <map>
#include <memory>
#include <unordered_map>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/documentmanager.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

class BuiltInStylesheet;

class XSLTProcessor final : public XSLTProcessorBase {
 public:
  explicit XSLTProcessor(DocumentManager* manager);  // borrowed
  ~XSLTProcessor() override;

  // "name=expression"; the first value of a name stays. Raises code 6 for a text without "=".
  void AddParameter(const TQString& text);
  // Borrowed; trees are deleted before it dies. Makes the built-in stylesheet.
  void SetTreeBuilder(XPathTreeBuilder* builder);
  // Both roots are borrowed to the end of the run. White space text leaves the stylesheet.
  void Start(XPathNode* stylesheetRoot, XPathNode* sourceRoot);

  // Prints "Failed to load ", the URL and the message on standard error when it cannot be read.
  XTreeNode* LoadExternalDocument(const TQString& url) override;
  std::unique_ptr<TreeModel> NewModel() override;
  // Without its fragment; empty for a root that was not loaded here.
  TQString DocumentUrl(const XTreeNode* root) const;

  XPathNode* LoadDocumentTree(const TQString& uri) override;
  bool Recover(const TQXSLTError& error) override;

 private:
  struct PartsOfProcess;
  struct PartsOfRun;

  void EndRun();
  void Reset();
  void EvaluateParameters();

  DocumentManager* manager_;
  std::map<TQString, TQString, TextLess> ParameterMap;
  std::unordered_map<TQString, XTreeNode*, TextHash, TextEqual> documentsByUrl_;
  std::unordered_map<const XTreeNode*, TQString> urlsByDocument_;
  std::unique_ptr<PartsOfProcess> process_;
  std::unique_ptr<PartsOfRun> run_;
};

}  // namespace kelmora
