// DtdReader reads the declarations of a DOCTYPE and its external subset into a DocumentModel.
//
// The declarations are read in passes, at most two, because a parameter entity can be used in a
// declaration that stands in front of its own: the first pass leaves an unknown reference out and
// asks for another one. The first problem ends the reading.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "xmlutil/documentmodel.h"

namespace kelmora {

class DtdReader {
 public:
  explicit DtdReader(DocumentModel& model) : model_(model) {}

  // All passes. `url` is that of the document that holds the DOCTYPE, or of the DTD itself. False
  // when a problem ended the reading; it stands in the model's record.
  bool ReadDTD(const XTreeContainer& root, std::u16string_view url);

  struct Expansion {
    bool withParameterEntities = false;
    bool normalised = false;        // replacement texts without white space at their ends
    bool requireExpansion = false;  // a failure still succeeds if a reference was expanded
    bool inContent = false;         // of a document: nothing is left out
  };
  // Copies `text` to `out` with its references replaced; replacement text is not looked at again.
  bool ExpandEntityReferences(const XTreeNode* node, std::u16string_view text, TQString& out,
                              const Expansion& options);

 private:
  // Where declarations stand: the file that relative URLs start from and the grammar in which
  // pieces of it parse.
  struct Place {
    TQString url;
    std::uint32_t kind;  // a GrammarKind
  };

  bool ReadDeclarations(const XTreeContainer& parent, const Place& place);
  void BeginPass();
  bool ReadDoctype(const XTreeContainer& doctype, const Place& place);
  bool ReadText(const XTreeNode& node, const Place& place);
  bool ReadSection(const XTreeNode& node, const Place& place);
  bool ReadEntityReference(const XTreeNode& node, const Place& place);
  bool ReadReplacement(const XTreeNode& node, std::u16string_view text, const Place& place);
  // What the first pass cannot read for references to what is declared further on, the second can.
  bool IsProvisional() const { return model_.pass == 1 && model_.needAnotherPass; }
  // "%name;" exactly: the entity, or null with the failure recorded or, in the first pass, another
  // pass asked for; `goOn` then tells whether reading may continue without it.
  EntityDecl* FindParameterEntity(const XTreeNode& node, std::u16string_view reference, bool& goOn);

  bool ReadEntity(const XTreeNode& node, const Place& place);
  bool ReadNotation(const XTreeNode& node, const Place& place);
  bool StoreValue(EntityDecl& entity, const XTreeNode& node, const Place& place);
  void LoadEntityDocument(EntityDecl& entity, const XTreeNode* node);
  std::u16string_view ReplacementOf(EntityDecl& entity, bool normalised);
  // One reference, "&name;" or "%name;": copied as it is or replaced. False when it failed.
  bool ExpandReference(const XTreeNode* node, std::u16string_view reference, TQString& out,
                       int& cursor, const Expansion& options, int& expanded);

  bool ReadElement(const XTreeDTDElement& node, const Place& place);
  bool ReadContent(ElementDecl& element, const XTreeDTDElement& node, const Place& place);
  // `node` is the node of the document that the content, or the text of it, came from.
  bool ReadGroup(ElementDecl& element, const XTreeDTDElement& content, const XTreeDTDElement& node);
  // A name that may be a parameter entity reference, without white space.
  bool ResolveName(const XTreeNode& node, std::u16string_view text, TQString& name);

  bool ReadAttlist(const XTreeDTDAttlist& list, const Place& place);
  bool ReadAttributeText(const XTreeDTDAttlist& list, const TQString& elementName,
                         std::u16string_view text, const Place& place);
  // `list` is the node of the document that the definition, or the text of it, came from.
  bool ReadDefinition(ElementDecl& element, const XTreeDTDAttlist& definition,
                      const XTreeDTDAttlist& list);
  bool ReadTypeReference(AttributeDecl& attribute, const XTreeDTDAttlist& item,
                         const XTreeDTDAttlist& list);
  bool ReadNames(AttributeDecl& attribute, const XTreeDTDAttlist& item,
                 const XTreeDTDAttlist& list);
  bool CheckDefinition(ElementDecl& element, AttributeDecl& attribute, const XTreeDTDAttlist& list);

  DocumentModel& model_;
  int nesting_ = 0;
};

// True for "%name;" as a whole, by the name characters of the XML Schema regular expressions.
bool IsParameterEntityReference(std::u16string_view text);

}  // namespace kelmora
