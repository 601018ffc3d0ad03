#include "model/entityexpander.h"

#include <algorithm>

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
constexpr View kSystem = u"SYSTEM";

}  // namespace

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

void DocumentModel::EnterPredefinedEntities() {
  for (const PredefinedEntity& predefined : kPredefined) {
    if (generalEntities.contains(predefined.name)) continue;
    EntityDecl& entity = EnterEntity(generalEntities, predefined.name);
    entity.value = predefined.value;
    entity.simple = true;
  }
}

void EntityExpander::LoadEntityDocument(EntityDecl& entity, const XTreeNode* node) {
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

View EntityExpander::ReplacementOf(EntityDecl& entity, bool normalised) {
  const TQString& text =
      entity.external && entity.document != nullptr ? entity.externalText : entity.value;
  if (!normalised) return text;
  if (!entity.hasNormalised) {
    entity.normalised = TrimView(text);
    entity.hasNormalised = true;
  }
  return entity.normalised;
}

bool EntityExpander::ExpandReference(const XTreeNode* node, View reference, TQString& out,
                                     int& cursor, const Options& options, int& expanded) {
  const bool isParameter = reference[0] == u'%';
  const View name = reference.substr(1, reference.size() - 2);
  const auto& table = isParameter ? model_.parameterEntities : model_.generalEntities;
  const auto entry = table.find(name);
  EntityDecl* entity = entry == table.end() ? nullptr : entry->second.get();
  if (entity == nullptr && model_.pass <= 1 && !options.inContent) {
    provisional = model_.AskForPass();
    return true;
  }
  if (entity != nullptr && !options.inContent) provisional |= entity->provisional;
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

bool EntityExpander::ExpandEntityReferences(const XTreeNode* node, View text, TQString& out,
                                            const Options& options) {
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
