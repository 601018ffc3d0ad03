// The declarations that a DTD or a schema leaves in a DocumentModel: elements with their
// attributes and content, entities and notations. The model owns them all.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "tqcore/tqstring.h"
#include "xmltree/treemodel.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

class DocumentModel;
class SimpleType;
struct LoadRecord;

// A name: local part and interned namespace. In a DTD `local` is the whole name, prefix included,
// and there is no namespace.
struct QName {
  TQString local;
  InternedURI uri = nullptr;

  friend bool operator==(const QName&, const QName&) = default;
};

// A general entity, a parameter entity or a notation.
struct EntityDecl {
  TQString name;
  TQString value;         // replacement text; of an external one SYSTEM "..." or PUBLIC "..." "..."
  TQString externalText;  // the loaded document, written out as text
  TQString normalised;    // the value without white space at its ends, made at first need
  const XTreeNode* sourceNode = nullptr;
  TQString baseUrl;                // of the document that holds the declaration
  LoadRecord* document = nullptr;  // loaded for an external entity; borrowed from the manager
  bool declared = false;
  bool external = false;
  bool parameter = false;
  bool loaded = false;
  bool simple = false;  // the value holds no white space and no character of markup
  bool fromPreviousPass = false;
  bool beingRead = false;  // its text is being read: a second entry would not end
  bool hasNormalised = false;
};

struct AttributeDecl {
  QName name;
  TQString defaultValue;
  TQString enumerationText;  // the values joined by " | "
  std::vector<TQString> enumeration;
  const XTreeNode* sourceNode = nullptr;
  std::shared_ptr<const SimpleType> type;  // of a schema
  bool required = false;
  bool prohibited = false;
  bool fixed = false;
  bool implied = false;
  bool isID = false;
  bool isIDREF = false;
  bool isIDREFS = false;
  bool isENTITY = false;
  bool isENTITIES = false;
  bool isNMTOKEN = false;
  bool isNMTOKENS = false;
  bool isNOTATION = false;
  bool isEnumeration = false;
};

class ElementDecl;

struct Particle {
  static constexpr std::int32_t kUnbounded = -1;

  ElementDecl* element = nullptr;  // a nested group, or a local or referenced element
  ElementDecl* owner = nullptr;
  std::int32_t minOccurs = 1;
  std::int32_t maxOccurs = 1;
};

struct Wildcard {
  TQString namespaceText;  // "##any" and so on; empty: no wildcard
  int processContents = 0;
};

class ElementDecl final : public ElementDeclaration {
 public:
  explicit ElementDecl(DocumentModel* model) : owner(model) {}
  ~ElementDecl() override;

  // The attributes with a default value, and the default text of simple content.
  bool GetDefaults(std::vector<DefaultedAttribute>& found, TQString& text) override;
  // An element of this name among the particles, through groups; null without one. The index is
  // made at the first request, so declarations must be complete by then.
  ElementDecl* FindChildElement(std::u16string_view local, InternedURI uri);
  AttributeDecl* FindAttribute(const QName& attribute);
  AttributeDecl& AddAttribute(const QName& attribute);  // the existing one if there is one
  // A nested declaration owned by this one.
  ElementDecl* AddLocal();
  void AddParticle(ElementDecl* element, std::int32_t minOccurs, std::int32_t maxOccurs);

  DocumentModel* owner;
  std::vector<Particle> particles;
  std::vector<std::unique_ptr<AttributeDecl>> attributes;  // in declaration order
  QName name;
  TQString description;
  QName substitutionGroup;
  ElementDecl* parent = nullptr;
  const XTreeNode* sourceNode = nullptr;
  std::shared_ptr<const SimpleType> typeRef;
  bool declared = false;
  bool hasContentModel = false;
  bool isChoice = false;
  bool isSequence = false;
  bool hasSimpleContent = false;
  bool isEmpty = false;
  bool isAny = false;
  bool isAll = false;
  bool isMixed = false;
  bool isGroup = false;
  bool isOpen = false;
  bool isAbstract = false;
  bool isNillable = false;
  bool hasSubstitutes = false;
  bool hasDefaults = true;  // cleared when a lookup found that there are none
  bool qualified = false;
  TQString defaultText;
  TQString fixedText;
  TQString finalText;
  TQString blockText;
  std::vector<std::unique_ptr<ElementDecl>> locals;
  Wildcard elementWildcard;
  Wildcard attributeWildcard;

 private:
  using ChildIndex = std::unordered_multimap<std::u16string_view, ElementDecl*>;
  void IndexChildren();

  std::unique_ptr<ChildIndex> children_;
  std::unordered_map<std::u16string_view, std::vector<AttributeDecl*>> attributeIndex_;
};

}  // namespace kelmora
