// The state of one WriteSource.
#pragma once

#include <string_view>

#include "xmltree/sourcewriter.h"

namespace kelmora {

class SourceWriter {
 public:
  SourceWriter(TQString& text, int& cursor, int depth, const SourceWriteOptions& options)
      : text_(text), cursor_(cursor), depth_(depth), options_(options) {}

  void WriteTree(XTreeNode& top);

 private:
  // Writes what stands in front of the children and returns the first child that is still to be
  // written; null when the node is complete.
  XTreeNode* Start(XTreeNode& node);
  void End(XTreeNode& node);
  void StartLine(const XTreeNode& child);

  XTreeNode* StartElement(XTreeContainer& element);
  void EndElement(const XTreeContainer& element);
  void WriteXmlTag(const XTreeContainer& tag);
  void WriteAttribute(XTreeNode& attribute);
  XTreeNode* StartDocType(XTreeContainer& docType);
  XTreeNode* StartDtdElement(XTreeDTDElement& element);
  void EndDtdElement(const XTreeDTDElement& element);
  XTreeNode* StartAttlist(XTreeDTDAttlist& list);
  void EndAttlist(const XTreeDTDAttlist& list);
  void StartAttlistItem(const XTreeDTDAttlist& item);
  void WriteDeclaration(std::u16string_view keyword, const XTreeNode& node);

  void Write(std::u16string_view text) { text_.AppendAt(text, cursor_, kGrowth); }
  void WriteQuoted(std::u16string_view text);
  void WriteIndent(int depth);
  bool IsPretty() const { return options_.pretty && preserved_ == nullptr; }
  bool IsPreserved(const XTreeNode& element) const;
  void MarkStart(XTreeNode& node) const;
  void MarkEnd(XTreeNode& node) const;

  static constexpr int kGrowth = 16384;  // units

  TQString& text_;
  int& cursor_;
  int depth_;  // of the elements around
  const SourceWriteOptions& options_;
  const XTreeNode* preserved_ = nullptr;  // the outermost element that is written as it stands
};

}  // namespace kelmora
