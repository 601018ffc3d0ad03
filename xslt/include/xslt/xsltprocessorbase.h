// XSLTProcessorBase: what every instruction works with. It holds the explicit call stack and its
// steps, evaluates expressions in the context of a frame, and keeps what belongs to a whole run:
// the two roots, the values of globals, declarations, fragments, output settings and messages.
//
// It knows no instruction, no rule and no check. What needs those stands in objects of the rooms
// above, which XSLTProcessor makes and hands in as `Parts`.
//
// All failures are TQXSLTError, raised to the driver; the frames then stay on CallStack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "output/outputserializer.h"
#include "output/outputsettings.h"
#include "tqcore/tqstring.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathnode.h"
#include "xmltree/xpathtreebuilder.h"
#include "xpath/xpathexpression.h"
#include "xpath/xpathvalue.h"
#include "xslt/templateframe.h"
#include "xslt/tqxslterror.h"
#include "xslt/variablemap.h"

namespace kelmora {

class AttributeTemplates;
class Collations;
class Declarations;
class ElementDispatcher;
class ExpressionCache;
class GlobalEvaluation;
class KeptTrees;
class KeyTables;
class NumberCounts;
class NumberFormats;
class ResultScopes;
class StartTags;
class StylesheetIndex;
class StylesheetModules;
class TemplateRules;
class Universes;
class XPathEvaluator;
struct ExpressionText;
struct ParsedExpression;

class XSLTProcessorBase {
 public:
  virtual ~XSLTProcessorBase();
  XSLTProcessorBase(const XSLTProcessorBase&) = delete;
  XSLTProcessorBase& operator=(const XSLTProcessorBase&) = delete;

  // --- the stack -----------------------------------------------------------------------------
  // One step of the top frame. False ends the run without a message. When the last frame has left
  // the stack, the result tree, which that frame owned, has become text.
  bool Step();
  const std::vector<TemplateFrame*>& CallStack() const { return callStack_; }
  TemplateFrame& TopFrame() const { return *callStack_.back(); }
  TemplateFrame& BottomFrame() const { return *callStack_.front(); }
  void PushFrame(TemplateFrame* frame) { callStack_.push_back(frame); }  // takes ownership
  // Moves the top frame to PoppedFrames; it is deleted at the end of the step.
  void PopFrame();
  // Runs the frame's instruction. A failure that Recover has answered counts as a success.
  bool RunGuarded(TemplateFrame& frame);
  // The largest number of frames that the driver allows. Templates that do next to nothing run
  // without frames as long as it would not be exceeded; 0, the default, lets all have theirs.
  void SetStackLimit(std::size_t frames) { stackLimit_ = frames; }
  bool HasRoom(std::size_t frames) const { return callStack_.size() + frames <= stackLimit_; }

  // --- expressions ---------------------------------------------------------------------------
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
  void ForgetUniverse(const XPathNode& root);  // for a tree that has been changed
  // The expression run from all nodes of the universe at once, in the order of the evaluation.
  XPathNodeList EvaluateOverUniverse(const ExpressionText& expression, XPathNode* contextNode,
                                     XPathNode* namespaceNode, XPathPatternKind patternKind);
  // The parsed form, from the cache; without a tree for a text that does not parse. It lives as
  // long as the run.
  const ParsedExpression& TryParse(const ExpressionText& expression, XPathPatternKind patternKind);

  // --- result and messages -------------------------------------------------------------------
  const struct OutputSettings& OutputSettings() const { return Serializer_.OutputSettings(); }
  // The text of the result, of the result so far during a run. Lives until the next step or run.
  const TQString& ResultText();
  OutputSerializer& Serializer() { return Serializer_; }
  bool MessagePending() const { return MessagePendingFlag; }
  TQString TakeMessage();

  // --- asked of the rooms above --------------------------------------------------------------
  // The tree of a document for document(), built once and kept to the end of the run; null when it
  // cannot be read.
  virtual XPathNode* LoadDocumentTree(const TQString& uri) = 0;
  // Null when it cannot be read, with the reason on standard error.
  virtual XTreeNode* LoadExternalDocument(const TQString& url) = 0;
  virtual std::unique_ptr<TreeModel> NewModel() = 0;
  // Whether a failed step has been dealt with by changing the stack.
  virtual bool Recover(const TQXSLTError& error) = 0;

  // --- state, named as everybody knows it ----------------------------------------------------
  XPathNode* StylesheetRoot = nullptr;
  XPathNode* SourceRoot = nullptr;
  XPathTreeBuilder* TreeBuilder = nullptr;
  std::unique_ptr<StylesheetIndex> Index;
  std::unique_ptr<XPathEvaluator> Evaluator;
  std::unique_ptr<Declarations> Declared;  // by the top-level elements that have run
  std::unique_ptr<KeptTrees> Kept;
  GlobalMap GlobalVariables;
  GlobalMap GlobalParameters;
  // Texts that stand side by side in the result tree may become one node. Nothing shows how many
  // there were, unless each is to be a CDATA section of its own. Known when the rules start.
  bool JoinsTexts = false;
  struct OutputSettings Settings;
  TQString TerminateMessage;
  bool MessagePendingFlag = false;
  TQString Message;

  // Borrowed; they outlive all frames.
  ElementDispatcher* Dispatcher = nullptr;
  TemplateRules* Rules = nullptr;
  KeyTables* Keys = nullptr;
  GlobalEvaluation* Globals = nullptr;
  ResultScopes* Scopes = nullptr;
  StartTags* Tags = nullptr;
  Collations* Collators = nullptr;
  NumberCounts* Counts = nullptr;
  NumberFormats* NumberFormatting = nullptr;
  StylesheetModules* Modules = nullptr;

 protected:
  XSLTProcessorBase();

  // Frames first, since they use all the rest.
  void ClearFrames();
  // Drops what expressions of a run left, and the declarations and kept trees.
  void ClearRun();
  // Makes everything anew for a run. `keys` answers key(); borrowed.
  void PrepareRun(XPathKeys* keys);
  void PushBottomFrame();

 private:
  struct Evaluation;

  void SerializeResult();
  const ParsedExpression& Parse(const ExpressionText& expression, XPathPatternKind patternKind,
                                XPathNode* errorNode);
  Evaluation InFrame(const ExpressionText& expression, const TemplateFrame& frame);
  template <class Evaluate>
  void RunEvaluation(const Evaluation& evaluation, Evaluate evaluate);
  XPathNode* TreeOf(XPathNode* stylesheetNode);

  std::vector<TemplateFrame*> callStack_;     // owned
  std::vector<TemplateFrame*> poppedFrames_;  // owned; left CallStack in the current step
  std::size_t stackLimit_ = 0;
  std::unique_ptr<Universes> universes_;
  std::unique_ptr<ExpressionCache> expressionCache_;
  std::unique_ptr<AttributeTemplates> attributeTemplates_;
  XPathKeys* keyLookup_ = nullptr;
  OutputSerializer Serializer_;
  std::int32_t lastTreeNumber_ = 0;  // of the document that lastTree_ is the root of
  XPathNode* lastTree_ = nullptr;
};

}  // namespace kelmora
