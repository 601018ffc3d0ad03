// ParsoReference: the rules of a grammar applied to a text in the plainest way, by recursion and
// without a word on speed. What ParsoParser yields in the mode of documents must equal it: every
// node and the record of the furthest failure. It counts no lines.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "parso/parsoparser.h"

namespace kelmora {

class ParsoReference {
 public:
  struct Node {
    const ParsoRule* rule;
    int start;
    int length = 0;
    bool matched = false;
    std::vector<std::unique_ptr<Node>> children = {};
  };
  struct Failure {
    int offset = -1;
    const ParsoRule* rule = nullptr;
    std::u16string message = {};  // in place of a rule
  };

  explicit ParsoReference(const std::u16string& text) : text_(text) {}

  // The tree, or null and `failure`. A parse that takes too many steps ends with `gaveUp`.
  std::unique_ptr<Node> Parse(const ParsoRule& start) {
    auto root = std::make_unique<Node>(Node{&start, 0});
    const int length = static_cast<int>(text_.size());
    Record(start, 0);
    if (!Match(*root, length, ParsoQuantifier::One)) return nullptr;
    if (root->length == length) return root;
    SetMessage(u"end of " + std::u16string(start.description), root->length, false);
    return nullptr;
  }

  Failure failure;
  bool gaveUp = false;

 private:
  using Children = std::vector<std::unique_ptr<Node>>;
  static constexpr int kMostSteps = 20000;

  void Record(const ParsoRule& rule, int offset) {
    if (rule.kind != ParsoKind::Literal && rule.kind != ParsoKind::Rule) return;
    if (offset > failure.offset) failure = {offset, &rule};
  }
  void SetMessage(const std::u16string& message, int offset, bool atOnce) {
    if (atOnce || offset > failure.offset) failure = {offset, nullptr, message};
  }

  bool Begins(int at, std::u16string_view literal) const {
    return CompareExactly(text_.c_str() + at, literal.data(), literal.size());
  }
  bool Takes(const ParsoRule& rule, int at) const {
    return (*rule.table)[std::min<std::size_t>(text_[static_cast<std::size_t>(at)], 255)] != 0;
  }

  bool Match(Node& node, int available, ParsoQuantifier quantifier) {
    const ParsoRule& rule = *node.rule;
    if (++steps_ > kMostSteps) gaveUp = true;
    if (gaveUp) return false;
    if (rule.kind == ParsoKind::Literal) {
      if (Begins(node.start, rule.name)) node.length = static_cast<int>(rule.name.size());
      return Begins(node.start, rule.name);
    }
    if (rule.kind == ParsoKind::Class) {
      const int most = Repeats(quantifier) ? available : 1;
      while (node.length < most && Takes(rule, node.start + node.length)) ++node.length;
      return node.length > 0;
    }
    switch (rule.op) {
      case ParsoOp::None:
      case ParsoOp::Sequence:
        MatchSequence(node, available);
        break;
      case ParsoOp::Choice:
        MatchChoice(node, available);
        break;
      case ParsoOp::Except:
        if (rule.children.size() >= 2) MatchExcept(node, available);
        break;
      case ParsoOp::StopAt:
        if (rule.children.size() >= 2) MatchStopAt(node, available);
        break;
    }
    if (rule.IsToken()) node.children.clear();
    if (node.matched) Prune(node.children);
    return node.matched;
  }

  // Attempts of one operand; whether one succeeded.
  bool Repeat(Node& node, const ParsoRule& rule, ParsoQuantifier quantifier, bool repeats,
              int& available) {
    bool succeeded = false;
    while (available > 0) {
      auto child = std::make_unique<Node>(Node{&rule, node.start + node.length});
      if (!Match(*child, available, quantifier)) {
        Record(rule, child->start);
        break;
      }
      succeeded = true;
      const int length = child->length;
      node.length += length;
      available -= length;
      const bool stays = rule.kind == ParsoKind::Group || rule.kind == ParsoKind::Rule;
      if (stays && !rule.flagNoNode) node.children.push_back(std::move(child));
      if (!repeats || length == 0) break;
    }
    return succeeded;
  }

