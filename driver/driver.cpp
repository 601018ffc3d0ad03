#include "driver.h"

#include <csignal>
#include <utility>

#include "paths.h"
#include "tqcore/largememory.h"
#include "uncaughterror.h"

namespace kelmora {

namespace {

constexpr Console::Stream kOutput = Console::Stream::kOutput;
constexpr Console::Stream kError = Console::Stream::kError;
// Numbers of document kinds. That of stylesheets has no grammar of its own; the name decides.

}  // namespace

int Driver::Main(int argc, const char* const* argv) {
  Console::Prepare();
#ifdef SIGXFSZ
  std::signal(SIGXFSZ, SIG_IGN);  // a result beyond the file size limit is a failed write
#endif
  MemoryReserve reserve;
  try {
    RunStages(argc, argv);
  } catch (...) {
    reserve.Release();
    ReportUncaughtError();
  }
  // The system takes all memory back at once, faster than anybody can node by node. A sanitizer
  // wants to see that every piece has an owner.
  if (KELMORA_IS_SANITIZED) Cleanup();
  return 0;
}

void Driver::RunStages(int argc, const char* const* argv) {
  CreateObjects();
  try {
    if (!ParseArguments(argc, argv)) {
      WriteUsage();
      return;
    }
  } catch (const TQXSLTError& error) {  // a -param without "="
    ReportError(error);
    return;
  }
  if (!LoadDocuments() || !Run()) return;
  WriteResult();
  Console::NewLineAndFlush(kOutput);
  WriteLine(kOutput, OutFile);
}

void Driver::WriteLine(Console::Stream stream, std::u16string_view text) {
  Console::Write(stream, text);
  Console::NewLineAndFlush(stream);
}

void Driver::CreateObjects() {
  TQString dropped;
  static_cast<void>(Kinds.Fill(false, dropped));
  Manager = std::make_unique<DocumentManager>(Kinds);
  Builder = std::make_unique<XPathTreeBuilder>();
  Processor = std::make_unique<XSLTProcessor>(Manager.get());
}

bool Driver::LoadDocuments() {
  const TQString directory = CurrentDirectory();
  MakeAbsolute(XslFile, directory);
  MakeAbsolute(XmlFile, directory);

  LoadError loadError;
  SourceDocument = LoadDocument(XmlFile, GrammarKind::XML, loadError, SourceXTree);
  if (SourceDocument == nullptr) return false;
  SourceRoot = BuildTree(SourceXTree, XmlFile);
  if (SourceRoot == nullptr) return false;

  StylesheetDocument = LoadDocument(XslFile, GrammarKind::Stylesheet, loadError, StylesheetXTree);
  if (StylesheetDocument == nullptr) return false;
  LfOutput = StylesheetDocument->LineEnd()[0] != u'\r';
  if (!LfOutput) Processor->Serializer().SetLineEnd(u"\r\n");
  DefaultEncoding = EncodingId::kUtf8;
  Processor->Serializer().SetEncoding(u"UTF-8");
  StylesheetRoot = BuildTree(StylesheetXTree, XslFile);
  return StylesheetRoot != nullptr;
}

LoadedDocument* Driver::LoadDocument(const TQString& path, GrammarKind kind, LoadError& loadError,
                                     XTreeNode*& xtree) {
  auto record = std::make_unique<LoadRecord>();
  record->document = Manager->CreateDocument();
  LoadedDocument* document = record->document.get();
  document->SetKind(Kinds.Find(kind));
  xtree = document->Load(path, loadError, record.get());
  Manager->AdoptRecord(std::move(record));
  if (xtree != nullptr && !loadError.HasError() && !document->Text().IsEmpty()) return document;

  WriteLine(kError, u"Failed to load " + path);
  if (loadError.HasError() && !loadError.message.IsEmpty()) WriteLine(kError, loadError.message);
  return nullptr;
}

XPathNode* Driver::BuildTree(XTreeNode* xtree, const TQString& path) {
  std::unique_ptr<DocumentModel>& model = Models[xtree];
  model = std::make_unique<DocumentModel>(Manager.get());
  XPathNode* root = Builder->Build(*xtree, *model, true, path);
  if (root == nullptr) WriteLine(kError, u"Internal error creating tree for " + path);
  return root;
}

bool Driver::Run() {
  try {
    Processor->SetTreeBuilder(Builder.get());
    Processor->SetStackLimit(static_cast<std::size_t>(StackLimit));
    Processor->Start(StylesheetRoot, SourceRoot);
    const std::vector<TemplateFrame*>& callStack = Processor->CallStack();
    bool ok = false;
    while (!callStack.empty()) {
      if (callStack.size() > static_cast<std::size_t>(StackLimit)) {
        WriteLine(kError, u"XSL template stack overflow\n");
        return false;
      }
      ok = Processor->Step();
      if (!ok) return false;
      if (Processor->MessagePending()) {
        WriteLine(kOutput, u"XSL terminating message: " + Processor->TakeMessage());
        return false;
      }
    }
    return ok;
  } catch (const TQXSLTError& error) {
    ReportError(error);
    return false;
  }
}

void Driver::WriteResult() {
  EncodingId encoding = DefaultEncoding;
  if (Processor->OutputSettings().EncodingGiven) {
    encoding = EncodingFromName(Processor->OutputSettings().Encoding);
  }
  const TQString& text = Processor->ResultText();
  ResultSaver saver(Kinds, !LfOutput);
  LoadError loadError;
  const bool ok = saver.SaveText(OutFile, text, loadError, static_cast<int>(encoding));
  if (ok && !loadError.HasError()) return;
  WriteLine(kError, u"Error writing to file " + OutFile);
  WriteLine(kError, loadError.message);
}

void Driver::Cleanup() {
  XPathNode::DeleteTree(std::exchange(StylesheetRoot, nullptr));
  XPathNode::DeleteTree(std::exchange(SourceRoot, nullptr));
  Models.clear();
  Builder.reset();
  Manager.reset();
  Processor.reset();
}

}  // namespace kelmora
