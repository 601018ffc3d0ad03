#include <gtest/gtest.h>

#include "tqcore/tqstring.h"
#include "tqcore/tqtext.h"

namespace kelmora {
namespace {

TEST(TQStringPath, Parts) {
  struct Row {
    const char16_t *path, *fileName, *directory, *extension;
  };
  const Row rows[] = {
      {u"a/b\\c.XML", u"c.XML", u"a/b", u"xml"},
      {u"c", u"c", u"", u""},
      {u"a.b/c", u"c", u"a.b", u""},
      {u"/x", u"x", u"", u""},
      {u"a/", u"", u"a", u""},
      {u"a.x#y", u"a.x#y", u"", u""},
  };
  for (const Row& row : rows) {
    const TQString path(row.path);
    EXPECT_EQ(ToNative(path.FileName()), ToNative(row.fileName));
    EXPECT_EQ(ToNative(path.Directory(false)), ToNative(row.directory));
    EXPECT_EQ(ToNative(path.Extension(true)), ToNative(row.extension));
  }
  EXPECT_EQ(TQString(u"a/b").Directory(true), u"a/");
  EXPECT_EQ(TQString(u"c.XML").Extension(false), u"XML");
}

TEST(TQStringPath, IsRelative) {
  struct Row {
    const char16_t* path;
    bool relative, relativeWithRoot;
  };
  const Row rows[] = {{u"", false, false},      {u"a", true, true},       {u"/a", true, false},
                      {u"\\a", true, false},    {u"//a", false, false},   {u"\\/a", false, false},
                      {u"C:\\a", false, false}, {u"x://h", false, false}, {u"/", true, false}};
  for (const Row& row : rows) {
    EXPECT_EQ(TQString(row.path).IsRelativePath(false), row.relative) << ToNative(row.path);
    EXPECT_EQ(TQString(row.path).IsRelativePath(true), row.relativeWithRoot) << ToNative(row.path);
  }
  EXPECT_TRUE(TQString(u"A\\Ä").SamePath(TQString(u"a/ä")));
  EXPECT_FALSE(TQString(u"a/b").SamePath(TQString(u"a/bc")));
}

TEST(TQStringPath, ResolveRelativePath) {
  struct Row {
    const char16_t *path, *base, *defaultDirectory, *expected;
  };
  const Row rows[] = {
      {u"../b.xml", u"scheme://h/x/y/c.xsl", u"", u"scheme://h/x/b.xml"},
      {u"/b.xml", u"scheme://h/x/y/c.xsl", u"", u"scheme://h/b.xml"},
      {u"/b.xml", u"scheme://h", u"", u"scheme://h/b.xml"},
      {u"b.xml", u"scheme://h", u"", u"scheme://h/b.xml"},
      {u"/b.xml", u"C:\\x\\c.xsl", u"", u"C:/b.xml"},
      {u"/b.xml", u"/x/c.xsl", u"", u"/b.xml"},
      {u"x:y", u"/x/c.xsl", u"", u"x:y"},
      {u"//n/b", u"/x/c.xsl", u"", u"//n/b"},
      {u"b.xml", u"", u"D:", u"D:\\b.xml"},
      {u"b.xml", u"", u"d/", u"d/b.xml"},
      {u"b.xml", u"", u"", u"b.xml"},
      {u"b.xml", u"c.xsl", u"", u"c.xslb.xml"},
      {u"./b.xml", u"/x/c.xsl", u"", u"/x/b.xml"},
      {u".\\..\\b.xml", u"/x/y/c.xsl", u"", u"/x/b.xml"},
      {u"././b.xml", u"/x/c.xsl", u"", u"/x/./b.xml"},
      {u"./b", u"/x/c.xsl", u"", u"/x/b"},
      {u"..", u"/x/c.xsl", u"", u"/x/.."},
      {u"../", u"/x/y/c.xsl", u"", u"/x/"},
      {u"../../../b", u"/x/c.xsl", u"", u"/b"},
      {u"../../b", u"x/c.xsl", u"", u"x/b"},
  };
  for (const Row& row : rows) {
    const TQString resolved =
        TQString(row.path).ResolveRelativePath(TQString(row.base), TQString(row.defaultDirectory));
    EXPECT_EQ(ToNative(resolved), ToNative(row.expected)) << ToNative(row.path);
  }
}

// A base without a second separator must not be searched again for each of the steps.
TEST(TQStringPath, ManyStepsUpwardsAreLinear) {
  constexpr int kSteps = 200000;
  TQString path;
  for (int i = 0; i < kSteps; ++i) path += u"../";
  TQString base;
  for (int i = 0; i < kSteps; ++i) base += u'x';
  base += u'/';
  EXPECT_EQ(path.ResolveRelativePath(base, TQString()).Length(), base.Length());
}

}  // namespace
}  // namespace kelmora
