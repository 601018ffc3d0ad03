#include "evaluation.h"

namespace kelmora {
namespace {

TEST_F(Evaluation, AxesAndTests) {
  Check({
      {"/", "[/]"},
      {"r/*", "[a p:e d]"},
      {"r/a/node()", "['t1' b c !in ?go]"},
      {"//text()", "['t1' 't2' ' 12 ' '3' '4' '5']"},
      {"//comment()", "[!first !in]"},
      {"//processing-instruction()", "[?go]"},
      {"//processing-instruction('go')", "[?go]"},
      {"//processing-instruction('stop')", "[]"},
      {"r/@*", "[@id @xml:lang]"},
      {"r/attribute::node()", "[@id @xml:lang]"},
      {"//p:*", "[p:e]"},
      {"//q:e", "[]"},
      {"//@p:z", "[@p:z]"},
      {"//e", "[]"},
      {"//none:*/@*", "[@id @xml:lang @x @y @p:z @k]"},
      {"r/none:*", "[ns:xmlns:p a p:e d]"},
      {"//f/ancestor::*", "[d r]"},
      {"//f/ancestor::node()", "[d r /]"},
      {"//f/ancestor-or-self::*", "[f d r]"},
      {"//g/ancestor-or-self::*", "[g g d r]"},
      {"//f/ancestor::*[1]", "[d]"},
      {"//f/..", "[d]"},
      {"//@k/..", "[c]"},
      {"r/parent::node()", "[/]"},
      {"//b/following::*", "[c p:e d f g g]"},
      {"//@x/following::*", "[b c p:e d f g g]"},
      {"//f/preceding::*", "[p:e c b a]"},
      {"//g[2]/preceding::*[1]", "[g]"},
      {"//b/following-sibling::node()", "[c !in ?go]"},
      {"//c/preceding-sibling::node()", "[b 't1']"},
      {"//g/preceding-sibling::*", "[g f]"},
      {"//c/preceding-sibling::x", "[@x]"},
      {"/comment()/following-sibling::node()", "[r]"},
      {"r/preceding-sibling::node()", "[!first]"},
      {"//@x/following-sibling::node()", "[]"},
      {"//@id/self::node()", "[@id]"},
      {"//@id/self::*", "[]"},
      {"//@id/self::id", "[@id]"},
      {"//@id/descendant-or-self::node()", "[@id]"},
      {"r/d/descendant::node()", "[f '3' g '4' g '5']"},
      {"r/namespace::*", "[ns:p ns:xml]"},
      {"r/namespace::q:p", "[ns:p]"},
      {"//g", "[g g]"},
      {"r/d/g[1] | r/a | //g", "[a g g]"},
      {"/descendant::g[2]", "[g]"},
      {"r/u:x", "error 1/-1"},
      {"nothing/u:x", "error 1/-1"},
      {"nothing/u:x[1]", "[]"},
      {"a divide", "NaN"},
  });
}

TEST_F(Evaluation, PredicatesAndPositions) {
  Check({
      {"r/*[2]", "[p:e]"},
      {"r/*[last()]", "[d]"},
      {"r/*[position()=last()-1]", "[p:e]"},
      {"r/*[position()>1][1]", "[p:e]"},
      {"//g[1]", "[g]"},
      {"count(//g[1])", "1"},
      {"(//g)[2] = 5", "true"},
      {"//*[@x='5']", "[a]"},
      {"//*[g]", "[d]"},
      {"//*[g = 5]/f", "[f]"},
      {"r/*['']", "[]"},
      {"r/*['x']", "[a p:e d]"},
      {"r/*[0 div 0]", "[]"},
      {"r/*[1.5]", "[]"},
      {"//f/ancestor::*[position()=2]", "[r]"},
      {"(//f/ancestor::*)[1]", "[r]"},
      {"$back", "[d b c]"},
      {"$back[2]", "[b]"},
      {"$back[position()=8]", "[b]"},
      {"($back)[2]", "[c]"},
      {"$back[last()]", "[c]"},
      {"r/*/self::node()[position()=2]", "[p:e]"},
      {"r/*/self::node()[2]", "[]"},
      {"r/*[self::d or self::a]", "[a d]"},
      {"r/*[$two]", "[p:e]"},
      {"position() + last()", "8"},
      {"r[*[f]/g]/@id", "[@id]"},
      {"1[1]", "error 4/-1"},
      {"'x'/a", "[]"},
      {"'x'/.", "\"x\""},
      {"'x'//.", "[]"},
  });
}

TEST_F(Evaluation, ComparisonsAndArithmetic) {
  Check({
      {"1 + 2 * 3 - 4 div 2", "5"},
      {"5.5 mod 2", "1"},
      {"-5 mod 2", "-1"},
      {"5 mod 0", "NaN"},
      {"5 mod (1 div 0)", "NaN"},
      {"1 div (-4 mod 2)", "Infinity"},
      {"--3", "3"},
      {"---'3'", "-3"},
      {"1 div 0", "Infinity"},
      {"-1 div 0", "-Infinity"},
      {"0 div 0 = 0 div 0", "false"},
      {"0 div 0 != 1", "false"},
      {"'x' != 1", "true"},
      {"'x' != 0 div 0", "false"},
      {"'1' != 0 div 0", "true"},
      {"//g = 5", "true"},
      {"//g != 5", "true"},
      {"//g[1] != 4", "false"},
      {"//b != 5", "true"},
      {"//b != 0 div 0", "false"},
      {"//g = '4'", "true"},
      {"//g = //f", "false"},
      {"//g = //@x", "true"},
      {"//g != //g", "true"},
      {"//f != //f", "false"},
      {"//none = //none", "false"},
      {"//none != ''", "false"},
      {"//none = false()", "true"},
      {"//g < //f", "false"},
      {"//f < //g", "true"},
      {"//g > //f", "true"},
      {"//g >= 5", "true"},
      {"5 < //g", "false"},
      {"//f > true()", "true"},
      {"3 > 2 > 1", "false"},
      {"1 < 2 < 3", "true"},
      {"2 = 2 = 2", "true"},
      {"true() or $undefined", "error 6/-1"},
      {"false() and //u:x", "error 1/-1"},
      {"1 | $undefined", "error 4/-1"},
      {"count(/r | 1 | 'x')", "error 4/-1"},
      {"a | 1", "error 4/-1"},
      {"$two | a", "error 4/-1"},
      {"boolean(a | $two)", "error 4/-1"},
      {"string(a | //b | true())", "error 4/-1"},
      {"a | (b | 'x')", "error 4/-1"},
      {"//a[. | 1]", "error 4/-1"},
      {"/r | $two | $undefined", "error 4/-1"},
  });
}

TEST_F(Evaluation, FragmentsAndVariables) {
  Check({
      {"$rtf", "[/]"},
      {"$rtf = 1", "true"},
      {"$rtf + 1", "2"},
      {"$rtf/a", "error 11/-1"},
      {"$rtf//a", "error 11/-1"},
      {"$rtf[1]", "error 11/-1"},
      {"($rtf)/a", "error 11/-1"},
      {"count($rtf | /)", "2"},
      {"$two * $p:v", "4"},
      {"$q:v", "error 6/-1"},
      {"$ p : v", "2"},
      {"string($undefined)", "error 6/-1"},
  });
}

TEST_F(Evaluation, AxisLimitOfPatterns) {
  struct PatternRow {
    const char* pattern;
    const char* expected;
  };
  for (const PatternRow& row : std::initializer_list<PatternRow>{
           {"r/a", "[a]"},
           {"r//g", "[g g]"},
           {"descendant-or-self::r", "[r]"},
           {"r/a/..", "error 12/-1"},
           {"self::r", "error 12/-1"},
           {"nothing/ancestor::x", "error 12/-1"},
           {"self::node()", "[/]"},
           {"r/a[../d]", "[a]"},
           {"r/a[b]/..", "error 12/-1"},
           {"//f[ancestor::d[1]]", "[f]"},
           {"//a[$two]", "no parse"},
       }) {
    EXPECT_EQ(Run(row.pattern, kTemplatePattern), row.expected) << row.pattern;
  }
  EXPECT_EQ(Run("key('x', 'y')", kKeyPattern), "error 17/28");
  EXPECT_EQ(Run("key('x')", kKeyPattern), "error 17/28");
}

}  // namespace
}  // namespace kelmora
