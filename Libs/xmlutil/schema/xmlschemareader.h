// XmlSchemaReader reads the documents of an XML Schema of 2001 into a DocumentModel.
//
// The documents are read in passes, since most names are used in front of their definition: the
// first pass leaves an unknown name open, and each such name buys one more pass, up to three. What
// one pass read is there for the next, which reads the same declarations again. Within a document
// four sweeps over the children of `schema` read types before groups and groups before elements.
//
// Elements of a named type take a copy of the type's definition, of which the particles point to
// the groups and local elements of the type itself. These belong to the node that declares them,
// and each pass fills those of the one before: so a type may hold an element of its own, whose copy
// was taken when the type was not known to its end. Nothing is ever freed before the model.
//
// Machine-stack depth: kSchemaNesting elements of a document, times kSchemaDocumentNesting for
// documents, which name one another at the top level only.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

#include "model/schemadeclarations.h"
#include "schema/schemawalker.h"
#include "types/facet.h"
#include "xmlutil/xmlregexp.h"

namespace kelmora {

// Bound on documents that include or import one another in a chain.
inline constexpr int kSchemaDocumentNesting = 64;
// Bound on the members of a union.
inline constexpr std::size_t kUnionMembers = 1000;

class XmlSchemaReader final : private SchemaWalker {
 public:
  explicit XmlSchemaReader(DocumentModel& model);

  bool Read(const std::vector<SchemaSource>& rootDocuments);

 private:
  using Word = SchemaWord;
  using View = std::u16string_view;
  using TypeRef = std::shared_ptr<SimpleType>;

  // The current document.
  struct DocumentState {
    TQString url;
    TQString prefix;  // bound to the namespace of schemas, with its colon
    InternedURI targetNamespace = nullptr;
    bool hasOwnTarget = false;
    bool elementFormQualified = false;
    bool attributeFormQualified = false;
    TQString blockDefault;
    TQString finalDefault;
  };

  // Where an element declaration or a group stands.
  struct Holder {
    ElementDecl* element;  // the nearest one that is no group: it has the local elements
    ElementDecl* group;    // it has the particles
    bool isAll = false;
  };
  // Where attributes are declared.
  struct AttributeHolder {
    ElementDecl* element;
    bool isRestriction = false;  // attributes overwrite those of the base
  };
  // A type that was asked for by name.
  struct FoundType {
    TypeRef type;                            // null if it is not known yet
    const SimpleTypeEntry* entry = nullptr;  // null for a built-in type
    bool IsFinalFor(View derivation) const;
  };

  // --- documents (xmlschemareader.cpp) -------------------------------------------------------
  bool ReadPass(const std::vector<SchemaSource>& rootDocuments);
  bool ReadSchemaDocument(const SchemaSource& source, bool isNested);
  bool ReadSchemaAttributes(const XTreeNode& schema, const SchemaSource& source, bool isNested);
  bool ReadSweep(const XTreeNode& schema, int sweep);
  bool ReadTopLevel(Word word, const XTreeNode& node);
  bool ReadNested(const SchemaSource& source, const XTreeNode& node, InternedURI target);
  bool ReadInclude(const XTreeNode& node, const SchemaRow& row);
  bool ReadRedefine(const XTreeNode& node);
  bool ReadImport(const XTreeNode& node);
  bool ReadNotation(const XTreeNode& node);
  void ReadAnnotation(const XTreeNode& node, TQString& text);
  // The first element below the root that has the local name of a schema; null without one.
  static const XTreeNode* SchemaElementOf(const XTreeNode& root);
  static View TargetNamespaceOf(const XTreeNode& root);

