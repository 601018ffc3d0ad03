// Where the engine is put together: the objects of all rooms, their order of life, the start of a
// run, and what the engine asks of the documents around it.
#include "xslt/xsltprocessor.h"

#include <utility>

#include "base/expressiontext.h"
#include "checks/elementdispatcher.h"
#include "keys/keytables.h"
#include "modules/builtinstylesheet.h"
#include "modules/stylesheetmodules.h"
#include "names/stylesheetindex.h"
#include "numbers/numbercounts.h"
#include "numbers/numberformats.h"
#include "result/resultscope.h"
#include "result/starttags.h"
#include "rules/templaterules.h"
#include "sorting/collation.h"
#include "tqcore/console.h"
#include "variables/globalevaluation.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {

struct XSLTProcessor::PartsOfProcess {
  explicit PartsOfProcess(XSLTProcessor* processor)
      : dispatcher(processor), keys(processor), modules(processor) {}

  ElementDispatcher dispatcher;
  KeyTables keys;
  StylesheetModules modules;
  std::unique_ptr<BuiltInStylesheet> builtIn;
};

struct XSLTProcessor::PartsOfRun {
  explicit PartsOfRun(XSLTProcessor* processor) : rules(processor), globals(processor) {}

  TemplateRules rules;
  GlobalEvaluation globals;
  ResultScopes scopes;
  StartTags tags;
  Collations collators;
  NumberCounts counts;
  NumberFormats numberFormats;
};

XSLTProcessor::XSLTProcessor(DocumentManager* manager)
    : manager_(manager), process_(std::make_unique<PartsOfProcess>(this)) {
  Dispatcher = &process_->dispatcher;
  Keys = &process_->keys;
  Modules = &process_->modules;
}

XSLTProcessor::~XSLTProcessor() {
  EndRun();
}

void XSLTProcessor::AddParameter(const TQString& text) {
  const int separator = text.Find(u'=');
  if (separator == TQString::kNotFound) throw TQXSLTError(XsltCode::InvalidExpression, nullptr);
  const auto at = static_cast<std::size_t>(separator);
  ParameterMap.try_emplace(text.View().substr(0, at), text.View().substr(at + 1));
}

void XSLTProcessor::SetTreeBuilder(XPathTreeBuilder* builder) {
  TreeBuilder = builder;
  const std::unique_ptr<TreeModel> model = NewModel();
  process_->builtIn = std::make_unique<BuiltInStylesheet>(*builder, *model);
}

void XSLTProcessor::Start(XPathNode* stylesheetRoot, XPathNode* sourceRoot) {
  EndRun();  // what it keeps points into the records
  Keys->Clear();
  StylesheetRoot = stylesheetRoot;
  StripSpace(StylesheetRoot);
  Index->Clear();
  Dispatcher->Validate(XsltElement::Literal, StylesheetRoot);
  Dispatcher->Validate(XsltElement::Literal, process_->builtIn->Root());
  SourceRoot = sourceRoot;
  for (XPathNode* root : {StylesheetRoot, SourceRoot}) {
    if (root->OwnBaseURI() == nullptr) root->SetBaseURI(TreeBuilder->InternURI(u""));
  }
  Reset();
}

// Frames go first, since they use all the rest.
void XSLTProcessor::EndRun() {
  ClearFrames();
  run_.reset();
  ClearRun();
}

// The bottom frame must stand before the parameters of the command line can be evaluated.
void XSLTProcessor::Reset() {
  run_ = std::make_unique<PartsOfRun>(this);
  Rules = &run_->rules;
  Globals = &run_->globals;
  Scopes = &run_->scopes;
  Tags = &run_->tags;
  Collators = &run_->collators;
  Counts = &run_->counts;
  NumberFormatting = &run_->numberFormats;
  Modules->BeginRun();
  PrepareRun(Keys);
  Rules->RegisterBuiltInRules(process_->builtIn->Root());
  PushBottomFrame();
  EvaluateParameters();
}

void XSLTProcessor::EvaluateParameters() {
  VariableMap values;
  for (const auto& [name, text] : ParameterMap) {
    ExpressionText expression;
    expression.Text = text;
    XPathValue value;
    EvaluateExpression(expression, BottomFrame(), value);
    values.Bind(name, std::move(value));
  }
  BottomFrame().PassedParameters = std::move(values);
}

bool XSLTProcessor::Recover(const TQXSLTError& error) {
  return Globals->Retry(error);
}

XPathNode* XSLTProcessor::LoadDocumentTree(const TQString& uri) {
  return Modules->LoadDocumentTree(uri);
}

XTreeNode* XSLTProcessor::LoadExternalDocument(const TQString& url) {
  const auto known = documentsByUrl_.find(url.View());
  if (known != documentsByUrl_.end()) return known->second;
  auto record = std::make_unique<LoadRecord>();
  std::unique_ptr<LoadedDocument> document = manager_->CreateDocument();
  LoadError error;
  XTreeNode* root = document->Load(url, error, record.get());
  record->document = std::move(document);
  manager_->AdoptRecord(std::move(record));
  if (error.HasError()) {
    using enum Console::Stream;
    Console::Write(kError, u"Failed to load ");
    Console::Write(kError, url);
    Console::NewLineAndFlush(kError);
    if (!error.message.IsEmpty()) {
      Console::Write(kError, error.message);
      Console::NewLineAndFlush(kError);
    }
  }
  if (root == nullptr) return nullptr;
  documentsByUrl_.emplace(url, root);
  const std::u16string_view text = url;
  urlsByDocument_.emplace(root, TQString(text.substr(0, text.find(u'#'))));
  return root;
}

std::unique_ptr<TreeModel> XSLTProcessor::NewModel() {
  return std::make_unique<DocumentModel>(manager_);
}

TQString XSLTProcessor::DocumentUrl(const XTreeNode* root) const {
  const auto found = urlsByDocument_.find(root);
  return found == urlsByDocument_.end() ? TQString() : found->second;
}

}  // namespace kelmora
