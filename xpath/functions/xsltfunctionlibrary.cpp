#include <string>

#include "functions/xpathfunctionlibrary.h"
#include "tqcore/tqtext.h"
#include "values/xpathnodeset.h"

namespace kelmora {
namespace {

struct SystemPropertyRow {
  std::u16string_view name;
  const char16_t* value;
};
constexpr SystemPropertyRow kSystemProperties[] = {
    {u"version", u"1.0"},
    {u"vendor", u"Kelmora GmbH & Kelmora, Inc."},
    {u"vendor-url", u"https://kelmora.example/"},
};

// The local part of a name in the XSLT namespace, empty for any other.
std::u16string_view XsltLocalName(const PrefixMap& map, std::u16string_view name) {
  if (name.find(u':') == std::u16string_view::npos) return {};
  InternedURI uri = map.Lookup(PrefixOf(name));
  return uri != nullptr && *uri == kXsltNamespace ? LocalPartOf(name) : std::u16string_view();
}

// All have ten digits, so that a name which ends in digits leads to no ambiguity.
std::int64_t NodeNumberOf(const XPathNode* node) {
  constexpr std::int64_t kFirstStamped = 1'000'000'000;
  constexpr std::int64_t kFirstUnstamped = 5'000'000'000;
  bool stamped = node->documentNumber > 0 && node->orderNumber > 0;
  return stamped ? kFirstStamped + node->orderNumber : kFirstUnstamped + node->NumberOfItsOwn();
}

void NumberFromOne(XPathNodeList& list) {
  std::int32_t position = 0;
  for (XPathNodeRef& entry : list) entry.position = ++position;
}

}  // namespace

// --- documents --------------------------------------------------------------------------------

XPathNode* XsltFunctionLibrary::Load(Context context, const TQString& uri,
                                     XPathNode* baseNode) const {
  XPathExpression& expression = *context.evaluation->expression;
  if (!uri.IsRelativePath(false)) return expression.LoadDocument(uri, baseNode);
  InternedURI base = baseNode ? baseNode->BaseURI() : nullptr;
  return expression.LoadDocument(uri.ResolveRelativePath(base ? *base : TQString(), TQString()),
                                 baseNode);
}

void XsltFunctionLibrary::LoadRelative(Context context, const TQString& uri,
                                       const XPathNodeList& base, XPathNodeList& roots) const {
  if (uri.IsEmpty()) return;
  XPathNode* baseNode = FirstInDocumentOrder(base);
  if (baseNode == nullptr) baseNode = context.evaluation->stylesheetNode;
  if (XPathNode* root = Load(context, uri, baseNode)) roots.emplace_back(root);
}

XPathNodeList XsltFunctionLibrary::Document(Call call, Context context) const {
  XPathOperand object;
  Argument(call, context, 0, object);
  XPathOperand base;
  bool hasBase = call.ArgumentCount() == 2;
  if (hasBase) {
    Argument(call, context, 1, base);
    if (base.value->kind != XPathValue::NodeSet || base.value->nodes.empty()) {
      Raise(XPathError::NotANodeSet, XPathFunction::document);
    }
  }
  XPathNodeList roots;
  if (object.value->kind == XPathValue::NodeSet) {
    TQString scratch;
    for (const XPathNodeRef& entry : object.value->nodes) {
      TQString uri(entry.node->StringValue(scratch));
      LoadRelative(context, uri, hasBase ? base.value->nodes : XPathNodeList{entry}, roots);
    }
  } else {
    TQString uri = ToString(*object.value);
    XPathNode* root = context.evaluation->stylesheetRoot;
    if (!uri.IsEmpty()) {
      XPathNode* baseNode =
          hasBase ? base.value->nodes.front().node : context.evaluation->stylesheetNode;
      root = Load(context, uri, baseNode);
      if (root == nullptr) Raise(XPathError::ExternalEntityNotFound, XPathFunction::document);
    }
    if (root != nullptr) roots.emplace_back(root);
  }
  RemoveDuplicates(roots);
  NumberFromOne(roots);
  return roots;
}

// --- keys and nodes ---------------------------------------------------------------------------

XPathNodeList XsltFunctionLibrary::Key(Call call, Context context) const {
  XPathEvaluation& evaluation = *context.evaluation;
  const XPathNodeList& input = context.Input().nodes;
  std::size_t index = static_cast<std::size_t>(context.position) - 1;
  XPathNode* node = nullptr;
  if (!input.empty()) node = input[index < input.size() ? index : 0].node;
  if (evaluation.current != nullptr) node = evaluation.current;

  TQString scratch;
  TQString name = ExpandName(TextArgument(call, context, 0, scratch), *evaluation.prefixMap);
  XPathOperand value;
  Argument(call, context, 1, value);
  if (evaluation.keyTable == nullptr || !evaluation.keyTable->HasKey(name)) {
    Raise(XPathError::InvalidKeyReference, XPathFunction::key);
  }
  XPathNodeList result;
  if (node == nullptr) return result;
  XPathNode* root = node->Root();
  int lists = 0;
  auto add = [&](std::u16string_view text) {
    const XPathNodeList* found = evaluation.keyTable->Lookup(name, root, text);
    if (found == nullptr) return;
    result.insert(result.end(), found->begin(), found->end());
    ++lists;
  };
  if (value.value->kind == XPathValue::NodeSet) {
    for (const XPathNodeRef& entry : value.value->nodes) add(entry.node->StringValue(scratch));
  } else {
    add(TextOf(*value.value, scratch));
  }
  if (lists > 1) RemoveDuplicates(result);
  NumberFromOne(result);
  return result;
}

XPathNodeList XsltFunctionLibrary::Current(Call, Context context) const {
  XPathNodeList result;
  if (context.evaluation->current != nullptr) result.emplace_back(context.evaluation->current, 1);
  return result;
}

TQString XsltFunctionLibrary::UnparsedEntityUri(Call, Context) const {
  return {};
}

TQString XsltFunctionLibrary::GenerateId(Call call, Context context) const {
  XPathOperand operand;
  const XPathValue& value = ArgumentOrInput(call, context, operand);
  if (value.kind != XPathValue::NodeSet) {
    Raise(XPathError::NotANodeSet, XPathFunction::generateId);
  }
  const XPathNode* node = FirstInDocumentOrder(value.nodes);
  if (node == nullptr) return {};
  TQString id(node->GetName());
  XPathValue number;
  number.SetNumber(static_cast<double>(NodeNumberOf(node)));
  id += ToString(number);
  return id;
}

// --- number formats ---------------------------------------------------------------------------

TQString XsltFunctionLibrary::FormatNumber(Call call, Context context) const {
  XPathEvaluation& evaluation = *context.evaluation;
  double number = NumberArgument(call, context, 0);
  TQString scratch;
  std::u16string_view pattern = TextArgument(call, context, 1, scratch);
  TQString nameScratch;
  std::u16string_view name;
  if (call.ArgumentCount() == 3) {
    name = TextArgument(call, context, 2, nameScratch);
    bool prefixed = name.find(u':') != std::u16string_view::npos;
    if (prefixed && evaluation.prefixMap->Find(PrefixOf(name)) == nullptr) {
      Raise(XPathError::InvalidPrefix, XPathFunction::formatNumber);
    }
  }
  const DecimalFormat* format = nullptr;
  if (evaluation.decimalFormats != nullptr) {
    auto found = evaluation.decimalFormats->find(ExpandName(name, *evaluation.prefixMap).View());
    if (found != evaluation.decimalFormats->end()) format = &found->second;
  }
  if (format == nullptr) {
    Raise(name.empty() ? XPathError::InvalidFormatPattern : XPathError::UnknownDecimalFormat,
          XPathFunction::formatNumber);
  }
  NumberPattern parsed(*format);
  if (!parsed.ParsePattern(pattern)) {
    Raise(XPathError::InvalidFormatPattern, XPathFunction::formatNumber);
  }
  return parsed.FormatNumber(number);
}

// --- what the processor knows -----------------------------------------------------------------

TQString XsltFunctionLibrary::NameArgument(Call call, Context context,
                                           XPathFunction function) const {
  TQString scratch;
  std::u16string_view name = TextArgument(call, context, 0, scratch);
  if (!IsQName(name)) Raise(XPathError::ArgumentNotAQName, function);
  return TQString(name);
}

TQString XsltFunctionLibrary::SystemProperty(Call call, Context context) const {
  TQString name = NameArgument(call, context, XPathFunction::systemProperty);
  std::u16string_view local = XsltLocalName(*context.evaluation->prefixMap, name);
  for (const SystemPropertyRow& row : kSystemProperties) {
    if (row.name == local) return row.value;
  }
  return {};
}

bool XsltFunctionLibrary::ElementAvailable(Call call, Context context) const {
  TQString name = NameArgument(call, context, XPathFunction::elementAvailable);
  std::u16string_view local = XsltLocalName(*context.evaluation->prefixMap, name);
  return !local.empty() && context.evaluation->expression->HasElement(local);
}

bool XsltFunctionLibrary::FunctionAvailable(Call call, Context context) const {
  TQString name = NameArgument(call, context, XPathFunction::functionAvailable);
  const XPathFunctionRow* row = FindFunction(name);
  return row != nullptr && row->called == XPathFunctionRow::Called::Called;
}

}  // namespace kelmora
