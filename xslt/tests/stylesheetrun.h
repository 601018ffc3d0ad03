// Runs a whole stylesheet in a directory of its own and tells in one line what came out: the text
// of the result, or the error with the place of its node.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kelmora {

struct StylesheetRun {
  std::string stylesheet;
  std::string source = "<r/>";
  std::map<std::string, std::string> files = {};  // further ones, by name
  std::vector<std::string> parameters = {};       // "name=expression"
  std::size_t stackLimit = 1000;
  bool givesAllFrames = false;  // also to templates that could do without

  // The result with its line breaks as LF; "stopped: " and a terminating message; or
  //   code 33 at xsl:stylesheet/xsl:template/@x [xsl:template xsl:stylesheet]
  // "nowhere" stands for no node, "code 1 (6)" and "code 1 (2, substring)" show the numbers of the
  // expression, and the brackets hold the stack from the top when it is not empty.
  std::string Result() const;
};

// The body inside of a xsl:stylesheet of version 1.0 with method text.
std::string Sheet(std::string_view body);
// The same of a template for the root alone.
std::string RootTemplate(std::string_view body);

}  // namespace kelmora
