// What a document refers to, and what a schema file is, told from names and values of the XTree.
//
// DetectSchemaKind visits elements depth first until one decides; for most documents none does, so
// the walk sees every attribute and has to be quick: a name that neither begins with "xmlns" nor
// is long enough to hold one of the words is passed over by its length. Each level of the descent
// keeps a namespace, a location and a target namespace of its own, which serve the lists when that
// level ends; levels lie on a heap stack.
#include <algorithm>
#include <utility>

#include "tqcore/tqtext.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {
namespace {

using View = std::u16string_view;

constexpr View kXsd2001 = u"http://www.w3.org/2001/XMLSchema";
constexpr View kXsd1999 = u"http://www.w3.org/1999/XMLSchema";
constexpr View kXsd2000 = u"http://www.w3.org/2000/10/XMLSchema";
constexpr View kXSchema = u"x-schema:";
constexpr View kSelf = u"schema:--self--";

bool Holds(View text, View word) {
  return text.find(word) != View::npos;
}

// One level of the descent: the children of one node.
struct Level {
  const XTreeNode* next;  // the child to look at next
  View namespaceURI;
  View location;
  View targetNamespace;
};

class Detector {
 public:
  SchemaReference Run(const XTreeNode& node, bool ignoreDoctype);

 private:
  void LookAtElement(const XTreeNode& element, Level& level);
  void LookAtAttribute(const XTreeNode& attribute, const XTreeNode& element, Level& level);
  void LookAtDoctype(const XTreeNode& doctype, Level& level);
  void EndLevel(const Level& level);
  void Decide(SchemaKind kind, const XTreeNode& attribute) {
    found_.kind = kind;
    found_.attributeNode = &attribute;
  }

  SchemaReference found_;
  std::vector<View> namespaces_;
  std::vector<View> locations_;
};

// "a b c d": a and c are namespaces, b and d their locations.
void ReadPairs(View text, std::vector<View>& namespaces, std::vector<View>& locations) {
  bool isLocation = false;
  for (std::size_t at = text.find_first_not_of(kXmlSpaces); at != View::npos;
       at = text.find_first_not_of(kXmlSpaces, at)) {
    const std::size_t end = std::min(text.find_first_of(kXmlSpaces, at), text.size());
    (isLocation ? locations : namespaces).push_back(text.substr(at, end - at));
    isLocation = !isLocation;
    at = end;
  }
}

void Detector::LookAtAttribute(const XTreeNode& attribute, const XTreeNode& element, Level& level) {
  static constexpr View kXmlns = u"xmlns";
  static constexpr std::size_t kShortestWord = View(u"schemaLocation").size();
  static_assert(kShortestWord == XTreeNode::kLongName);
  const View name = attribute.GetName();
  const bool isDeclaration = name.starts_with(kXmlns);
  if (!isDeclaration && name.size() < kShortestWord) return;

  const View value = attribute.GetText();
  if (isDeclaration) {
    if (value.starts_with(kXSchema)) {
      Decide(SchemaKind::XDRByNamespace, attribute);
      level.location = TrimView(value.substr(kXSchema.size()));
      level.namespaceURI = value;
    }
    const View prefix = PrefixOf(element.GetName());
    if (prefix.empty() ? name == kXmlns : attribute.GetLocalName() == prefix) {
      level.namespaceURI = value;
      if (value == kXsd1999) Decide(SchemaKind::XMLSchema1999, attribute);
      if (value == kXsd2000) Decide(SchemaKind::XMLSchema2000, attribute);
      if (value == kXsd2001) Decide(SchemaKind::XMLSchema2001, attribute);
    }
  }
  if (Holds(name, u"noNamespaceSchemaLocation")) {
    Decide(SchemaKind::XMLSchema2001, attribute);
    level.namespaceURI = {};
    level.location = value;
  }
  if (Holds(name, u"schemaLocation") && element.GetLocalName() != u"include" &&
      element.GetLocalName() != u"import") {
    Decide(SchemaKind::XMLSchema2001, attribute);
    ReadPairs(value, namespaces_, locations_);
  }
  if (Holds(name, u"targetNamespace")) level.targetNamespace = value;
}

void Detector::LookAtElement(const XTreeNode& element, Level& level) {
  for (const XTreeNode* attribute = element.FirstChild();
       attribute != nullptr && attribute->kind == XTreeKind::Attribute;
       attribute = attribute->next) {
    const bool locationKnown = !level.location.empty() || !locations_.empty();
    if (found_.kind != SchemaKind::None && locationKnown) break;
    LookAtAttribute(*attribute, element, level);
  }
  if (found_.kind == SchemaKind::None) return;
  found_.schemaRootNode = &element;
  found_.schemaRootName = element.GetName();
}

void Detector::LookAtDoctype(const XTreeNode& doctype, Level& level) {
  found_.kind = SchemaKind::DTD;
  const XTreeNode* external = doctype.FirstChildOfKind(XTreeKind::ExternalID);
  if (external == nullptr) return;
  // The quoted words of the identifier, without their quotes.
  std::vector<View> words;
  const View text = external->GetText();
  for (std::size_t at = text.find_first_of(u"\"'"); at != View::npos;
       at = text.find_first_of(u"\"'", at)) {
    const std::size_t end = std::min(text.find(text[at], at + 1), text.size());
    words.push_back(text.substr(at + 1, end - at - 1));
    at = std::min(end + 1, text.size());
  }
  if (external->GetName() == u"SYSTEM") {
    if (!words.empty()) level.location = words[0];
    return;
  }
  if (!words.empty()) level.namespaceURI = words[0];
  if (words.size() > 1) level.location = words[1];
}

void Detector::EndLevel(const Level& level) {
  View location = level.location;
  if (!level.targetNamespace.empty() && level.targetNamespace == level.namespaceURI) {
    location = kSelf;
  }
  if (namespaces_.empty()) namespaces_.push_back(level.namespaceURI);
  if (locations_.empty()) locations_.push_back(location);
}

SchemaReference Detector::Run(const XTreeNode& node, bool ignoreDoctype) {
  const bool isPlain = (node.flags & XTreeNode::PlainAttributes) != 0;
  std::vector<Level> levels;
  levels.push_back({node.FirstChild(), {}, {}, {}});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (found_.kind != SchemaKind::None || level.next == nullptr) {
      if (found_.kind != SchemaKind::None) EndLevel(level);
      levels.pop_back();
      continue;
    }
    const XTreeNode& child = *level.next;
    level.next = child.next;
    if (child.kind == XTreeKind::Element) {
      if (isPlain) continue;  // no attribute of the tree is worth a look
      namespaces_.clear();
      locations_.clear();
      LookAtElement(child, level);
      if (found_.kind == SchemaKind::None && child.HasChildren()) {
        levels.push_back({child.FirstChild(), {}, {}, {}});
      }
    } else if (!ignoreDoctype && levels.size() == 1 &&
               (child.kind == XTreeKind::DocType || child.kind >= XTreeKind::DTDElement)) {
      LookAtDoctype(child, level);
    }
  }
  for (View text : namespaces_) found_.namespaces.emplace_back(text);
  for (View text : locations_) found_.locations.emplace_back(text);
  return std::move(found_);
}