  // --- names ---------------------------------------------------------------------------------
  bool AttributeName(const XTreeNode& node, View name, TQString& key) override;
  View ElementName(const XTreeNode& element) override;
  TQString MessagePrefix() const override { return state_.prefix; }
  bool CheckElement(const ElementDecl& element) override;
  QName ResolveName(const XTreeNode& node, View text) const;
  QName TargetName(const TQString& local) const { return {local, state_.targetNamespace}; }
  bool IsSchemaName(const QName& name) const { return name.uri == schemaNamespace_; }
  // `find(name)` is a pointer or null; an unprefixed name of a document without a target namespace
  // of its own is looked for in the namespace that the document was read into as well.
  template <class Find>
  auto FindByName(const QName& name, Find find) const {
    auto found = find(name);
    if (found == nullptr && name.uri == nullptr && !state_.hasOwnTarget) {
      found = find(QName{name.local, state_.targetNamespace});
    }
    return found;
  }
  // A name that is not known: in the first pass it asks for another one, later it is an error.
  bool LeaveOpen(const QName& name, ModelCode code, const XTreeNode& node, View text);
  bool MissesAttribute(const XTreeNode& node, const SchemaValues& values, Word word);
  bool IsFirstPass() const { return model_.pass == 1; }
  bool IsPassPending() const { return model_.needAnotherPass || passBudget_ > 0; }

  // --- simple types (xmlschemasimpletypes.cpp) -----------------------------------------------
  bool ReadTopSimpleType(const XTreeNode& node);
  bool ReadSimpleType(const XTreeNode& node, TypeRef& type, SchemaValues& values, QName& base);
  bool ReadNestedSimpleType(const XTreeNode& node, TypeRef& type);
  bool ReadRestriction(const XTreeNode& node, TypeRef& type, QName& base);
  bool ReadList(const XTreeNode& node, TypeRef& type);
  bool ReadUnion(const XTreeNode& node, TypeRef& type);
  bool AddMember(const XTreeNode& node, const FoundType& member, std::vector<TypeRef>& members);
  bool CopyType(const XTreeNode& node, const TypeRef& from, TypeRef& to);
  // What the values of facets are held against, and what gets the facets; both null together.
  struct FacetTarget {
    TypeRef base;
    TypeRef type;
    Facet* enumeration = nullptr;  // of `type`, when there is one
  };
  bool ReadFacet(const XTreeNode& node, Word word, FacetTarget& target);
  bool CheckEffort(const XTreeNode& node);
  bool CheckPattern(const XTreeNode& node, const TQString& pattern);
  bool ResolveSimpleType(const XTreeNode& node, View text, FoundType& found);
  TypeRef BuiltinType(const QName& name);  // null for a name that no built-in type has
  // A default, fixed or facet value.
  bool CheckTypedValue(const XTreeNode& node, const SimpleType* type, const TQString& value);

  // --- complex types (xmlschemacomplextypes.cpp) ---------------------------------------------
  struct Derivation {
    bool isSimpleContent = false;
    bool isRestriction = false;
    bool isFromAnyType = false;
    QName base;
    const ComplexTypeEntry* baseEntry = nullptr;
    const SchemaRow& Row() const;
  };
  bool ReadTopComplexType(const XTreeNode& node);
  // The declaration that the node makes, empty at first and the same in each pass.
  ElementDecl& DeclarationOf(const XTreeNode& node);
  // `values` are those of the node.
  bool ReadComplexType(const XTreeNode& node, const SchemaValues& values, ElementDecl& definition,
                       Derivation& derivation);
  bool ReadContent(const XTreeNode& node, ElementDecl& definition, Derivation& derivation);
  bool ReadDerivation(const XTreeNode& node, ElementDecl& definition, Derivation& derivation);
  bool ReadBase(const XTreeNode& node, const TQString& text, ElementDecl& definition,
                Derivation& derivation);
  bool ReadSchemaBase(const XTreeNode& node, const TQString& text, ElementDecl& definition,
                      Derivation& derivation);
  bool ReadComplexBase(const XTreeNode& node, const ComplexTypeEntry& base, ElementDecl& definition,
                       Derivation& derivation);
  bool ReadSimpleBase(const XTreeNode& node, const TQString& text, const SimpleTypeEntry& base,
                      ElementDecl& definition, const Derivation& derivation);
  bool CopyDefinition(const XTreeNode& node, const ElementDecl& from, ElementDecl& to);
  bool ReadContentPart(Word word, const XTreeNode& node, ElementDecl& definition,
                       bool isRestriction);
  static void FinishComplexType(ElementDecl& definition, const Derivation& derivation,
                                bool isMixed);

