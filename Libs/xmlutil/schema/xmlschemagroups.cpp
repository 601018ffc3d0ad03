// Model groups, wildcards and groups of attributes.
#include <unordered_map>
#include <utility>

#include "schema/xmlschemareader.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

constexpr View kAnyNamespace = u"##any";

struct GroupKind {
  Word word;
  bool ElementDecl::*flag;
};
constexpr GroupKind kGroupKinds[] = {
    {Word::Group, &ElementDecl::isSequence},
    {Word::Sequence, &ElementDecl::isSequence},
    {Word::Choice, &ElementDecl::isChoice},
    {Word::All, &ElementDecl::isAll},
};

struct ProcessCode {
  View word;
  int code;
};
constexpr ProcessCode kProcessCodes[] = {
    {u"lax", Wildcard::kLax}, {u"skip", Wildcard::kSkip}, {u"strict", Wildcard::kStrict}};

std::int32_t ReadBound(const TQString* text) {
  constexpr std::int64_t kMost = 0x7FFFFFFF;
  if (text == nullptr) return 1;
  if (*text == u"unbounded") return Particle::kUnbounded;
  std::int64_t value = 0;
  for (char16_t unit : text->View()) {
    if (unit >= u'0' && unit <= u'9') value = std::min(value * 10 + (unit - u'0'), kMost);
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace

Particle XmlSchemaReader::BoundsOf(const SchemaValues& values) {
  Particle bounds;
  bounds.minOccurs = ReadBound(values.Find(Word::MinOccurs));
  bounds.maxOccurs = ReadBound(values.Find(Word::MaxOccurs));
  return bounds;
}

// --- model groups ------------------------------------------------------------------------------

// The declaration of a name stays the same from pass to pass, so what refers to it sees what the
// last pass read.
bool XmlSchemaReader::ReadTopGroup(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kGroupRow, values)) return false;
  if (values.Has(Word::Name) && values.Has(Word::Ref)) return Fail(ModelCode::NameAndRef, node);
  if (MissesAttribute(node, values, Word::Name)) return false;
  ElementDecl*& group = schema_.groups[TargetName(values[Word::Name])];
  if (group == nullptr) group = model_.MakeElement();
  ElementDecl earlier(&model_);
  earlier.CopyDefinition(*group);
  group->ClearDefinition();
  if (IsFirstPass()) group->locals.Clear();  // those of a definition that this one replaces
  group->name = TargetName(values[Word::Name]);
  group->sourceNode = &node;
  group->isGroup = group->isSequence = true;
  groupsOfDocument_.push_back(group);
  ElementDecl* const read = group;  // the table may move
  if (!ReadGroupContent(node, {read, read})) {
    read->AddMissing(earlier);
    return false;
  }
  read->declared = true;
  return true;
}

bool XmlSchemaReader::ReadGroup(const XTreeNode& node, Word word, const Holder& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kGroupRow, values)) return false;
  if (values.Has(Word::Name) && values.Has(Word::Ref)) return Fail(ModelCode::NameAndRef, node);
  const Particle bounds = BoundsOf(values);
  if (const TQString* reference = values.Find(Word::Ref)) {
    const QName name = ResolveName(node, *reference);
    ElementDecl* group = FindByName(name, [&](const QName& wanted) -> ElementDecl* {
      const auto entry = schema_.groups.find(wanted);
      return entry != schema_.groups.end() && entry->second->declared ? entry->second : nullptr;
    });
    if (group == nullptr) return LeaveOpen(name, ModelCode::UnknownGroup, node, *reference);
    holder.group->AddParticle(group, bounds.minOccurs, bounds.maxOccurs);
    return true;
  }
  ElementDecl& nested = DeclarationOf(node);
  const std::vector<Particle> earlier = nested.particles;
  nested.ClearDefinition();
  nested.isGroup = true;
  nested.sourceNode = &node;
  for (const GroupKind& kind : kGroupKinds) {
    if (kind.word == word) nested.*kind.flag = true;
  }
  holder.group->AddParticle(&nested, bounds.minOccurs, bounds.maxOccurs);
  const bool complete = ReadGroupContent(node, {holder.element, &nested, word == Word::All});
  if (!complete) nested.AddMissingParticles(earlier);
  return complete;
}

bool XmlSchemaReader::ReadGroupContent(const XTreeNode& node, const Holder& holder) {
  return ReadChildren(node, kGroupRow, [&](Word word, const XTreeNode& child) {
    if (word == Word::Annotation) return true;
    if (word == Word::Element) return ReadElement(child, &holder);
    if (word == Word::Any) return ReadAny(child, holder);
    return ReadGroup(child, word, holder);
  });
}

