#include "engine/attributetemplates.h"

#include <utility>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

constexpr bool IsQuote(char16_t unit) {
  return unit == u'"' || unit == u'\'';
}

class TemplateParser {
 public:
  TemplateParser(std::u16string_view text, XPathNode* holder) : text_(text), holder_(holder) {}

  AttributeTemplate Run() {
    while (at_ < text_.size() && !failed_) {
      const char16_t unit = text_[at_];
      if (IsQuote(unit)) {
        CopyQuoted();
      } else if (unit != u'{' && unit != u'}') {
        literal_ += unit;
        ++at_;
      } else if (at_ + 1 < text_.size() && text_[at_ + 1] == unit) {
        literal_ += unit;
        at_ += 2;
      } else {
        TakeExpression(unit);
      }
    }
    EndLiteral();
    if (failed_) parts_.push_back({.kind = TemplatePart::Fault, .literal = {}, .expression = {}});
    return std::move(parts_);
  }

 private:
  void CopyQuoted() {
    const std::size_t end = FindUnit(text_, text_[at_], at_ + 1);
    const std::size_t count = end == kNone ? kNone : end + 1 - at_;
    literal_ += text_.substr(at_, count);
    at_ = end == kNone ? text_.size() : end + 1;
  }

  void TakeExpression(char16_t unit) {
    const std::size_t end = unit == u'{' ? FindClosing(at_ + 1) : kNone;
    failed_ = end == kNone;
    if (failed_) return;
    EndLiteral();
    TemplatePart part{.kind = TemplatePart::Expression, .literal = {}, .expression = {}};
    part.expression.Text = text_.substr(at_ + 1, end - at_ - 1);
    part.expression.Holder = holder_;
    parts_.push_back(std::move(part));
    at_ = end + 1;
  }

  // The "}" that ends an expression; none when the text ends or a "{" comes first.
  std::size_t FindClosing(std::size_t at) const {
    while (at < text_.size()) {
      const char16_t unit = text_[at];
      if (unit == u'}') return at;
      if (unit == u'{') return kNone;
      if (IsQuote(unit)) {
        at = FindUnit(text_, unit, at + 1);
        if (at == kNone) return kNone;
      }
      ++at;
    }
    return kNone;
  }

  void EndLiteral() {
    if (literal_.IsEmpty()) return;
    parts_.push_back({.kind = TemplatePart::Literal,
                      .literal = std::exchange(literal_, TQString()),
                      .expression = {}});
  }

  std::u16string_view text_;
  XPathNode* holder_;
  std::size_t at_ = 0;
  bool failed_ = false;
  TQString literal_;
  AttributeTemplate parts_;
};

}  // namespace

AttributeTemplate ParseAttributeTemplate(std::u16string_view text, XPathNode* holder) {
  return TemplateParser(text, holder).Run();
}

const AttributeTemplate& AttributeTemplates::Find(XPathNode* attribute) {
  auto& place = templates_[attribute];
  if (place == nullptr) {
    place = std::make_unique<const AttributeTemplate>(
        ParseAttributeTemplate(attribute->GetValue(), attribute));
  }
  return *place;
}

}  // namespace kelmora
