// EntityExpander replaces the references in a text by what the entities of a DocumentModel stand
// for. The readers of DTDs and schemas use it for names and values of declarations, the model for
// the content of the document.
//
// A replacement text is stored with the references inside it already replaced, as far as they were
// known, and it is not looked at again when it is inserted. So a text cannot grow without end, but
// it can multiply from declaration to declaration: kEntityTextLimit bounds the sum.
#pragma once

#include <string_view>
#include <vector>

#include "xmlutil/documentmodel.h"

namespace kelmora {

class EntityExpander {
 public:
  struct Options {
    bool withParameterEntities = false;
    bool normalised = false;        // replacement texts without white space at their ends
    bool requireExpansion = false;  // a failure still succeeds if a reference was expanded
    bool inContent = false;         // of a document: nothing is left out
  };

  explicit EntityExpander(DocumentModel& model) : model_(model) {}

  // Copies `text` to `out` with its references replaced. False when one failed, which the model's
  // record tells at `node`. In the first pass over declarations an unknown one is left out.
  bool ExpandEntityReferences(const XTreeNode* node, std::u16string_view text, TQString& out,
                              const Options& options);
  // At the first call for an external entity; without success its document stays null.
  void LoadEntityDocument(EntityDecl& entity, const XTreeNode* node);

  // Whether what was expanded since this was cleared hangs on a provisional value, so that a
  // problem with it is none yet. Postpone asks for another pass then; false if there is no more.
  bool provisional = false;
  bool Postpone() { return provisional && model_.AskForPass(); }

 private:
  std::u16string_view ReplacementOf(EntityDecl& entity, bool normalised);
  // One reference, "&name;" or "%name;": copied as it is or replaced. False when it failed.
  bool ExpandReference(const XTreeNode* node, std::u16string_view reference, TQString& out,
                       int& cursor, const Options& options, int& expanded);

  DocumentModel& model_;
};

// The words in quotes of an external identifier; one without quotes has no meaning.
std::vector<std::u16string_view> QuotedWords(std::u16string_view text);

}  // namespace kelmora
