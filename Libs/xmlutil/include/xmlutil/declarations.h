// The declarations that a DTD or a schema leaves in a DocumentModel: elements with their
// attributes and content, entities and notations. The model owns them all, and none dies before
// it, so declarations point at one another freely.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tqcore/texthash.h"
#include "tqcore/tqstring.h"
#include "xmltree/treemodel.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

class DocumentModel;
class ElementDecl;
class SimpleType;
class IdentityConstraint;
struct LoadRecord;

// A name to search with: local part and interned namespace.
struct NameKey {
  std::u16string_view local;
  InternedURI uri = nullptr;

  friend bool operator==(const NameKey&, const NameKey&) = default;
};

// A name. In a DTD `local` is the whole name, prefix included, and there is no namespace.
struct QName {
  TQString local;
  InternedURI uri = nullptr;

  friend bool operator==(const QName&, const QName&) = default;
  operator NameKey() const { return {local.View(), uri}; }  // NOLINT(google-explicit-constructor)
};

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(const NameKey& name) const { return HashName(name.local, name.uri); }
};
struct NameEqual {
  using is_transparent = void;
  bool operator()(const NameKey& a, const NameKey& b) const { return a == b; }
};

template <class Value>
using NameMap = std::unordered_map<QName, Value, NameHash, NameEqual>;

// Declarations with names, in the order in which they came. They are borrowed. Searches take
// constant time; a copy shares the declarations.
template <class Declaration>
class DeclarationList {
 public:
  DeclarationList() = default;
  DeclarationList(const DeclarationList& other) : items_(other.items_) {}
  DeclarationList& operator=(const DeclarationList& other) {
    items_ = other.items_;
    places_.reset();
    return *this;
  }

  Declaration* Find(const NameKey& name) const {
    const std::size_t place = PlaceOf(name);
    return place < items_.size() ? items_[place] : nullptr;
  }
  // In the place of the one with the same name, or at the end.
  void Set(Declaration* declaration) {
    const std::size_t place = PlaceOf(declaration->name);
    if (place == items_.size()) return Append(declaration);
    items_[place] = declaration;
    if (places_ == nullptr) return;
    places_->erase(declaration->name);  // the key is a view of the other one's name
    places_->emplace(declaration->name, place);
  }
  void Append(Declaration* declaration) {
    items_.push_back(declaration);
    if (places_ != nullptr) places_->try_emplace(declaration->name, items_.size() - 1);
  }
  void Clear() {
    items_.clear();
    places_.reset();
  }
  void DropIndex() { places_.reset(); }  // gives memory back; a search makes it anew
  bool IsEmpty() const { return items_.empty(); }
  std::size_t Size() const { return items_.size(); }
  auto begin() const { return items_.begin(); }
  auto end() const { return items_.end(); }

 private:
  static constexpr std::size_t kFew = 8;  // up to here a loop beats a table

  std::size_t PlaceOf(const NameKey& name) const {
    if (items_.size() <= kFew) {
      std::size_t place = 0;
      while (place < items_.size() && !(NameKey(items_[place]->name) == name)) ++place;
      return place;
    }
    if (places_ == nullptr) {
      places_ = std::make_unique<Places>();
      for (std::size_t i = 0; i < items_.size(); ++i) places_->try_emplace(items_[i]->name, i);
    }
    const auto entry = places_->find(name);
    return entry == places_->end() ? items_.size() : entry->second;
  }

  using Places = std::unordered_map<NameKey, std::size_t, NameHash>;

  std::vector<Declaration*> items_;
  mutable std::unique_ptr<Places> places_;
};

