// A rule line is "name ::= body >description". The body is read unit by unit: a unit either ends
// the name that is being read, opens a literal, class, code, group, constraint or the description,
// or belongs to the name. A body has one operator: the last one written wins, and a second operand
// without any makes it a sequence.
#include "parsogrammarloader.h"

#include "parsooptimiser.h"

namespace kelmora {
namespace {

constexpr std::u16string_view kBlanks = u" \t";
constexpr std::size_t kMaxChildren = 40;
constexpr std::size_t kMaxConstraintNames = 20;
constexpr char16_t kSkippedLine = 0xFFFF;  // what a byte of 0xFF reads as

std::u16string_view CutToken(std::u16string_view& text) {
  const std::size_t start = text.find_first_not_of(kBlanks);
  if (start == text.npos) return text = {};
  const std::size_t end = std::min(text.find_first_of(kBlanks, start), text.size());
  const std::u16string_view token = text.substr(start, end - start);
  text.remove_prefix(end);
  return token;
}

std::u16string_view Limited(std::u16string_view text) {
  return text.substr(0, ParsoGrammarLoader::kLongestText);
}

// Index of the unit that closes what `text[start]` opens, or the end. With `nested` the opening
// unit counts as well, wherever it stands.
std::size_t FindClosing(std::u16string_view text, std::size_t start, char16_t closing,
                        bool nested) {
  const char16_t opening = text[start];
  int depth = 1;
  for (std::size_t i = start + 1; i < text.size(); ++i) {
    if (text[i] == closing && --depth == 0) return i;
    if (nested && text[i] == opening) ++depth;
  }
  return text.size();
}

}  // namespace

bool ParsoGrammarLoader::AddLine(std::u16string_view line) {
  if (line[0] == kSkippedLine || line.find_first_not_of(kBlanks) == line.npos) return true;
  const std::u16string_view name = Limited(CutToken(line));
  if (CutToken(line) != u"::=") return false;
  const std::size_t body = line.find_first_not_of(kBlanks);
  if (body == line.npos) return false;
  return CompileRule(name, Limited(line.substr(body)));
}

bool ParsoGrammarLoader::CompileRule(std::u16string_view name, std::u16string_view body) {
  const std::size_t flagsAt = std::min(name.find_first_of(u"!&$"), name.size());
  const std::u16string_view flags = name.substr(flagsAt);
  name = name.substr(0, flagsAt);
  ParsoRule* rule;
  if (grammar_.root == nullptr) {
    rule = grammar_.root = FindOrCreate(name, ParsoKind::Rule);
  } else {
    rule = grammar_.FindRule(name);
  }
  if (rule == nullptr) return false;
  rule->flagNoNode |= flags.find(u'!') != flags.npos;
  rule->flagKeepApart |= flags.find(u'&') != flags.npos;
  rule->flagKeepNode |= flags.find(u'$') != flags.npos;
  hasRules_ = true;
  CompileBody(*rule, body);
  return !full_;
}

void ParsoGrammarLoader::CompileBody(ParsoRule& rule, std::u16string_view text) {
  std::u16string name;
  const auto endName = [&] {
    if (name.empty()) return;
    AddChild(rule, FindOrCreate(Limited(name), ParsoKind::Rule));
    name.clear();
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    switch (unit) {
      case u'|':
      case u'/':
      case u'-':
        rule.op = static_cast<ParsoOp>(unit);
        endName();
        break;
      case u'*':
      case u'+':
      case u'?':
        endName();
        if (!rule.children.empty()) {
          rule.children.back().quantifier = static_cast<ParsoQuantifier>(unit);
        }
        break;
      case u' ':
      case u'\t':
        endName();
        break;
      case u'(':
      case u'\'':
      case u'"':
      case u'[':
      case u'{':
      case u'#':
        if (i + 1 == text.size()) return;
        i = CompileBracketed(rule, text, i);
        break;
      case u'>':
        rule.description = grammar_.arena_.Keep(text.substr(i + 1));
        i = text.size();
        break;
      default:
        name += unit;
    }
  }
  endName();
}

// Compiles the operand that begins at `start` with a unit which says where it ends. Returns the
// index of its last unit.
std::size_t ParsoGrammarLoader::CompileBracketed(ParsoRule& rule, std::u16string_view text,
                                                 std::size_t start) {
  const char16_t opening = text[start];
  if (opening == u'#') {
    const std::size_t end = std::min(text.find(u' ', start), text.size());
    AddChild(rule, FindOrCreate(text.substr(start, end - start), ParsoKind::Code));
    return end - 1;
  }
  const char16_t closing = opening == u'('   ? u')'
                           : opening == u'[' ? u']'
                           : opening == u'{' ? u'}'
                                             : opening;
  const bool nested = opening == u'(' || opening == u'[';
  const std::size_t end = FindClosing(text, start, closing, nested);
  const std::u16string_view inner = text.substr(start + 1, end - start - 1);
  if (opening == u'(') {
    CompileGroup(rule, inner);
  } else if (opening == u'[') {
    AddChild(rule, FindOrCreate(inner, ParsoKind::Bracket));
  } else if (opening == u'{') {
    CompileConstraint(rule, inner);
  } else {
    AddChild(rule, FindOrCreate(inner, ParsoKind::Literal));
  }
  return end;
}

void ParsoGrammarLoader::CompileGroup(ParsoRule& rule, std::u16string_view text) {
  ParsoRule* group = grammar_.CreateRule({}, ParsoKind::Group, false, false, false);
  AddChild(rule, group);
  if (group != nullptr) CompileBody(*group, text);
}

void ParsoGrammarLoader::CompileConstraint(ParsoRule& rule, std::u16string_view text) {
  const std::size_t equals = text.find(u'=');
  if (rule.op != ParsoOp::Sequence || equals == text.npos) return;
  for (std::u16string_view side : {text.substr(0, equals), text.substr(equals + 1)}) {
    ParsoRule* named = FindOrCreate(CutToken(side), ParsoKind::Rule);
    if (named != nullptr && rule.constraint.size() < kMaxConstraintNames) {
      rule.constraint.Append(grammar_.arena_, named);
    }
  }
}

ParsoRule* ParsoGrammarLoader::FindOrCreate(std::u16string_view name, ParsoKind kind) {
  if (ParsoRule* known = grammar_.FindRule(name, kind)) return known;
  return grammar_.CreateRule(name, kind, false, false, false);
}

void ParsoGrammarLoader::AddChild(ParsoRule& rule, ParsoRule* child) {
  if (child == nullptr) {
    full_ = true;
    return;
  }
  if (!rule.children.empty() && rule.op == ParsoOp::None) rule.op = ParsoOp::Sequence;
  if (rule.children.size() < kMaxChildren) {
    rule.children.Append(grammar_.arena_, {child, ParsoQuantifier::One});
  }
}

void ParsoGrammarLoader::Finish() {
  ParsoOptimiser(grammar_).Run();
}

}  // namespace kelmora
