// Random expressions, patterns, identity paths and trees for them to run over, and the loop that
// tries many.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <random>
#include <string>

#include "testtree.h"

namespace kelmora {

// Calls `round` with one seed after the other, starting anywhere, for a second or two. With
// KELMORA_SEED in the environment only that round runs, which repeats a failure.
template <class Round>
void ForManySeeds(Round round) {
  if (const char* given = std::getenv("KELMORA_SEED")) {
    round(static_cast<unsigned>(std::strtoul(given, nullptr, 10)));
    return;
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
  unsigned seed = std::random_device()();
  std::cout << "seeds from " << seed << "\n";
  for (; std::chrono::steady_clock::now() < end; ++seed) {
    round(seed);
    if (testing::Test::HasFailure()) {
      FAIL() << "to repeat it: KELMORA_SEED=" << seed;
    }
  }
}

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  int Below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string Pick(std::initializer_list<const char*> choices) {
    return *(choices.begin() + Below(static_cast<int>(choices.size())));
  }
  template <class Item>
  void Shuffle(std::vector<Item>& items) {
    for (int i = static_cast<int>(items.size()); i > 1; --i) {
      std::swap(items[static_cast<std::size_t>(i - 1)], items[static_cast<std::size_t>(Below(i))]);
    }
  }

  // A small document; one in eight is a thread of elements, one in the other.
  std::string Xml() {
    std::string xml = Pick({"", "<!--c-->", "<!D>"});
    if (Below(8) == 0) {
      int depth = 40 + Below(60);
      xml += "<b xmlns:p='urn:p'>";
      for (int i = 0; i < depth; ++i) xml += i % 7 == 0 ? "<a x='1'>1" : "<c>";
      for (int i = depth; i-- > 0;) xml += i % 7 == 0 ? "</a>" : "2</c>";
      xml += "</b>";
    } else {
      Element(xml, 0);
    }
    return xml + Pick({"", "<?t x?>"});
  }

  std::string Expression(int depth) {
    switch (Below(depth > 3 ? 4 : 12)) {
      case 0:
        return Pick({"1", "2", "0", "'1'", "'b'", "''", "1.5", "'xsl:if'"});
      case 1:
        return Pick({"$set", "$set", "$rtf", "$two", "$text", "$missing", "$q:missing"});
      case 2:
      case 3:
        return Path(depth);
      case 4:
        return Expression(depth + 1) +
               Pick({"=", "!=", "<", ">", "<=", ">=", " or ", " and ", "+", "*", " - ", " mod ",
                     " div "}) +
               Expression(depth + 1);
      case 5:
        if (Below(2) == 0) return Step(depth) + "|" + Step(depth) + Pick({"", "|@*", "|node()"});
        return Path(depth) + "|(" + Expression(depth + 1) + ")";
      case 6:
        return "(" + Expression(depth + 1) + ")" + Predicates(depth);
      case 7:
        return Pick({"$set", "key('k','1')"}) + Predicates(depth) + Pick({"/", "//"}) +
               Steps(depth + 1);
      case 8:
        return Pick({"count", "not", "boolean", "string", "number", "sum", "name", "nosuch",
                     "p:name", "u:name"}) +
               "(" + Path(depth + 1) + ")";
      case 9:
      case 10:
        return Call(depth);
      default:
        return Pick({"-", "--"}) + Expression(depth + 1);
    }
  }

  std::string Path(int depth) {
    return Pick({"", "", "", "/", "//", "./", ".//", "../"}) + Steps(depth);
  }

  std::string Steps(int depth) {
    std::string path = Step(depth);
    for (int more = Below(3); more > 0; --more) path += Pick({"/", "/", "//"}) + Step(depth);
    return path;
  }

  // Of the form that can be tested on one node.
  std::string Pattern() {
    auto step = [this] {
      return Pick({"a", "b", "c", "*", "p:*", "p:a", "node()", "text()", "comment()", "@x", "@*",
                   "@p:x", "processing-instruction()", "processing-instruction('t')"});
    };
    if (Below(12) == 0) return "/";
    std::string pattern = Pick({"", "", "/", "//"}) + step();
    for (int more = Below(4); more > 0; --more) pattern += Pick({"/", "//"}) + step();
    return pattern;
  }

  std::string IdentityPath(bool isField) {
    auto test = [this] { return Pick({"a", "b", "*", "p:*", "p:a", ".", "unbound:a"}); };
    std::string path = Pick({"", ".//"}) + test();
    for (int more = Below(3); more > 0; --more) path += "/" + test();
    if (isField && Below(2) == 0) path += Pick({"/@x", "/@*", "/@p:*"});
    return path;
  }

 private:
  // Of any function that the product has, most often with as many arguments as it takes.
  std::string Call(int depth) {
    static constexpr struct {
      const char16_t* name;
      int fewest, most;
    } kFunctions[] = {
#define XPATH_FUNCTION(number, id, name, called, Operation, Result, fewest, most, fails, reads) \
  {name, fewest, most},
#define XSLT_FUNCTION XPATH_FUNCTION
#include "xpath/xpathfunctions.def"
#undef XSLT_FUNCTION
#undef XPATH_FUNCTION
    };
    const auto& function = kFunctions[Below(static_cast<int>(std::size(kFunctions)))];
    int most = function.most < 0 ? function.fewest + 2 : function.most;
    int count = function.fewest + Below(most - function.fewest + 1) + (Below(20) == 0 ? 1 : 0);
    std::string call = Narrow(function.name) + "(";
    for (int i = 0; i < count; ++i) call += (i == 0 ? "" : ",") + Expression(depth + 1);
    return call + ")";
  }

  void Element(std::string& xml, int depth) {
    std::string name = Pick({"a", "b", "c", "p:a", "p:b"});
    xml += "<" + name + Pick({"", " x='1'", " x='b' y='2'", " p:x='1'"}) +
           Pick({"", "", " xml:lang='en'", " xmlns:p='urn:p'", " xmlns:p='urn:q'"});
    if (depth == 0) xml += " xmlns:p='urn:p'";
    xml += ">";
    for (int children = Below(depth < 5 ? 5 : 1); children > 0; --children) {
      if (Below(2) == 0) {
        Element(xml, depth + 1);
      } else {
        xml += Pick({"1", "b", "22", "<!--1-->", "<?t 1?>", "<![CDATA[2]]>"});
      }
    }
    xml += "</" + name + ">";
  }

  std::string Step(int depth) {
    int form = Below(14);
    if (form == 0) return ".";
    if (form == 1) return "..";
    std::string axis =
        form < 8
            ? Pick({"", "", "", "@"})
            : Pick({"ancestor::", "ancestor-or-self::", "attribute::", "child::", "descendant::",
                    "descendant-or-self::", "following::", "following-sibling::", "namespace::",
                    "parent::", "preceding::", "preceding-sibling::", "self::"});
    std::string test = Pick({"a", "b", "c", "x", "*", "*", "p:*", "p:a", "none:*", "node()",
                             "node()", "text()", "comment()", "processing-instruction()"});
    if (Below(60) == 0) test = "unbound:a";
    return axis + test + (Below(3) == 0 ? Predicates(depth) : "");
  }

  std::string Predicates(int depth) {
    std::string text;
    for (int count = Below(3); count > 0; --count) {
      text += "[";
      text += Below(2) == 0 ? Pick({"1", "2", "last()", "position()=2", "position()=last()",
                                    "@x='1'", "@x", "a", ".='1'", "position()<3", "not(@x)"})
                            : Expression(depth + 2);
      text += "]";
    }
    return text;
  }

  std::mt19937 random_;
};

}  // namespace kelmora
