// Entities and notations: their declarations, and the replacement of references.
//
// A replacement text is stored with the references inside it already replaced, as far as they were
// known, and it is not looked at again when it is inserted. So a text cannot grow without end, but
// it can multiply from declaration to declaration: kEntityTextLimit bounds the sum.
#include <algorithm>
#include <utility>

#include "dtd/dtdreader.h"
#include "tqcore/tqtext.h"
#include "xmltree/sourcewriter.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

struct PredefinedEntity {
  View name;
  View value;
};
// The first two expand to references, so that no character of markup comes out of them.
constexpr PredefinedEntity kPredefined[] = {
    {u"lt", u"&#60;"}, {u"amp", u"&#38;"}, {u"gt", u">"}, {u"apos", u"'"}, {u"quot", u"\""},
};
constexpr View kNotSimple = u" \t\r\n(|,%=<>'\"";
constexpr View kSystem = u"SYSTEM";
constexpr View kPublic = u"PUBLIC";

EntityDecl& Enter(DocumentModel::EntityMap& table, View name) {
  auto& entry = table[TQString(name)];
  if (entry == nullptr) {
    entry = std::make_unique<EntityDecl>();
    entry->name = name;
  }
  return *entry;
}

// The words in quotes; an unquoted word of an identifier has no meaning.
std::vector<View> QuotedWords(View text) {
  std::vector<View> words;
  std::size_t at = text.find_first_of(u"\"'");
  while (at != View::npos) {
    const std::size_t end = text.find(text[at], at + 1);
    if (end == View::npos) break;
    words.push_back(text.substr(at + 1, end - at - 1));
    at = text.find_first_of(u"\"'", end + 1);
  }
  return words;
}

}  // namespace

void DocumentModel::EnterPredefinedEntities() {
  for (const PredefinedEntity& predefined : kPredefined) {
    if (generalEntities.contains(predefined.name)) continue;
    EntityDecl& entity = Enter(generalEntities, predefined.name);
    entity.value = predefined.value;
    entity.simple = true;
  }
}

bool DtdReader::ReadEntity(const XTreeNode& node, const Place& place) {
  View name = node.GetName();
  const bool isParameter = name.starts_with(u'%');
  if (isParameter) name = TrimView(name.substr(1));
  if (!isParameter && (name == u"lt" || name == u"amp")) return true;
  EntityDecl& entity = Enter(isParameter ? model_.parameterEntities : model_.generalEntities, name);
  if (entity.fromPreviousPass && model_.pass > 1) entity.declared = true;
  if (entity.declared) return true;  // the first declaration binds
  entity.parameter = isParameter;
  return StoreValue(entity, node, place);
}

bool DtdReader::ReadNotation(const XTreeNode& node, const Place& place) {
  EntityDecl& notation = Enter(model_.notations, node.GetName());
  return notation.declared || StoreValue(notation, node, place);
}

