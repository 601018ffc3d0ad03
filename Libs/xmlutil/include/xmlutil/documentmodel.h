// DocumentModel reads a document's DTD or schema and answers the tree builder: what does an entity
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
#include <memory>
#include <unordered_map>
#include <vector>

#include "xmltree/documentmanager.h"
#include "xmltree/treemodel.h"
#include "xmltree/xpathtreebuilder.h"
#include "xmlutil/declarations.h"
#include "xmlutil/modelerror.h"

namespace kelmora {

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

// Bound on the units that all entity declarations of one document may hold after expansion.
inline constexpr std::int64_t kEntityTextLimit = std::int64_t{1} << 24;
// Bound on parameter entities and external subsets that are read inside one another.
inline constexpr int kDeclarationNesting = 64;

struct SchemaReference {
  SchemaKind kind = SchemaKind::None;
  const XTreeNode* attributeNode = nullptr;  // the attribute that decided
  const XTreeNode* schemaRootNode = nullptr;
  TQString schemaRootName;
  std::vector<TQString> namespaces;  // parallel lists
  std::vector<TQString> locations;
};

class DocumentModel final : public TreeModel {
 public:
  using EntityMap = std::unordered_map<TQString, std::unique_ptr<EntityDecl>, TextHash, TextEqual>;
  using ElementTable =
      std::unordered_map<TQString, std::unique_ptr<ElementDecl>, TextHash, TextEqual>;

  explicit DocumentModel(DocumentManager* manager);  // borrowed
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

  // --- services of the readers ---------------------------------------------------------------
  // Loads a DTD (kind 0), entity (2), or schema (1) that `referrerUrl`'s document names; one that
  // is loaded already is not read again. Null when it cannot be read, which is silent.
  LoadRecord* LoadReferencedDocument(const TQString& url, std::u16string_view referrerUrl,
                                     std::uint32_t kind);
  // Parses a piece of a document of that kind from a rule; null when it does not parse. The model
  // owns the tree.
  XTreeContainer* ParseFragment(std::u16string_view text, const char16_t* startRule,
                                XTreeKind holder, std::uint32_t kind);
  ElementDecl* FindElement(std::u16string_view local, InternedURI uri) const;
  ElementDecl* AddElement(const QName& name);  // the existing one if there is one

  // Adds to the sum that kEntityTextLimit bounds; throws TQTreeLimitError beyond it.
  void CountEntityText(std::int64_t units);

  ModelError& Error() { return error_; }
  const ModelError& Error() const { return error_; }
  DocumentManager& Manager() const { return *manager_; }
  XPathTreeBuilder* Builder() const { return builder_; }

  std::unordered_map<InternedURI, ElementTable> elements;
  EntityMap generalEntities;
  EntityMap parameterEntities;
  EntityMap notations;
  std::vector<TQString> schemaLocations;  // URLs of what was read
  std::int16_t pass = 0;
  std::int16_t passLimit = 1;
  bool needAnotherPass = false;
  SchemaKind schemaKind = SchemaKind::None;

 private:
  bool ReadReferenced(XTreeNode& root, const SchemaReference& reference);

  DocumentManager* manager_;
  XPathTreeBuilder* builder_ = nullptr;
  TQString url_;
  std::int64_t entityText_ = 0;
  ModelError error_;
  std::vector<std::unique_ptr<XTree>> fragments_;
};

}  // namespace kelmora
