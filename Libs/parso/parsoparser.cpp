#include "parso/parsoparser.h"

#include "parsoerrors.h"
#include "parsointerpreter.h"
#include "parsomachine.h"

namespace kelmora {
namespace {

char16_t FoldAsciiCase(char16_t unit) {
  return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

}  // namespace

ParsoMode ParsoMode::current;

bool CompareExactly(const char16_t* a, const char16_t* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (a[i] != b[i]) return false;
    if (a[i] == 0) return true;
  }
  return true;
}

bool CompareIgnoringCase(const char16_t* a, const char16_t* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (FoldAsciiCase(a[i]) != FoldAsciiCase(b[i])) return false;
    if (a[i] == 0) return true;
  }
  return true;
}

ParsoParser::ParsoParser(const ParsoGrammar* grammar) {
  ParsoMode::current = ParsoMode();
  SetGrammar(grammar);
}

ParsoParser::~ParsoParser() = default;

bool ParsoParser::SetGrammar(const ParsoGrammar* grammar) {
  grammar_ = grammar;
  return grammar_ != nullptr && grammar_->valid;
}

bool ParsoParser::Parse(const char16_t* text, std::int32_t length, std::u16string_view ruleName) {
  text_ = text;
  tree_ = nullptr;
  ParsoErrorState::current = ParsoErrorState();
  const ParsoRule* start = StartRule(ruleName);
  if (start == nullptr) {
    TQString message = u"no valid grammar; grammar root rule";
    if (!ruleName.empty()) {
      message = u"unknown identifier: ";
      message += ruleName;
      message += u"; valid grammar ident";
    }
    SetExplicitMessage(std::move(message), text, 0, 0);
    return false;
  }
  if (ParseFast(*start, length)) return true;
  // A result out of the memo has no children, so a tree takes a parse without it.
  const auto& memoised = grammar_->Program().MemoisedRules();
  if (CanRunFast() && !ParsePlainly(*start, length, &memoised)) return false;
  return ParsePlainly(*start, length, nullptr);
}

const ParsoRule* ParsoParser::StartRule(std::u16string_view ruleName) const {
  if (grammar_ == nullptr) return nullptr;
  return ruleName.empty() ? grammar_->root : grammar_->FindRule(ruleName);
}

// The machine knows one mode of working.
bool ParsoParser::CanRunFast() const {
  const ParsoMode& mode = ParsoMode::current;
  return mode.flatten && mode.compare == CompareExactly &&
         (mode.dropEndNames || !grammar_->Program().HasConstraints());
}

bool ParsoParser::ParseFast(const ParsoRule& start, std::int32_t length) {
  if (!CanRunFast()) return false;
  ParsoProgram& program = grammar_->Program();
  const ParsoRoutine* routine = program.StartRoutine(start);
  if (routine == nullptr) return false;
  auto tree = std::make_unique<ParsoTree>();
  if (ParsoMachine(program, *tree).Run(*routine, text_, length) != ParsoMachine::Outcome::Matched) {
    return false;
  }
  tree_ = std::move(tree);
  return true;
}

bool ParsoParser::ParsePlainly(const ParsoRule& start, std::int32_t length,
                               const std::vector<bool>* memoised) {
  auto tree = std::make_unique<ParsoTree>();
  ParsoNode* root = tree->pool.Take();
  root->rule = &start;
  root->text = text_;
  root->length = length;
  root->line = 1;
  ParsoErrorState::current = ParsoErrorState();
  RecordFailure(start, text_, 0, 0, 1);
  const std::uint32_t line = ParsoInterpreter(tree->pool, memoised).Match(root);
  if (line == 0) return false;
  if (root->length != length) {
    TQString message = u"end of ";
    message += start.description;
    SetExplicitMessage(std::move(message), text_ + root->length, 0, line);
    return false;
  }
  tree->root = root;
  tree_ = std::move(tree);
  return true;
}

std::int32_t ParsoParser::ErrorOffset() const {
  const char16_t* furthest = ParsoErrorState::current.furthest;
  return furthest == nullptr ? 0 : static_cast<std::int32_t>(furthest - text_);
}

std::int32_t ParsoParser::ErrorLength() const {
  return ParsoErrorState::current.length;
}

const char16_t* ParsoParser::ErrorPosition() const {
  return ParsoErrorState::current.furthest;
}

TQString ParsoParser::ErrorMessage() const {
  return DescribeFailure(ParsoErrorState::current);
}

}  // namespace kelmora
