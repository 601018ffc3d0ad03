// The room of the model holds declarations, entities, the record of problems, and DocumentModel
// above them. It reads a document's DTD or schema and answers the tree builder: what does an entity
// reference expand to, what is the declaration of an element, what does it add by default.
// Documents are never validated.
//
// Nothing here raises for what a document says: the first problem ends the reading, what came
// before it stays in force, and Error() holds the record. The one exception is TQTreeLimitError,
// when the replacement texts of a document grow beyond kEntityTextLimit.
//
// A model belongs to one document and lives as long as its tree. It owns its declarations and the
// trees made of entity texts; documents that it loads belong to the manager, so that a DTD which
// several documents share is parsed once.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "xmltree/documentmanager.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathtreebuilder.h"
#include "xmlutil/declarations.h"
#include "xmlutil/modelerror.h"

namespace kelmora {

struct SchemaDeclarations;

// What a document refers to, or what a file is.
enum class SchemaKind : std::uint8_t {
  DTD = 0,
  DCD = 1,
  XMLSchema2001 = 2,
  XDR = 3,
  XDRByNamespace = 4,
  XMLSchema1999 = 5,
  XMLSchema2000 = 6,
  None = 7,
};

// Bound on the units that the references in one document's declarations may be replaced by.
inline constexpr std::int64_t kEntityTextLimit = 10'000'000;
// Bound on the particles that a document's elements are searched for their children by, those of a
// group counted for each content model that it stands in.
inline constexpr std::int64_t kIndexedParticles = 1'000'000;
// Bound on the passes over the declarations of a DTD: a chain of values, each of them declared in
// front of the next, takes one pass more with each link.
inline constexpr std::int16_t kDeclarationPasses = 4;
// Bound on parameter entities and external subsets that are read inside one another.
inline constexpr int kDeclarationNesting = 64;

struct SchemaReference {
  SchemaKind kind = SchemaKind::None;
  const XTreeNode* attributeNode = nullptr;  // the attribute that decided
  const XTreeNode* schemaRootNode = nullptr;
  TQString schemaRootName;
  std::vector<TQString> namespaces;  // parallel lists, never empty
  std::vector<TQString> locations;
};

// A schema document that is to be read, with what the document that names it says of it.
struct SchemaSource {
  const XTreeNode* root = nullptr;  // of the tree
  TQString url;
  TQString targetNamespace;
};

class DocumentModel final : public TreeModel {
 public:
  using EntityMap = std::unordered_map<TQString, std::unique_ptr<EntityDecl>, TextHash, TextEqual>;

  // The manager is borrowed; a model without one loads what it needs by itself.
  explicit DocumentModel(DocumentManager* manager);
  ~DocumentModel() override;

  // --- TreeModel -----------------------------------------------------------------------------
  bool AttachSchema(XTreeNode& root, bool force, std::u16string_view url,
                    XPathTreeBuilder& builder) override;
  bool ExpandEntityReferences(std::u16string_view text, TQString& out) override;
  std::unique_ptr<XTree> ParseContent(std::u16string_view text) override;
  ElementDeclaration* FindDeclaration(std::u16string_view qualifiedName, InternedURI uri,
                                      ElementDeclaration* parentDeclaration) override;
  bool HasDeclarations() const override { return !elements.empty(); }

  // --- detection -----------------------------------------------------------------------------
  // What a document refers to: the children of `node` are looked at, and what is below them, until
  // one decides. Linear, without recursion.
  static SchemaReference DetectSchemaKind(const XTreeNode& node, bool ignoreDoctype);
  // What a loaded file is; records an error for a file that mixes languages.
  SchemaKind DetectFileKind(const XTreeNode& root);

  // --- the readers ---------------------------------------------------------------------------
  // False when a problem ended the reading; it stands in the record. Linear in the documents that
  // are read; declarations are copied no more than kSchemaCopyLimit times.
  // `url` is that of the document that holds the DOCTYPE, or of the DTD itself.
  bool ReadDTD(const XTreeContainer& root, std::u16string_view url);
  bool ReadXMLSchema(const std::vector<SchemaSource>& rootDocuments);
  bool ReadXDR(const SchemaSource& document);
  bool ReadDCD(const SchemaSource& document);

  // --- services of the readers ---------------------------------------------------------------
  // Loads a DTD, an entity or a schema (GrammarKind::XML) that `referrerUrl`'s document names; one
  // that is loaded already is not read again. Null when it cannot be read, which is silent.
  LoadRecord* LoadReferencedDocument(const TQString& url, std::u16string_view referrerUrl,
                                     GrammarKind kind);
  // Parses a piece of a document of that kind from a rule; null when it does not parse.
  std::unique_ptr<XTree> ParseFragment(std::u16string_view text, const char16_t* startRule,
                                       XTreeKind holder, GrammarKind kind) const;
  // Keeps such a tree, so that declarations can point into it.
  const XTreeContainer& Keep(std::unique_ptr<XTree> fragment);
  ElementDecl* FindElement(const NameKey& name) const;
  ElementDecl* AddElement(const NameKey& name);  // the existing one if there is one
  // Declarations that no table names; they live as long as the model.
  ElementDecl* MakeElement() { return &elementStore_.emplace_back(this); }
  AttributeDecl* MakeAttribute() { return &attributeStore_.emplace_back(); }
  // What the readers of schemas keep besides elements.
  SchemaDeclarations& Schema();

  // Adds to the sum that kEntityTextLimit bounds, throwing TQTreeLimitError beyond it; a pass
  // over the declarations begins anew.
  void CountEntityText(std::int64_t units);
  void ResetEntityText() { entityText_ = 0; }
  void EnterPredefinedEntities();
  // The entity of that name, made if there is none.
  static EntityDecl& EnterEntity(EntityMap& table, std::u16string_view name);
  // Wants one more pass over the declarations; false beyond kDeclarationPasses.
  bool AskForPass();
  // False beyond kIndexedParticles.
  bool CountIndexedParticle() { return ++indexedParticles_ <= kIndexedParticles; }

  ModelError& Error() { return error_; }
  const ModelError& Error() const { return error_; }
  XPathTreeBuilder& Builder() const { return *builder_; }  // only while a schema is read

  NameMap<std::unique_ptr<ElementDecl>> elements;
  EntityMap generalEntities;
  EntityMap parameterEntities;
  EntityMap notations;
  std::vector<TQString> schemaLocations;  // URLs of what was read
  std::int16_t pass = 0;
  std::int16_t passLimit = 1;
  bool needAnotherPass = false;
  SchemaKind schemaKind = SchemaKind::None;

 private:
  struct OwnServices;

  bool ReadReferenced(XTreeNode& root, const SchemaReference& reference);
  bool ReadSchemaOfKind(SchemaKind kind, const SchemaSource& source,
                        const SchemaReference& reference);
  bool ReadReferencedDTD(const SchemaSource& source, const SchemaReference& reference);

  std::unique_ptr<OwnServices> ownServices_;  // of a model without a manager
  DocumentManager* manager_;
  XPathTreeBuilder* builder_ = nullptr;
  TQString url_;
  std::int64_t entityText_ = 0;
  std::int64_t indexedParticles_ = 0;
  ModelError error_;
  std::deque<ElementDecl> elementStore_;
  std::deque<AttributeDecl> attributeStore_;
  std::unique_ptr<SchemaDeclarations> schema_;
  std::vector<std::unique_ptr<XTree>> fragments_;
};

}  // namespace kelmora
