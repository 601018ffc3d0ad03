// makegrammartables OUTPUT GRAMMAR...: compiles the texts of grammars and writes a C++ source that
// holds them as ParsoGrammarTable rows, for the build of the program itself.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "parso/parsogrammar.h"
#include "parsotable.h"

namespace kelmora {
namespace {

// What a table can count to; kNone is above.
template <class Integer>
Integer Narrowed(std::ptrdiff_t value) {
  if (value < std::numeric_limits<Integer>::min() || value >= std::numeric_limits<Integer>::max()) {
    throw std::runtime_error("a grammar is too large for its table");
  }
  return static_cast<Integer>(value);
}

template <class Numbers>
std::string List(const Numbers& numbers) {
  std::string out = "{{";
  for (const auto number : numbers) out += std::to_string(number) + ',';
  return out + "}}";
}

std::string Code(const ParsoUnitSet& set) {
  return '{' + List(set.table) + ',' + List(set.stops) + ',' + (set.stopsAtControls ? "1" : "0") +
         ',' + (set.skips ? "1" : "0") + '}';
}
std::string Code(const ParsoName& name) {
  return '{' + Code(name.first) + ',' + Code(name.rest) + '}';
}
std::string Code(const ParsoBeginningTable& table) {
  return '{' + List(table.first) + ',' + List(table.second) + '}';
}
std::string Code(const ParsoDispatch& dispatch) {
  return '{' + List(dispatch.first) + ',' + List(dispatch.second) + ',' + List(dispatch.jumps) +
         '}';
}

// The rows of one array, each kept once.
class Rows {
 public:
  std::size_t Add(const std::string& row) {
    const auto [place, isNew] = places_.try_emplace(row, rows_.size());
    if (isNew) rows_.push_back(row);
    return place->second;
  }
  void Append(const std::string& row) { rows_.push_back(row); }
  std::size_t Size() const { return rows_.size(); }

  void Write(std::ostream& out, const char* type, const char* name) const {
    out << "constexpr std::array<" << type << ", " << rows_.size() << "> " << name << " = {{\n";
    for (const std::string& row : rows_) out << row << ",\n";
    out << "}};\n";
  }

 private:
  std::vector<std::string> rows_;
  std::map<std::string, std::size_t> places_;
};

class TableWriter {
 public:
  TableWriter(const ParsoGrammar& grammar, std::ostream& out) : grammar_(grammar), out_(out) {}

  // Writes the arrays, and gives back the row of the grammar itself.
  std::string Write(const std::string& file, int number) {
    for (const ParsoRule* rule : grammar_.rules) AddRule(rule);
    std::map<std::pair<int, int>, const ParsoRoutine*> routines;
    for (const ParsoRoutine& routine : grammar_.Program().AllRoutines()) {
      if (routine.code.empty()) continue;
      routines[{static_cast<int>(routine.output), routine.rule->index}] = &routine;
    }
    for (const auto& [key, routine] : routines) {
      for (const ParsoInstruction& instruction : routine->code) AddInstruction(instruction);
      routines_.Append("{ParsoOutput(" + std::to_string(key.first) + ")," +
                       std::to_string(key.second) + ',' +
                       Number<std::uint16_t>(instructions_.Size()) + '}');
    }
    out_ << "namespace grammar" << number << " {\n";
    WriteTexts();
    rules_.Write(out_, "ParsoRuleRow", "kRules");
    children_.Write(out_, "ParsoChildRow", "kChildren");
    constraints_.Write(out_, "std::uint16_t", "kConstraints");
    classes_.Write(out_, "ParsoClassTable", "kClasses");
    routines_.Write(out_, "ParsoRoutineRow", "kRoutines");
    instructions_.Write(out_, "ParsoInstructionRow", "kCode");
    sets_.Write(out_, "ParsoUnitSet", "kSets");
    names_.Write(out_, "ParsoName", "kNames");
    stops_.Write(out_, "ParsoStopRow", "kStops");
    beginnings_.Write(out_, "ParsoBeginningTable", "kBeginnings");
    dispatches_.Write(out_, "ParsoDispatch", "kDispatches");
    out_ << "}  // namespace grammar" << number << "\n\n";
    std::string row = "{u\"" + file + "\"";
    for (const char* name : {"kTexts", "kRules", "kChildren", "kConstraints", "kClasses"}) {
      row += ", grammar" + std::to_string(number) + "::" + name;
    }
    row += ", " + std::to_string(grammar_.root->index);
    for (const char* name :
         {"kRoutines", "kCode", "kSets", "kNames", "kStops", "kBeginnings", "kDispatches"}) {
      row += ", grammar" + std::to_string(number) + "::" + name;
    }
    return row + "},\n";
  }

 private:
  template <class Integer>
  static std::string Number(std::size_t value) {
    return std::to_string(Narrowed<Integer>(static_cast<std::ptrdiff_t>(value)));
  }

  std::string TextRow(std::u16string_view text) {
    std::size_t start = texts_.find(text);
    if (start == texts_.npos) {
      start = texts_.size();
      texts_ += text;
    }
    return '{' + Number<std::uint16_t>(start) + ',' + Number<std::uint16_t>(text.size()) + '}';
  }

  void WriteTexts() {
    out_ << "constexpr char16_t kTextUnits[] = {";
    for (const char16_t unit : texts_) out_ << static_cast<unsigned>(unit) << ',';
    out_ << "0};\nconstexpr std::u16string_view kTexts(kTextUnits, " << texts_.size() << ");\n";
  }

