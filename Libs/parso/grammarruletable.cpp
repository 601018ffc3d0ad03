#include "parso/grammarruletable.h"

#include <algorithm>

#include "parso/parsogrammar.h"

namespace kelmora {
namespace {

constexpr std::array<std::u16string_view, kGrammarRuleCount> kNames = {
#define GRAMMAR_RULE(name) u"" #name,
#include "parso/grammarrule.def"
#undef GRAMMAR_RULE
};

// The numbers of the rules, in the order of their names.
constexpr auto kByName = [] {
  std::array<std::uint8_t, kGrammarRuleCount> order{};
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::uint8_t>(i);
  std::sort(order.begin(), order.end(),
            [](std::uint8_t a, std::uint8_t b) { return kNames[a] < kNames[b]; });
  return order;
}();

constexpr std::array<const char16_t*, kGrammarKindCount> kFileNames = {
    u"gra_dtd.txt",  u"gra_xml.txt",    u"gra_ent.txt",
    u"gra_3dml.txt", u"gra_xml_td.txt", u"gra_xsl.txt",
};

}  // namespace

const char16_t* KindFileName(GrammarKind kind) {
  return kFileNames[static_cast<std::size_t>(kind)];
}

GrammarRule GrammarRuleFromName(std::u16string_view name) {
  const auto* found = std::lower_bound(
      kByName.begin(), kByName.end(), name,
      [](std::uint8_t a, std::u16string_view wanted) { return kNames[a] < wanted; });
  if (found == kByName.end() || kNames[*found] != name) return GrammarRule::None;
  return static_cast<GrammarRule>(*found);
}

GrammarRuleTable::GrammarRuleTable(const ParsoGrammar& grammar) {
  for (const ParsoRule* rule : grammar.rules) {
    if (rule == nullptr || rule->kind != ParsoKind::Rule) continue;
    if (rule->grammarRule == GrammarRule::None) continue;
    rules_[static_cast<std::size_t>(rule->grammarRule)] = rule;
  }
}

}  // namespace kelmora
