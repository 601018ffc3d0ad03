// The document's side of the model: what a document refers to is found, loaded and handed to the
// reader of its language; and the tree builder's questions are answered from what was read.
#include "xmlutil/documentmodel.h"

#include <utility>

#include "model/entityexpander.h"
#include "model/schemadeclarations.h"
#include "tqcore/tqtext.h"
#include "xmltree/fragmentparser.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kSelf = u"schema:--self--";

// The kind of a schema file decides over the kind that was expected of it.
bool FileWins(SchemaKind expected, SchemaKind actual) {
  if (actual == SchemaKind::DTD || actual == SchemaKind::DCD) return true;
  return expected == SchemaKind::XMLSchema2001 &&
         (actual == SchemaKind::XMLSchema1999 || actual == SchemaKind::XMLSchema2000);
}

bool IsXMLSchema(SchemaKind kind) {
  return kind == SchemaKind::XMLSchema2001 || kind == SchemaKind::XMLSchema1999 ||
         kind == SchemaKind::XMLSchema2000;
}

}  // namespace

struct DocumentModel::OwnServices {
  DocumentKindTable kinds;
  DocumentManager manager{kinds};

  OwnServices() {
    TQString ignored;
    kinds.Fill(false, ignored);
  }
};

DocumentModel::DocumentModel(DocumentManager* manager) : manager_(manager) {
  if (manager_ == nullptr) {
    ownServices_ = std::make_unique<OwnServices>();
    manager_ = &ownServices_->manager;
  }
  EnterPredefinedEntities();
}

DocumentModel::~DocumentModel() = default;

bool DocumentModel::AttachSchema(XTreeNode& root, bool force, View url, XPathTreeBuilder& builder) {
  builder_ = &builder;
  url_ = url;
  SchemaReference reference = DetectSchemaKind(root, false);
  if (reference.kind == SchemaKind::None) {
    return error_.RecordError(ModelCode::KindMismatch, nullptr);
  }
  if (reference.kind != SchemaKind::DTD) return ReadReferenced(root, reference);

  schemaKind = SchemaKind::DTD;
  if (!ReadDTD(*root.AsContainer(), url)) return false;
  if (!elements.empty() && !force) return true;
  reference = DetectSchemaKind(root, true);
  return reference.kind == SchemaKind::None || ReadReferenced(root, reference);
}

bool DocumentModel::ReadReferenced(XTreeNode& root, const SchemaReference& reference) {
  const TQString& location = reference.locations.front();
  SchemaSource source{&root, url_, {}};
  const bool isSelf = location == kSelf || (location.IsEmpty() && IsXMLSchema(reference.kind));
  if (isSelf) {
    if (location == kSelf) source.targetNamespace = reference.namespaces.front();
    return ReadSchemaOfKind(reference.kind, source, reference);
  }
  const bool isDtd = location.Extension(true) == u"dtd";
  LoadRecord* record =
      LoadReferencedDocument(location, url_, isDtd ? GrammarKind::DTD : GrammarKind::XML);
  if (record == nullptr) {
    const ModelCode code = isDtd ? ModelCode::LoadFailed : ModelCode::SchemaLoadFailed;
    return error_.RecordError(code, reference.attributeNode, location);
  }
  schemaLocations.push_back(record->path);
  source = {record->Root(), record->path, reference.namespaces.front()};
  const SchemaKind actual = DetectFileKind(*source.root);
  if (actual != reference.kind && !FileWins(reference.kind, actual)) {
    return error_.RecordError(ModelCode::KindMismatch, reference.attributeNode, location);
  }
  return ReadSchemaOfKind(actual, source, reference);
}

bool DocumentModel::ReadSchemaOfKind(SchemaKind kind, const SchemaSource& source,
                                     const SchemaReference& reference) {
  switch (kind) {
    case SchemaKind::DTD:
      return ReadReferencedDTD(source, reference);
    case SchemaKind::DCD:
      return ReadDCD(source);
    case SchemaKind::XMLSchema2001:
      return ReadXMLSchema({source});
    case SchemaKind::XDR:
    case SchemaKind::XDRByNamespace:
      schemaKind = kind;
      return ReadXDR(source);
    case SchemaKind::XMLSchema1999:
      return error_.RecordError(ModelCode::Schema1999, reference.attributeNode);
    case SchemaKind::XMLSchema2000:
      return error_.RecordError(ModelCode::Schema2000, reference.attributeNode);
    case SchemaKind::None:
      break;
  }
  return error_.RecordError(ModelCode::KindMismatch, reference.attributeNode);
}

