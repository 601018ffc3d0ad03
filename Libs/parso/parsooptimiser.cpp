#include "parsooptimiser.h"

#include <algorithm>

namespace kelmora {
namespace {

constexpr int kLastEntry = 255;  // answers for all units from there on

int HexDigit(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  return -1;
}

// The code of "#xHH" at the front of the text, or -1.
int HexCode(std::u16string_view text) {
  constexpr std::size_t kLength = 4;
  if (text.size() < kLength || text[0] != u'#' || text[1] != u'x') return -1;
  const int high = HexDigit(text[2]);
  const int low = HexDigit(text[3]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

// The code of "#DD", two decimal digits, at the front of the text, or -1.
int DecimalCode(std::u16string_view text) {
  constexpr std::size_t kLength = 3;
  const auto isDigit = [](char16_t unit) { return unit >= u'0' && unit <= u'9'; };
  if (text.size() < kLength || text[0] != u'#' || !isDigit(text[1]) || !isDigit(text[2])) return -1;
  return (text[1] - u'0') * 10 + (text[2] - u'0');
}

struct Member {
  int first;
  int last;
  std::size_t length;  // units of the class text
};

Member ReadMember(std::u16string_view text) {
  if (const int first = HexCode(text); first >= 0) {
    const std::u16string_view rest = text.substr(4);
    const int last = rest.starts_with(u'-') ? HexCode(rest.substr(1)) : -1;
    return last < 0 ? Member{first, first, 4} : Member{first, last, 9};
  }
  if (const int code = DecimalCode(text); code >= 0) return {code, code, 3};
  if (text[0] != u'#' && text.size() > 2 && text[1] == u'-') return {text[0], text[2], 3};
  return {text[0], text[0], 1};
}

bool IsOneUnitLiteral(const ParsoRule& rule) {
  return rule.kind == ParsoKind::Literal && rule.name.size() == 1;
}

}  // namespace

ParsoClassTable CompileBracketClass(std::u16string_view text) {
  ParsoClassTable table{};
  const bool negated = text.starts_with(u'^');
  if (negated) text.remove_prefix(1);
  while (!text.empty()) {
    const Member member = ReadMember(text);
    text.remove_prefix(member.length);
    if (member.first == u'^' && member.length == 1) continue;
    for (int code = member.first; code <= std::min<int>(member.last, kLastEntry); ++code) {
      table[static_cast<std::size_t>(code)] = 1;
    }
  }
  if (negated) {
    for (std::uint8_t& entry : table) entry ^= 1;
  }
  return table;
}

void ParsoOptimiser::Run() {
  CompileClasses();
  MergeClasses();
  DeleteUnreferenced();
  DemoteSingletons();
  grammar_.IndexAllRules();
}

void ParsoOptimiser::CompileClasses() {
  for (ParsoRule* rule : grammar_.rules) {
    const bool isCode = rule->kind == ParsoKind::Code;
    if (rule->kind != ParsoKind::Bracket && !isCode && !IsOneUnitLiteral(*rule)) continue;
    ParsoClassTable* table = NewTable();
    if (rule->kind == ParsoKind::Bracket) {
      *table = CompileBracketClass(rule->name);
    } else {
      const int code = isCode ? HexCode(rule->name) : rule->name[0];
      if (code >= 0) (*table)[static_cast<std::size_t>(std::min(code, kLastEntry))] = 1;
    }
    rule->table = table;
    rule->kind = ParsoKind::Class;
  }
}

void ParsoOptimiser::MergeClasses() {
  for (bool changed = true; changed;) {
    changed = false;
    for (ParsoRule* rule : grammar_.rules) changed |= MergeInto(*rule);
  }
}

bool ParsoOptimiser::MergeInto(ParsoRule& rule) {
  if (rule.kind != ParsoKind::Group && rule.kind != ParsoKind::Rule) return false;
  if (rule.children.empty()) return false;
  if (rule.op != ParsoOp::Choice && rule.children.size() != 1) return false;
  const bool allClasses = std::ranges::all_of(rule.children, [](const ParsoChild& child) {
    return child.rule->kind == ParsoKind::Class && child.quantifier == ParsoQuantifier::One;
  });
  if (!allClasses) return false;
  ParsoClassTable* merged = NewTable();
  for (const ParsoChild& child : rule.children) {
    for (std::size_t code = 0; code < merged->size(); ++code) {
      (*merged)[code] |= (*child.rule->table)[code];
    }
  }
  rule.table = merged;
  rule.kind = ParsoKind::Class;
  rule.children.clear();
  return true;
}

// A constraint is no reference: the rules that it names are operands somewhere, or never matched.
void ParsoOptimiser::DeleteUnreferenced() {
  auto& rules = grammar_.rules;
  std::vector<int> references(rules.size());
  for (ParsoRule* rule : rules) {
    for (const ParsoChild& child : rule->children) {
      ++references[static_cast<std::size_t>(child.rule->index)];
    }
  }
  for (std::size_t i = 1; i < rules.size(); ++i) {
    if (references[i] != 0) continue;
    for (const ParsoChild& child : rules[i]->children) {
      --references[static_cast<std::size_t>(child.rule->index)];
    }
    for (ParsoRule* rule : rules) {
      if (rule != nullptr)
        std::ranges::replace(rule->constraint, rules[i], static_cast<ParsoRule*>(nullptr));
    }
    rules[i] = nullptr;
  }
}

void ParsoOptimiser::DemoteSingletons() {
  for (ParsoRule* rule : grammar_.rules) {
    if (rule == nullptr || rule->index < 1 || rule->kind != ParsoKind::Class) continue;
    if (std::ranges::count(*rule->table, 1) != 1) continue;
    const auto code = std::ranges::find(*rule->table, 1) - rule->table->begin();
    const char16_t unit = static_cast<char16_t>(code);
    rule->name = grammar_.arena_.Keep({&unit, 1});
    rule->kind = ParsoKind::Literal;
  }
}

}  // namespace kelmora