bool DtdReader::StoreValue(EntityDecl& entity, const XTreeNode& node, const Place& place) {
  TQString value;
  const Expansion expansion{.withParameterEntities = true, .normalised = true};
  if (!ExpandEntityReferences(&node, node.GetText(), value, expansion)) return false;
  value.TrimLeft(kXmlSpaces);
  value.TrimRight(kXmlSpaces);
  entity.sourceNode = &node;
  entity.baseUrl = place.url;
  entity.provisional = provisional_;
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
      if (Postpone()) return true;
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

void DtdReader::LoadEntityDocument(EntityDecl& entity, const XTreeNode* node) {
  if (entity.loaded) return;
  entity.loaded = true;
  const bool isSystem = entity.value.View().starts_with(kSystem);
  const std::vector<View> words = QuotedWords(entity.value);
  const std::size_t location = isSystem ? 0 : 1;  // behind PUBLIC the first word is the public id
  if (words.size() <= location) {
    model_.Error().RecordError(ModelCode::NotAnExternalID, node, entity.name);
    return;
  }
  entity.document =
      model_.LoadReferencedDocument(TQString(words[location]), entity.baseUrl,
                                    entity.parameter ? GrammarKind::DTD : GrammarKind::Entity);
  if (entity.document == nullptr) {
    model_.Error().RecordError(ModelCode::LoadFailed, node, entity.name);
    return;
  }
  XTreeNode& root = *entity.document->Root();
  SourceWriteOptions options;
  options.newline = u"\r";
  options.omitDeclaration = true;
  TQString text = root.GetText();  // of an entity that is text alone
  int cursor = text.Length();
  for (XTreeNode* child = root.FirstChild(); child != nullptr; child = child->next) {
    if (child->kind != XTreeKind::XMLTag) WriteSource(*child, text, cursor, 0, options);
  }
  if (model_.budget != nullptr) model_.budget->AddInput(text.Length());
  entity.externalText = entity.parameter ? u" " + text + u" " : std::move(text);
  entity.hasNormalised = false;
}

View DtdReader::ReplacementOf(EntityDecl& entity, bool normalised) {
  const TQString& text =
      entity.external && entity.document != nullptr ? entity.externalText : entity.value;
  if (!normalised) return text;
  if (!entity.hasNormalised) {
    entity.normalised = TrimView(text);
    entity.hasNormalised = true;
  }
  return entity.normalised;
}

bool DtdReader::ExpandReference(const XTreeNode* node, View reference, TQString& out, int& cursor,
                                const Expansion& options, int& expanded) {
  const bool isParameter = reference[0] == u'%';
  const View name = reference.substr(1, reference.size() - 2);
  const auto& table = isParameter ? model_.parameterEntities : model_.generalEntities;
  const auto entry = table.find(name);
  EntityDecl* entity = entry == table.end() ? nullptr : entry->second.get();
  if (entity == nullptr && model_.pass <= 1 && !options.inContent) {
    model_.needAnotherPass = provisional_ = true;
    model_.passLimit = 2;
    return true;
  }
  if (entity != nullptr && !options.inContent) provisional_ |= entity->provisional;
  if (entity != nullptr && entity->external) {
    if (entity->provisional && !options.inContent && Postpone()) return true;
    LoadEntityDocument(*entity, node);
    if (entity->document == nullptr) entity = nullptr;
  }
  if (entity == nullptr) {
    out.AppendAt(reference, cursor, 0);
    if (options.withParameterEntities && !isParameter) return true;
    return model_.Error().RecordError(ModelCode::UnknownEntity, node, name);
  }
  const View replacement = ReplacementOf(*entity, options.normalised);
  if (!options.inContent) {
    model_.CountEntityText(static_cast<std::int64_t>(replacement.size()));
  }
  out.AppendAt(replacement, cursor, 0);
  if (options.inContent && model_.budget != nullptr) model_.budget->Check(cursor);
  ++expanded;
  return true;
}

bool DtdReader::ExpandEntityReferences(const XTreeNode* node, View text, TQString& out,
                                       const Expansion& options) {
  bool failed = false;
  int expanded = 0;
  int cursor = 0;
  out.ReserveEmpty(static_cast<int>(text.size()));
  const auto isStart = [&](char16_t unit) {
    return unit == u'&' || (unit == u'%' && options.withParameterEntities);
  };
  std::size_t at = 0;
  while (true) {
    const auto found =
        std::find_if(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), isStart);
    const auto start = static_cast<std::size_t>(found - text.begin());
    out.AppendAt(text.substr(at, start - at), cursor, 0);
    at = start;
    if (start == text.size()) break;
    const View rest = text.substr(start + 1);
    // "&#" stays as written, and so does a percent sign that begins no reference.
    const bool isPlain =
        text[start] == u'%' ? rest.empty() || IsXmlSpace(rest[0]) : rest.starts_with(u'#');
    const std::size_t end = isPlain ? 0 : rest.find_first_of(u"; \t\r\n");
    if (isPlain || end == View::npos || rest[end] != u';') {
      if (!isPlain) {
        model_.Error().RecordError(ModelCode::ReferenceWithoutEnd, node, rest.substr(0, end));
        failed = true;
      }
      out.AppendAt(text.substr(at++, 1), cursor, 0);
      continue;
    }
    const View reference = text.substr(start, end + 2);
    at = start + reference.size();
    failed |= !ExpandReference(node, reference, out, cursor, options, expanded);
  }
  return !failed || (options.requireExpansion && expanded > 0);
}

}  // namespace kelmora
