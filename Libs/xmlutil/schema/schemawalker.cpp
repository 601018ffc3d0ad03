// A node is held against its row in the order of the document: each attribute by its expanded name,
// then its value by the rule that the row has for it; each child by the name that the language
// gives it. The first that does not fit is recorded, with the message of the row, and ends the
// reading.
//
// Values are expanded before they are looked at, but for defaults: those go into the tree of the
// instance, where their references are resolved. A reference that fails is a problem of the value,
// so what the expansion itself recorded makes way for it.
#include "schema/schemawalker.h"

#include <algorithm>

#include "model/entityexpander.h"
#include "model/schemadeclarations.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kAllWords = u"#all";
constexpr View kUnbounded = u"unbounded";
// How the names of the datatypes' namespace stand in the tables.
constexpr View kDatatypePrefix = u"dt:";

bool IsOneOf(View text, std::span<const View> words) {
  return std::find(words.begin(), words.end(), text) != words.end();
}

bool AreAllOf(View text, std::span<const View> words) {
  for (std::size_t at = text.find_first_not_of(kXmlSpaces); at != View::npos;
       at = text.find_first_not_of(kXmlSpaces, at)) {
    const std::size_t end = std::min(text.find_first_of(kXmlSpaces, at), text.size());
    if (!IsOneOf(text.substr(at, end - at), words)) return false;
    at = end;
  }
  return true;
}

bool IsCount(View text) {
  text = TrimView(text);
  return !text.empty() && text.find_first_not_of(u"0123456789") == View::npos;
}

// Defaults go into the tree, and their references are resolved there.
bool IsTextOfInstances(SchemaWord word) {
  return word == SchemaWord::Default || word == SchemaWord::Fixed || word == SchemaWord::DcdDefault;
}

bool IsAllowed(const ValueRule& rule, View text) {
  switch (rule.form) {
    case ValueRule::Form::Name:
      return text.find(u':') == View::npos;
    case ValueRule::Form::OneOf:
      return IsOneOf(text, rule.words);
    case ValueRule::Form::ListOf:
      return text == kAllWords || AreAllOf(text, rule.words);
    case ValueRule::Form::Count:
      return IsCount(text);
    case ValueRule::Form::CountOrAny:
      return text == kUnbounded || IsCount(text);
  }
  return false;
}

}  // namespace

const TQString* SchemaValues::Find(SchemaWord word) const {
  for (const auto& [present, value] : values_) {
    if (present == word) return &value;
  }
  return nullptr;
}

const TQString& SchemaValues::operator[](SchemaWord word) const {
  static const TQString kEmpty;
  const TQString* value = Find(word);
  return value != nullptr ? *value : kEmpty;
}

bool SchemaValues::IsTrue(SchemaWord word) const {
  const TQString& value = (*this)[word];
  return value == u"true" || value == u"1";
}

bool SchemaWalker::Expand(const XTreeNode& node, View text, TQString& out) {
  if (text.find(u'&') == View::npos) {
    out = text;
    return true;
  }
  if (EntityExpander(model_).ExpandEntityReferences(&node, text, out, {})) return true;
  model_.Error().Clear();  // the reference's own problem: that of the schema is the one to keep
  return Fail(ModelCode::ReplacementUnparsable, node, node.GetName());
}

bool SchemaWalker::CheckValue(const ValueRule& rule, const XTreeNode& node, TQString& value) {
  if (!IsAllowed(rule, value)) return Fail(rule.code, node, rule.message);
  if (rule.form == ValueRule::Form::ListOf && value == kAllWords) value = rule.all;
  return true;
}

bool SchemaWalker::ReadAttributes(const XTreeNode& node, const SchemaRow& row,
                                  SchemaValues& values) {
  for (const XTreeNode* attribute = node.FirstChildOfKind(XTreeKind::Attribute);
       attribute != nullptr; attribute = attribute->NextOfKind(XTreeKind::Attribute)) {
    if (!ReadAttribute(node, *attribute, row, values)) return false;
  }
  return true;
}

