#include "xslt/templateframe.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/expressiontext.h"
#include "base/sizepool.h"
#include "engine/instruction.h"
#include "names/stylesheetindex.h"
#include "xslt/tqxslterror.h"

namespace kelmora {

bool Contains(const URISet& set, InternedURI uri) {
  if (set == nullptr || uri == nullptr) return false;
  return std::ranges::any_of(*set, [uri](InternedURI member) {
    return member == uri || (member != nullptr && *member == *uri);
  });
}

void AddTo(URISet& set, const std::vector<InternedURI>& uris) {
  const auto isNew = [&set](InternedURI uri) { return uri != nullptr && !Contains(set, uri); };
  if (std::ranges::none_of(uris, isNew)) return;
  auto larger = set == nullptr ? std::make_shared<std::vector<InternedURI>>()
                               : std::make_shared<std::vector<InternedURI>>(*set);
  std::ranges::copy_if(uris, std::back_inserter(*larger), isNew);
  set = std::move(larger);
}

TemplateFrame::TemplateFrame(XSLTProcessorBase* processor)
    : RootFrame(this), Processor(processor) {}

TemplateFrame::TemplateFrame(TemplateFrame* parent, XPathNode* outputNode)
    : Parent(parent),
      RootFrame(parent->RootFrame),
      RuleCursor(parent->RuleCursor),
      CurrentRule(parent->CurrentRule),
      AllowUnknown(parent->AllowUnknown),
      InFragment(parent->InFragment),
      NodeList(parent->NodeList),
      Position(parent->Position),
      OutputParent(outputNode),
      Variables(parent->Variables),
      Parameters(parent->Parameters),
      PassedParameters(parent->PassedParameters),
      ExcludedURIs(parent->ExcludedURIs),
      ExtensionURIs(parent->ExtensionURIs),
      Processor(parent->Processor) {}

TemplateFrame::~TemplateFrame() {
  if (OutputRoot != nullptr) XPathNode::DeleteTree(OutputRoot);
}

void* TemplateFrame::operator new(std::size_t size) {
  return SizePool::Allocate(size);
}

void TemplateFrame::operator delete(void* frame, std::size_t size) noexcept {
  SizePool::Free(frame, size);
}

XPathNode* TemplateFrame::ContextNode() const {
  if (NodeList == nullptr || Position < 1 || Position > ContextSize()) return nullptr;
  return (*NodeList)[static_cast<std::size_t>(Position) - 1].node;
}

void TemplateFrame::Evaluate(const ExpressionText& expression, XPathValue& value) {
  Processor->EvaluateExpression(expression, *this, value);
}

bool TemplateFrame::EvaluateBoolean(const ExpressionText& expression) {
  return Processor->EvaluateToBoolean(expression, *this);
}

bool TemplateFrame::EvaluateIntoFrame(const ExpressionText& expression, XPathValue& other) {
  Evaluate(expression, other);
  if (other.kind != XPathValue::NodeSet) return false;
  SetOwnNodeList(std::move(other.nodes));
  Position = NodeList->empty() ? 0 : 1;
  return true;
}

namespace {

// The attribute use-attribute-sets runs as an instruction, of a literal result element in the XSLT
// namespace, of an element of XSLT in none.
bool RunsAttributeSets(const XPathNode* node) {
  return node->kind == XPathNodeKind::Attribute &&
         XsltAttributeNames::Code(node) == XsltAttribute::UseAttributeSets &&
         (node->namespaceURI != nullptr || IsXsltURI(node->parent->namespaceURI));
}

}  // namespace

void TemplateFrame::MakeInstruction() {
  // A stylesheet that was read as a DTD has no element to start with.
  if (CurrentNode == nullptr) throw TQXSLTError(XsltCode::UnexpectedFailure, nullptr);
  const StylesheetIndex::Entry entry = Processor->Index->Find(CurrentNode);
  if (entry.code != XsltElement::Literal) {
    Instruction = kelmora::MakeInstruction(entry.code, Processor);
  } else if (RunsAttributeSets(CurrentNode)) {
    Instruction = MakeUseAttributeSetsInstruction(Processor);
  } else if (CurrentNode->kind == XPathNodeKind::Element && IsXsltURI(CurrentNode->namespaceURI)) {
    if (Parent == nullptr || !Parent->AllowUnknown) {
      throw TQXSLTError(XsltCode::UnexpectedElement, CurrentNode);
    }
    Instruction = MakeFallbackHostInstruction(Processor);
  } else {
    Instruction = kelmora::MakeInstruction(XsltElement::Literal, Processor);
  }
  Instruction->ElementCode = entry.code;
  Instruction->Record = entry.record;
  Instruction->OutputNode = OutputParent;
}

bool TemplateFrame::RunInstruction() {
  if (Resumed) return Instruction->Resume();
  if (!Instruction->Execute()) return false;
  // Without a child on top, the next step would come back here; nothing happens in between.
  const bool waits = Processor->CallStack().empty() || &Processor->TopFrame() != this;
  return waits || Instruction->Resume();
}

bool TemplateFrame::Run() {
  if (Instruction == nullptr) MakeInstruction();
  const bool succeeded = Processor->RunGuarded(*this);
  if (succeeded) OutputParent = Instruction->OutputNode;
  return succeeded;
}

}  // namespace kelmora
