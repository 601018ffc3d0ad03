// Result trees and settings for tests, each from one line of text.
#pragma once

#include <memory>
#include <string_view>

#include "output/outputsettings.h"
#include "xmltree/xpathnode.h"

namespace kelmora {

struct TreeDeleter {
  void operator()(XPathNode* root) const { XPathNode::DeleteTree(root); }
};
using ResultTree = std::unique_ptr<XPathNode, TreeDeleter>;

// A root with what `text` describes. Everything is taken as it stands, nothing is decoded:
//   <a x='1' xmlns:p='u'> </a> <b/>   elements, attributes and declarations
//   <a @u>                            an element in the namespace u
//   {text} {!text} [cdata[            a text node, one without escaping, a CDATA section
//   <!--text--> <?name value?>        a comment, a processing instruction
ResultTree MakeResultTree(std::string_view text);

// "method=html indent=yes encoding=.. public=.. system=.. cdata=a,u:b omit=no standalone=yes"
OutputSettings MakeSettings(std::string_view text);

}  // namespace kelmora
