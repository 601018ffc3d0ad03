#include "parsoerrors.h"

namespace kelmora {
namespace {

constexpr std::size_t kLongestNameInMessage = 255;

char16_t SeparatorOf(ParsoOp op) {
  switch (op) {
    case ParsoOp::Choice:
    case ParsoOp::StopAt:
    case ParsoOp::Except:
      return static_cast<char16_t>(op);
    case ParsoOp::None:
    case ParsoOp::Sequence:
      return 0;
  }
  return 0;
}

void WriteOperands(const ParsoRule& rule, TQString& out);

void WriteOperand(const ParsoRule& rule, TQString& out) {
  switch (rule.kind) {
    case ParsoKind::Rule:
    case ParsoKind::Code:
      out += rule.name;
      return;
    case ParsoKind::Class:
      out += u"[...]";
      return;
    case ParsoKind::Bracket:
      out += u'[';
      out += rule.name;
      out += u']';
      return;
    case ParsoKind::Literal: {
      const char16_t quote = rule.name.starts_with(u'\'') ? u'"' : u'\'';
      out += quote;
      out += rule.name;
      out += quote;
      return;
    }
    case ParsoKind::Group:
      out += u'(';
      WriteOperands(rule, out);
      out += u')';
      return;
  }
}

// Groups nest no deeper than the text of a body allows.
void WriteOperands(const ParsoRule& rule, TQString& out) {
  const char16_t separator = SeparatorOf(rule.op);
  for (const ParsoChild& child : rule.children) {
    if (&child != rule.children.begin()) {
      out += u' ';
      if (separator != 0) {
        out += separator;
        out += u' ';
      }
    }
    WriteOperand(*child.rule, out);
    if (child.quantifier != ParsoQuantifier::One) out += static_cast<char16_t>(child.quantifier);
  }
}

}  // namespace

ParsoErrorState ParsoErrorState::current;

void RecordFailure(const ParsoRule& rule, const char16_t* position, std::size_t childIndex,
                   std::int32_t length, std::uint32_t line) {
  if (rule.kind != ParsoKind::Literal && rule.kind != ParsoKind::Rule) return;
  ParsoErrorState& state = ParsoErrorState::current;
  if (position <= state.furthest) return;
  state.furthest = position;
  state.failedRule = &rule;
  state.hasExplicitMessage = false;
  state.length = length;
  state.line = line;
  state.childIndex = static_cast<std::int32_t>(childIndex);
}

void SetExplicitMessage(TQString message, const char16_t* position, std::int32_t length,
                        std::uint32_t line) {
  ParsoErrorState& state = ParsoErrorState::current;
  const bool atOnce = length != 0 && line != 0;
  if (!atOnce && position <= state.furthest) return;
  state.furthest = position;
  state.failedRule = nullptr;
  state.explicitMessage = std::move(message);
  state.hasExplicitMessage = true;
  state.length = length;
  state.line = line;
}

TQString UnequalNamesMessage(std::u16string_view name, const ParsoRule& expected) {
  TQString message(name.substr(0, kLongestNameInMessage));
  message += u' ';
  message += expected.description;
  return message;
}

TQString DescribeFailure(const ParsoErrorState& state) {
  if (state.hasExplicitMessage) return state.explicitMessage;
  const ParsoRule* rule = state.failedRule;
  if (rule == nullptr) return {};
  if (!rule->description.empty()) return rule->description;
  TQString message(rule->name);
  if (rule->op == ParsoOp::Sequence || rule->op == ParsoOp::Choice) {
    message += u" ::= ";
    WriteOperands(*rule, message);
  }
  return message;
}

}  // namespace kelmora
