// An expression, parsed and evaluated over a small document, as expression and as pattern.
#include "fuzz.h"
#include "xpath/xpathexpression.h"

namespace {

constexpr std::string_view kDocument =
    "<a x='1' xmlns:p='u'><b id='1'>one</b><b id='2'><p:c p:d='3'/>two</b><!--c--><?p q?>"
    "<e><b>3</b><b/></e></a>";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmora;
  static XPathTreeBuilder builder;
  static const fuzz::Document document(builder, kDocument);
  PrefixMap prefixes;
  prefixes.Set(u"p", builder.InternURI(u"u"));
  const TQString text = FromNative(fuzz::Text(data, size));
  for (const XPathPatternKind kind : {kNoPattern, kTemplatePattern}) {
    XPathExpression expression;
    expression.SetExpression(&prefixes, text, kind);
    expression.SetXsltFunctions(true);
    if (!expression.Parse(true, kExprGrammar)) continue;
    DecimalFormatMap formats;
    formats[TQString()] = DecimalFormat();
    expression.SetDecimalFormats(&formats);
    expression.SetCurrent(document.Root());
    XPathValue value;
    if (expression.Evaluate(document.Root(), document.Root(), value)) ToString(value);
  }
  return 0;
}
