// Element declarations: the content model as nested groups of particles.
#include <utility>
#include <vector>

#include "dtd/dtdreader.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Item = XTreeDTDElement::Item;

struct Occurrence {
  std::int32_t least;
  std::int32_t most;
};
constexpr Occurrence kOccurrences[] = {  // by XTreeDTDElement::Repeat
    {1, 1},
    {0, 1},
    {1, Particle::kUnbounded},
    {0, Particle::kUnbounded}};

// The rules that the text of a content model given by a parameter entity may be, in the order in
// which they are tried, with what each makes of the declaration.
struct ContentRule {
  const char16_t* rule;
  std::int32_t item;
};
constexpr ContentRule kContentRules[] = {
    {u"elementSpecFormatted", -1},  // the parsed node says
    {u"elementSeqI", Item::Sequence},
    {u"elementChoiceI", Item::Choice},
    {u"elementMixedI", Item::Mixed},
};

void SetGroupFlags(ElementDecl& element, std::int32_t item) {
  element.hasContentModel = true;
  element.isSequence = item == Item::Sequence;
  element.isChoice = item == Item::Choice;
  element.isMixed = item == Item::Mixed || item == Item::AnyContent;
  element.isEmpty = item == Item::Empty;
  element.isAny = item == Item::AnyContent;
  element.hasSimpleContent = item == Item::PCDATA;
}

bool IsGroup(std::int32_t item) {
  return item == Item::Sequence || item == Item::Choice || item == Item::Mixed;
}

}  // namespace

bool DtdReader::ResolveName(const XTreeNode& node, View text, TQString& name) {
  name = text;
  if (text.find(u'%') == View::npos) return true;
  const bool wasProvisional = std::exchange(expander_.provisional, false);
  if (!expander_.ExpandEntityReferences(&node, text, name, {.withParameterEntities = true}))
    return false;
  const bool waits = expander_.Postpone();
  expander_.provisional |= wasProvisional;
  int cursor = 0;
  const TQString expanded = std::exchange(name, TQString());
  if (waits) return true;
  for (char16_t unit : expanded.View()) {
    if (!IsXmlSpace(unit)) name.AppendUnitAt(unit, cursor, expanded.Length());
  }
  return true;
}

bool DtdReader::ReadElement(const XTreeDTDElement& node, const Place& place) {
  TQString name;
  if (!ResolveName(node, node.name, name)) return false;
  if (name.IsEmpty()) return true;  // it waits
  ElementDecl& element = *model_.AddElement({name, nullptr});
  if (element.declared && model_.pass == 1) {
    return model_.Error().RecordError(ModelCode::DeclaredTwice, &node, name);
  }
  element.declared = true;
  element.sourceNode = &node;
  element.ClearContent();
  return ReadContent(element, node, place);
}

bool DtdReader::ReadContent(ElementDecl& element, const XTreeDTDElement& node, const Place& place) {
  if (node.item != Item::PERef) return ReadGroup(element, node, node);
  TQString text;
  if (!expander_.ExpandEntityReferences(&node, node.text, text, {.withParameterEntities = true})) {
    return false;
  }
  for (const ContentRule& candidate : kContentRules) {
    const auto parsed =
        model_.ParseFragment(text, candidate.rule, XTreeKind::DTDElement, place.kind);
    if (parsed == nullptr) continue;
    auto& content = static_cast<XTreeDTDElement&>(*parsed->root);
    if (candidate.item >= 0) content.item = candidate.item;
    if (content.item == Item::PERef) break;  // a reference again: there is no end to that
    return ReadGroup(element, content, node);
  }
  if (expander_.Postpone()) return true;
  return model_.Error().RecordError(ModelCode::BadContentModel, &node, element.name.local);
}

// A name becomes a particle, a group a nested declaration; groups wait on a list, so that a deep
// content model does not recur.
bool DtdReader::ReadGroup(ElementDecl& element, const XTreeDTDElement& content,
                          const XTreeDTDElement& node) {
  std::vector<std::pair<ElementDecl*, const XTreeDTDElement*>> pending{{&element, &content}};
  while (!pending.empty()) {
    const auto [group, source] = pending.back();
    pending.pop_back();
    SetGroupFlags(*group, source->item);
    if (source->item == Item::SubName) {  // a model of one name
      group->isSequence = true;
    }
    for (const XTreeNode* child = source->first; child != nullptr; child = child->next) {
      if (child->kind != XTreeKind::DTDElement) continue;
      const auto& part = static_cast<const XTreeDTDElement&>(*child);
      const Occurrence& occurrence = kOccurrences[part.repeat];
      if (IsGroup(part.item)) {
        ElementDecl* nested = model_.MakeElement();
        nested->isGroup = true;
        group->AddParticle(nested, occurrence.least, occurrence.most);
        pending.emplace_back(nested, &part);
        continue;
      }
      View name = part.name;
      TQString resolved;
      if (name.starts_with(u'%')) {
        if (!ResolveName(node, name, resolved)) return false;
        name = resolved;
      }
      if (name.empty()) continue;  // it waits
      group->AddParticle(model_.AddElement({name, nullptr}), occurrence.least, occurrence.most);
    }
  }
  return true;
}

}  // namespace kelmora
