// Instruction: what runs one stylesheet node. The object lives as long as its frame. It never
// calls another instruction: it pushes a frame and returns, and gets control again through Resume
// when that frame has left the stack. All state between steps lies in its fields and its frame, so
// every instruction is a small state machine; each class says its states in a comment.
//
// This room holds what runs: frames, steps, instructions, the evaluation of expressions for them,
// and the making of result nodes.
#pragma once

#include <memory>

#include "base/sizepool.h"
#include "names/xsltnames.h"
#include "tqcore/tqstring.h"
#include "xmltree/xpathnode.h"
#include "xslt/templateframe.h"
#include "xslt/xsltprocessorbase.h"

namespace kelmora {

struct ElementRecord;

class Instruction {
 public:
  explicit Instruction(XSLTProcessorBase* processor) : Processor(processor) {}
  virtual ~Instruction() = default;
  // From a pool by size.
  static void* operator new(std::size_t size) { return SizePool::Allocate(size); }
  static void operator delete(void* instruction, std::size_t size) noexcept {
    SizePool::Free(instruction, size);
  }

  // The first step, and each later one. False ends the run at once; failures are raised.
  virtual bool Execute() = 0;
  virtual bool Resume();  // finishes the frame

  XSLTProcessorBase* Processor;
  XsltElement ElementCode = XsltElement::None;
  XPathNode* OutputNode = nullptr;  // receives the results of this instruction and its children
  const ElementRecord* Record = nullptr;

 protected:
  // The top frame, which is this instruction's while it runs.
  TemplateFrame& Frame() const { return Processor->TopFrame(); }
  // Whether texts side by side may become one node where the results go.
  bool JoinsTexts() const { return Processor->JoinsTexts && !Frame().InFragment; }
  // How every Execute begins: Resumed is set, and CurrentNode becomes CallingNode and LastFinished.
  // Returns that node.
  XPathNode* Begin();
  // A child frame for a node of the stylesheet; also sets Cursor of this frame. The second form
  // sends its results into a fragment.
  TemplateFrame* PushChild(XPathNode* node);
  TemplateFrame* PushChild(XPathNode* node, XPathNode* fragment);
  void RunChildren();  // the standard tail of Execute: the first content child, if there is one
  bool NextChild();    // the standard Resume: the next content child, else the end
  virtual void EndChildren();  // what NextChild does at the end
  void Finish();               // pops the frame; the frame below learns of it by LastFinished
  // A new fragment root with the scope in force at OutputNode; the caller owns it.
  XPathNode* MakeFragmentRoot() const;
  XsltElement CodeOf(const XPathNode* node) const;  // the element code of a stylesheet node
};

// The first child that is no attribute, declaration, processing instruction or comment.
XPathNode* FirstContent(const XPathNode* node);
// The first child that is no declaration, processing instruction or comment: attributes count.
XPathNode* FirstLiteral(const XPathNode* node);
// The next sibling that is no declaration, processing instruction or comment.
XPathNode* NextContent(const XPathNode* node);
bool IsWithin(const XPathNode* ancestor, const XPathNode* node);  // proper ancestor
// The first attribute child of that local name in no namespace.
XPathNode* FindAttribute(const XPathNode* node, std::u16string_view localName);

// Makes the instruction of an element code (see elementcodes.def); code 1 and codes without a class
// of their own make a LiteralInstruction.
std::unique_ptr<Instruction> MakeInstruction(XsltElement elementCode, XSLTProcessorBase* processor);
std::unique_ptr<Instruction> MakeUseAttributeSetsInstruction(XSLTProcessorBase* processor);
std::unique_ptr<Instruction> MakeFallbackHostInstruction(XSLTProcessorBase* processor);

}  // namespace kelmora
