#include "functions/xpathfunctionlibrary.h"

#include <cmath>
#include <limits>

#include "tqcore/tqtext.h"
#include "unicode/unicodedata.h"
#include "values/xpathnodeset.h"
#include "xmltree/xpathtreebuilder.h"

namespace kelmora {
namespace {

// The library has no data: one is made for each call.
template <auto operation>
auto RunOperation(const XPathFunctionCallNode& call, const XPathContext& context) {
  return (XsltFunctionLibrary().*operation)(call, context);
}

using Row = XPathFunctionRow;
const Row kFunctions[] = {
#define ROW(isXslt, id, name, called, Operation, fewest, most, fails, reads) \
  {XPathFunction::id,                                                        \
   name,                                                                     \
   Row::Called::called,                                                      \
   isXslt,                                                                   \
   RunOperation<&XsltFunctionLibrary::Operation>,                            \
   fewest,                                                                   \
   most,                                                                     \
   Row::Fails::fails,                                                        \
   Row::Reads::reads},
#define XPATH_FUNCTION(number, id, name, called, Operation, Result, fewest, most, fails, reads) \
  ROW(false, id, name, called, Operation, fewest, most, fails, reads)
#define XSLT_FUNCTION(number, id, name, called, Operation, Result, fewest, most, fails, reads) \
  ROW(true, id, name, called, Operation, fewest, most, fails, reads)
#include "xpath/xpathfunctions.def"
#undef XSLT_FUNCTION
#undef XPATH_FUNCTION
#undef ROW
};

}  // namespace

const XPathFunctionRow* FindFunction(std::u16string_view name) {
  for (const XPathFunctionRow& row : kFunctions) {
    if (row.name == name) return &row;
  }
  return nullptr;
}

std::u16string_view NameOfFunction(std::int32_t number) {
  for (const Row& row : kFunctions) {
    if (static_cast<std::int32_t>(row.function) == number) return row.name;
  }
  return {};
}

// --- errors, arguments, conversions -----------------------------------------------------------

void XPathFunctionLibrary::Raise(XPathError code, XPathFunction function) const {
  throw TQXPathFunctionLibraryException{code, static_cast<std::int32_t>(function)};
}

void XPathFunctionLibrary::RaiseAgain(Context context) const {
  throw TQXPathFunctionLibraryException{context.evaluation->errorCode,
                                        context.evaluation->errorFunction};
}

void XPathFunctionLibrary::Argument(Call call, Context context, int index,
                                    XPathOperand& operand) const {
  if (!OperandValue(call.Argument(index), context, operand)) RaiseAgain(context);
}

bool XPathFunctionLibrary::BooleanArgument(Call call, Context context, int index) const {
  bool value = false;
  if (!OperandBoolean(call.Argument(index), context, value)) RaiseAgain(context);
  return value;
}

double XPathFunctionLibrary::NumberArgument(Call call, Context context, int index) const {
  double value = 0;
  if (!OperandNumber(call.Argument(index), context, value)) RaiseAgain(context);
  return value;
}

std::u16string_view XPathFunctionLibrary::TextArgument(Call call, Context context, int index,
                                                       TQString& scratch) const {
  std::u16string_view text;
  if (!OperandText(call.Argument(index), context, scratch, text)) RaiseAgain(context);
  return text;
}

const XPathValue& XPathFunctionLibrary::ArgumentOrInput(Call call, Context context,
                                                        XPathOperand& operand) const {
  if (call.ArgumentCount() == 0) return context.Input();
  Argument(call, context, 0, operand);
  return *operand.value;
}

std::u16string_view XPathFunctionLibrary::TextOrInput(Call call, Context context,
                                                      TQString& scratch) const {
  if (call.ArgumentCount() == 0) return TextOf(context.Input(), scratch);
  return TextArgument(call, context, 0, scratch);
}

TQString XPathFunctionLibrary::ToString(const XPathValue& value) const {
  return kelmora::ToString(value);
}
bool XPathFunctionLibrary::ToBoolean(const XPathValue& value) const {
  return kelmora::ToBoolean(value);
}
double XPathFunctionLibrary::ToNumber(const XPathValue& value) const {
  return kelmora::ToNumber(value);
}

// --- node sets --------------------------------------------------------------------------------

double XPathFunctionLibrary::Last(Call, Context context) const {
  return context.size;
}
double XPathFunctionLibrary::Position(Call, Context context) const {
  return context.position;
}

double XPathFunctionLibrary::Count(Call call, Context context) const {
  std::size_t counted = 0;
  if (call.Argument(0).effective->CountNodes(context, counted)) {
    return static_cast<double>(counted);
  }
  XPathOperand operand;
  Argument(call, context, 0, operand);
  if (operand.value->kind != XPathValue::NodeSet) {
    Raise(XPathError::NotANodeSet, XPathFunction::count);
  }
  return static_cast<double>(operand.value->nodes.size());
}

// No call reaches it: the name is not among those that are compared.
XPathNodeList XPathFunctionLibrary::Id(Call call, Context context) const {
  XPathOperand operand;
  Argument(call, context, 0, operand);
  return {};
}

// The first node in the present order, not in document order.
XPathNode* XPathFunctionLibrary::FirstNode(Call call, Context context) const {
  XPathOperand operand;
  const XPathValue& value = ArgumentOrInput(call, context, operand);
  return value.nodes.empty() ? nullptr : value.nodes.front().node;
}

std::u16string_view XPathFunctionLibrary::LocalName(Call call, Context context) const {
  const XPathNode* node = FirstNode(call, context);
  if (node == nullptr || node->IsText()) return {};
  std::u16string_view name = node->GetLocalName();
  return name == u"xmlns" ? std::u16string_view() : name;
}

std::u16string_view XPathFunctionLibrary::NamespaceUri(Call call, Context context) const {
  const XPathNode* node = FirstNode(call, context);
  if (node == nullptr || node->namespaceURI == nullptr) return {};
  return *node->namespaceURI;
}

std::u16string_view XPathFunctionLibrary::Name(Call call, Context context) const {
  const XPathNode* node = FirstNode(call, context);
  if (node == nullptr) return {};
  return node->kind == XPathNodeKind::Namespace ? node->GetLocalName() : node->GetName();
}

// --- truth values -----------------------------------------------------------------------------

bool XPathFunctionLibrary::Boolean(Call call, Context context) const {
  return BooleanArgument(call, context, 0);
}
bool XPathFunctionLibrary::Not(Call call, Context context) const {
  return !BooleanArgument(call, context, 0);
}
bool XPathFunctionLibrary::True(Call, Context) const {
  return true;
}
bool XPathFunctionLibrary::False(Call, Context) const {
  return false;
}

namespace {

bool IsXmlLang(const XPathNode& node) {
  return node.kind == XPathNodeKind::Attribute && node.namespaceURI != nullptr &&
         *node.namespaceURI == kXmlNamespace && node.GetLocalName() == u"lang";
}

std::u16string_view LanguageAt(const XPathNode* node) {
  for (; node != nullptr; node = node->parent) {
    if (IsXmlLang(*node)) return node->GetValue();
    if (node->kind != XPathNodeKind::Element) continue;
    for (const XPathNode* child = node->firstChild; child; child = child->next) {
      if (child->kind != XPathNodeKind::Attribute && child->kind != XPathNodeKind::Namespace) break;
      if (IsXmlLang(*child)) return child->GetValue();
    }
  }
  return {};
}

}  // namespace

// No hyphen is asked for behind the part that matches.
bool XPathFunctionLibrary::Lang(Call call, Context context) const {
  const XPathNodeList& input = context.Input().nodes;
  TQString scratch;
  std::u16string_view wanted = TextArgument(call, context, 0, scratch);
  std::u16string_view language = LanguageAt(input.empty() ? nullptr : input.front().node);
  if (language.size() < wanted.size()) return false;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (LowerCase(language[i]) != LowerCase(wanted[i])) return false;
  }
  return true;
}

