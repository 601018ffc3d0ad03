// The state of one build of XPathTreeBuilder.
#pragma once

#include <unordered_set>
#include <vector>

#include "xmltree/xpathtreebuilder.h"

namespace kelmora {

class XPathTreeBuilder::Run {
 public:
  Run(XPathTreeBuilder& builder, TreeModel& model, std::int64_t documentUnits);
  ~Run();
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  XPathNode* Build(XTreeNode& source);

 private:
  // A node whose children are being built, from `next` on. The content of an entity is a level too:
  // its nodes go under the node that held the reference.
  struct Level {
    XPathNode* node;
    XTreeNode* next;
    ElementDeclaration* declaration = nullptr;  // before FinishAttributes the parent's
    int entityDepth = 0;
    bool attributesOpen = true;  // nothing but attributes so far
    bool prefixedAttributes = false;
  };

  XPathNode* MakeNode(XTreeNode& source, const Level& level);
  XPathNode* MakeStamped(XPathNodeKind kind, XTreeNode* source, XPathNode* parent);
  void Append(XPathNode* parent, XPathNode* child);
  void BuildChild(XTreeNode& source);
  void Open(const Level& level);
  void BuildText(XTreeNode& source);
  void BuildElement(XTreeNode& source, const Level& level);

  // --- namespaces ----------------------------------------------------------------------------
  void ResolveElement(XPathNode& element);
  void Declare(XPathNode& element, std::u16string_view declaration, std::u16string_view value);
  void ResolveAttributes(XPathNode& element);

  // --- references ----------------------------------------------------------------------------
  void ExpandText(XPathNode* text);
  void SpliceContent(XPathNode* text, std::unique_ptr<XTree> content);
  bool ExpandReferences(std::u16string_view value, TQString& out);
  void ExpandValue(XPathNode& node);

  // --- defaults ------------------------------------------------------------------------------
  void FinishAttributes(Level& level);
  void RemovePresent(const XPathNode& element);
  void AddDefaults(XPathNode& element);
  void AddDefaultAttribute(XPathNode& element, DefaultedAttribute& attribute);
  XPathNode* AppendDefault(XPathNode& element, XPathNodeKind kind, TQString value);

  XPathTreeBuilder& builder_;
  TreeModel& model_;
  ExpansionBudget budget_;
  std::int32_t documentNumber_ = 0;
  bool hasDeclarations_ = false;
  XPathNode* root_ = nullptr;
  std::vector<Level> levels_;

  // The last element name that was resolved: most elements have the prefix and the map of the one
  // before.
  PrefixMap lastMap_;
  std::u16string_view lastPrefix_;
  InternedURI lastURI_ = nullptr;
  bool hasLast_ = false;

  TQString expanded_;
  std::vector<DefaultedAttribute> defaults_;
  TQString defaultText_;
};

}  // namespace kelmora
