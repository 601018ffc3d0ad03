#include "modules/builtinstylesheet.h"

#include <string_view>
#include <utility>

#include "names/xsltnames.h"

namespace kelmora {

namespace {

using AttributeText = std::pair<const char16_t*, std::u16string_view>;

struct BuiltInTemplate {
  const char16_t* match;
  const char16_t* mode;         // null: none
  const char16_t* instruction;  // null: the template is empty
  AttributeText attribute;      // of the instruction; a null name: none
};

constexpr AttributeText kNoAttribute = {nullptr, {}};
constexpr BuiltInTemplate kTemplates[] = {
    {u"*|/", nullptr, u"xsl:apply-templates", kNoAttribute},
    {u"text()|@*", nullptr, u"xsl:value-of", {u"select", u"."}},
    {u"*|/", u"?", u"xsl:apply-templates", {u"mode", u"?"}},
    {u"text()|@*", u"?", u"xsl:value-of", {u"select", u"."}},
    {u"processing-instruction()|comment()", nullptr, nullptr, kNoAttribute},
    {u"processing-instruction()|comment()", u"?", nullptr, kNoAttribute},
};

void AddAttribute(XTree& tree, XTreeElement& element, const char16_t* name,
                  std::u16string_view value) {
  if (name == nullptr) return;
  auto* attribute = tree.Make<XTreeAttribute>();
  attribute->name = name;
  attribute->text = value;
  element.AppendChild(attribute);
}

XTreeElement& AddElement(XTree& tree, XTreeContainer& parent, const char16_t* name) {
  auto* element = tree.Make<XTreeElement>();
  element->name = name;
  parent.AppendChild(element);
  return *element;
}

std::unique_ptr<XTree> MakeSource() {
  auto tree = std::make_unique<XTree>();
  tree->root = tree->Make<XTreeDocument>();
  XTreeElement& stylesheet = AddElement(*tree, *tree->root, u"xsl:stylesheet");
  AddAttribute(*tree, stylesheet, u"version", u"1.0");
  AddAttribute(*tree, stylesheet, u"xmlns:xsl", kXsltNamespace);
  for (const BuiltInTemplate& row : kTemplates) {
    XTreeElement& element = AddElement(*tree, stylesheet, u"xsl:template");
    AddAttribute(*tree, element, u"match", row.match);
    if (row.mode != nullptr) AddAttribute(*tree, element, u"mode", row.mode);
    if (row.instruction == nullptr) continue;
    XTreeElement& instruction = AddElement(*tree, element, row.instruction);
    AddAttribute(*tree, instruction, row.attribute.first, row.attribute.second);
  }
  return tree;
}

}  // namespace

BuiltInStylesheet::BuiltInStylesheet(XPathTreeBuilder& builder, TreeModel& model)
    : source_(MakeSource()), BuiltInRoot(builder.Build(*source_->root, model, false, {})) {}

BuiltInStylesheet::~BuiltInStylesheet() {
  XPathNode::DeleteTree(BuiltInRoot);
}

}  // namespace kelmora
