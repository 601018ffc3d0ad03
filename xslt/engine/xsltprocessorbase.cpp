// The run of a transformation: from Start over single steps to the serialised result. Start checks
// the stylesheet and makes the bottom frame; a step runs the top frame once; frames that leave the
// stack are deleted when the step is over, so an instruction may use its frame up to its return.
// When the last frame leaves, the result tree, which that frame owns, becomes text.
#include "xslt/xsltprocessor.h"

#include <utility>

#include "base/expressiontext.h"
#include "base/namelist.h"
#include "base/parsedexpression.h"
#include "checks/elementdispatcher.h"
#include "engine/attributetemplates.h"
#include "engine/instruction.h"
#include "engine/universes.h"
#include "engine/xpathevaluator.h"
#include "keys/keytable.h"
#include "numbers/numbercounter.h"
#include "result/resultscope.h"
#include "rules/templaterules.h"
#include "sorting/collation.h"
#include "tqcore/tqtext.h"
#include "variables/globaldefinitions.h"

namespace kelmora {

XSLTProcessorBase::XSLTProcessorBase()
    : Dispatcher(std::make_unique<ElementDispatcher>(this)),
      Rules(std::make_unique<TemplateRules>(this)) {}

XSLTProcessorBase::~XSLTProcessorBase() {
  ClearRun();
  for (const auto& [path, tree] : LoadedTrees) XPathNode::DeleteTree(tree);
  XPathNode::DeleteTree(BuiltInRoot);
}

void XSLTProcessorBase::AddParameter(const TQString& text) {
  const int separator = text.Find(u'=');
  if (separator == TQString::kNotFound) throw TQXSLTError(XsltCode::InvalidExpression, nullptr);
  const auto at = static_cast<std::size_t>(separator);
  ParameterMap.try_emplace(text.View().substr(0, at), text.View().substr(at + 1));
}

void XSLTProcessorBase::SetTreeBuilder(XPathTreeBuilder* builder) {
  TreeBuilder = builder;
  BuildBuiltInStylesheet();
}

void XSLTProcessorBase::Start(XPathNode* stylesheetRoot, XPathNode* sourceRoot) {
  ClearRun();  // what it keeps points into the records
  Keys.clear();
  StylesheetRoot = stylesheetRoot;
  StripSpace(StylesheetRoot);
  Dispatcher->Clear();
  Dispatcher->Validate(ElementCode::Literal, StylesheetRoot);
  Dispatcher->Validate(ElementCode::Literal, BuiltInRoot);
  SourceRoot = sourceRoot;
  for (XPathNode* root : {StylesheetRoot, SourceRoot}) {
    if (root->OwnBaseURI() == nullptr) root->SetBaseURI(TreeBuilder->InternURI(u""));
  }
  Reset();
}

// Drops what a run made: frames first, since they use all the rest.
void XSLTProcessorBase::ClearRun() {
  for (std::vector<TemplateFrame*>* frames : {&callStack_, &poppedFrames_}) {
    while (!frames->empty()) {
      delete frames->back();
      frames->pop_back();
    }
  }
  Scopes.reset();
  Counts.reset();
  GlobalVariables.Clear();
  GlobalParameters.Clear();
  VariableDefinitions.clear();
  ParameterDefinitions.clear();
  InProgress.clear();
  Finished.clear();
  GlobalEvaluation = false;
  globalDefinitions_.reset();
  for (XPathNode* root : KeptFragments) XPathNode::DeleteTree(root);
  KeptFragments.clear();
  documentTrees_.clear();
  Rules->Clear();
  Evaluator.reset();
  universes_.reset();
  attributeTemplates_.reset();
  expressionCache_.reset();
  lastTree_ = nullptr;
  textPool_.clear();
  NamespaceAliases.clear();
  AttributeSets.clear();
  OpenStylesheets.clear();
}

// The bottom frame must stand before the parameters of the command line can be evaluated.
void XSLTProcessorBase::Reset() {
  expressionCache_ = std::make_unique<ExpressionCache>();
  attributeTemplates_ = std::make_unique<AttributeTemplates>();
  universes_ = std::make_unique<Universes>();
  globalDefinitions_ = std::make_unique<GlobalDefinitions>();
  Evaluator = std::make_unique<XPathEvaluator>(this);
  Scopes = std::make_unique<ResultScopes>();
  Collators = std::make_unique<Collations>();
  Counts = std::make_unique<NumberCounts>();
  ImportPrecedence = 0;
  PrefixCounter = 0;
  DecimalFormats.clear();
  DecimalFormats.try_emplace(TQString());
  DefaultFormatGiven = false;
  JoinsTexts = false;
  MessagePendingFlag = false;
  TerminateMessage.Clear();
  Message.Clear();
  Settings.Reset();
  Serializer_.ClearText();
  Rules->RegisterBuiltInRules(BuiltInRoot);
  PushBottomFrame();
  EvaluateParameters();
}

void XSLTProcessorBase::PushBottomFrame() {
  XPathNode* resultRoot = XPathNode::Make(XPathNodeKind::Root);
  NamespaceScope& scope = resultRoot->OwnScope();
  scope.scopeMap.Set(u"xml", TreeBuilder->XmlURI());
  scope.attributeScopeMap.Set(u"xml", TreeBuilder->XmlURI());
  auto* frame = new TemplateFrame(this);
  frame->OutputParent = frame->OutputRoot = resultRoot;
  frame->SetOwnNodeList({XPathNodeRef(SourceRoot, 1)});
  frame->Position = 1;
  callStack_.push_back(frame);
  XPathNode* element = StylesheetRoot->firstChild;
  while (element != nullptr && element->kind != XPathNodeKind::Element) element = element->next;
  frame->CurrentNode = element;
}

void XSLTProcessorBase::EvaluateParameters() {
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

bool XSLTProcessorBase::Step() {
  if (callStack_.empty()) return false;
  const bool succeeded = callStack_.back()->Run();
  if (poppedFrames_.empty()) return succeeded;
  if (callStack_.empty()) SerializeResult();
  do {
    delete poppedFrames_.back();
    poppedFrames_.pop_back();
  } while (!poppedFrames_.empty());
  return succeeded;
}

// The result tree is the bottom frame's, which goes away with this step.
void XSLTProcessorBase::SerializeResult() {
  Serializer_.ClearText();
  Serializer_.SetResultRoot(poppedFrames_.front()->OutputParent);
  Serializer_.Serialize(Settings);
  Serializer_.SetResultRoot(nullptr);
}

const TQString& XSLTProcessorBase::ResultText() {
  if (!callStack_.empty()) {
    Serializer_.ClearText();
    Serializer_.SetResultRoot(BottomFrame().OutputParent);
  }
  const TQString& text = Serializer_.Serialize(Settings);
  Serializer_.SetResultRoot(nullptr);
  return text;
}

TQString XSLTProcessorBase::TakeMessage() {
  MessagePendingFlag = false;
  return std::exchange(TerminateMessage, TQString());
}

void XSLTProcessorBase::PopFrame() {
  poppedFrames_.push_back(callStack_.back());
  callStack_.pop_back();
}

std::vector<InternedURI> XSLTProcessorBase::PrefixListURIs(XPathNode* attribute) {
  std::vector<InternedURI> uris;
  const PrefixMap& scope = attribute->parent->ScopeMap();
  ForEachName(attribute->GetValue(), [&](std::u16string_view prefix) {
    const PrefixMap::Entry* entry = scope.Find(prefix == u"#default" ? u"" : prefix);
    if (entry == nullptr) throw TQXSLTError(XsltCode::UndefinedPrefix, attribute);
    if (entry->uri != nullptr) uris.push_back(entry->uri);
  });
  return uris;
}

XPathNode* XSLTProcessorBase::KeepFragment(XPathNode* root) {
  KeptFragments.push_back(root);
  return root;
}

InternedURI XSLTProcessorBase::KeepURI(std::u16string_view text) {
  return &textPool_.emplace_back(text);
}

TQString XSLTProcessorBase::GeneratePrefix() {
  return TQString::Format(u"prefix_%d", {++PrefixCounter});
}

void XSLTProcessorBase::AddDecimalFormat(const TQString& name, const DecimalFormat& format,
                                         XPathNode* nameNode) {
  if (name.IsEmpty() && !DefaultFormatGiven) {
    DecimalFormats.erase(TQString());
    DefaultFormatGiven = true;
  }
  const auto [place, isNew] = DecimalFormats.try_emplace(name, format);
  if (!isNew && !(place->second == format)) {
    throw TQXSLTError(XsltCode::DecimalFormatExists, nameNode);
  }
}

}  // namespace kelmora
