// ParsoOptimiser: the last step of loading a grammar. After it, everything that decides on one
// unit alone is a table.
#pragma once

#include <string_view>

#include "parso/parsogrammar.h"

namespace kelmora {

class ParsoOptimiser {
 public:
  explicit ParsoOptimiser(ParsoGrammar& grammar) : grammar_(grammar) {}
  void Run();

 private:
  void CompileClasses();
  void MergeClasses();
  bool MergeInto(ParsoRule& rule);
  void DeleteUnreferenced();
  void DemoteSingletons();
  ParsoClassTable* NewTable() { return grammar_.arena_.Make<ParsoClassTable>(); }

  ParsoGrammar& grammar_;
};

// The units 0 to 255 that the text of a bracket class takes. Public for tests.
ParsoClassTable CompileBracketClass(std::u16string_view text);

}  // namespace kelmora