// --- numbers ----------------------------------------------------------------------------------

double XPathFunctionLibrary::Number(Call call, Context context) const {
  if (call.ArgumentCount() == 0) return ToNumber(context.Input());
  return NumberArgument(call, context, 0);
}

namespace {

bool IsLetter(char16_t unit) {
  if (unit < 128) return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
  return GeneralCategory(unit)[0] == u'L';
}

// As much of the text as makes a number; any letter makes it none.
double SummandOf(std::u16string_view text) {
  for (char16_t unit : text) {
    if (IsLetter(unit)) return std::numeric_limits<double>::quiet_NaN();
  }
  while (!text.empty() && IsWideSpace(text.front())) text.remove_prefix(1);
  std::size_t consumed = 0;
  double number = ParseDouble(text, &consumed);
  return consumed == 0 ? 0 : number;
}

}  // namespace

double XPathFunctionLibrary::Sum(Call call, Context context) const {
  XPathOperand operand;
  Argument(call, context, 0, operand);
  if (operand.value->kind != XPathValue::NodeSet) return ToNumber(*operand.value);
  double total = 0;
  TQString scratch;
  for (const XPathNodeRef& entry : operand.value->nodes) {
    total += SummandOf(entry.node->StringValue(scratch));
  }
  return total;
}

double XPathFunctionLibrary::Floor(Call call, Context context) const {
  return std::floor(NumberArgument(call, context, 0));
}
double XPathFunctionLibrary::Ceiling(Call call, Context context) const {
  return std::ceil(NumberArgument(call, context, 0));
}

double XPathFunctionLibrary::Round(double number) const {
  if (!std::isfinite(number) || number == 0) return number;
  if (number >= -0.5 && number < 0) return -0.0;
  return std::floor(number + 0.5);
}

double XPathFunctionLibrary::RoundFunction(Call call, Context context) const {
  return Round(NumberArgument(call, context, 0));
}

}  // namespace kelmora
