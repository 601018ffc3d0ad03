// XSLTProcessor: the engine. A stylesheet stays an XPathNode tree; one walk checks it, and an
// Instruction is made for a stylesheet node when the run reaches that node. All nesting lives in
// CallStack, and a run is the driver calling Step until that vector is empty.
//
// All failures are TQXSLTError, raised to the driver; the frames then stay on CallStack.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "output/outputserializer.h"
#include "output/outputsettings.h"
#include "tqcore/tqstring.h"
#include "xmltree/documentmanager.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathtreebuilder.h"
#include "xpath/decimalformat.h"
#include "xpath/xpathexpression.h"
#include "xslt/templateframe.h"
#include "xslt/tqxslterror.h"
#include "xslt/variablemap.h"

namespace kelmora {

inline constexpr std::u16string_view kXsltNamespace = u"http://www.w3.org/1999/XSL/Transform";

class AttributeTemplates;
class Collations;
class ElementDispatcher;
class ExpressionCache;
class GlobalDefinitions;
class KeyTable;
class NumberCounts;
class ResultScopes;
class TemplateRule;
class TemplateRules;
class Universes;
class XPathEvaluator;
struct ExpressionText;
struct ParsedExpression;

class XSLTProcessorBase {
 public:
  XSLTProcessorBase();
  virtual ~XSLTProcessorBase();
  XSLTProcessorBase(const XSLTProcessorBase&) = delete;
  XSLTProcessorBase& operator=(const XSLTProcessorBase&) = delete;

  // --- for the driver ------------------------------------------------------------------------
  // "name=expression"; the first value of a name stays. Raises code 6 for a text without "=".
  void AddParameter(const TQString& text);
  void SetTreeBuilder(XPathTreeBuilder* builder);  // borrowed; trees are deleted before it dies
  // Both roots are borrowed to the end of the run. White space text leaves the stylesheet.
  void Start(XPathNode* stylesheetRoot, XPathNode* sourceRoot);
  // One step of the top frame. False ends the run without a message.
  bool Step();
  const std::vector<TemplateFrame*>& CallStack() const { return callStack_; }
  // The largest number of frames that the driver allows. Templates that do next to nothing run
  // without frames as long as it would not be exceeded; 0, the default, lets all have theirs.
  void SetStackLimit(std::size_t frames) { stackLimit_ = frames; }
  bool MessagePending() const { return MessagePendingFlag; }
  TQString TakeMessage();
  const struct OutputSettings& OutputSettings() const { return Serializer_.OutputSettings(); }
  // The text of the result, of the result so far during a run. Lives until the next step or run.
  const TQString& ResultText();
  OutputSerializer& Serializer() { return Serializer_; }

  // --- for instructions ----------------------------------------------------------------------
  TemplateFrame& TopFrame() const { return *callStack_.back(); }
  TemplateFrame& BottomFrame() const { return *callStack_.front(); }
  void PushFrame(TemplateFrame* frame) { callStack_.push_back(frame); }  // takes ownership
  bool HasRoom(std::size_t frames) const { return callStack_.size() + frames <= stackLimit_; }
  // Moves the top frame to PoppedFrames; it is deleted at the end of the step.
  void PopFrame();