bool SchemaWalker::ReadAttribute(const XTreeNode& node, const XTreeNode& attribute,
                                 const SchemaRow& row, SchemaValues& values) {
  TQString name;
  TQString value;
  if (!Expand(node, attribute.GetName(), name)) return false;
  if (!Expand(node, attribute.GetText(), value)) return false;
  TQString key;
  if (!AttributeName(node, name, key)) return true;
  return ReadValue(node, key, std::move(value), row, values);
}

bool SchemaWalker::ReadValue(const XTreeNode& node, View key, TQString value, const SchemaRow& row,
                             SchemaValues& values) {
  for (const AttributeRule& rule : row.attributes) {
    if (key != TextOf(rule.word)) continue;
    if (!IsTextOfInstances(rule.word)) value.DecodeCharacterReferences();
    if (rule.value != nullptr && !CheckValue(*rule.value, node, value)) return false;
    values.Add(rule.word, std::move(value));
    return true;
  }
  return row.otherAttribute == nullptr || Fail(ModelCode::NotAllowed, node, AttributeMessage(row));
}

bool SchemaWalker::CheckChild(const XTreeNode& child, const SchemaRow& row, SchemaWord& word) {
  const View name = ElementName(child);
  for (SchemaWord candidate : row.children) {
    if (name != TextOf(candidate)) continue;
    word = candidate;
    return true;
  }
  const bool isFacet = std::any_of(std::begin(kFacetWords), std::end(kFacetWords),
                                   [name](SchemaWord facet) { return name == TextOf(facet); });
  if (isFacet && row.otherFacet != nullptr) {
    return Fail(ModelCode::NotAllowed, child, row.otherFacet);
  }
  return Fail(ModelCode::NotAllowed, child, ChildMessage(row));
}

TQString SchemaWalker::AttributeMessage(const SchemaRow& row) const {
  TQString message = row.otherAttribute;
  message.Replace(kDatatypePrefix, DatatypePrefix(), 0);
  return message;
}

TQString SchemaWalker::ChildMessage(const SchemaRow& row) const {
  if (row.otherChild != nullptr) return row.otherChild;
  const TQString prefix = MessagePrefix();
  TQString message = row.isOneWord ? u"- expected: " : u"- expected: (";
  for (std::size_t i = 0; i < row.children.size(); ++i) {
    if (i > 0) message += u" | ";
    message += prefix;
    message += TextOf(row.children[i]);
  }
  if (!row.isOneWord) message += u")";
  return message;
}

bool SchemaWalker::ChargeCopies(const XTreeNode& node, std::size_t items) {
  std::int64_t& copies = model_.Schema().copies;
  copies += static_cast<std::int64_t>(items);
  return copies <= kSchemaCopyLimit || Fail(ModelCode::NotAllowed, node, u"- too many copies");
}

bool SchemaWalker::CheckElement(const ElementDecl& element) {
  return element.declared ||
         model_.Error().RecordError(ModelCode::NeverDeclared, element.sourceNode, {}, &element);
}

bool SchemaWalker::CheckElements(const XTreeNode& root) {
  if (model_.elements.empty()) return Fail(ModelCode::NoGrammar, root);
  std::vector<const ElementDecl*> sorted;
  for (const auto& [name, element] : model_.elements) sorted.push_back(element.get());
  const auto uriOf = [](const ElementDecl* element) {
    return element->name.uri != nullptr ? element->name.uri->View() : View();
  };
  std::sort(sorted.begin(), sorted.end(), [&](const ElementDecl* a, const ElementDecl* b) {
    const int uris = uriOf(a).compare(uriOf(b));
    return uris != 0 ? uris < 0 : a->name.local < b->name.local;
  });
  return std::all_of(sorted.begin(), sorted.end(),
                     [this](const ElementDecl* element) { return CheckElement(*element); });
}

TQString SchemaWalker::TextOfElement(const XTreeNode& element) {
  TQString text = element.GetText();
  for (const XTreeNode* child = element.FirstChild(); child != nullptr; child = child->next) {
    if (child->kind == XTreeKind::Text || child->kind == XTreeKind::CData) {
      text += child->GetText();
    }
  }
  return text;
}

}  // namespace kelmora
