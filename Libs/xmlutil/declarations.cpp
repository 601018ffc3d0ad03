#include "xmlutil/declarations.h"

#include <unordered_set>
#include <utility>

namespace kelmora {

// Groups nest as deep as a content model does, so they are taken down from a list.
ElementDecl::~ElementDecl() {
  std::vector<std::unique_ptr<ElementDecl>> pending = std::move(locals);
  while (!pending.empty()) {
    std::unique_ptr<ElementDecl> next = std::move(pending.back());
    pending.pop_back();
    for (auto& nested : next->locals) pending.push_back(std::move(nested));
    next->locals.clear();
  }
}

bool ElementDecl::GetDefaults(std::vector<DefaultedAttribute>& found, TQString& text) {
  found.clear();
  text.Clear();
  if (!hasDefaults) return false;
  for (const auto& attribute : attributes) {
    if (attribute->defaultValue.IsEmpty()) continue;
    found.push_back({attribute->name.local, attribute->name.uri, attribute->defaultValue});
  }
  if (hasSimpleContent) text = defaultText.IsEmpty() ? fixedText : defaultText;
  hasDefaults = !found.empty() || !text.IsEmpty();
  return hasDefaults;
}

AttributeDecl* ElementDecl::FindAttribute(const QName& attribute) {
  const auto entry = attributeIndex_.find(attribute.local.View());
  if (entry == attributeIndex_.end()) return nullptr;
  for (AttributeDecl* candidate : entry->second) {
    if (candidate->name.uri == attribute.uri) return candidate;
  }
  return nullptr;
}

AttributeDecl& ElementDecl::AddAttribute(const QName& attribute) {
  if (AttributeDecl* existing = FindAttribute(attribute)) return *existing;
  attributes.push_back(std::make_unique<AttributeDecl>());
  AttributeDecl& added = *attributes.back();
  added.name = attribute;
  attributeIndex_[added.name.local.View()].push_back(&added);
  hasDefaults = true;
  return added;
}

ElementDecl* ElementDecl::AddLocal() {
  locals.push_back(std::make_unique<ElementDecl>(owner));
  locals.back()->parent = this;
  return locals.back().get();
}

void ElementDecl::AddParticle(ElementDecl* element, std::int32_t minOccurs,
                              std::int32_t maxOccurs) {
  particles.push_back({element, this, minOccurs, maxOccurs});
  element->parent = this;
}

void ElementDecl::IndexChildren() {
  children_ = std::make_unique<ChildIndex>();
  std::unordered_set<const ElementDecl*> seen{this};
  std::vector<const ElementDecl*> pending{this};
  while (!pending.empty()) {
    const ElementDecl* group = pending.back();
    pending.pop_back();
    for (const Particle& particle : group->particles) {
      if (!particle.element->isGroup) {
        children_->emplace(particle.element->name.local.View(), particle.element);
      } else if (seen.insert(particle.element).second) {
        pending.push_back(particle.element);
      }
    }
  }
}

ElementDecl* ElementDecl::FindChildElement(std::u16string_view local, InternedURI uri) {
  if (children_ == nullptr) IndexChildren();
  const auto [begin, end] = children_->equal_range(local);
  for (auto entry = begin; entry != end; ++entry) {
    if (entry->second->name.uri == uri) return entry->second;
  }
  return nullptr;
}

}  // namespace kelmora