  // --- groups and wildcards (xmlschemagroups.cpp) --------------------------------------------
  bool ReadTopGroup(const XTreeNode& node);
  bool ReadGroup(const XTreeNode& node, Word word, const Holder& holder);
  bool ReadGroupContent(const XTreeNode& node, const Holder& holder);
  bool CheckGroups(const std::vector<ElementDecl*>& groups);
  bool ReadAny(const XTreeNode& node, const Holder& holder);
  bool ReadAnyAttribute(const XTreeNode& node, ElementDecl& holder);
  static void SetWildcard(const SchemaValues& values, Wildcard& wildcard);
  static Particle BoundsOf(const SchemaValues& values);
  bool ReadTopAttributeGroup(const XTreeNode& node);
  bool ReadAttributeGroup(const XTreeNode& node, ElementDecl& holder);

  // --- attributes and elements (xmlschemaattributes.cpp, xmlschemaelements.cpp) --------------
  // With a holder in it, else at the top level.
  bool ReadAttribute(const XTreeNode& node, const AttributeHolder* holder);
  // Copies the fields of a global attribute; `isKnown` is false when it is left open.
  bool FindReferredAttribute(const XTreeNode& node, const TQString& text, AttributeDecl& attribute,
                             bool& isKnown);
  bool ReadAttributeType(const XTreeNode& node, const SchemaValues& values,
                         AttributeDecl& attribute);
  bool StoreAttribute(const XTreeNode& node, AttributeDecl& attribute,
                      const AttributeHolder* holder);
  // With a holder in it, else at the top level.
  bool ReadElement(const XTreeNode& node, const Holder* holder);
  bool CheckOccurrence(const XTreeNode& node, const SchemaValues& values, const Holder* holder);
  ElementDecl* ReferredElement(const XTreeNode& node, const TQString& text);
  ElementDecl* NamedElement(const XTreeNode& node, const SchemaValues& values,
                            const Holder* holder);
  bool ReadElementDefinition(const XTreeNode& node, const SchemaValues& values,
                             ElementDecl& element, bool isLocal);
  bool CheckNotDeclared(const XTreeNode& node, const ElementDecl& element, bool isLocal);
  bool ReadElementType(const XTreeNode& node, const TQString& text, ElementDecl& element,
                       bool isLocal);
  bool ReadElementChildren(const XTreeNode& node, const SchemaValues& values, ElementDecl& element,
                           bool isLocal, bool& hasType);
  bool ReadInlineType(Word word, const XTreeNode& node, ElementDecl& element, bool isLocal);
  bool TakeDefaultType(const XTreeNode& node, const SchemaValues& values, ElementDecl& element);
  bool CheckElementValue(const XTreeNode& node, const SchemaValues& values,
                         const ElementDecl& element);
  bool ReadConstraint(const XTreeNode& node, Word word, ElementDecl& element);
  bool ReadPath(const XTreeNode& node, XPathExpression& path, bool isField);

  DocumentState state_;
  InternedURI schemaNamespace_;
  SchemaDeclarations& schema_;
  const std::vector<SchemaSource>* rootDocuments_ = nullptr;
  std::vector<TypeRef> builtinTypes_;  // by code
  std::vector<ElementDecl*> groupsOfDocument_;
  // Of the pass: a document may be read into several target namespaces.
  std::set<std::pair<InternedURI, const XTreeNode*>> documentsRead_;
  std::unordered_set<QName, NameHash, NameEqual> pendingNames_;
  // Types and groups by their nodes, of all passes.
  std::map<std::pair<InternedURI, const XTreeNode*>, ElementDecl*> declarations_;
  const std::int64_t stepsAtStart_ = XMLRegExp::steps;
  int passBudget_ = 0;
  int documentNesting_ = 0;
};

}  // namespace kelmora
