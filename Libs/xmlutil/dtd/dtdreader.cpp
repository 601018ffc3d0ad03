// The passes, and the text that the grammar keeps as it is: parameter entity references between
// declarations, and conditional sections.
#include "dtd/dtdreader.h"

#include <utility>

#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kSectionStart = u"<![";
constexpr View kSectionEnd = u"]]>";

// A text counts as read once, however deep the entities nest that lead to it.
class NestingGuard {
 public:
  explicit NestingGuard(int& depth) : depth_(depth) { ++depth_; }
  ~NestingGuard() { --depth_; }
  bool IsTooDeep() const { return depth_ > kDeclarationNesting; }

 private:
  int& depth_;
};

class ReadingGuard {
 public:
  explicit ReadingGuard(EntityDecl& entity) : entity_(entity) { entity_.beingRead = true; }
  ~ReadingGuard() { entity_.beingRead = false; }

 private:
  EntityDecl& entity_;
};

}  // namespace

bool IsParameterEntityReference(View text) {
  static const XMLRegExp expression(u"%[\\p{L}_][\\p{L}\\d\\.\\-_:]*;", false);
  return text.starts_with(u'%') && expression.Match(text) == XMLRegExp::kMatch;
}

// An entity keeps its value from pass to pass until it is declared again; one that stood before the
// DTD keeps it for good.
void DtdReader::BeginPass() {
  ++model_.pass;
  model_.needAnotherPass = false;
  model_.Error().Clear();
  model_.ResetEntityText();
  for (DocumentModel::EntityMap* table :
       {&model_.generalEntities, &model_.parameterEntities, &model_.notations}) {
    for (auto& [name, entity] : *table) {
      entity->declared = false;
      entity->loaded = false;
    }
  }
}

bool DocumentModel::ReadDTD(const XTreeContainer& root, View url) {
  return DtdReader(*this).ReadDTD(root, url);
}

bool DtdReader::ReadDTD(const XTreeContainer& root, View url) {
  const bool prepared = model_.pass > 0;
  model_.pass = prepared ? 1 : 0;
  model_.passLimit = prepared ? 2 : 1;
  const Place place{TQString(url),
                    root.kind == XTreeKind::DTDDocument ? GrammarKind::DTD : GrammarKind::XML};
  bool complete = false;
  do {
    BeginPass();
    complete = ReadDeclarations(root, place);
  } while (complete && model_.needAnotherPass);
  return complete;
}

bool DtdReader::ReadDeclarations(const XTreeContainer& parent, const Place& place) {
  const NestingGuard guard(nesting_);
  if (guard.IsTooDeep()) return model_.Error().RecordError(ModelCode::WrongEntityKind, &parent);
  const bool wasProvisional = expander_.provisional;
  for (const XTreeNode* child = parent.first; child != nullptr; child = child->next) {
    bool goOn = true;
    expander_.provisional = place.isProvisional;
    switch (child->kind) {
      case XTreeKind::DocType:
        goOn = ReadDoctype(*child->AsContainer(), place);
        break;
      case XTreeKind::DTDElement:
        goOn = ReadElement(static_cast<const XTreeDTDElement&>(*child), place);
        break;
      case XTreeKind::DTDAttlist:
        goOn = ReadAttlist(static_cast<const XTreeDTDAttlist&>(*child), place);
        break;
      case XTreeKind::DTDEntity:
        goOn = ReadEntity(*child, place);
        break;
      case XTreeKind::DTDNotation:
        goOn = ReadNotation(*child, place);
        break;
      case XTreeKind::Text:
        goOn = ReadText(*child, place);
        break;
      default:
        break;
    }
    if (!goOn) return false;
    // The value of an entity can stay provisional until something asks for it.
    if (child->kind != XTreeKind::DTDEntity && child->kind != XTreeKind::DTDNotation)
      expander_.Postpone();
  }
  expander_.provisional = wasProvisional;
  return true;
}

bool DtdReader::ReadDoctype(const XTreeContainer& doctype, const Place& place) {
  if (doctype.first == nullptr) {
    return model_.Error().RecordError(ModelCode::EmptyDoctype, &doctype);
  }
  if (const XTreeNode* external = doctype.FirstChildOfKind(XTreeKind::ExternalID)) {
    const SchemaReference reference = DocumentModel::DetectSchemaKind(*doctype.parent, false);
    const TQString& location = reference.locations.front();
    LoadRecord* record = model_.LoadReferencedDocument(location, place.url, GrammarKind::DTD);
    if (record == nullptr) {
      return model_.Error().RecordError(ModelCode::LoadFailed, external, location);
    }
    model_.schemaLocations.push_back(record->path);
    if (!ReadDeclarations(*record->Root()->AsContainer(), {record->path, GrammarKind::DTD}))
      return false;
  }
  return ReadDeclarations(doctype, place);
}

