// XPathContext: the state of a pipeline. Each stage reads the value in the input, leaves its own
// in the output and swaps the two.
//
// The input may be borrowed: a copy made for an operand reads the input of the context that it was
// made from, and a variable is read where it stands. A stage that needs to change the input takes
// a copy first. So a context costs no heap memory until a stage makes nodes.
#pragma once

#include <cstdint>
#include <vector>

#include "nodes/xpathvaluenode.h"
#include "syntax/xpathparsetree.h"
#include "tqcore/tqstring.h"
#include "xmltree/prefixmap.h"
#include "xpath/xpathexpression.h"
#include "xpath/xpathvalue.h"

namespace kelmora {

// What one call of Evaluate works with. It is taken from the expression when the call starts, so
// that the same expression object can be used anew while a host function runs.
struct XPathEvaluation {
  XPathExpression* expression = nullptr;
  const PrefixMap* prefixMap = nullptr;
  const XPathParseTree::Bindings* bindings = nullptr;
  const XPathVariables* variables = nullptr;
  XPathKeys* keyTable = nullptr;
  const DecimalFormatMap* decimalFormats = nullptr;
  XPathNode* documentNode = nullptr;
  XPathNode* current = nullptr;
  XPathNode* stylesheetNode = nullptr;
  XPathNode* stylesheetRoot = nullptr;
  bool xsltFunctions = false;
  XPathPatternKind patternKind = kNoPattern;

  XPathError errorCode = XPathError::None;
  std::int32_t errorFunction = -1;
  std::int32_t errorPosition = 0;
  bool errorPositionSet = false;

  std::vector<XPathNodeList>* spareLists = nullptr;

  // An empty list, with the memory of one that was given back. Give back what was taken, empty or
  // not.
  XPathNodeList TakeList();
  void GiveBack(XPathNodeList& list) {
    if (list.capacity() != 0) Keep(list);
  }

  // The root of absolute paths: found at the first request.
  XPathNode* Root();
  // False, with the error noted. The position of the first failure stays.
  bool Fail(XPathError code, std::int32_t position, std::int32_t function = -1);
  bool AllPrefixesAreBound() const { return bindings == nullptr || bindings->allBound; }

 private:
  void Keep(XPathNodeList& list);

  XPathNode* root_ = nullptr;
};

class XPathContext {
 public:
  // The mark in `lastStep` of an input that came from a variable with a result tree fragment.
  static constexpr char16_t kFragmentMark = u'$';

  XPathContext(XPathEvaluation& state, const XPathValue& input);
  // For an operand: everything is copied, and the input is read where it stands.
  XPathContext(const XPathContext& outer);
  XPathContext& operator=(const XPathContext&) = delete;
  ~XPathContext() {
    for (XPathValue& slot : slots_) evaluation->GiveBack(slot.nodes);
  }

  const XPathValue& Input() const { return *input_; }
  XPathValue& Output() { return slots_[output_]; }
  // The output becomes the input. An output without nodes leaves an empty node set as input; the
  // result is then false, which is no error.
  bool Swap();
  void BorrowInput(const XPathValue& value) { input_ = &value; }  // must outlive its use here
  // The input for keeps; the context is done with it.
  void MoveInputTo(XPathValue& value);
  XPathValue TakeInput() {
    XPathValue value;
    MoveInputTo(value);
    return value;
  }
  // The list of the output, with room.
  XPathNodeList& OutputNodes() {
    XPathNodeList& nodes = slots_[output_].nodes;
    if (nodes.capacity() == 0) nodes = evaluation->TakeList();
    return nodes;
  }
  void SortInput();  // into document order, positions from 1

  bool Fail(XPathError code, const XPathParseNode& node) const {
    return evaluation->Fail(code, node.position);
  }
  // No step of the tree can fail by its prefix or its axis.
  bool StepsCannotFail() const {
    return (inPredicate || evaluation->patternKind != kTemplatePattern) &&
           evaluation->AllPrefixesAreBound();
  }
  bool InputIsRefusedFragment() const { return lastStep == kFragmentMark && input_->IsFragment(); }

  char16_t lastStep = 0;
  std::int32_t position = 1;   // what position() returns
  std::int32_t inputSize = 0;  // nodes in the input, kept by Swap alone
  std::int32_t size = 0;       // what last() returns
  bool inPredicate = false;    // lifts the axis limit of patterns
  XPathEvaluation* evaluation;

 private:
  const XPathValue* input_;
  int output_ = 0;
  XPathValue slots_[2];
};

// A node set for the time of a scope, in memory that comes from the evaluation.
class NodeSetLease {
 public:
  explicit NodeSetLease(const XPathContext& context) : evaluation_(*context.evaluation) {
    value.nodes = evaluation_.TakeList();
  }
  ~NodeSetLease() { evaluation_.GiveBack(value.nodes); }
  NodeSetLease(const NodeSetLease&) = delete;
  NodeSetLease& operator=(const NodeSetLease&) = delete;

  XPathValue value;

 private:
  XPathEvaluation& evaluation_;
};

}  // namespace kelmora
