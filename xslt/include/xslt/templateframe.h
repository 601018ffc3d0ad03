// TemplateFrame: one entry of the processor's explicit call stack. Each frame holds exactly one
// active instruction; a child frame is pushed by the instruction of the frame below and shares its
// context list by pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "xmltree/xpathnode.h"
#include "xpath/xpathvalue.h"
#include "xslt/variablemap.h"

namespace kelmora {

class Instruction;
class TemplateRule;
struct ExpressionText;
class XSLTProcessorBase;

// An immutable shared set of interned URIs, compared by text; copies are free, adding makes a new
// set. Null stands for the empty set.
using URISet = std::shared_ptr<const std::vector<InternedURI>>;
bool Contains(const URISet& set, InternedURI uri);
void AddTo(URISet& set, const std::vector<InternedURI>& uris);

struct TemplateFrame {
  // The bottom frame.
  explicit TemplateFrame(XSLTProcessorBase* processor);
  // A child of `parent`: shares list, position, rule, root frame and variable maps.
  TemplateFrame(TemplateFrame* parent, XPathNode* outputNode);
  ~TemplateFrame();
  TemplateFrame(const TemplateFrame&) = delete;
  TemplateFrame& operator=(const TemplateFrame&) = delete;
  static void* operator new(std::size_t size);  // from a pool
  static void operator delete(void* frame, std::size_t size) noexcept;

  // One step of the frame: makes the instruction at first need, then Execute or Resume, or both for
  // an instruction that pushes no child. False ends the run without a message. Failures are raised
  // as TQXSLTError.
  bool Run();
  bool RunInstruction();

  XPathNode* ContextNode() const;  // NodeList[Position - 1], null outside of the list
  std::int32_t ContextSize() const { return static_cast<std::int32_t>(NodeList->size()); }
  // Evaluates in this frame's context; see XSLTProcessorBase::EvaluateExpression.
  void Evaluate(const ExpressionText& expression, XPathValue& value);
  bool EvaluateBoolean(const ExpressionText& expression);
  // As Evaluate, with the frame's own list taking the nodes of a node set result and Position
  // becoming 1, or 0 without a node. False when the result is no node set; the value is then in
  // `other` and the frame is as before. The list that the frame shared until then stays valid as
  // long as the parent frame.
  bool EvaluateIntoFrame(const ExpressionText& expression, XPathValue& other);
  void SetOwnNodeList(XPathNodeList list) {  // the frame drops what it owned and owns this
    OwnList = std::move(list);
    NodeList = &OwnList;
  }

  // The frame runs this rule; null: none, as in the body of xsl:for-each.
  void SetRule(TemplateRule* rule) { RuleCursor = CurrentRule = rule; }

  TemplateFrame* Parent = nullptr;
  TemplateFrame* RootFrame = nullptr;  // frame of the running template; the bottom frame outside
  TemplateRule* RuleCursor = nullptr;  // place in Rules: the rule itself, null for the end
  TemplateRule* CurrentRule = nullptr;
  bool Resumed = false;
  bool AllowUnknown = false;  // forward-compatible mode, inherited
  bool InFragment = false;    // OutputParent lies in a fragment, not in the result tree; inherited
  XPathNode* CurrentNode = nullptr;   // stylesheet node still to be started
  XPathNode* CallingNode = nullptr;   // stylesheet node being executed
  XPathNode* LastFinished = nullptr;  // CallingNode of the child frame that ended last
  XPathNode* Cursor = nullptr;        // child of CallingNode that runs or ran last
  std::unique_ptr<class Instruction> Instruction;
  XPathNodeList* NodeList = nullptr;  // the context node list: OwnList or that of another frame
  XPathNodeList OwnList;
  std::int32_t Position = -1;         // 1-based
  XPathNode* OutputParent = nullptr;  // where the next result node goes; not owned
  XPathNode* OutputRoot = nullptr;    // owned; root of the result tree, in the bottom frame alone
  VariableMap Variables;
  VariableMap Parameters;
  VariableMap PassedParameters;
  URISet ExcludedURIs;
  URISet ExtensionURIs;
  XSLTProcessorBase* Processor = nullptr;

 private:
  void MakeInstruction();
};

}  // namespace kelmora