// The words that tell the languages apart when an element's name holds one of them.
constexpr View kSchemaWords[] = {u"attributeGroup", u"group",  u"notation",    u"annotation",
                                 u"include",        u"import", u"complexType", u"element"};
constexpr View kOldWords[] = {u"attrDecl", u"elementType"};
constexpr View kXdrWords[] = {u"ElementType", u"AttributeType"};

template <std::size_t Count>
bool HoldsAny(View text, const View (&words)[Count]) {
  return std::any_of(std::begin(words), std::end(words),
                     [text](View word) { return Holds(text, word); });
}

// What one child or attribute of a schema's root tells: a kind, an error, or nothing.
struct Verdict {
  SchemaKind kind = SchemaKind::None;
  ModelCode error = ModelCode::None;
  bool IsOpen() const { return kind == SchemaKind::None && error == ModelCode::None; }
};

Verdict JudgeInCapitalSchema(const XTreeNode& child) {
  const View name = child.GetName();
  if (child.kind == XTreeKind::Element) {
    if (HoldsAny(name, kXdrWords)) return {SchemaKind::XDRByNamespace, ModelCode::None};
    if (HoldsAny(name, kSchemaWords) || HoldsAny(name, kOldWords)) {
      return {SchemaKind::None, ModelCode::XdrWordsInSchema};
    }
    return {};
  }
  if (child.kind != XTreeKind::Attribute || !name.starts_with(u"xmlns")) return {};
  const View value = child.GetText();
  if (Holds(value, u"xml-data")) return {SchemaKind::XDRByNamespace, ModelCode::None};
  if (Holds(value, u"XMLSchema") || Holds(value, u"structures") || Holds(value, u"xmlschema")) {
    return {SchemaKind::None, ModelCode::XdrWordsInSchema};
  }
  return {};
}

Verdict JudgeInSchema(const XTreeNode& child) {
  const View name = child.GetName();
  if (child.kind == XTreeKind::Element) {
    if (HoldsAny(name, kSchemaWords)) return {SchemaKind::XMLSchema2001, ModelCode::None};
    if (HoldsAny(name, kOldWords)) return {SchemaKind::None, ModelCode::OldWordsInSchema};
    if (HoldsAny(name, kXdrWords)) return {SchemaKind::None, ModelCode::XdrWordsInSchema};
    return {};
  }
  if (child.kind != XTreeKind::Attribute || !name.starts_with(u"xmlns")) return {};
  const View value = child.GetText();
  if (Holds(value, u"1999/XMLSchema")) return {SchemaKind::XMLSchema1999, ModelCode::None};
  if (Holds(value, u"2000/10/XMLSchema")) return {SchemaKind::XMLSchema2000, ModelCode::None};
  if (Holds(value, u"/XMLSchema")) return {SchemaKind::XMLSchema2001, ModelCode::None};
  if (Holds(value, u"xml-data")) return {SchemaKind::None, ModelCode::XdrWordsInSchema};
  return {};
}

}  // namespace

SchemaReference DocumentModel::DetectSchemaKind(const XTreeNode& node, bool ignoreDoctype) {
  return Detector().Run(node, ignoreDoctype);
}

SchemaKind DocumentModel::DetectFileKind(const XTreeNode& root) {
  if (root.kind == XTreeKind::DTDDocument) return SchemaKind::DTD;
  for (const XTreeNode* element = root.FirstChildOfKind(XTreeKind::Element); element != nullptr;
       element = element->NextOfKind(XTreeKind::Element)) {
    if (Holds(element->GetName(), u"DCD")) return SchemaKind::DCD;
    const bool capital = element->GetLocalName() == u"Schema";
    if (!capital && element->GetLocalName() != u"schema") continue;
    for (const XTreeNode* child = element->FirstChild(); child != nullptr; child = child->next) {
      const Verdict verdict = capital ? JudgeInCapitalSchema(*child) : JudgeInSchema(*child);
      if (verdict.IsOpen()) continue;
      if (verdict.error != ModelCode::None)
        error_.RecordError(verdict.error, child, child->GetName());
      return verdict.kind;
    }
    if (capital) return SchemaKind::XDRByNamespace;
  }
  return SchemaKind::None;
}

}  // namespace kelmora
