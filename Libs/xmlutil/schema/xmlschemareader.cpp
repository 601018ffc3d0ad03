// Passes, documents and the names in them.
#include "schema/xmlschemareader.h"

#include <algorithm>

#include "tqcore/tqtext.h"
#include "xmltree/documentmanager.h"

namespace kelmora {
namespace {

using View = std::u16string_view;
using Word = SchemaWord;

constexpr View kSchemaNamespace = u"http://www.w3.org/2001/XMLSchema";
constexpr View kDeclaration = u"xmlns";
constexpr int kMostFurtherPasses = 3;

bool IsDeclaration(View name) {
  return name == kDeclaration || PrefixOf(name) == kDeclaration;
}

}  // namespace

bool DocumentModel::ReadXMLSchema(const std::vector<SchemaSource>& rootDocuments) {
  return XmlSchemaReader(*this).Read(rootDocuments);
}

XmlSchemaReader::XmlSchemaReader(DocumentModel& model)
    : SchemaWalker(model),
      schemaNamespace_(model.Builder().InternURI(kSchemaNamespace)),
      schema_(model.Schema()) {}

// --- passes ------------------------------------------------------------------------------------

bool XmlSchemaReader::Read(const std::vector<SchemaSource>& rootDocuments) {
  rootDocuments_ = &rootDocuments;
  model_.pass = 0;
  model_.passLimit = 1;
  model_.schemaKind = SchemaKind::XMLSchema2001;
  model_.EnterPredefinedEntities();
  passBudget_ = 1;
  do {
    if (!ReadPass(rootDocuments)) return false;
    if (model_.needAnotherPass) {
      passBudget_ =
          std::min(passBudget_ + static_cast<int>(pendingNames_.size()), kMostFurtherPasses);
      pendingNames_.clear();
    }
  } while (passBudget_ > 0);
  return CheckElements(*rootDocuments.front().root);
}

bool XmlSchemaReader::ReadPass(const std::vector<SchemaSource>& rootDocuments) {
  ++model_.pass;
  --passBudget_;
  model_.needAnotherPass = false;
  model_.Error().Clear();
  model_.ResetEntityText();
  documentsRead_.clear();
  for (const SchemaSource& source : rootDocuments) {
    if (!ReadSchemaDocument(source, &source != &rootDocuments.front())) return false;
  }
  return true;
}

bool XmlSchemaReader::LeaveOpen(const QName& name, ModelCode code, const XTreeNode& node,
                                View text) {
  if (!IsFirstPass()) return Fail(code, node, text);
  model_.needAnotherPass = true;
  model_.passLimit = static_cast<std::int16_t>(model_.pass + 1);
  pendingNames_.insert(name);
  return true;
}

bool XmlSchemaReader::CheckElement(const ElementDecl& element) {
  if (!SchemaWalker::CheckElement(element)) return false;
  if (element.substitutionGroup.local.IsEmpty()) return true;
  const XTreeNode& node = *element.sourceNode;
  ElementDecl* head = model_.FindElement(element.substitutionGroup);
  if (head == nullptr) return Fail(ModelCode::NoSubstitutionHead, node);
  if (head->blockText.Find(u"substitution") != TQString::kNotFound) {
    return Fail(ModelCode::ForbiddenDerivation, node, head->blockText);
  }
  head->hasSubstitutes = true;
  return true;
}

// --- names -------------------------------------------------------------------------------------

bool XmlSchemaReader::AttributeName(const XTreeNode& node, View name, TQString& key) {
  if (IsDeclaration(name) || name == TextOf(Word::Id)) return false;
  const View prefix = PrefixOf(name);
  if (!prefix.empty() && model_.Builder().ScopeAt(node).Lookup(prefix) != schemaNamespace_) {
    return false;
  }
  key = name;
  return true;
}

View XmlSchemaReader::ElementName(const XTreeNode& element) {
  const PrefixMap& scope = model_.Builder().ScopeAt(element);
  const bool isOurs = scope.Lookup(PrefixOf(element.GetName())) == schemaNamespace_;
  return isOurs ? element.GetLocalName() : View();
}

QName XmlSchemaReader::ResolveName(const XTreeNode& node, View text) const {
  text = TrimView(text);
  const PrefixMap& scope = model_.Builder().ScopeAt(node);
  return {TQString(LocalPartOf(text)), scope.Lookup(PrefixOf(text))};
}

bool XmlSchemaReader::MissesAttribute(const XTreeNode& node, const SchemaValues& values,
                                      Word word) {
  if (values.Has(word)) return false;
  Fail(ModelCode::AttributeMissing, node, TextOf(word));
  return true;
}

// --- documents ---------------------------------------------------------------------------------

const XTreeNode* XmlSchemaReader::SchemaElementOf(const XTreeNode& root) {
  const XTreeNode* element = root.FirstChildOfKind(XTreeKind::Element);
  while (element != nullptr && element->GetLocalName() != TextOf(Word::Schema)) {
    element = element->NextOfKind(XTreeKind::Element);
  }
  return element;
}

bool XmlSchemaReader::ReadSchemaDocument(const SchemaSource& source, bool isNested) {
  state_.url = source.url;
  state_.hasOwnTarget = false;
  if (!isNested) {
    const TQString& target = source.targetNamespace;
    state_.targetNamespace = target.IsEmpty() ? nullptr : model_.Builder().InternURI(target);
  }
  documentsRead_.emplace(state_.targetNamespace, source.root);
  const XTreeNode* schema = SchemaElementOf(*source.root);
  if (schema == nullptr) return true;

  const PrefixMap& scope = model_.Builder().ScopeAt(*schema);
  const auto bound = [&](const PrefixMap::Entry& entry) { return entry.uri == schemaNamespace_; };
  auto entry = scope.begin();
  while (entry != scope.end() && !bound(*entry)) ++entry;
  if (!(entry != scope.end())) return Fail(ModelCode::NoSchemaPrefix, *schema);
  state_.prefix = entry->prefix;
  if (!state_.prefix.IsEmpty()) state_.prefix += u':';
  if (ElementName(*schema) != TextOf(Word::Schema)) {
    return Fail(ModelCode::NotAllowed, *schema,
                u"- expected: " + state_.prefix + TextOf(Word::Schema));
  }
  if (!ReadSchemaAttributes(*schema, source, isNested)) return false;
  if (state_.targetNamespace == nullptr && scope.Lookup(u"") == schemaNamespace_) {
    return Fail(ModelCode::NoTargetNamespace, *schema);
  }
  groupsOfDocument_.clear();
  for (int sweep = 1; sweep <= kSweeps; ++sweep) {
    if (!ReadSweep(*schema, sweep)) return false;
  }
  return true;
}

bool XmlSchemaReader::ReadSchemaAttributes(const XTreeNode& schema, const SchemaSource& source,
                                           bool isNested) {
  SchemaValues values;
  if (!ReadAttributes(schema, kSchemaRow, values)) return false;
  const TQString& target = values[Word::TargetNamespace];
  if (!target.IsEmpty()) {
    const InternedURI uri = model_.Builder().InternURI(target);
    if (isNested && uri != state_.targetNamespace) {
      return Fail(ModelCode::OtherTargetNamespace, schema, target);
    }
    state_.targetNamespace = uri;
    state_.hasOwnTarget = true;
    documentsRead_.emplace(uri, source.root);
  }
  constexpr View kQualified = u"qualified";
  state_.elementFormQualified = values[Word::ElementFormDefault] == kQualified;
  state_.attributeFormQualified = values[Word::AttributeFormDefault] == kQualified;
  state_.blockDefault = values[Word::BlockDefault];
  state_.finalDefault = values[Word::FinalDefault];
  return true;
}

// The first sweep meets every child, so one that has no place here ends the reading before any
// element is read.
bool XmlSchemaReader::ReadSweep(const XTreeNode& schema, int sweep) {
  const bool complete = ReadChildren(schema, kSchemaRow, [&](Word word, const XTreeNode& child) {
    return SweepOf(word) != sweep || ReadTopLevel(word, child);
  });
  return complete && (sweep != SweepOf(Word::Group) || CheckGroups(groupsOfDocument_));
}

bool XmlSchemaReader::ReadTopLevel(Word word, const XTreeNode& node) {
  if (word == Word::Include) return ReadInclude(node, kIncludeRow);
  if (word == Word::Redefine) return ReadRedefine(node);
  if (word == Word::Import) return ReadImport(node);
  if (word == Word::Annotation) {
    ReadAnnotation(node, schema_.schemaDocumentation);
    return true;
  }
  if (word == Word::SimpleType) return ReadTopSimpleType(node);
  if (word == Word::Notation) return ReadNotation(node);
  if (word == Word::ComplexType) return ReadTopComplexType(node);
  if (word == Word::Group) return ReadTopGroup(node);
  if (word == Word::Attribute) return ReadAttribute(node, nullptr);
  if (word == Word::AttributeGroup) return ReadTopAttributeGroup(node);
  if (word == Word::Element) return ReadElement(node, nullptr);
  return true;
}

// A document that was read into this namespace already is not read again, so circles end.
bool XmlSchemaReader::ReadNested(const SchemaSource& source, const XTreeNode& node,
                                 InternedURI target) {
  if (documentsRead_.contains({target, source.root})) return true;
  if (documentNesting_ >= kSchemaDocumentNesting) {
    return Fail(ModelCode::LoadFailed, node, source.url);
  }
  DocumentState saved = state_;
  std::vector<ElementDecl*> groups = std::move(groupsOfDocument_);
  state_ = {};
  state_.targetNamespace = target;
  ++documentNesting_;
  const bool complete = ReadSchemaDocument(source, true);
  --documentNesting_;
  state_ = std::move(saved);
  groupsOfDocument_ = std::move(groups);
  return complete;
}

bool XmlSchemaReader::ReadInclude(const XTreeNode& node, const SchemaRow& row) {
  SchemaValues values;
  if (!ReadAttributes(node, row, values)) return false;
  if (MissesAttribute(node, values, Word::SchemaLocation)) return false;
  const TQString& location = values[Word::SchemaLocation];
  const LoadRecord* record = model_.LoadReferencedDocument(location, state_.url, GrammarKind::XML);
  if (record == nullptr) return Fail(ModelCode::LoadFailed, node, location);
  // The same definitions may come in twice.
  return ReadNested({record->Root(), record->path, {}}, node, state_.targetNamespace) ||
         model_.Error().Code() == ModelCode::DeclaredTwice;
}

bool XmlSchemaReader::ReadRedefine(const XTreeNode& node) {
  if (!ReadInclude(node, kRedefineRow)) return false;
  const bool complete = ReadChildren(node, kRedefineRow, [&](Word word, const XTreeNode& child) {
    return word == Word::Annotation || ReadTopLevel(word, child);
  });
  return complete && CheckGroups(groupsOfDocument_);
}

View XmlSchemaReader::TargetNamespaceOf(const XTreeNode& root) {
  const XTreeNode* schema = SchemaElementOf(root);
  if (schema == nullptr) return {};
  const XTreeNode* attribute = schema->FirstChildOfKind(XTreeKind::Attribute);
  while (attribute != nullptr && attribute->GetName() != TextOf(Word::TargetNamespace)) {
    attribute = attribute->NextOfKind(XTreeKind::Attribute);
  }
  return attribute != nullptr ? attribute->GetText() : View();
}

// The document is read with its own target namespace, whatever the import says of it.
bool XmlSchemaReader::ReadImport(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kImportRow, values)) return false;
  const TQString& location = values[Word::SchemaLocation];
  const TQString& wanted = values[Word::Namespace];
  SchemaSource source;
  if (!location.IsEmpty()) {
    const LoadRecord* record =
        model_.LoadReferencedDocument(location, state_.url, GrammarKind::XML);
    if (record == nullptr) return Fail(ModelCode::LoadFailed, node, location);
    source = {record->Root(), record->path, {}};
  } else if (!wanted.IsEmpty()) {
    for (const SchemaSource& root : *rootDocuments_) {
      if (wanted == TargetNamespaceOf(*root.root)) source = root;
    }
  }
  if (source.root == nullptr) return true;
  const View target = TargetNamespaceOf(*source.root);
  return ReadNested(source, node, target.empty() ? nullptr : model_.Builder().InternURI(target));
}

bool XmlSchemaReader::ReadNotation(const XTreeNode& node) {
  SchemaValues values;
  if (!ReadAttributes(node, kNotationRow, values)) return false;
  for (Word word : {Word::Name, Word::Public}) {
    if (MissesAttribute(node, values, word)) return false;
  }
  auto& notation = model_.notations[values[Word::Name]];
  notation = std::make_unique<EntityDecl>();
  notation->name = values[Word::Name];
  notation->publicText = values[Word::Public];
  notation->value = u"PUBLIC \"" + notation->publicText + u"\"";
  if (values.Has(Word::System)) notation->value += u" \"" + values[Word::System] + u"\"";
  notation->sourceNode = &node;
  notation->external = true;
  notation->declared = true;
  return ReadChildren(node, kNotationRow, [](Word, const XTreeNode&) { return true; });
}

void XmlSchemaReader::ReadAnnotation(const XTreeNode& node, TQString& text) {
  for (const XTreeNode* child = node.FirstChildOfKind(XTreeKind::Element); child != nullptr;
       child = child->NextOfKind(XTreeKind::Element)) {
    if (ElementName(*child) == TextOf(Word::Documentation)) text = TextOfElement(*child);
  }
}

}  // namespace kelmora
