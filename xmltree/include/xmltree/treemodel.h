// TreeModel: what the tree builder asks of a document's DTD or schema. Declared here and
// implemented above, so that the trees know nothing of schema languages.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "xmltree/prefixmap.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

class XPathTreeBuilder;

// Thrown when a document's entity references would make a tree without measure. The message is
// what a user reads.
struct TQTreeLimitError {
  TQString message;
};

// What the entity references of one build may yet expand to, in units. It bounds what a small
// document can grow to: a base, and a multiple of what the document and its external entities
// themselves hold.
struct ExpansionBudget {
  static constexpr std::int64_t kBase = 2'000'000;
  static constexpr std::int64_t kPerUnitOfInput = 10;

  std::int64_t left = kBase;

  void AddInput(std::int64_t units) { left += kPerUnitOfInput * units; }
  void Check(std::int64_t units) const;  // throws TQTreeLimitError for more than there is left
  void Spend(std::int64_t units) {
    Check(units);
    left -= units;
  }
};

struct DefaultedAttribute {
  TQString name;              // qualified as the declaration has it
  InternedURI uri = nullptr;  // of the main builder's interned URIs, or null
  TQString value;             // as the declaration has it, references not expanded
};

// The declaration of an element.
class ElementDeclaration {
 public:
  virtual ~ElementDeclaration() = default;
  // What the declaration supplies by default; false, at no cost, when there is nothing.
  virtual bool GetDefaults(std::vector<DefaultedAttribute>& attributes, TQString& text) = 0;
};

class TreeModel {
 public:
  virtual ~TreeModel() = default;

  // Reads what the root's DOCTYPE or schema attributes refer to. `url` is the document's own. A
  // failure does not stop a build; the model keeps its error. The model interns the URIs that it
  // hands out in `builder`.
  virtual bool AttachSchema(XTreeNode& root, bool force, std::u16string_view url,
                            XPathTreeBuilder& builder) = 0;
  // Replaces general entity references of `text`. Predefined ones become character references or
  // the plain character. False leaves `out` undefined; the text then stays as written.
  virtual bool ExpandEntityReferences(std::u16string_view text, TQString& out) = 0;
  // Parses `text` as element content. Null when it does not parse. The tree's root is an element
  // that only holds the content.
  virtual std::unique_ptr<XTree> ParseContent(std::u16string_view text) = 0;
  // The declaration of an element by its qualified name (a DTD compares it whole) or by local name
  // and URI (a schema), through `parentDeclaration` when there is one. Null without one.
  virtual ElementDeclaration* FindDeclaration(std::u16string_view qualifiedName, InternedURI uri,
                                              ElementDeclaration* parentDeclaration) = 0;
  // False lets the builder skip FindDeclaration for every element.
  virtual bool HasDeclarations() const = 0;

  // Set while a build runs, null outside of one. The builder spends what each expansion yields;
  // ExpandEntityReferences calls Check with the length of `out` as it grows, so that no single
  // text can exhaust memory, and AddInput with the length of each external entity that it loads.
  ExpansionBudget* budget = nullptr;
};

}  // namespace kelmora
