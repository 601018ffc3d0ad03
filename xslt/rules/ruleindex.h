// RuleIndex: the rules that can be right for a node, by mode, kind and name, in the order of Rules.
// It only leaves out rules whose pattern certainly does not match and certainly cannot fail; all
// others stand in every list, so that they raise when a selection reaches them.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "rules/templaterule.h"
#include "tqcore/texthash.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

class RuleIndex {
 public:
  // Rules are added with ascending Rank.
  void Add(TemplateRule* rule);

  // Walks the candidates for a node with a Rank below `rankLimit`, in up to two modes, the greatest
  // Rank first.
  class Candidates {
   public:
    Candidates(const RuleIndex& index, const XPathNode* node, std::int32_t rankLimit)
        : index_(index), node_(node), rankLimit_(rankLimit) {}
    void AddMode(ModeId mode);
    TemplateRule* Next();  // null at the end

   private:
    using List = std::vector<TemplateRule*>;
    struct Place {
      const List* list;
      std::size_t left;  // entries from here on are done
    };
    void AddList(const List& list);

    const RuleIndex& index_;
    const XPathNode* node_;
    std::int32_t rankLimit_;
    std::array<Place, 4> places_;
    int count_ = 0;
  };

 private:
  enum NodeClass : std::uint8_t { Root, Element, Text, Attribute, PI, Comment, Other, ClassCount };
  static constexpr unsigned kAllClasses = (1U << ClassCount) - 1;
  static NodeClass ClassOf(const XPathNode* node);

  // What a rule can match: nodes of these classes, of one local name unless that is empty.
  struct Target {
    unsigned classes = kAllClasses;
    std::u16string_view name;
  };
  static Target TargetOf(const TemplateRule& rule);

  struct NodeLists {
    std::vector<TemplateRule*> any;
    std::unordered_map<std::u16string_view, std::vector<TemplateRule*>, TextHash> named;
  };
  struct ModeLists {
    std::array<NodeLists, ClassCount> classes;
  };

  std::unordered_map<ModeId, ModeLists> modes_;
};

}  // namespace kelmora
