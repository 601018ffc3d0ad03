// The compiled form of a grammar against the plain interpreter of its rules: random texts that the
// grammar makes, and such texts with random damage, from every rule that can start a parse.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "parsointerpreter.h"
#include "parsomachine.h"
#include "parsotesting.h"

namespace kelmora {
namespace {

class TextMaker {
 public:
  TextMaker(const ParsoGrammar& grammar, std::mt19937& random) : random_(random) {
    // The height of a rule is that of its least recursive match: what is taken when a text has
    // become long.
    for (bool changed = true; changed;) {
      changed = false;
      for (const auto& rule : grammar.rules) {
        if (rule == nullptr) continue;
        const int height = HeightOf(*rule);
        changed |= height < heights_.try_emplace(rule.get(), kEndless).first->second;
        heights_[rule.get()] = height;
      }
    }
  }

  std::u16string Make(const ParsoRule& rule, std::size_t length) {
    text_.clear();
    names_.clear();
    length_ = length;
    Add(rule);
    return text_;
  }

  // Damages a text at a few places.
  void Damage(std::u16string& text) {
    static constexpr std::u16string_view kUnits = u"<>&'\"/=!?-[]()|,*+%;#x a\r\n\t\u00E9\u20AC";
    for (std::size_t edits = 1 + Below(3); edits > 0; --edits) {
      const std::size_t at = Below(text.size() + 1);
      const std::size_t count = std::min(Below(4), text.size() - at);
      switch (Below(4)) {
        case 0:
          text.erase(at, count);
          break;
        case 1:
          text.insert(at, 1, kUnits[Below(kUnits.size())]);
          break;
        case 2:
          text.insert(at, std::u16string(text.substr(at, count * 3)));
          break;
        default:
          if (at < text.size()) text[at] = kUnits[Below(kUnits.size())];
      }
    }
  }

 private:
  static constexpr int kEndless = 1000;
  static constexpr int kDeepest = 40;

  std::size_t Below(std::size_t limit) { return random_() % limit; }
  int Height(const ParsoRule& rule) const {
    const auto known = heights_.find(&rule);
    return known == heights_.end() ? kEndless : known->second;
  }

  int HeightOf(const ParsoRule& rule) const {
    if (rule.children.empty()) return 0;
    int height = rule.op == ParsoOp::Choice ? kEndless : 0;
    for (const ParsoChild& child : rule.children) {
      const int operand = Height(*child.rule);
      if (rule.op == ParsoOp::Choice) height = std::min(height, operand);
      const bool isNeeded =
          child.quantifier == ParsoQuantifier::One || child.quantifier == ParsoQuantifier::Some;
      if (rule.op != ParsoOp::Choice && isNeeded) height = std::max(height, operand);
    }
    return std::min(height + 1, kEndless);
  }

  // The plain interpreter takes time in 2 to the power of the nesting of a content model.
  bool IsLong() const { return text_.size() >= length_ || depth_ > kDeepest; }

  void Add(const ParsoRule& rule) {
    ++depth_;
    AddMatch(rule);
    --depth_;
  }

  void AddMatch(const ParsoRule& rule) {
    if (rule.kind == ParsoKind::Literal) {
      text_ += rule.name;
    } else if (rule.kind == ParsoKind::Class) {
      AddUnit(*rule.table);
    } else if (rule.op == ParsoOp::Choice) {
      AddItem(ChooseAlternative(rule), false);
    } else if (rule.op == ParsoOp::StopAt) {
      for (std::size_t i = 1 + Below(4); i > 0; --i) AddUnit(*rule.children[0].rule->table);
    } else if (rule.op == ParsoOp::Except) {
      Add(*rule.children[0].rule);
    } else if (rule.grammarRule == GrammarRule::ElementNameEnd && !names_.empty() &&
               Below(40) != 0) {
      text_ += names_.back();
      names_.pop_back();
    } else {
      const std::size_t start = text_.size();
      for (const ParsoChild& child : rule.children) AddItem(child, true);
      if (rule.grammarRule == GrammarRule::ElementName) names_.push_back(text_.substr(start));
      if (rule.grammarRule == GrammarRule::emptyElemTag) names_.pop_back();
    }
  }

  const ParsoChild& ChooseAlternative(const ParsoRule& rule) {
    if (!IsLong()) return rule.children[Below(rule.children.size())];
    return *std::ranges::min_element(rule.children, {},
                                     [&](const ParsoChild& child) { return Height(*child.rule); });
  }

  void AddItem(const ParsoChild& child, bool canBeNone) {
    const bool isLong = IsLong();
    std::size_t count = 1;
    switch (child.quantifier) {
      case ParsoQuantifier::One:
        break;
      case ParsoQuantifier::Optional:
        count = canBeNone ? Below(isLong ? 1 : 2) : 1;
        break;
      case ParsoQuantifier::Any:
        count = canBeNone ? Below(isLong ? 1 : 4) : 1;
        break;
      case ParsoQuantifier::Some:
        count = 1 + Below(isLong ? 1 : 3);
        break;
    }
    for (; count > 0; --count) Add(*child.rule);
  }

  void AddUnit(const ParsoClassTable& table) {
    static constexpr std::u16string_view kLiked = u"aab1 -.x";
    for (int tries = 0; tries < 8; ++tries) {
      const char16_t unit = kLiked[Below(kLiked.size())];
      if (table[unit] != 0) return static_cast<void>(text_ += unit);
    }
    while (true) {
      const std::size_t unit = 1 + Below(table.size());
      if (table[std::min<std::size_t>(unit, table.size() - 1)] == 0) continue;
      return static_cast<void>(text_ += static_cast<char16_t>(unit));
    }
  }

