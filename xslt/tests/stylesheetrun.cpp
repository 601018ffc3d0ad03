#include "stylesheetrun.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "tqcore/tqtext.h"
#include "xmltree/documentkindtable.h"
#include "xmltree/documentmanager.h"
#include "xmltree/xpathtreebuilder.h"
#include "xmlutil/documentmodel.h"
#include "xslt/xsltprocessor.h"

namespace kelmora {

namespace {

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "xslttestXXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TemporaryDirectory() { std::filesystem::remove_all(path_); }
  std::string Write(const std::string& name, const std::string& text) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }

 private:
  std::filesystem::path path_;
};

std::string PathOf(const XPathNode* node) {
  if (node == nullptr) return "nowhere";
  std::string path;
  for (; node->parent != nullptr; node = node->parent) {
    std::string step = ToNative(node->GetName());
    if (node->kind == XPathNodeKind::Attribute) step = "@" + step;
    if (node->IsText()) step = "text()";
    path = path.empty() ? step : step + "/" + path;
  }
  return path;
}

std::string Describe(const TQXSLTError& error, const std::vector<TemplateFrame*>& stack) {
  std::string text = "code " + std::to_string(static_cast<int>(error.Code()));
  if (error.Code() == XsltCode::XPathFailed) {
    text += " (" + std::to_string(error.XPathCode());
    const std::string message = ToNative(error.Text());
    const std::size_t arrow = message.find(" -> ");
    if (arrow != std::string::npos) text += ", " + message.substr(arrow + 4);
    text += ")";
  }
  text += " at " + PathOf(error.Node());
  std::string names;
  for (auto frame = stack.rbegin(); frame != stack.rend(); ++frame) {
    const XPathNode* node = (*frame)->CallingNode;
    if (node == nullptr) node = (*frame)->CurrentNode;
    names += (names.empty() ? "" : " ") + ToNative(node->GetName());
  }
  return names.empty() ? text : text + " [" + names + "]";
}

struct TreeDeleter {
  void operator()(XPathNode* root) const { XPathNode::DeleteTree(root); }
};
using Tree = std::unique_ptr<XPathNode, TreeDeleter>;

// The objects of one run, in the order in which they die.
struct Engine {
  DocumentKindTable kinds;
  std::unique_ptr<XSLTProcessor> processor;
  DocumentManager manager{kinds};
  XPathTreeBuilder builder;
  DocumentModel model{&manager};

  Tree Load(const std::string& path) {
    auto record = std::make_unique<LoadRecord>();
    record->document = manager.CreateDocument();
    LoadError error;
    XTreeNode* xtree = record->document->Load(FromNative(path), error, record.get());
    manager.AdoptRecord(std::move(record));
    if (xtree == nullptr) return nullptr;
    return Tree(builder.Build(*xtree, model, true, FromNative(path)));
  }
};

std::string RunSteps(XSLTProcessor& processor, std::size_t stackLimit) {
  while (!processor.CallStack().empty()) {
    if (processor.CallStack().size() > stackLimit) return "stack overflow";
    if (!processor.Step()) return "false step";
    if (processor.MessagePending()) return "stopped: " + ToNative(processor.TakeMessage());
  }
  return ToNative(processor.ResultText());
}

}  // namespace

std::string StylesheetRun::Result() const {
  const TemporaryDirectory directory;
  for (const auto& [name, text] : files) directory.Write(name, text);
  Engine engine;
  TQString dropped;
  if (!engine.kinds.Fill(false, dropped)) dropped.Clear();
  const Tree sourceRoot = engine.Load(directory.Write("source.xml", source));
  const Tree stylesheetRoot = engine.Load(directory.Write("main.xsl", stylesheet));
  if (sourceRoot == nullptr || stylesheetRoot == nullptr) return "not well-formed";
  engine.processor = std::make_unique<XSLTProcessor>(&engine.manager);
  XSLTProcessor& processor = *engine.processor;
  try {
    for (const std::string& parameter : parameters) processor.AddParameter(FromNative(parameter));
    processor.SetTreeBuilder(&engine.builder);
    if (!givesAllFrames) processor.SetStackLimit(stackLimit);
    processor.Start(stylesheetRoot.get(), sourceRoot.get());
    return RunSteps(processor, stackLimit);
  } catch (const TQXSLTError& error) {
    return Describe(error, processor.CallStack());
  }
}

std::string Sheet(std::string_view body) {
  return "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">" +
         std::string(body) + "<xsl:output method=\"text\"/></xsl:stylesheet>";
}

std::string RootTemplate(std::string_view body) {
  return Sheet("<xsl:template match=\"/\">" + std::string(body) + "</xsl:template>");
}

}  // namespace kelmora
