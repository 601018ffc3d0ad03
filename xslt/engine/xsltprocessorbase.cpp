// Steps of a run. A step runs the top frame once; frames that leave the stack are deleted when the
// step is over, so an instruction may use its frame up to its return. When the last frame leaves,
// the result tree, which that frame owns, becomes text.
#include "xslt/xsltprocessorbase.h"

#include <utility>

#include "base/parsedexpression.h"
#include "engine/attributetemplates.h"
#include "engine/declarations.h"
#include "engine/kepttrees.h"
#include "engine/universes.h"
#include "engine/xpathevaluator.h"
#include "names/stylesheetindex.h"
#include "tqcore/tqtext.h"

namespace kelmora {

XSLTProcessorBase::XSLTProcessorBase() : Index(std::make_unique<StylesheetIndex>()) {}

XSLTProcessorBase::~XSLTProcessorBase() = default;

void XSLTProcessorBase::ClearFrames() {
  for (std::vector<TemplateFrame*>* frames : {&callStack_, &poppedFrames_}) {
    while (!frames->empty()) {
      delete frames->back();
      frames->pop_back();
    }
  }
}

void XSLTProcessorBase::ClearRun() {
  GlobalVariables.Clear();
  GlobalParameters.Clear();
  Evaluator.reset();
  universes_.reset();
  attributeTemplates_.reset();
  expressionCache_.reset();
  lastTree_ = nullptr;
  Declared.reset();
  Kept.reset();
}

void XSLTProcessorBase::PrepareRun(XPathKeys* keys) {
  keyLookup_ = keys;
  expressionCache_ = std::make_unique<ExpressionCache>();
  attributeTemplates_ = std::make_unique<AttributeTemplates>();
  universes_ = std::make_unique<Universes>();
  Evaluator = std::make_unique<XPathEvaluator>(this);
  Declared = std::make_unique<Declarations>();
  Kept = std::make_unique<KeptTrees>();
  JoinsTexts = false;
  MessagePendingFlag = false;
  TerminateMessage.Clear();
  Message.Clear();
  Settings.Reset();
  Serializer_.ClearText();
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

bool XSLTProcessorBase::RunGuarded(TemplateFrame& frame) {
  try {
    return frame.RunInstruction();
  } catch (const TQXSLTError& error) {
    if (!Recover(error)) throw;
  }
  return true;
}

void XSLTProcessorBase::PopFrame() {
  poppedFrames_.push_back(callStack_.back());
  callStack_.pop_back();
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

}  // namespace kelmora