  // Evaluates in the frame's context: its list, position, variables and stylesheet node. Prefixes
  // come from the nearest element or attribute at or above that node, without a default namespace.
  // Raises code 1 at that element or attribute; 6 at the holder of the text, else there, for a text
  // that is no expression.
  void EvaluateExpression(const ExpressionText& expression, const TemplateFrame& frame,
                          XPathValue& value);
  // The same without a copy where the value stands in a variable: that one, or `scratch`.
  const XPathValue& ViewExpression(const ExpressionText& expression, const TemplateFrame& frame,
                                   XPathValue& scratch);
  // The same with the conversion of the value, which need not be made then. The text lives until
  // `scratch`, a document or a variable changes.
  bool EvaluateToBoolean(const ExpressionText& expression, const TemplateFrame& frame);
  double EvaluateToNumber(const ExpressionText& expression, const TemplateFrame& frame);
  std::u16string_view EvaluateToText(const ExpressionText& expression, const TemplateFrame& frame,
                                     TQString& scratch);
  // The same with list and namespaces given, for patterns, keys and numbers. A position of -1 takes
  // the whole list as input. `namespaceNode` is also the node of an error.
  void EvaluateOn(const ExpressionText& expression, XPathNode* namespaceNode,
                  const XPathNodeList& list, std::int32_t position, XPathPatternKind patternKind,
                  XPathValue& value);
  // The value of `attribute` as an attribute value template, in the frame's context. It is taken
  // apart once. Raises code 47 for a bad template, after the expressions in front of the fault ran.
  TQString ExpandAttributeValue(XPathNode* attribute, const TemplateFrame& frame);

  // "//node()" with the root, in order and numbered from 1; for an attribute as context node
  // "//@*" of its tree. Made once per document.
  const XPathNodeList& Universe(XPathNode* contextNode);
  // The expression run from all nodes of the universe at once, in the order of the evaluation.
  XPathNodeList EvaluateOverUniverse(const ExpressionText& expression, XPathNode* contextNode,
                                     XPathNode* namespaceNode, XPathPatternKind patternKind);
  // The parsed form, from the cache; without a tree for a text that does not parse. It lives as
  // long as the run.
  const ParsedExpression& TryParse(const ExpressionText& expression, XPathPatternKind patternKind);

  // URIs of a list of prefixes separated by white space, "#default" being the empty one. Raises
  // code 10 at the attribute for a prefix that is not bound.
  static std::vector<InternedURI> PrefixListURIs(XPathNode* attribute);

  XPathNode* KeepFragment(XPathNode* root);  // owns it to the end of the run; returns it
  // A new pointer for each call, in TextPool: it lives to the end of the run.
  InternedURI KeepURI(std::u16string_view text);
  TQString GeneratePrefix();  // "prefix_1", "prefix_2", ...

  // The absolute form of `href` as an element or attribute of the stylesheet names it.
  static TQString ResolveHref(const XPathNode* baseNode, std::u16string_view href);
  // The tree of a stylesheet by its absolute path, loaded once per process; null when it cannot be
  // read.
  XPathNode* LoadTree(const TQString& path);
  XPathNode* LoadDocumentTree(const TQString& uri);  // for document(): built once, stripped
  // Replaces the xsl:include children of a xsl:stylesheet element by what they name.
  void ExpandIncludes(XPathNode* element);
  // The first child of code 29, else the first that is no declaration, comment or the like.
  static XPathNode* StylesheetElementOf(XPathNode* root);
  static TQString FileIdentity(const TQString& path);
  void CheckNotOpen(const TQString& path, XPathNode* element) const;  // raises code 45

  virtual XTreeNode* LoadExternalDocument(const TQString& url) = 0;
  virtual std::unique_ptr<TreeModel> NewModel() = 0;

  void AddDecimalFormat(const TQString& name, const DecimalFormat& format, XPathNode* nameNode);