  std::mt19937& random_;
  std::map<const ParsoRule*, int> heights_;
  std::u16string text_;
  std::vector<std::u16string> names_;  // of elements that are open
  std::size_t length_ = 0;
  int depth_ = 0;
};

struct Result {
  bool matches = false;
  std::string tree;   // of a match
  std::string error;  // of a failure, and its whole record
  bool operator==(const Result&) const = default;
};

Result Parse(const ParsoGrammar& grammar, const std::u16string& text, std::u16string_view start,
             ParsoCompare compare) {
  ParsoParser parser(&grammar);
  UseDocumentMode();
  ParsoMode::current.compare = compare;
  Result result;
  result.matches = parser.Parse(text.c_str(), static_cast<std::int32_t>(text.size()), start);
  if (result.matches) {
    result.tree = Dump(parser.Root());
  } else {
    const ParsoErrorState& state = ParsoErrorState::current;
    result.error = ErrorOf(parser) + " " + std::to_string(state.length) + " " +
                   std::to_string(state.childIndex);
  }
  return result;
}

void CompareOn(const char16_t* file, int rounds, double leastMatches) {
  const ParsoGrammar& grammar = SystemGrammar(file);
  std::mt19937 random(20240917);
  TextMaker maker(grammar, random);
  int texts = 0;
  int matches = 0;
  for (const auto& start : grammar.rules) {
    if (start == nullptr || start->kind != ParsoKind::Rule) continue;
    for (int round = 0; round < rounds; ++round) {
      std::u16string text = maker.Make(*start, random() % 300);
      if (round % 2 == 1) maker.Damage(text);
      const Result plain = Parse(grammar, text, start->name, CompareExactlyToo);
      EXPECT_EQ(Parse(grammar, text, start->name, CompareExactly), plain)
          << Narrow(start->name) << ": " << Narrow(text);
      ++texts;
      matches += plain.matches ? 1 : 0;

      // The machine alone must come to the same decision, as far as it knows the rule.
      ParsoTree tree;
      const ParsoRoutine* routine = grammar.Program().StartRoutine(*start);
      if (routine == nullptr) continue;
      const auto outcome = ParsoMachine(grammar.Program(), tree)
                               .Run(*routine, text.c_str(), static_cast<std::int32_t>(text.size()));
      EXPECT_EQ(outcome,
                plain.matches ? ParsoMachine::Outcome::Matched : ParsoMachine::Outcome::Failed)
          << Narrow(start->name) << ": " << Narrow(text);
    }
  }
  EXPECT_GT(matches, texts * leastMatches) << "of " << texts << " texts";
  EXPECT_LT(matches, texts * 0.9);
}

TEST(FastRun, EqualsPlainRunXml) {
  CompareOn(u"gra_xml.txt", 100, 0.4);
}
TEST(FastRun, EqualsPlainRunDtd) {
  CompareOn(u"gra_dtd.txt", 100, 0.4);
}
TEST(FastRun, EqualsPlainRunEntity) {
  CompareOn(u"gra_ent.txt", 300, 0.4);
}
TEST(FastRun, EqualsPlainRunLax) {
  CompareOn(u"gra_3dml.txt", 300, 0.4);
}
TEST(FastRun, EqualsPlainRunRegExp) {
  CompareOn(u"gra_re.txt", 300, 0.4);
}

TEST(FastRun, KnowsAllSystemGrammars) {
  for (const char16_t* file :
       {u"gra_xml.txt", u"gra_dtd.txt", u"gra_ent.txt", u"gra_3dml.txt", u"gra_re.txt"}) {
    const ParsoGrammar& grammar = SystemGrammar(file);
    for (const auto& rule : grammar.rules) {
      if (rule == nullptr || rule->kind != ParsoKind::Rule) continue;
      EXPECT_NE(grammar.Program().StartRoutine(*rule), nullptr) << Narrow(rule->name);
    }
  }
}

// Runs end where they must wherever the text lies and however long it is.
TEST(FastRun, EndsRuns) {
  ParsoUnitSet set;
  set.table.fill(1);
  for (const char16_t refused : {u'\0', u'<', u'&'}) set.table[refused] = 0;
  for (const bool refusesControls : {false, true}) {
    if (refusesControls) set.table[1] = 0;
    set.skips = false;
    PrepareSkipping(set);
    EXPECT_TRUE(set.skips);
    for (std::size_t length = 0; length < 40; ++length) {
      for (std::size_t stop = 0; stop <= length; ++stop) {
        std::u16string text(length, u'\u263C');  // its low byte is '<'
        if (length > 0) text[length / 2] = u'\r';
        if (stop < length) text[stop] = refusesControls ? u'\1' : u'&';
        const char16_t* end = text.c_str() + length;
        EXPECT_EQ(SkipRun(set, text.c_str(), end) - text.c_str(), static_cast<long>(stop));
      }
    }
  }
}

TEST(FastRun, TakesNoUnitZero) {
  const std::u16string text(u"<a>b\0c</a>", 10);
  EXPECT_EQ(Parse(SystemGrammar(u"gra_xml.txt"), text, {}, CompareExactly),
            Parse(SystemGrammar(u"gra_xml.txt"), text, {}, CompareExactlyToo));
}

}  // namespace
}  // namespace kelmora