bool DtdReader::ReadText(const XTreeNode& node, const Place& place) {
  const View text = node.GetText();
  if (text.starts_with(kSectionStart)) return ReadSection(node, place);
  const std::size_t percent = text.find(u'%');
  if (percent == View::npos) return true;
  if (percent + 1 == text.size() || IsXmlSpace(text[percent + 1])) {
    return model_.Error().RecordError(ModelCode::BadSection, &node, text);
  }
  if (IsParameterEntityReference(text)) return ReadEntityReference(node, place);

  TQString expanded;
  if (!expander_.ExpandEntityReferences(&node, text, expanded, {.withParameterEntities = true})) {
    return false;
  }
  if (expanded.Find(u'<') == TQString::kNotFound) {
    // Nothing but references that are not known yet: the next pass knows them.
    if (expander_.Postpone()) return true;
    return model_.Error().RecordError(ModelCode::BadSection, &node, text);
  }
  return ReadReplacement(node, expanded, place);
}

bool DtdReader::ReadReplacement(const XTreeNode& node, View text, const Place& place) {
  auto parsed = model_.ParseFragment(text, u"extSubsetDecl", XTreeKind::DocType, place.kind);
  if (parsed == nullptr) {
    if (expander_.Postpone()) return true;
    return model_.Error().RecordError(ModelCode::ReplacementUnparsable, &node, node.GetText());
  }
  return ReadDeclarations(model_.Keep(std::move(parsed)),
                          {place.url, place.kind, expander_.provisional});
}

EntityDecl* DtdReader::FindParameterEntity(const XTreeNode& node, View reference, bool& goOn) {
  const View name = TrimView(reference.substr(1), u"; \t\r\n");
  const auto entry = model_.parameterEntities.find(name);
  if (entry != model_.parameterEntities.end()) return entry->second.get();
  goOn = model_.pass == 1;
  if (goOn) {
    model_.AskForPass();
  } else {
    model_.Error().RecordError(ModelCode::UnknownEntity, &node, name);
  }
  return nullptr;
}

bool DtdReader::ReadEntityReference(const XTreeNode& node, const Place& place) {
  bool goOn = false;
  EntityDecl* entity = FindParameterEntity(node, node.GetText(), goOn);
  if (entity == nullptr) return goOn;
  if (entity->beingRead) {
    return model_.Error().RecordError(ModelCode::WrongEntityKind, &node, entity->name);
  }
  const ReadingGuard guard(*entity);
  expander_.provisional |= entity->provisional;
  if (!entity->external) {
    model_.CountEntityText(entity->value.Length());
    return IsBlank(entity->value) || ReadReplacement(node, entity->value, place);
  }
  if (entity->provisional && expander_.Postpone())
    return true;  // half a location is another file's
  expander_.LoadEntityDocument(*entity, &node);
  if (entity->document == nullptr) return false;
  // The first reading is the size of the input; only further ones multiply it.
  if (entity->readInPass == model_.pass) {
    model_.CountEntityText(entity->document->document->Text().Length());
  }
  entity->readInPass = model_.pass;
  return ReadDeclarations(*entity->document->Root()->AsContainer(),
                          {entity->document->path, GrammarKind::DTD});
}

bool DtdReader::ReadSection(const XTreeNode& node, const Place& place) {
  const View text = node.GetText();
  int at = 0;
  const TQString keyword = TQString(text.substr(kSectionStart.size())).Tokenize(u" \t\r\n[]", at);
  TQString value = keyword;
  if (keyword.View().starts_with(u'%')) {
    bool goOn = false;
    EntityDecl* entity = FindParameterEntity(node, keyword, goOn);
    if (entity == nullptr) return goOn;
    expander_.provisional |= entity->provisional;
    if (entity->provisional && expander_.Postpone()) return true;
    if (entity->external || !entity->simple) {
      return model_.Error().RecordError(ModelCode::WrongEntityKind, &node, keyword);
    }
    value = TrimView(entity->value);
  }
  if (value == u"IGNORE") return true;
  if (value != u"INCLUDE") {
    if (expander_.Postpone()) return true;
    return model_.Error().RecordError(
        value == keyword ? ModelCode::BadSection : ModelCode::WrongEntityKind, &node, keyword);
  }
  const std::size_t start = text.find(u'[', kSectionStart.size() + static_cast<std::size_t>(at));
  const std::size_t end = text.rfind(kSectionEnd);
  if (start == View::npos || end == View::npos || end <= start) {
    return model_.Error().RecordError(ModelCode::BadSection, &node, keyword);
  }
  const View inside = text.substr(start + 1, end - start - 1);
  if (IsBlank(inside)) return true;
  auto parsed = model_.ParseFragment(inside, u"extSubsetDecl", XTreeKind::DocType, place.kind);
  if (parsed == nullptr) {
    return expander_.Postpone() ||
           model_.Error().RecordError(ModelCode::BadSection, &node, keyword);
  }
  return ReadDeclarations(model_.Keep(std::move(parsed)), place);
}

}  // namespace kelmora
