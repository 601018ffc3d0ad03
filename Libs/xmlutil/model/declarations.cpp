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

// The particles in their order, those of a group in its place; of one name the first one counts.
void ElementDecl::IndexParticles() {
  struct Step {
    const ElementDecl* group;
    std::size_t next;  // particle
  };
  index_ = std::make_unique<ChildIndex>();
  std::unordered_set<const ElementDecl*> seen{this};
  std::vector<Step> way{{this, 0}};
  while (!way.empty() && owner->CountIndexedParticle()) {
    Step& step = way.back();
    if (step.next == step.group->particles.size()) {
      way.pop_back();
      continue;
    }
    ElementDecl* element = step.group->particles[step.next++].element;
    if (!element->isGroup) {
      index_->try_emplace(element->name, element);
    } else if (seen.insert(element).second) {
      way.push_back({element, 0});
    }
  }
}

// What has nothing but one group shares the index of that group, with all elements of its type.
ElementDecl* ElementDecl::FindChildElement(const NameKey& child) {
  constexpr int kMostWrappers = 8;
  ElementDecl* holder = this;
  for (int i = 0; i < kMostWrappers && holder->index_ == nullptr; ++i) {
    if (holder->particles.size() != 1 || !holder->particles.front().element->isGroup) break;
    holder = holder->particles.front().element;
  }
  if (holder->index_ == nullptr) holder->IndexParticles();
  const auto entry = holder->index_->find(child);
  return entry != holder->index_->end() ? entry->second : nullptr;
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

void ElementDecl::AddMissingParticles(const std::vector<Particle>& earlier) {
  particles.insert(particles.end(), earlier.begin(), earlier.end());
  index_.reset();
}

void ElementDecl::AddMissing(const ElementDecl& earlier) {
  AddMissingParticles(earlier.particles);
  DeclarationList<AttributeDecl> merged = earlier.attributes;
  for (AttributeDecl* attribute : attributes) merged.Set(attribute);
  attributes = merged;
  hasSimpleContent |= earlier.hasSimpleContent;
  hasDefaults = true;
}

}  // namespace kelmora
