// Declarations of entities and notations.
#include <utility>

#include "dtd/dtdreader.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kNotSimple = u" \t\r\n(|,%=<>'\"";
constexpr View kSystem = u"SYSTEM";
constexpr View kPublic = u"PUBLIC";

}  // namespace

bool DtdReader::ReadEntity(const XTreeNode& node, const Place& place) {
  View name = node.GetName();
  const bool isParameter = name.starts_with(u'%');
  if (isParameter) name = TrimView(name.substr(1));
  if (!isParameter && (name == u"lt" || name == u"amp")) return true;
  EntityDecl& entity = DocumentModel::EnterEntity(
      isParameter ? model_.parameterEntities : model_.generalEntities, name);
  if (entity.fromPreviousPass && model_.pass > 1) entity.declared = true;
  if (entity.declared) return true;  // the first declaration binds
  entity.parameter = isParameter;
  return StoreValue(entity, node, place);
}

bool DtdReader::ReadNotation(const XTreeNode& node, const Place& place) {
  EntityDecl& notation = DocumentModel::EnterEntity(model_.notations, node.GetName());
  return notation.declared || StoreValue(notation, node, place);
}

bool DtdReader::StoreValue(EntityDecl& entity, const XTreeNode& node, const Place& place) {
  TQString value;
  const EntityExpander::Options options{.withParameterEntities = true, .normalised = true};
  if (!expander_.ExpandEntityReferences(&node, node.GetText(), value, options)) return false;
  value.TrimLeft(kXmlSpaces);
  value.TrimRight(kXmlSpaces);
  entity.sourceNode = &node;
  entity.baseUrl = place.url;
  entity.provisional = expander_.provisional;
  const bool isPublic = value.View().starts_with(kPublic);
  entity.external = isPublic || value.View().starts_with(kSystem);
  entity.publicText.Clear();
  if (isPublic) {
    const std::vector<View> words = QuotedWords(value);
    if (!words.empty()) entity.publicText = words.front();
  }
  if (!entity.external) {
    const int length = value.Length();
    const char16_t quote = length > 0 ? value[0] : u'\0';
    if (length < 2 || (quote != u'"' && quote != u'\'') || value[length - 1] != quote) {
      if (expander_.Postpone()) return true;
      return model_.Error().RecordError(ModelCode::BadName, &node, entity.name);
    }
    value = value.Mid(1, length - 2);
  }
  entity.simple = value.FindOneOf(kNotSimple) == TQString::kNotFound;
  if (entity.parameter && !entity.external) value = u" " + value + u" ";
  entity.value = std::move(value);
  entity.hasNormalised = false;
  entity.declared = true;
  return true;
}

}  // namespace kelmora