  void AddRule(const ParsoRule* rule) {
    constexpr std::string_view kNone = "ParsoGrammarTable::kNone";
    const ParsoRule deleted;
    const ParsoRule& row = rule != nullptr ? *rule : deleted;
    for (const ParsoChild& child : row.children) {
      children_.Append('{' + std::to_string(child.rule->index) + ",ParsoQuantifier(" +
                       std::to_string(static_cast<int>(child.quantifier)) + ")}");
    }
    for (const ParsoRule* name : row.constraint) {
      constraints_.Append(name != nullptr ? std::to_string(name->index) : std::string(kNone));
    }
    const int flags = (row.flagNoNode ? ParsoRuleRow::kNoNode : 0) |
                      (row.flagKeepApart ? ParsoRuleRow::kKeepApart : 0) |
                      (row.flagKeepNode ? ParsoRuleRow::kKeepNode : 0) |
                      (rule == nullptr ? ParsoRuleRow::kDeleted : 0);
    std::ostringstream out;
    out << '{' << TextRow(row.name) << ',' << TextRow(row.description) << ','
        << Number<std::uint16_t>(children_.Size()) << ','
        << Number<std::uint16_t>(constraints_.Size()) << ',';
    if (row.table != nullptr) {
      out << classes_.Add(List(*row.table));
    } else {
      out << kNone;
    }
    out << ",ParsoKind(" << static_cast<int>(row.kind) << "),ParsoOp(" << static_cast<int>(row.op)
        << ")," << flags << ",GrammarRule(" << static_cast<int>(row.grammarRule) << ")}";
    rules_.Append(out.str());
  }

  void AddInstruction(const ParsoInstruction& instruction) {
    std::size_t operand = 0;
    ParsoOutput output = ParsoOutput::Dropped;
    switch (OperandOf(instruction.opcode)) {
      case ParsoOperand::None:
        break;
      case ParsoOperand::Set:
        operand = sets_.Add(Code(*instruction.set));
        break;
      case ParsoOperand::Name:
        operand = names_.Add(Code(*instruction.name));
        break;
      case ParsoOperand::Stop:
        operand = AddStop(*instruction.stop);
        break;
      case ParsoOperand::Beginning:
        operand = beginnings_.Add(Code(*instruction.beginning));
        break;
      case ParsoOperand::Dispatch:
        operand = dispatches_.Add(Code(*instruction.dispatch));
        break;
      case ParsoOperand::Routine:
        operand = static_cast<std::size_t>(instruction.routine->rule->index);
        output = instruction.routine->output;
        break;
    }
    std::ptrdiff_t also = 0;
    switch (SecondOperandOf(instruction.opcode)) {
      case ParsoSecondOperand::None:
        break;
      case ParsoSecondOperand::Rule:
        also = instruction.rule->index;
        break;
      case ParsoSecondOperand::Literal:
        also = RuleOfLiteral(instruction.literal);
        break;
      case ParsoSecondOperand::Owner:
        also = instruction.owner;
        break;
    }
    std::ostringstream out;
    out << "{ParsoOpcode(" << static_cast<int>(instruction.opcode) << ")," << instruction.count
        << ',' << Narrowed<std::int16_t>(instruction.jump) << ',' << Number<std::uint16_t>(operand)
        << ',' << Narrowed<std::int16_t>(also) << ",ParsoOutput(" << static_cast<int>(output)
        << ")}";
    instructions_.Append(out.str());
  }

  std::size_t AddStop(const ParsoStop& stop) {
    std::ostringstream out;
    out << '{' << sets_.Add(Code(stop.run)) << ',' << sets_.Add(Code(stop.whole)) << ",{{";
    for (const std::u16string_view literal : stop.literals) {
      if (literal.empty()) {
        out << "ParsoGrammarTable::kNone,";
      } else {
        out << RuleOfLiteral(literal.data()) << ',';
      }
    }
    out << "}}}";
    return stops_.Add(out.str());
  }

  int RuleOfLiteral(const char16_t* text) const {
    for (const ParsoRule* rule : grammar_.rules) {
      if (rule != nullptr && rule->name.data() == text) return rule->index;
    }
    throw std::runtime_error("a literal without a rule");
  }

  const ParsoGrammar& grammar_;
  std::ostream& out_;
  std::u16string texts_;
  Rows rules_, children_, constraints_, classes_;
  Rows routines_, instructions_, sets_, names_, stops_, beginnings_, dispatches_;
};

void Run(const std::vector<std::string>& arguments) {
  std::ofstream out(arguments.at(0));
  out << "// Generated by makegrammartables; changes here are lost.\n"
         "#include \"parsotable.h\"\n\n"
         "namespace kelmora {\nnamespace {\n\n";
  std::string rows;
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const std::string& path = arguments[i];
    std::ifstream in(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    ParsoGrammar grammar;
    if (!grammar.LoadText(text)) throw std::runtime_error(path + " is no grammar");
    const std::string file = path.substr(path.find_last_of('/') + 1);
    rows += TableWriter(grammar, out).Write(file, static_cast<int>(i));
  }
  out << "constexpr ParsoGrammarTable kGrammars[] = {\n"
      << rows
      << "};\n\n}  // namespace\n\n"
         "std::span<const ParsoGrammarTable> CompiledGrammars() {\n  return kGrammars;\n}\n\n"
         "}  // namespace kelmora\n";
  if (!out.flush()) throw std::runtime_error("cannot write " + arguments[0]);
}

}  // namespace
}  // namespace kelmora

int main(int argc, char** argv) {
  try {
    kelmora::Run({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "makegrammartables: %s\n", error.what());
    return 1;
  }
  return 0;
}
