// XPathEvaluator: the expression object of a run, with what XSLT adds to XPath: document(), and the
// name of a variable that was not found, which lets a global be evaluated early.
#pragma once

#include "tqcore/tqstring.h"
#include "xpath/xpathexpression.h"

namespace kelmora {

struct TemplateFrame;
class XSLTProcessorBase;

class XPathEvaluator final : public XPathExpression {
 public:
  explicit XPathEvaluator(XSLTProcessorBase* processor);

  void OnMissingVariable(std::u16string_view key) override;
  XPathNode* LoadDocument(const TQString& uri, XPathNode* baseNode) override;
  bool HasElement(std::u16string_view localName) const override;

  // The expanded name of the variable that the last evaluation missed; empty when it missed none.
  const TQString& MissingVariable() const { return missingVariable_; }
  void ForgetMissingVariable() { missingVariable_.Clear(); }

 private:
  XSLTProcessorBase* processor_;
  TQString missingVariable_;
};

// The bindings visible from a frame: local variables hide local parameters, these the globals.
class FrameVariables final : public XPathVariables {
 public:
  explicit FrameVariables(const XSLTProcessorBase& processor, const TemplateFrame& frame)
      : processor_(processor), frame_(frame) {}
  const XPathValue* Find(std::u16string_view key) const override;

 private:
  const XSLTProcessorBase& processor_;
  const TemplateFrame& frame_;
};

}  // namespace kelmora
