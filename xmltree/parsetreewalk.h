// The walk from a parse tree to an XTree.
#pragma once

#include <vector>

#include "parso/parsonode.h"
#include "xmltree/xtreenode.h"

namespace kelmora {

struct WalkStep;

class ParseTreeWalk {
 public:
  // `textStart` is the parsed buffer, which the views of the new nodes point into. With `foldTexts`
  // a text that would be the only child of its element goes into the element at once, which is
  // where Normalize would move it.
  ParseTreeWalk(XTree& tree, const char16_t* textStart, bool foldTexts)
      : tree_(tree), textStart_(textStart), foldTexts_(foldTexts) {}

  // Hangs what the parse tree holds under `container`. False when the tree has a shape that the
  // grammars do not give. Linear, without recursion.
  [[nodiscard]] bool Run(const ParsoNode& top, XTreeContainer& container);
  // Normalizes the nodes of the last run for which that does anything. The outcome is that of
  // NormalizeTree, without another walk.
  void Tidy();

 private:
  // The children of one parse node. What they make goes under `current`, which some of them change
  // for those that follow: behind the start tag, the rest belongs to the element.
  struct Level {
    const ParsoNode* next;
    XTreeNode* current;
    GrammarRule rule;  // of the parse node
  };

  // The node that the children of `node` fill; null when the shape is wrong.
  XTreeNode* Enter(const ParsoNode& node, Level& level, bool& skipChildren);
  XTreeNode* Append(const ParsoNode& node, XTreeKind kind, XTreeNode* container);
  void NoteUntidy(XTreeContainer& container);
  void SetName(XTreeNode& node, std::u16string_view name);
  XTreeNode* EnterContent(const ParsoNode& node, XTreeNode* current, bool& skipChildren);
  XTreeNode* EnterComment(const ParsoNode& node, XTreeNode* current);
  XTreeNode* StartElement(const ParsoNode& node, Level& level);
  XTreeNode* EnterElementItem(const ParsoNode& node, XTreeNode* current, const WalkStep& step);
  XTreeNode* EnterAttlistItem(const ParsoNode& node, Level& level, const WalkStep& step);

  XTree& tree_;
  const char16_t* textStart_;
  bool foldTexts_;
  std::vector<Level> levels_;
  std::vector<XTreeContainer*> untidy_;
  bool plainAttributes_ = true;
};

}  // namespace kelmora
