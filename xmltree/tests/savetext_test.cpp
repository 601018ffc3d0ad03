#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <random>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "temporarydirectory.h"
#include "textencoder.h"
#include "treedump.h"
#include "xmltree/loadeddocument.h"
#include "ystreamimpl/filewriter.h"

namespace {

int refusedRename = 0;  // the number with which the next renames fail

}  // namespace

// Stands before the C library's own.
extern "C" int renameat(int from, const char* old, int to, const char* name) noexcept {
  if (refusedRename == 0) return static_cast<int>(syscall(SYS_renameat2, from, old, to, name, 0));
  errno = refusedRename;
  return -1;
}

namespace kelmora {
namespace {

constexpr int kUtf8 = 1000;
constexpr int kUtf16 = 2000;

LoadError Save(const TQString& path, const TQString& text, int encoding = kUtf8,
               bool wideLineEnd = false) {
  LoadError error;
  ResultSaver saver(Kinds(), wideLineEnd);
  const bool isSaved = saver.SaveText(path, text, error, encoding);
  EXPECT_TRUE(isSaved || error.HasError());
  return error;
}

TEST(SaveText, ConvertsLineEndsAndEncodes) {
  struct Row {
    std::u16string_view text;
    int encoding;
    bool wideLineEnd;
    std::string bytes;
    int code;
  };
  const TemporaryDirectory directory;
  for (const Row& row : {
           Row{u"a\rb\r\nc\nd\u00E9", kUtf8, false, "a\nb\nc\nd\xC3\xA9", 0},
           {u"a\rb\r\nc\nd", kUtf8, true, "a\r\nb\r\nc\r\nd", 0},
           {u"", kUtf16, false, "\xFF\xFE", 0},
           {u"a\r", kUtf16, false,
            std::string("\xFF\xFE"
                        "a\0\n\0",
                        6),
            0},
           {u"\u00E9", 30, false, "_", LoadError::EncodeWarning},
           {u"\u0161", 2, false, "\xB9", 0},
           {u"<?xml version='1.0' ENCODING = 'iso-8859-2'?>\u0161", 0, false,
            "<?xml version='1.0' ENCODING = 'iso-8859-2'?>\xB9", 0},
           {u"text \u00E9\u20AC", 0, false, "text \xE9\xAC", 0},
       }) {
    const LoadError error =
        Save(directory.Name("out"), TQString(row.text), row.encoding, row.wideLineEnd);
    EXPECT_EQ(directory.Read("out"), row.bytes);
    EXPECT_EQ(error.code, row.code);
    EXPECT_EQ(error.severity, row.code != 0 ? LoadError::Decoding : LoadError::None);
    EXPECT_EQ(error.message, u"");
  }
}

TEST(SaveText, FindsTheDeclaredEncoding) {
  struct Row {
    std::u16string_view text;
    EncodingId id;
  };
  const std::u16string blanks(80, u' ');
  const std::u16string late = u"<?xml" + blanks + u"encoding='UTF-8'?>";
  for (const Row& row : {
           Row{u"<?xml version='1.0' encoding=\"UTF-16\"?>", EncodingId::kUtf16},
           {u"<?XML Encoding = = 'Utf_8'", EncodingId::kUtf8},
           {u"x<?xml encoding='big5'", EncodingId::kBig5},
           {u"<?xml encoding:'UTF-8'?>", EncodingId::kNone},
           {u"<?xml encoding='UTF-8\"?>", EncodingId::kNone},
           {u"encoding='UTF-8' <?xml ?>", EncodingId::kNone},
           {u"<?xml encoding=", EncodingId::kNone},
           {u"<?xml encoding='none'?>", EncodingId::kNone},
           {late, EncodingId::kNone},
       }) {
    EXPECT_EQ(DeclaredEncoding(row.text), row.id) << ToNative(row.text);
  }
}

// Whatever the size of the pieces, the bytes are those of the whole.
TEST(SaveText, PiecesMakeUpTheWhole) {
  std::mt19937 random(5);
  const std::u16string_view alphabet = u"ab\r\n\u00E9\u3042\u4E00+-\t\xD83D\xDE00";
  for (const EncodingId id : {EncodingId::kUtf8, EncodingId::kUtf7, EncodingId::kUtf16,
                              EncodingId::kUcs4, EncodingId::kIso2022Jp, EncodingId::kEucJp}) {
    std::u16string text;
    for (int i = 0; i < 3000; ++i) text += alphabet[random() % alphabet.size()];
    for (const std::u16string_view lineEnd : {u"\n", u"\r\n"}) {
      std::string pieces[2];
      std::size_t unmappable[2];
      for (const int small : {0, 1}) {
        TextEncoder encoder(text, lineEnd, id, small ? 7 : 100'000);
        std::string bytes;
        while (!encoder.IsDone()) {
          ASSERT_TRUE(encoder.EncodeNext(bytes));
          pieces[small] += bytes;
        }
        unmappable[small] = encoder.Unmappable();
      }
      EXPECT_EQ(pieces[0], pieces[1]) << static_cast<int>(id);
      EXPECT_EQ(unmappable[0], unmappable[1]) << static_cast<int>(id);
    }
  }
}

TEST(SaveText, FailuresKeepTheOldFile) {
  const TemporaryDirectory directory;
  directory.Write("file", "old");
  std::filesystem::create_directory(directory.Path("directory"));
  struct Row {
    TQString path;
    int code;
    const char* message;
  };
  for (const Row& row : {
           Row{directory.Name("none/x"), ENOENT, "No such file or directory"},
           {directory.Name("file/x"), ENOTDIR, "Not a directory"},
           {directory.Name("directory"), EISDIR, "Is a directory"},
           {u"/dev/full", ENOSPC, "No space left on device"},
           {u"", LoadError::EmptyName, ""},
       }) {
    const LoadError error = Save(row.path, u"new");
    EXPECT_EQ(error.code, row.code) << ToNative(row.path);
    EXPECT_EQ(ToNative(error.message), row.message);
    EXPECT_EQ(error.severity, row.path.IsEmpty() ? LoadError::Internal : LoadError::File);
  }
  // An encoding that does not exist fails before anything is there.
  EXPECT_EQ(Save(directory.Name("file"), u"new", 12345).code, LoadError::EncodeWarning);
  EXPECT_EQ(directory.Read("file"), "old");
  EXPECT_EQ(directory.Count(), 2u);
}

TEST(SaveText, ReplacesFilesAndFollowsLinks) {
  const TemporaryDirectory directory;
  directory.Write("file", "old");
  chmod(directory.Path("file").c_str(), 0640);
  symlink("file", directory.Path("link").c_str());
  symlink("made", directory.Path("dangling").c_str());
  std::ifstream reader(directory.Path("file"));  // sees the old content to the end
  const mode_t mask = umask(027);
  EXPECT_FALSE(Save(directory.Name("link"), u"new").HasError());
  EXPECT_FALSE(Save(directory.Name("dangling"), u"new").HasError());
  EXPECT_FALSE(Save(directory.Name("fresh"), u"new").HasError());
  umask(mask);
  EXPECT_TRUE(std::filesystem::is_symlink(directory.Path("link")));
  EXPECT_TRUE(std::filesystem::is_symlink(directory.Path("dangling")));
  for (const char* name : {"file", "made", "fresh"}) {
    EXPECT_EQ(directory.Read(name), "new") << name;
    struct stat after {};
    stat(directory.Path(name).c_str(), &after);
    EXPECT_EQ(after.st_mode & 0777, 0640u) << name;
  }
  EXPECT_EQ(reader.get(), 'o');
  EXPECT_EQ(directory.Count(), 5u);
}

// Whenever a run is killed, the directory holds the old file alone or the new one.
TEST(SaveText, TheNewFileHasNoNameUntilItIsComplete) {
  const TemporaryDirectory directory;
  directory.Write("file", "old");
  const int nameless = open(directory.Path("").c_str(), O_TMPFILE | O_WRONLY, 0600);
  if (nameless < 0) GTEST_SKIP() << "no such files here";
  close(nameless);
  for (const char* name : {"fresh", "file"}) {
    const std::size_t count = directory.Count();
    FileWriter writer(directory.Path(name));
    ASSERT_EQ(writer.Open(), 0);
    ASSERT_EQ(writer.Write("new"), 0);
    EXPECT_EQ(directory.Count(), count);
    EXPECT_EQ(directory.Read("file"), "old");
    ASSERT_EQ(writer.Commit(), 0);
    EXPECT_EQ(directory.Read(name), "new");
  }
  EXPECT_EQ(directory.Count(), 2u);
}

// A full disk is no reason to touch the old file, whatever its name looks like.
TEST(SaveText, FullDisk) {
  const TemporaryDirectory directory;
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  const TQString path = directory.Write("file", "old");
  for (const TQString& name : {path, u"file://" + path}) {
    const rlimit small{1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const LoadError error = Save(name, TQString(std::u16string(3000, u'x')));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(error.severity, LoadError::File);
    EXPECT_EQ(directory.Read("file"), "old");
    EXPECT_EQ(directory.Count(), 1u);
    EXPECT_FALSE(Save(name, u"old").HasError());
  }
}

// Only a file that cannot be replaced at all is written over.
TEST(SaveText, RenamesThatAreRefused) {
  const TemporaryDirectory directory;
  struct Row {
    int refusal;
    const char* content;
  };
  for (const Row& row : {Row{EIO, "old"}, {ENOSPC, "old"}, {EBUSY, "new"}, {EXDEV, "new"}}) {
    const TQString path = directory.Write("file", "old");
    refusedRename = row.refusal;
    const LoadError error = Save(path, u"new");
    refusedRename = 0;
    EXPECT_EQ(error.code, row.content[0] == 'o' ? row.refusal : 0);
    EXPECT_EQ(directory.Read("file"), row.content) << row.refusal;
    EXPECT_EQ(directory.Count(), 1u);
  }
}

TEST(SaveText, WritesToDescriptorsAndPipes) {
  const TemporaryDirectory directory;
  std::signal(SIGPIPE, SIG_IGN);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const TQString name = FromNative(Join("/dev/fd/", std::to_string(ends[1])));
  EXPECT_FALSE(Save(name, u"through").HasError());
  char read[8] = {};
  EXPECT_EQ(::read(ends[0], read, sizeof read), 7);
  EXPECT_STREQ(read, "through");
  close(ends[0]);
  EXPECT_EQ(ToNative(Save(name, u"lost").message), "Broken pipe");
  close(ends[1]);
  EXPECT_EQ(ToNative(Save(name, u"closed").message), "Bad file descriptor");

  // What stands in the file of a redirected descriptor stays, and more can follow.
  directory.Write("redirected", "");
  const int file = open(directory.Path("redirected").c_str(), O_WRONLY);
  EXPECT_EQ(write(file, "1", 1), 1);
  EXPECT_FALSE(Save(FromNative(Join("/dev/fd/", std::to_string(file))), u"2").HasError());
  EXPECT_EQ(write(file, "3", 1), 1);
  close(file);
  EXPECT_EQ(directory.Read("redirected"), "123");

  mkfifo(directory.Path("pipe").c_str(), 0600);
  const int reader = open(directory.Path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
  EXPECT_FALSE(Save(directory.Name("pipe"), u"fifo").HasError());
  EXPECT_EQ(::read(reader, read, sizeof read), 4);
  close(reader);
}

}  // namespace
}  // namespace kelmora
