// ParsoGrammar: a grammar text compiled into a table of ParsoRule objects.
//
// A grammar is loaded once and is read-only afterwards, apart from ParsoRule::crSeen. The text
// format is described in grammars/README.md.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "parso/parsorule.h"
#include "tqcore/arena.h"

namespace kelmora {

class ParsoProgram;
class YStream;
struct ParsoGrammarTable;

class ParsoGrammar {
 public:
  static constexpr std::size_t kMaxRules = 500;  // objects, before the optimiser

  ParsoGrammar();  // an empty grammar, for Init or LoadText
  // With a name or a stream, calls Init and drops its result; `valid` and `root` tell.
  explicit ParsoGrammar(const char16_t* fileName);
  explicit ParsoGrammar(YStream* stream);
  ~ParsoGrammar();
  ParsoGrammar(const ParsoGrammar&) = delete;
  ParsoGrammar& operator=(const ParsoGrammar&) = delete;

  // Loads the named file through a stream of the factory. False when it can't be opened or read
  // or does not compile; no error leaves it.
  bool Init(const char16_t* fileName);
  // Loads from a stream that the caller has opened and keeps.
  bool Init(YStream& stream);
  // Takes the grammar that was compiled out of the named file while the program was built: what
  // Init would make, without reading the text. False when there is none.
  bool InitCompiled(std::u16string_view fileName);
  // Loads from 8-bit text as from a stream of these bytes.
  bool LoadText(std::string_view text);

  // The named rule, or null. A rule that the optimiser made a class is not found.
  ParsoRule* FindRule(std::u16string_view name) const { return FindRule(name, ParsoKind::Rule); }
  // The first object in table order of that kind and that non-empty name.
  ParsoRule* FindRule(std::u16string_view name, ParsoKind kind) const;
  // Appends an object; null when there are kMaxRules. An empty name makes an anonymous group.
  ParsoRule* CreateRule(std::u16string_view name, ParsoKind kind, bool noNode, bool keepApart,
                        bool keepNode);

  // The form that parses run, made when first asked for.
  ParsoProgram& Program() const;

  // Every object in order of creation; null where the optimiser deleted one.
  std::vector<ParsoRule*> rules;
  ParsoRule* root = nullptr;  // the rule of the first line
  bool valid = false;         // there was a text to load

 private:
  friend class ParsoGrammarLoader;
  friend class ParsoOptimiser;
  friend class ParsoProgram;

  void IndexRule(ParsoRule* rule) const;
  void IndexAllRules() const;

  Arena arena_;  // rules, names, descriptions, class tables
  // Hash table over kind and name, open addressing; made when first asked for.
  mutable std::vector<ParsoRule*> index_;
  const ParsoGrammarTable* table_ = nullptr;  // that this grammar was made of
  mutable std::unique_ptr<ParsoProgram> program_;
};

}  // namespace kelmora
