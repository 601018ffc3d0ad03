// BuiltInStylesheet: the built-in templates as an ordinary stylesheet, made node by node, whose
// rules have the lowest precedence. The mode "?" stands for every mode and is no QName.
#pragma once

#include <memory>

#include "xmltree/treemodel.h"
#include "xmltree/xpathnode.h"
#include "xmltree/xpathtreebuilder.h"

namespace kelmora {

class BuiltInStylesheet {
 public:
  BuiltInStylesheet(XPathTreeBuilder& builder, TreeModel& model);
  ~BuiltInStylesheet();
  BuiltInStylesheet(const BuiltInStylesheet&) = delete;
  BuiltInStylesheet& operator=(const BuiltInStylesheet&) = delete;

  XPathNode* Root() const { return BuiltInRoot; }

 private:
  std::unique_ptr<XTree> source_;
  XPathNode* BuiltInRoot;
};

}  // namespace kelmora
