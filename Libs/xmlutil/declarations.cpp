#include "xmlutil/declarations.h"

#include <unordered_set>
#include <utility>

#include "xmlutil/documentmodel.h"

namespace kelmora {

void AttributeDecl::JoinEnumeration() {
  enumerationText.Clear();
  for (const TQString& value : enumeration) {
    if (&value != enumeration.data()) enumerationText += u" | ";
    enumerationText += value;
  }
}

// The particles of one element or group. Groups may be shared by many, so each has an index of its
// own particles alone; what a search through groups found is kept by the element that it began at.
struct ElementDecl::ParticleIndex {
  std::unordered_map<NameKey, ElementDecl*, NameHash> elements;
  std::vector<ElementDecl*> groups;
  NameMap<ElementDecl*> foundInGroups;
};

ElementDecl::ElementDecl(DocumentModel* model) : owner(model) {}
ElementDecl::~ElementDecl() = default;

bool ElementDecl::GetDefaults(std::vector<DefaultedAttribute>& found, TQString& text) {
  found.clear();
  text.Clear();
  if (!hasDefaults) return false;
  for (const AttributeDecl* attribute : attributes) {
    if (attribute->defaultValue.IsEmpty()) continue;
    found.push_back({attribute->name.local, attribute->name.uri, attribute->defaultValue});
  }
  if (hasSimpleContent) text = defaultText.IsEmpty() ? fixedText : defaultText;
  hasDefaults = !found.empty() || !text.IsEmpty();
  return hasDefaults;
}

AttributeDecl& ElementDecl::AddAttribute(const QName& attribute) {
  if (AttributeDecl* existing = attributes.Find(attribute)) return *existing;
  AttributeDecl* added = owner->MakeAttribute();
  added->name = attribute;
  attributes.Append(added);
  return *added;
}

void ElementDecl::AddParticle(ElementDecl* element, std::int32_t minOccurs,
                              std::int32_t maxOccurs) {
  particles.push_back({element, this, minOccurs, maxOccurs});
  element->parent = this;
  index_.reset();
}

const ElementDecl::ParticleIndex& ElementDecl::Index() {
  if (index_ != nullptr) return *index_;
  index_ = std::make_unique<ParticleIndex>();
  for (const Particle& particle : particles) {
    if (particle.element->isGroup) {
      index_->groups.push_back(particle.element);
    } else {
      index_->elements.try_emplace(particle.element->name, particle.element);
    }
  }
  return *index_;
}

ElementDecl* ElementDecl::SearchGroups(const NameKey& child) {
  std::unordered_set<const ElementDecl*> seen;
  std::vector<ElementDecl*> pending = Index().groups;
  while (!pending.empty()) {
    ElementDecl* group = pending.back();
    pending.pop_back();
    if (!seen.insert(group).second) continue;
    const ParticleIndex& index = group->Index();
    const auto entry = index.elements.find(child);
    if (entry != index.elements.end()) return entry->second;
    pending.insert(pending.end(), index.groups.begin(), index.groups.end());
  }
  return nullptr;
}

ElementDecl* ElementDecl::FindChildElement(const NameKey& child) {
  const ParticleIndex& index = Index();
  const auto entry = index.elements.find(child);
  if (entry != index.elements.end()) return entry->second;
  if (index.groups.empty()) return nullptr;
  const auto known = index.foundInGroups.find(child);
  if (known != index.foundInGroups.end()) return known->second;
  ElementDecl* found = SearchGroups(child);
  index_->foundInGroups.emplace(QName{TQString(child.local), child.uri}, found);
  return found;
}

void ElementDecl::ClearContent() {
  particles.clear();
  index_.reset();
  typeRef.reset();
  typeName = {};
  elementWildcard = {};
  hasContentModel = isChoice = isSequence = isAll = isAny = isEmpty = isMixed = false;
  hasSimpleContent = isOpenEnded = false;
}

void ElementDecl::ClearDefinition() {
  ClearContent();
  attributes.Clear();
  idAttribute = nullptr;
  attributeWildcard = {};
  hasDefaults = true;
}

void ElementDecl::CopyDefinition(const ElementDecl& definition) {
  particles = definition.particles;
  index_.reset();
  attributes = definition.attributes;
  typeRef = definition.typeRef;
  elementWildcard = definition.elementWildcard;
  attributeWildcard = definition.attributeWildcard;
  hasContentModel = definition.hasContentModel;
  isChoice = definition.isChoice;
  isSequence = definition.isSequence;
  isAll = definition.isAll;
  isAny = definition.isAny;
  isEmpty = definition.isEmpty;
  isMixed = definition.isMixed;
  hasSimpleContent = definition.hasSimpleContent;
  isOpenEnded = definition.isOpenEnded;
  isAbstract |= definition.isAbstract;
  hasDefaults = true;
}

void ElementDecl::AddMissing(const ElementDecl& earlier) {
  particles.insert(particles.end(), earlier.particles.begin(), earlier.particles.end());
  index_.reset();
  DeclarationList<AttributeDecl> merged = earlier.attributes;
  for (AttributeDecl* attribute : attributes) merged.Set(attribute);
  attributes = merged;
  hasSimpleContent |= earlier.hasSimpleContent;
  hasDefaults = true;
}

}  // namespace kelmora
