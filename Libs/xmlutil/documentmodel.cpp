// The document's side of the model: what a document refers to is found, loaded and handed to the
// reader of its language; and the tree builder's questions are answered from what was read.
#include "xmlutil/documentmodel.h"

#include <utility>

#include "dtdreader.h"
#include "xmltree/fragmentparser.h"

namespace kelmora {
namespace {

constexpr std::uint32_t kDocumentKind = 1;
constexpr std::uint32_t kDtdKind = 0;
constexpr std::u16string_view kSelf = u"schema:--self--";

}  // namespace

DocumentModel::DocumentModel(DocumentManager* manager) : manager_(manager) {
  DtdReader::EnterPredefinedEntities(*this);
}

DocumentModel::~DocumentModel() = default;

bool DocumentModel::AttachSchema(XTreeNode& root, bool force, std::u16string_view url,
                                 XPathTreeBuilder& builder) {
  builder_ = &builder;
  url_ = url;
  SchemaReference reference = DetectSchemaKind(root, false);
  if (reference.kind == SchemaKind::None) return error_.Record(ModelCode::KindMismatch, nullptr);
  if (reference.kind != SchemaKind::DTD) return ReadReferenced(root, reference);

  schemaKind = SchemaKind::DTD;
  if (!DtdReader(*this, url).ReadDTD(*root.AsContainer())) return false;
  reference = DetectSchemaKind(root, true);
  if (reference.kind == SchemaKind::None) return true;
  return ReadReferenced(root, reference) || !force;
}

void DocumentModel::CountEntityText(std::int64_t units) {
  entityText_ += units;
  if (entityText_ > kEntityTextLimit) {
    throw TQTreeLimitError{TQString(u"The entities of the document expand to more than ") +
                           TQString::Format(u"%d", {kEntityTextLimit}) + u" characters"};
  }
}

bool DocumentModel::ExpandEntityReferences(std::u16string_view text, TQString& out) {
  return DtdReader(*this, url_).ExpandEntityReferences(
      nullptr, text, out, {.requireExpansion = true, .inContent = true});
}

std::unique_ptr<XTree> DocumentModel::ParseContent(std::u16string_view text) {
  return kelmora::ParseFragment(*manager_->RowFor(kDocumentKind), text, u"content",
                                XTreeKind::Element, true);
}

XTreeContainer* DocumentModel::ParseFragment(std::u16string_view text, const char16_t* startRule,
                                             XTreeKind holder, std::uint32_t kind) {
  const DocumentKindRow* row = manager_->RowFor(kind);
  if (row == nullptr) return nullptr;
  std::unique_ptr<XTree> tree = kelmora::ParseFragment(*row, text, startRule, holder, false);
  if (tree == nullptr) return nullptr;
  fragments_.push_back(std::move(tree));
  return fragments_.back()->root;
}

LoadRecord* DocumentModel::LoadReferencedDocument(const TQString& url,
                                                  std::u16string_view referrerUrl,
                                                  std::uint32_t kind) {
  const TQString path =
      url.IsRelativePath(false) ? url.ResolveRelativePath(TQString(referrerUrl), TQString()) : url;
  if (path.IsEmpty()) return nullptr;
  if (LoadRecord* known = manager_->FindByPath(path, kind)) return known;
  auto record = std::make_unique<LoadRecord>();
  auto document = manager_->CreateDocument();
  document->SetKind(manager_->RowFor(kind));
  LoadError error;
  document->Load(path, error, record.get());
  record->document = std::move(document);
  LoadRecord* adopted = manager_->AdoptRecord(std::move(record));
  return adopted->Root() == nullptr || error.HasError() ? nullptr : adopted;
}

ElementDecl* DocumentModel::FindElement(std::u16string_view local, InternedURI uri) const {
  const auto table = elements.find(uri);
  if (table == elements.end()) return nullptr;
  const auto entry = table->second.find(local);
  return entry == table->second.end() ? nullptr : entry->second.get();
}

ElementDecl* DocumentModel::AddElement(const QName& name) {
  auto& entry = elements[name.uri][name.local];
  if (entry == nullptr) {
    entry = std::make_unique<ElementDecl>(this);
    entry->name = name;
  }
  return entry.get();
}

ElementDeclaration* DocumentModel::FindDeclaration(std::u16string_view qualifiedName,
                                                   InternedURI uri,
                                                   ElementDeclaration* parentDeclaration) {
  if (schemaKind == SchemaKind::DTD) {
    if (ElementDecl* declared = FindElement(qualifiedName, nullptr)) return declared;
    if (elements.size() < 2) return nullptr;
  }
  const std::size_t colon = qualifiedName.find(u':');
  const std::u16string_view local =
      colon == std::u16string_view::npos ? qualifiedName : qualifiedName.substr(colon + 1);
  if (auto* parent = static_cast<ElementDecl*>(parentDeclaration)) {
    if (ElementDecl* child = parent->FindChildElement(local, uri)) return child;
  }
  return FindElement(local, uri);
}

bool DocumentModel::ReadReferenced(XTreeNode& root, const SchemaReference& reference) {
  const TQString& location = reference.locations.front();
  XTreeNode* schema = &root;
  TQString schemaUrl = url_;
  if (location != kSelf && !location.IsEmpty()) {
    LoadRecord* record = LoadReferencedDocument(location, url_, kDocumentKind);
    if (record == nullptr) {
      return error_.Record(ModelCode::SchemaLoadFailed, reference.attributeNode, location);
    }
    schema = record->Root();
    schemaUrl = record->path;
  }
  const SchemaKind actual = DetectFileKind(*schema);
  if (actual == SchemaKind::DTD) {
    schemaKind = SchemaKind::DTD;
    return DtdReader(*this, schemaUrl).ReadDTD(*schema->AsContainer());
  }
  return error_.Record(ModelCode::KindMismatch, reference.attributeNode);
}

}  // namespace kelmora