// A walk down through groups that meets a group it is inside of has found a circle. Elements end
// the walk: their content may hold the group again.
bool XmlSchemaReader::CheckGroups(const std::vector<ElementDecl*>& groups) {
  enum class Mark : std::uint8_t { New, Open, Done };
  struct Step {
    ElementDecl* group;
    std::size_t next;  // particle
  };
  std::unordered_map<const ElementDecl*, Mark> marks;
  std::vector<Step> way;
  const auto enter = [&](ElementDecl* group) {
    Mark& mark = marks[group];
    if (mark == Mark::Open) return Fail(ModelCode::GroupInItself, *group->sourceNode);
    if (mark == Mark::New) {
      mark = Mark::Open;
      way.push_back({group, 0});
    }
    return true;
  };
  for (ElementDecl* start : groups) {
    if (!enter(start)) return false;
    while (!way.empty()) {
      Step& step = way.back();
      const std::vector<Particle>& particles = step.group->particles;
      while (step.next < particles.size() && !particles[step.next].element->isGroup) ++step.next;
      if (step.next == particles.size()) {
        marks[step.group] = Mark::Done;
        way.pop_back();
        continue;
      }
      if (!enter(particles[step.next++].element)) return false;
    }
  }
  return true;
}

// --- wildcards ---------------------------------------------------------------------------------

void XmlSchemaReader::SetWildcard(const SchemaValues& values, Wildcard& wildcard) {
  const TQString* text = values.Find(Word::Namespace);
  wildcard.namespaceText = text != nullptr ? *text : TQString(kAnyNamespace);
  wildcard.processContents = Wildcard::kStrict;
  for (const ProcessCode& code : kProcessCodes) {
    if (values[Word::ProcessContents] == code.word) wildcard.processContents = code.code;
  }
}

bool XmlSchemaReader::ReadAny(const XTreeNode& node, const Holder& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kAnyRow, values)) return false;
  const Particle bounds = BoundsOf(values);
  ElementDecl* any = model_.MakeElement();
  any->isAny = any->isGroup = true;
  SetWildcard(values, any->elementWildcard);
  holder.group->AddParticle(any, bounds.minOccurs, bounds.maxOccurs);
  return ReadChildren(node, kAnyRow, [](Word, const XTreeNode&) { return true; });
}

bool XmlSchemaReader::ReadAnyAttribute(const XTreeNode& node, ElementDecl& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kAnyAttributeRow, values)) return false;
  SetWildcard(values, holder.attributeWildcard);
  return ReadChildren(node, kAnyAttributeRow, [](Word, const XTreeNode&) { return true; });
}

// --- groups of attributes ----------------------------------------------------------------------

bool XmlSchemaReader::ReadTopAttributeGroup(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kAttributeGroupRow, values)) return false;
  if (values.Has(Word::Ref)) return Fail(ModelCode::NameAndRef, node);
  if (MissesAttribute(node, values, Word::Name)) return false;
  ElementDecl* group = model_.MakeElement();
  group->name = TargetName(values[Word::Name]);
  group->sourceNode = &node;
  const AttributeHolder holder{group};
  const bool complete =
      ReadChildren(node, kAttributeGroupRow, [&](Word word, const XTreeNode& child) {
        if (word == Word::Attribute) return ReadAttribute(child, &holder);
        if (word == Word::AttributeGroup) return ReadAttributeGroup(child, *group);
        if (word == Word::AnyAttribute) return ReadAnyAttribute(child, *group);
        return true;
      });
  if (complete) schema_.attributeGroups[group->name] = group;
  return complete;
}

bool XmlSchemaReader::ReadAttributeGroup(const XTreeNode& node, ElementDecl& holder) {
  SchemaValues values;
  if (!ReadAttributes(node, kAttributeGroupRow, values)) return false;
  if (values.Has(Word::Name) && values.Has(Word::Ref)) return Fail(ModelCode::NameAndRef, node);
  if (MissesAttribute(node, values, Word::Ref)) return false;
  const TQString& reference = values[Word::Ref];
  const QName name = ResolveName(node, reference);
  const ElementDecl* group = FindByName(name, [&](const QName& wanted) -> ElementDecl* {
    const auto entry = schema_.attributeGroups.find(wanted);
    return entry != schema_.attributeGroups.end() ? entry->second : nullptr;
  });
  if (group == nullptr) return LeaveOpen(name, ModelCode::UnknownAttributeGroup, node, reference);
  if (!ChargeCopies(node, group->attributes.Size())) return false;
  for (AttributeDecl* attribute : group->attributes) holder.attributes.Set(attribute);
  if (!group->attributeWildcard.namespaceText.IsEmpty()) {
    holder.attributeWildcard = group->attributeWildcard;
  }
  return true;
}

}  // namespace kelmora