// Such a DTD writes its names as %p;name and its declarations as xmlns%s;. The two entities stand
// before its own declarations of them, so they bind.
bool DocumentModel::ReadReferencedDTD(const SchemaSource& source,
                                      const SchemaReference& reference) {
  View prefix;
  for (const PrefixMap::Entry& entry : builder_->ScopeAt(*reference.schemaRootNode)) {
    if (entry.uri == nullptr || !(*entry.uri == source.targetNamespace)) continue;
    prefix = entry.prefix;
    break;
  }
  const TQString colon = prefix.empty() ? u"" : u":";
  const std::pair<View, TQString> pair[] = {{u"p", TQString(prefix) + colon},
                                            {u"s", colon + prefix}};
  for (const auto& [name, value] : pair) {
    EntityDecl& entity = EnterEntity(parameterEntities, name);
    entity.value = value;
    entity.parameter = true;
    entity.simple = true;
    entity.fromPreviousPass = true;
  }
  schemaKind = SchemaKind::DTD;
  pass = 1;
  return ReadDTD(*source.root->AsContainer(), source.url);
}

EntityDecl& DocumentModel::EnterEntity(EntityMap& table, View name) {
  auto& entry = table[TQString(name)];
  if (entry == nullptr) {
    entry = std::make_unique<EntityDecl>();
    entry->name = name;
  }
  return *entry;
}

bool DocumentModel::AskForPass() {
  if (pass >= kDeclarationPasses) return false;
  needAnotherPass = true;
  passLimit = static_cast<std::int16_t>(pass + 1);
  return true;
}

void DocumentModel::CountEntityText(std::int64_t units) {
  entityText_ += units;
  if (entityText_ > kEntityTextLimit) {
    throw TQTreeLimitError{TQString(u"The entities of the document expand to more than ") +
                           TQString::Format(u"%d", {kEntityTextLimit}) + u" characters"};
  }
}

bool DocumentModel::ExpandEntityReferences(View text, TQString& out) {
  return EntityExpander(*this).ExpandEntityReferences(
      nullptr, text, out, {.requireExpansion = true, .inContent = true});
}

std::unique_ptr<XTree> DocumentModel::ParseContent(View text) {
  return kelmora::ParseFragment(*manager_->RowFor(GrammarKind::XML), text, u"content",
                                XTreeKind::Element, true);
}

std::unique_ptr<XTree> DocumentModel::ParseFragment(View text, const char16_t* startRule,
                                                    XTreeKind holder, GrammarKind kind) const {
  const DocumentKindRow* row = manager_->RowFor(kind);
  if (row == nullptr) return nullptr;
  return kelmora::ParseFragment(*row, text, startRule, holder, false);
}

const XTreeContainer& DocumentModel::Keep(std::unique_ptr<XTree> fragment) {
  fragments_.push_back(std::move(fragment));
  return *fragments_.back()->root;
}

LoadRecord* DocumentModel::LoadReferencedDocument(const TQString& url, View referrerUrl,
                                                  GrammarKind kind) {
  const TQString path =
      url.IsRelativePath(false) ? url.ResolveRelativePath(TQString(referrerUrl), TQString()) : url;
  if (path.IsEmpty()) return nullptr;
  if (LoadRecord* known = manager_->FindByPath(path, kind)) return known;
  auto record = std::make_unique<LoadRecord>();
  auto document = manager_->CreateDocument();
  document->SetKind(manager_->RowFor(kind));
  LoadError error;  // a decoding warning leaves a tree
  document->Load(path, error, record.get());
  record->document = std::move(document);
  LoadRecord* adopted = manager_->AdoptRecord(std::move(record));
  return adopted->Root() != nullptr ? adopted : nullptr;
}

ElementDecl* DocumentModel::FindElement(const NameKey& name) const {
  const auto entry = elements.find(name);
  return entry == elements.end() ? nullptr : entry->second.get();
}

ElementDecl* DocumentModel::AddElement(const NameKey& name) {
  if (ElementDecl* existing = FindElement(name)) return existing;
  const QName key{TQString(name.local), name.uri};
  auto& entry = elements[key];
  entry = std::make_unique<ElementDecl>(this);
  entry->name = key;
  return entry.get();
}

SchemaDeclarations& DocumentModel::Schema() {
  if (schema_ == nullptr) schema_ = std::make_unique<SchemaDeclarations>();
  return *schema_;
}

ElementDeclaration* DocumentModel::FindDeclaration(View qualifiedName, InternedURI uri,
                                                   ElementDeclaration* parentDeclaration) {
  const View local = LocalPartOf(qualifiedName);
  if (schemaKind == SchemaKind::DTD) {
    // A DTD knows no namespaces: what it says of a name holds behind any prefix that it does not
    // name itself.
    ElementDecl* whole = FindElement({qualifiedName, nullptr});
    return whole != nullptr || local == qualifiedName ? whole : FindElement({local, nullptr});
  }
  const NameKey name{local, uri};
  if (auto* parent = static_cast<ElementDecl*>(parentDeclaration)) {
    if (ElementDecl* child = parent->FindChildElement(name)) return child;
  }
  return FindElement(name);
}

}  // namespace kelmora
