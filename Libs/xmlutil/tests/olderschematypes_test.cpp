#include "older/olderschematypes.h"

#include <gtest/gtest.h>

#include <vector>

#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

TEST(OlderSchemaTypes, ValuesInQuotes) {
  const std::vector<TQString> words = SplitValues(u"a 'b c' \"d\"  e");
  ASSERT_EQ(words.size(), 4u);
  EXPECT_EQ(ToNative(words[1]), "b c");
  EXPECT_EQ(ToNative(words[3]), "e");
}

}  // namespace
}  // namespace kelmora