// A general entity, a parameter entity or a notation.
struct EntityDecl {
  TQString name;
  TQString value;         // replacement text; of an external one SYSTEM "..." or PUBLIC "..." "..."
  TQString externalText;  // the loaded document, written out as text
  TQString publicText;    // of an external one the public identifier, if it has one
  TQString normalised;    // the value without white space at its ends, made at first need
  const XTreeNode* sourceNode = nullptr;
  TQString baseUrl;                // of the document that holds the declaration
  LoadRecord* document = nullptr;  // loaded for an external entity; borrowed from the manager
  std::int16_t readInPass = 0;     // the last pass in which its text was read as declarations
  bool declared = false;
  bool external = false;
  bool parameter = false;
  bool loaded = false;
  bool simple = false;            // the value holds no white space and no character of markup
  bool provisional = false;       // a reference in the value was left out, for a later pass
  bool fromPreviousPass = false;  // stood before the DTD was read: its value stays
  bool beingRead = false;         // its text is being read: a second entry would not end
  bool hasNormalised = false;
};

struct AttributeDecl {
  QName name;
  TQString defaultValue;
  TQString enumerationText;  // the values joined by " | "
  std::vector<TQString> enumeration;
  const XTreeNode* sourceNode = nullptr;
  std::shared_ptr<SimpleType> type;  // of a schema
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

  void JoinEnumeration();  // sets enumerationText
};

struct Particle {
  static constexpr std::int32_t kUnbounded = -1;

  ElementDecl* element = nullptr;  // a nested group, or a local or referenced element
  ElementDecl* owner = nullptr;
  std::int32_t minOccurs = 1;
  std::int32_t maxOccurs = 1;
};

struct Wildcard {
  static constexpr int kLax = 0;
  static constexpr int kSkip = 1;
  static constexpr int kStrict = 2;

  TQString namespaceText;  // "##any" and so on; empty: no wildcard
  int processContents = kStrict;
};

class ElementDecl final : public ElementDeclaration {
 public:
  explicit ElementDecl(DocumentModel* model);
  ~ElementDecl() override;

  // The attributes with a default value, and the default text of simple content.
  bool GetDefaults(std::vector<DefaultedAttribute>& found, TQString& text) override;
  // An element of this name among the particles, through groups; null without one. Declarations
  // must be complete by then. The first search walks all groups, as far as kIndexedParticles lets
  // it; further ones take constant time.
  ElementDecl* FindChildElement(const NameKey& child);
  // The attribute of this name, made if there is none.
  AttributeDecl& AddAttribute(const QName& attribute);
  void AddParticle(ElementDecl* element, std::int32_t minOccurs = 1, std::int32_t maxOccurs = 1);
  // Forgets content, attributes, type and the flags that tell of them. Local declarations stay: a
  // further reading finds them by their names.
  void ClearDefinition();
  void ClearContent();  // the same, but the attributes stay
  // Takes all that over from the definition of a type.
  void CopyDefinition(const ElementDecl& definition);
  // Adds what an earlier reading left, for one that broke off.
  void AddMissing(const ElementDecl& earlier);
  void AddMissingParticles(const std::vector<Particle>& earlier);

  DocumentModel* owner;
  std::vector<Particle> particles;
  DeclarationList<AttributeDecl> attributes;  // in declaration order
  QName name;
  TQString description;
  QName substitutionGroup;
  ElementDecl* parent = nullptr;
  const XTreeNode* sourceNode = nullptr;
  AttributeDecl* idAttribute = nullptr;
  std::shared_ptr<SimpleType> typeRef;
  QName typeName;  // as a schema names it
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
  bool isOpenEnded = false;  // what it derives from is not known yet
  TQString defaultText;
  TQString fixedText;
  TQString finalText;
  TQString blockText;
  DeclarationList<ElementDecl> locals;
  Wildcard elementWildcard;
  Wildcard attributeWildcard;
  std::vector<IdentityConstraint*> constraints;

 private:
  using ChildIndex = std::unordered_map<NameKey, ElementDecl*, NameHash>;
  void IndexParticles();

  std::unique_ptr<ChildIndex> index_;  // made at the first search
};

}  // namespace kelmora