  // --- state, named as everybody knows it ----------------------------------------------------
  XPathNode* StylesheetRoot = nullptr;
  XPathNode* SourceRoot = nullptr;
  XPathTreeBuilder* TreeBuilder = nullptr;
  std::unique_ptr<ElementDispatcher> Dispatcher;
  std::unique_ptr<XPathEvaluator> Evaluator;
  std::unique_ptr<TemplateRules> Rules;
  std::unique_ptr<ResultScopes> Scopes;
  std::unique_ptr<Collations> Collators;
  std::unique_ptr<NumberCounts> Counts;
  std::map<TQString, TQString, TextLess> NamespaceAliases;  // stylesheet prefix -> result prefix
  std::map<TQString, std::vector<XPathNode*>, TextLess> AttributeSets;
  DecimalFormatMap DecimalFormats;
  bool DefaultFormatGiven = false;
  // Texts that stand side by side in the result tree may become one node. Nothing shows how many
  // there were, unless each is to be a CDATA section of its own. Known when the rules start.
  bool JoinsTexts = false;
  std::map<TQString, std::unique_ptr<KeyTable>, TextLess> Keys;
  GlobalMap GlobalVariables;
  GlobalMap GlobalParameters;
  std::map<TQString, TQString, TextLess> ParameterMap;
  std::unordered_map<std::u16string_view, XPathNode*> VariableDefinitions;
  std::unordered_map<std::u16string_view, XPathNode*> ParameterDefinitions;
  std::vector<const XTreeNode*> InProgress;
  std::unordered_set<const XPathNode*> Finished;
  bool GlobalEvaluation = false;
  TQString MissingVariable;
  std::int32_t ImportPrecedence = 0;
  std::int32_t PrefixCounter = 0;
  std::vector<TQString> OpenStylesheets;  // their FileIdentity
  struct OutputSettings Settings;
  TQString TerminateMessage;
  bool MessagePendingFlag = false;
  TQString Message;

 private:
  friend struct TemplateFrame;

  void Reset();
  void ClearRun();
  void PushBottomFrame();
  void EvaluateParameters();
  void SerializeResult();
  void StripSpace(XPathNode* root);
  bool RunGuarded(TemplateFrame& frame);
  bool RetryGlobal(const TQString& key);
  void BuildBuiltInStylesheet();
  struct IncludeLevel;
  XPathNode* OpenInclude(XPathNode* include);
  void ReplaceInclude(IncludeLevel& level, XPathNode* top);
  XPathNode* BuildTree(XTreeNode* source, const TQString& path);
  const ParsedExpression& Parse(const ExpressionText& expression, XPathPatternKind patternKind,
                                XPathNode* errorNode);
  struct Evaluation;
  Evaluation InFrame(const ExpressionText& expression, const TemplateFrame& frame);
  template <class Evaluate>
  void RunEvaluation(const Evaluation& evaluation, Evaluate evaluate);
  XPathNode* TreeOf(XPathNode* stylesheetNode);

  std::vector<TemplateFrame*> callStack_;     // owned
  std::vector<TemplateFrame*> poppedFrames_;  // owned; left CallStack in the current step
  std::vector<XPathNode*> KeptFragments;      // owned
  std::size_t stackLimit_ = 0;
  std::deque<TQString> textPool_;
  std::unique_ptr<Universes> universes_;
  std::unique_ptr<ExpressionCache> expressionCache_;
  std::unique_ptr<AttributeTemplates> attributeTemplates_;
  std::unique_ptr<GlobalDefinitions> globalDefinitions_;
  std::unordered_map<TQString, XPathNode*, TextHash, TextEqual> LoadedTrees;  // owned
  std::unordered_map<const XTreeNode*, XPathNode*> documentTrees_;  // of document(), kept fragments
  std::unique_ptr<XTree> builtInSource_;
  XPathNode* BuiltInRoot = nullptr;  // owned
  OutputSerializer Serializer_;
  std::int32_t lastTreeNumber_ = 0;  // of the document that lastTree_ is the root of
  XPathNode* lastTree_ = nullptr;
};

class XSLTProcessor final : public XSLTProcessorBase {
 public:
  explicit XSLTProcessor(DocumentManager* manager);  // borrowed

  // Prints "Failed to load ", the URL and the message on standard error when it cannot be read.
  XTreeNode* LoadExternalDocument(const TQString& url) override;
  std::unique_ptr<TreeModel> NewModel() override;
  // Without its fragment; empty for a root that was not loaded here.
  TQString DocumentUrl(const XTreeNode* root) const;

 private:
  DocumentManager* manager_;
  std::unordered_map<TQString, XTreeNode*, TextHash, TextEqual> documentsByUrl_;
  std::unordered_map<const XTreeNode*, TQString> urlsByDocument_;
};

}  // namespace kelmora
