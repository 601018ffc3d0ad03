#include "nodes/xpathcontext.h"

namespace kelmora {

XPathNode* XPathEvaluation::Root() {
  if (root_ == nullptr && documentNode != nullptr) {
    XPathNode* top = documentNode->Root();
    if (top->kind == XPathNodeKind::Root) root_ = top;
  }
  return root_;
}

XPathNodeList XPathEvaluation::TakeList() {
  XPathNodeList list;
  if (spareLists->empty()) {
    constexpr std::size_t kFirstCapacity = 8;
    list.reserve(kFirstCapacity);
  } else {
    list.swap(spareLists->back());
    spareLists->pop_back();
  }
  return list;
}

void XPathEvaluation::Keep(XPathNodeList& list) {
  constexpr std::size_t kMostKept = 16;
  constexpr std::size_t kLargestKept = 4096;
  if (spareLists->size() >= kMostKept || list.capacity() > kLargestKept) return;
  list.clear();
  spareLists->push_back(std::move(list));
}

bool XPathEvaluation::Fail(XPathError code, std::int32_t position, std::int32_t function) {
  errorCode = code;
  errorFunction = function;
  if (!errorPositionSet) errorPosition = position;
  errorPositionSet = true;
  return false;
}

XPathContext::XPathContext(XPathEvaluation& state, const XPathValue& input)
    : inputSize(static_cast<std::int32_t>(input.nodes.size())),
      evaluation(&state),
      input_(&input) {}

XPathContext::XPathContext(const XPathContext& outer)
    : lastStep(outer.lastStep),
      position(outer.position),
      inputSize(outer.inputSize),
      size(outer.size),
      inPredicate(outer.inPredicate),
      evaluation(outer.evaluation),
      input_(outer.input_) {}

bool XPathContext::Swap() {
  XPathValue& made = slots_[output_];
  XPathValue& other = slots_[1 - output_];
  other.Clear();
  if (made.kind == XPathValue::NodeSet && made.nodes.empty()) {
    input_ = &other;
    inputSize = 0;
    return false;
  }
  input_ = &made;
  output_ = 1 - output_;
  inputSize = static_cast<std::int32_t>(made.nodes.size());
  return true;
}

void XPathContext::MoveInputTo(XPathValue& value) {
  XPathValue& own = slots_[1 - output_];
  if (input_ != &own) {
    value.nodes.swap(slots_[output_].nodes);  // for its memory
    value = *input_;
    return;
  }
  value.kind = own.kind;
  value.boolean = own.boolean;
  value.number = own.number;
  value.nodes.swap(own.nodes);
  value.string = static_cast<TQString&&>(own.string);
}

void XPathContext::SortInput() {
  if (input_->kind != XPathValue::NodeSet) return;
  XPathValue& own = slots_[1 - output_];
  if (input_ != &own) {
    own = *input_;
    input_ = &own;
  }
  SortAndNumber(own.nodes);
}

}  // namespace kelmora
