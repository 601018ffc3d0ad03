// TextMaker makes random texts of a grammar, GrammarMaker random grammars.
#pragma once

#include <map>
#include <random>
#include <string>
#include <vector>

#include "parso/parsogrammar.h"

namespace kelmora {

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
        changed |= height < heights_.try_emplace(rule, kEndless).first->second;
        heights_[rule] = height;
      }
    }
  }

  // A text that stops growing where it can when it has a random length of up to `longest`.
  std::u16string Make(const ParsoRule& rule, std::size_t longest) {
    text_.clear();
    names_.clear();
    length_ = Below(longest + 1);
    steps_ = 0;
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
    if (++steps_ > 100 + 20 * length_) return;  // a rule without an end
    ++depth_;
    AddMatch(rule);
    --depth_;
  }

  void AddMatch(const ParsoRule& rule) {
    if (rule.kind == ParsoKind::Literal) {
      text_ += rule.name;
    } else if (rule.kind == ParsoKind::Class) {
      AddUnit(*rule.table);
    } else if (rule.children.empty()) {
      return;
    } else if (rule.op == ParsoOp::Choice) {
      AddItem(ChooseAlternative(rule), false);
    } else if (rule.op == ParsoOp::StopAt) {
      for (std::size_t i = 1 + Below(4); i > 0; --i) Add(*rule.children[0].rule);
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
  std::size_t steps_ = 0;
};

// Grammars of a few rules over a few units, without left recursion: a rule leads back to itself or
// to an earlier one only behind something that takes a unit.
class GrammarMaker {
 public:
  explicit GrammarMaker(std::mt19937& random) : random_(random) {}

  std::string Make() {
    names_.clear();
    flags_.clear();
    const std::size_t count = 2 + Below(6);
    for (std::size_t i = 0; i < count; ++i) {
      names_.push_back((Below(3) == 0 ? "N" : "x") + std::to_string(i));
      flags_.push_back(Pick({"", "", "", "", "$", "$", "!", Below(8) == 0 ? "&" : ""}));
    }
    referred_.assign(count, false);
    referred_[0] = true;
    std::string text;
    for (rule_ = 0; rule_ < count; ++rule_) {
      if (!referred_[rule_]) continue;
      text += names_[rule_] + flags_[rule_] + " ::= " + Body(0, false) + "\r\n";
    }
    if (text.find("element") != text.npos) {
      text += "element$ ::= start (element | " + names_[0] + ")* end { First = Last }\r\n" + kTags;
    }
    return text;
  }

 private:
  // An element ends with the name with which it begins.
  static constexpr const char* kTags =
      "start ::= '<' First 'x'* '>'\r\n"
      "end ::= '</' Last '>'\r\n"
      "First ::= [ab] [ab-]*\r\n"
      "Last ::= [ab] [ab-]* >last name\r\n";

  std::size_t Below(std::size_t limit) { return random_() % limit; }
  std::string Pick(std::initializer_list<const char*> choices) {
    return choices.begin()[Below(choices.size())];
  }
  std::string Quantifier() { return Pick({"", "", "", "*", "+", "?"}); }
  std::string Literal() {
    return Pick(
        {"'a'", "'b'", "'-'", "'/'", "'<'", "'x'", "'ab'", "'</'", "'b<'", "'-->'", "'ax'"});
  }
  std::string Class() { return Pick({"[ab]", "[^<]", "[a-z]", "[-/]", "[^a]", "[#x20#x0D#x0A]"}); }

  std::string Reference(bool takesBefore) {
    const std::size_t from = takesBefore ? 0 : rule_ + 1;
    if (from >= names_.size()) return Class();
    const std::size_t to = from + Below(names_.size() - from);
    referred_[to] = true;
    return names_[to];
  }

  std::string KnownName() {
    const std::size_t from = Below(names_.size());
    for (std::size_t i = from;; i = (i + 1) % names_.size()) {
      if (referred_[i]) return names_[i];
    }
  }

  // One item without quantifier. `takes` tells whether it takes a unit for certain.
  std::string Item(int depth, bool takesBefore, bool& takes) {
    takes = false;
    switch (Below(12)) {
      case 0:
        return depth < 3 ? "(" + Body(depth + 1, takesBefore) + ")" : Literal();
      case 1:
      case 2:
        return depth < 2 ? "(" + Body(depth + 1, takesBefore) + ")" : Class();
      case 3:
      case 4:
      case 5:
      case 6:
        return Reference(takesBefore);
      case 7:
        if (rule_ != 0 || !takesBefore || Below(4) != 0) return Reference(takesBefore);
        return "element";
      case 8:
      case 9:
        takes = true;
        return Class();
      default:
        takes = true;
        return Literal();
    }
  }

  std::string Body(int depth, bool takesBefore) {
    bool takes = false;
    switch (Below(60)) {
      case 0:
        return Pick({"-", "/", "|", "x0? -", "'a' /", "- 'a'", "''"});
      case 1:
      case 2:
      case 3:
      case 4:
        return Item(depth, takesBefore, takes) + Quantifier() + " - " + Literal();
      case 5:
      case 6:
      case 7:
      case 8:
        return (Below(2) == 0 ? Class() : Item(depth, takesBefore, takes)) + "* / " +
               (Below(2) == 0 ? Literal() : "(" + Literal() + " | " + Literal() + ")");
      default:
        return Below(2) == 0 ? Choice(depth, takesBefore) : Sequence(depth, takesBefore);
    }
  }

  std::string Choice(int depth, bool takesBefore) {
    bool takes = false;
    std::string body = Item(depth, takesBefore, takes) + Quantifier();
    for (std::size_t more = 1 + Below(3); more > 0; --more) {
      body += " | " + Item(depth, takesBefore, takes) + Quantifier();
    }
    return body;
  }

  std::string Sequence(int depth, bool takesBefore) {
    std::string body;
    for (std::size_t items = 1 + Below(4); items > 0; --items) {
      bool takes = false;
      body += Item(depth, takesBefore, takes);
      const std::string quantifier = Quantifier();
      body += quantifier + ' ';
      takesBefore |= takes && (quantifier.empty() || quantifier == "+");
    }
    if (Below(12) == 0) body += "{ " + KnownName() + " = " + KnownName() + " } ";
    body.pop_back();
    return body;
  }

  std::mt19937& random_;
  std::vector<std::string> names_;
  std::vector<std::string> flags_;
  std::vector<bool> referred_;
  std::size_t rule_ = 0;  // whose body is being made
};

}  // namespace kelmora