  void MatchSequence(Node& node, int available) {
    for (const ParsoChild& child : node.rule->children) {
      if (!Repeat(node, *child.rule, child.quantifier, Repeats(child.quantifier), available) &&
          !CanBeNone(child.quantifier)) {
        Record(*node.rule, node.start);
        return;
      }
    }
    node.matched = node.rule->constraint.size() < 2 || MeetsConstraint(node);
  }

  void MatchChoice(Node& node, int available) {
    for (const ParsoChild& child : node.rule->children) {
      node.matched =
          Repeat(node, *child.rule, child.quantifier, Repeats(child.quantifier), available);
      if (node.matched) return;
    }
  }

  void MatchExcept(Node& node, int available) {
    const ParsoChild& left = node.rule->children[0];
    const std::u16string_view literal = node.rule->children[1].rule->name;
    if (!Repeat(node, *left.rule, left.quantifier, false, available)) return;
    const auto length = static_cast<std::size_t>(node.length);
    node.matched = length != literal.size() ||
                   !CompareIgnoringCase(text_.c_str() + node.start, literal.data(), length);
    if (!node.matched) Record(*node.rule, node.start);
  }

  int Scan(int from, int available, const ParsoRule& left, const ParsoRule& stop) const {
    int count = 0;
    while (count < available && !(left.kind == ParsoKind::Class && !Takes(left, from + count)) &&
           !(stop.kind == ParsoKind::Literal && Begins(from + count, stop.name))) {
      ++count;
    }
    return count;
  }

  void MatchStopAt(Node& node, int available) {
    const ParsoRule& left = *node.rule->children[0].rule;
    const ParsoRule& stop = *node.rule->children[1].rule;
    int count = Scan(node.start, available, left, stop);
    if (stop.kind == ParsoKind::Group) {
      for (const ParsoChild& literal : stop.children) {
        count = std::min(count, Scan(node.start, available, left, *literal.rule));
      }
    }
    if (left.kind == ParsoKind::Class) {
      node.length = count;
      node.matched = count > 0;
      if (!node.matched) Record(*node.rule, node.start);
    } else {
      node.matched = Repeat(node, left, ParsoQuantifier::One, true, count);
    }
  }

  // The first node of `rule` among this one and those at most `depth` levels below.
  static const Node* Find(const Node& node, const ParsoRule* rule, int depth) {
    if (node.rule == rule) return &node;
    for (std::size_t i = 0; depth > 0 && i < node.children.size(); ++i) {
      if (const Node* found = Find(*node.children[i], rule, depth - 1)) return found;
    }
    return nullptr;
  }

  static void Remove(Children& list, const Node* wanted) {
    std::erase_if(list, [&](const auto& child) { return child.get() == wanted; });
    for (auto& child : list) Remove(child->children, wanted);
  }

  bool MeetsConstraint(Node& node) {
    const Node* first = Find(node, node.rule->constraint[0], 2);
    const Node* second = Find(node, node.rule->constraint[1], 2);
    if (first == nullptr || second == nullptr) return false;
    const std::u16string name = text_.substr(static_cast<std::size_t>(first->start),
                                             static_cast<std::size_t>(first->length));
    if (first->length != second->length || !Begins(second->start, name)) {
      SetMessage(name + u' ' + std::u16string(second->rule->description), second->start,
                 second->length != 0);
      return false;
    }
    Remove(node.children, second);
    return true;
  }

  static void Prune(Children& list) {
    Children pruned;
    for (auto& child : list) {
      const ParsoRule& rule = *child->rule;
      Children& below = child->children;
      if (rule.kind == ParsoKind::Group) {
        for (auto& node : below) pruned.push_back(std::move(node));
        if (below.empty()) pruned.push_back(std::move(child));
      } else if (below.size() == 1 && !rule.flagKeepNode &&
                 !(rule.flagKeepApart && below[0]->rule->flagKeepApart)) {
        pruned.push_back(std::move(below[0]));
      } else if (!below.empty() || rule.flagKeepNode || rule.IsToken()) {
        pruned.push_back(std::move(child));
      }
    }
    list = std::move(pruned);
  }

  const std::u16string& text_;
  int steps_ = 0;
};

}  // namespace kelmora
