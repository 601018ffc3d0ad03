// This room reads DTDs: DtdReader reads the declarations of a DOCTYPE and its external subset into
// a DocumentModel.
//
// The declarations are read in passes, because a parameter entity can be used in a declaration that
// stands in front of its own: the first pass leaves an unknown reference out and asks for another
// one. A value in which a reference was left out is provisional, and so is a value made of such a
// one. What hangs on a provisional value, a name, the word of a conditional section or something
// that does not parse, waits for the next pass, up to kDeclarationPasses. Any other problem ends
// the reading.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "model/entityexpander.h"
#include "xmlutil/documentmodel.h"

namespace kelmora {

class DtdReader {
 public:
  explicit DtdReader(DocumentModel& model) : model_(model) {}

  // All passes. `url` is that of the document that holds the DOCTYPE, or of the DTD itself. False
  // when a problem ended the reading; it stands in the model's record.
  bool ReadDTD(const XTreeContainer& root, std::u16string_view url);

 private:
  // Where declarations stand: the file that relative URLs start from and the grammar in which
  // pieces of it parse.
  struct Place {
    TQString url;
    GrammarKind kind;
    bool isProvisional = false;  // the text of a provisional value
  };

  bool ReadDeclarations(const XTreeContainer& parent, const Place& place);
  void BeginPass();
  bool ReadDoctype(const XTreeContainer& doctype, const Place& place);
  bool ReadText(const XTreeNode& node, const Place& place);
  bool ReadSection(const XTreeNode& node, const Place& place);
  bool ReadEntityReference(const XTreeNode& node, const Place& place);
  bool ReadReplacement(const XTreeNode& node, std::u16string_view text, const Place& place);
  // "%name;" exactly: the entity, or null with the failure recorded or, in the first pass, another
  // pass asked for; `goOn` then tells whether reading may continue without it.
  EntityDecl* FindParameterEntity(const XTreeNode& node, std::u16string_view reference, bool& goOn);

  bool ReadEntity(const XTreeNode& node, const Place& place);
  bool ReadNotation(const XTreeNode& node, const Place& place);
  bool StoreValue(EntityDecl& entity, const XTreeNode& node, const Place& place);

  bool ReadElement(const XTreeDTDElement& node, const Place& place);
  bool ReadContent(ElementDecl& element, const XTreeDTDElement& node, const Place& place);
  // `node` is the node of the document that the content, or the text of it, came from.
  bool ReadGroup(ElementDecl& element, const XTreeDTDElement& content, const XTreeDTDElement& node);
  // A name that may be a parameter entity reference, without white space; empty while it is
  // provisional, since half a name is another one's.
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
  EntityExpander expander_{model_};  // provisional: the declaration that is being read
  int nesting_ = 0;
};

// True for "%name;" as a whole, by the name characters of the XML Schema regular expressions.
bool IsParameterEntityReference(std::u16string_view text);

}  // namespace kelmora
