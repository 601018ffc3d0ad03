// This room reads XML Schema (xmlschemareader.h), and has what all schema languages share: the
// table of what they allow (schematable.h), and this.
//
// SchemaWalker: what is the same at every element of every schema language. The attributes and
// children of a node are held against its row of the table; a reader then acts on the values and is
// called for each child. The first one that the row does not allow ends the reading.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "schema/schematable.h"
#include "tqcore/tqstring.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {

// Bound on elements of a schema inside one another.
inline constexpr int kSchemaNesting = 512;
// Bound on the particles, attributes and members of unions that one model copies from declaration
// to declaration.
inline constexpr std::int64_t kSchemaCopyLimit = 4'000'000;
// Bound on the steps that regular expressions take for the checks of one model's values.
inline constexpr std::int64_t kSchemaMatchLimit = 50'000'000;

// The attributes that a node has, in its order.
class SchemaValues {
 public:
  void Add(SchemaWord word, TQString value) { values_.emplace_back(word, std::move(value)); }
  // Null without the attribute.
  const TQString* Find(SchemaWord word) const;
  bool Has(SchemaWord word) const { return Find(word) != nullptr; }
  // Empty without the attribute.
  const TQString& operator[](SchemaWord word) const;
  bool IsTrue(SchemaWord word) const;

  auto begin() const { return values_.begin(); }
  auto end() const { return values_.end(); }

 private:
  std::vector<std::pair<SchemaWord, TQString>> values_;
};

class SchemaWalker {
 protected:
  explicit SchemaWalker(DocumentModel& model) : model_(model) {}
  virtual ~SchemaWalker() = default;

  // The name to look for in a row; false for an attribute that passes everywhere.
  virtual bool AttributeName(const XTreeNode& node, std::u16string_view name, TQString& key) = 0;
  // The name to look for in a row; empty for an element that the language does not know.
  virtual std::u16string_view ElementName(const XTreeNode& element) = 0;
  // In front of names of elements in messages, with its colon.
  virtual TQString MessagePrefix() const { return {}; }
  // The same for attributes in the namespace of the datatypes.
  virtual TQString DatatypePrefix() const { return {}; }
  // What must hold of an element when all is read.
  virtual bool CheckElement(const ElementDecl& element);

  bool ReadAttributes(const XTreeNode& node, const SchemaRow& row, SchemaValues& values);
  // Calls `visit(word, child)` for each element below `node` until it returns false.
  template <class Visit>
  bool ReadChildren(const XTreeNode& node, const SchemaRow& row, Visit visit) {
    if (nesting_ >= kSchemaNesting) return Fail(ModelCode::NotAllowed, node, kTooDeep);
    ++nesting_;
    bool goesOn = true;
    for (const XTreeNode* child = node.FirstChildOfKind(XTreeKind::Element);
         goesOn && child != nullptr; child = child->NextOfKind(XTreeKind::Element)) {
      SchemaWord word;
      goesOn = CheckChild(*child, row, word) && visit(word, *child);
    }
    --nesting_;
    return goesOn;
  }

  // Calls `visit(word, value, property)` for the attributes of `node` and then for the elements
  // below it, whose value is their text, until it returns false. The attributes of the row stand
  // for both; the visitor may put another row in its place.
  template <class Visit>
  bool ReadProperties(const XTreeNode& node, const SchemaRow* const& row, Visit visit) {
    if (nesting_ >= kSchemaNesting) return Fail(ModelCode::NotAllowed, node, kTooDeep);
    ++nesting_;
    bool goesOn = true;
    for (const XTreeNode* property = node.FirstChild(); goesOn && property != nullptr;
         property = property->next) {
      SchemaValues values;
      if (property->kind == XTreeKind::Attribute) {
        goesOn = ReadAttribute(node, *property, *row, values);
      } else if (property->kind == XTreeKind::Element) {
        goesOn = ReadValue(*property, property->GetName(), TextOfElement(*property), *row, values);
      }
      for (const auto& [word, value] : values) goesOn = goesOn && visit(word, value, *property);
    }
    --nesting_;
    return goesOn;
  }

  // Records an error; false, so that a reader can return it.
  bool Fail(ModelCode code, const XTreeNode& node, std::u16string_view text = {}) {
    return model_.Error().RecordError(code, &node, text);
  }
  void Warn(const XTreeNode& node, std::u16string_view text) {
    static_cast<void>(model_.Error().RecordError(ModelCode::Redefinition, &node, text));
  }
  // A copy of so many items; false, with the error, beyond kSchemaCopyLimit.
  bool ChargeCopies(const XTreeNode& node, std::size_t items);

  // CheckElement for all elements in the order of their names; it is an error if there is none.
  bool CheckElements(const XTreeNode& root);

  // The text of an element: its own, or that of its texts and CDATA sections.
  static TQString TextOfElement(const XTreeNode& element);

  DocumentModel& model_;

 private:
  static constexpr std::u16string_view kTooDeep = u"- nested too deeply";

  bool CheckValue(const ValueRule& rule, const XTreeNode& node, TQString& value);
  bool CheckChild(const XTreeNode& child, const SchemaRow& row, SchemaWord& word);
  bool ReadAttribute(const XTreeNode& node, const XTreeNode& attribute, const SchemaRow& row,
                     SchemaValues& values);
  bool ReadValue(const XTreeNode& node, std::u16string_view key, TQString value,
                 const SchemaRow& row, SchemaValues& values);
  bool Expand(const XTreeNode& node, std::u16string_view text, TQString& out);
  TQString AttributeMessage(const SchemaRow& row) const;
  TQString ChildMessage(const SchemaRow& row) const;

  int nesting_ = 0;
};

}  // namespace kelmora
