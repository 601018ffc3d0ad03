#include "xmltree/loadeddocument.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "filereader.h"
#include "temporarydirectory.h"
#include "treedump.h"
#include "xmltree/documentmanager.h"

namespace kelmora {
namespace {

struct Loaded {
  XTreeNode* Load(const TQString& path, GrammarKind kind = GrammarKind::XML) {
    record = std::make_unique<LoadRecord>();
    record->document = std::make_unique<LoadedDocument>(Kinds());
    record->document->SetKind(Kinds().Find(kind));
    error = {};
    return record->document->Load(path, error, record.get());
  }
  std::unique_ptr<LoadRecord> record;
  LoadError error;
};

TEST(LoadedDocument, LineEndsBecomeSingleReturns) {
  struct Row {
    const char* bytes;
    std::u16string_view text;
    std::u16string_view lineEnd;
  };
  const TemporaryDirectory directory;
  for (const Row& row : {
           Row{"<a>1\n2\n</a>", u"<a>1\r2\r</a>", u"\n"},
           {"<a>1\r\n2\n3\r4\r\r\n</a>", u"<a>1\r2\r3\r4\r\r</a>", u"\r\n"},
           {"<a>1\r2\n3</a>", u"<a>1\r2\r3</a>", u"\r"},
           {"<a>1</a>", u"<a>1</a>", u"\r\n"},
           {"\xEF\xBB\xBF<a>\xC3\xA9</a>", u"<a>\u00E9</a>", u"\r\n"},
           {"<a>\xC3\xA9</a>", u"<a>\u00C3\u00A9</a>", u"\r\n"},
           {"", u"", u"\r\n"},
       }) {
    Loaded loaded;
    ASSERT_NE(loaded.Load(directory.Write("d.xml", row.bytes)), nullptr) << row.bytes;
    EXPECT_FALSE(loaded.error.HasError());
    EXPECT_EQ(loaded.record->document->Text(), row.text);
    EXPECT_EQ(loaded.record->document->LineEnd(), row.lineEnd);
    EXPECT_EQ(loaded.record->lineEnd, row.lineEnd);
  }
}

TEST(LoadedDocument, KindAndNameChooseTheGrammar) {
  struct Row {
    const char* name;
    GrammarKind kind;
    const char* bytes;
    const char* dump;
    GrammarKind loadedKind;
  };
  const TemporaryDirectory directory;
  for (const Row& row : {
           Row{"a.xml", GrammarKind::XML, "<a/>", "0(<a>)", GrammarKind::XML},
           {"a.DTD", GrammarKind::Stylesheet, "<!ENTITY e 'v'>", "2(14:e ''v'')", GrammarKind::DTD},
           {"a.dtd", GrammarKind::XML, "<a/>", "0(<a>)", GrammarKind::XML},
           {"noname", GrammarKind::Stylesheet, "<a/>", "0(<a>)", GrammarKind::XML},
           {"a.ent", GrammarKind::Entity, "x<b/>", "1('x' <b>)", GrammarKind::Entity},
           {"a.3dml", GrammarKind::Lax, "< a x='&'>&</ a>", "no", GrammarKind::Lax},
           {"b.3dml", GrammarKind::Lax, "< a x='&'>&</a>", "0(<a @x=& '&'>)", GrammarKind::Lax},
       }) {
    Loaded loaded;
    const XTreeNode* root = loaded.Load(directory.Write(row.name, row.bytes), row.kind);
    EXPECT_EQ(root != nullptr ? Dump(*root) : "no", row.dump) << row.name;
    EXPECT_EQ(loaded.record->kind, row.loadedKind) << row.name;
  }
  EXPECT_EQ(Kinds().Find(GrammarKind::XmlTD), nullptr);
  DocumentKindTable table;
  EXPECT_EQ(table.Find(GrammarKind::XML), nullptr);
  TQString errorText;
  EXPECT_FALSE(table.Fill(true, errorText));
  EXPECT_EQ(errorText, u"gra_xml_td.txt");
}

TEST(LoadedDocument, FailuresArriveInTheError) {
  struct Row {
    TQString path;
    std::int32_t severity;
    std::int32_t code;
    const char* message;
    bool hasTree;
  };
  const TemporaryDirectory directory;
  mkfifo(directory.Path("pipe").c_str(), 0600);
  symlink("loop", directory.Path("loop").c_str());
  const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\x80</a>";
  for (const Row& row : {
           Row{directory.Name("none.xml"), LoadError::File, ENOENT, "No such file or directory",
               false},
           {directory.Name("none/x"), LoadError::File, ENOENT, "No such file or directory", false},
           {directory.Name(""), LoadError::File, EISDIR, "Is a directory", false},
           {directory.Name("loop"), LoadError::File, ELOOP, "Too many levels of symbolic links",
            false},
           {u"/dev/zero", LoadError::File, EFBIG, "The input does not end within 64 MiB", false},
           {u"", LoadError::Internal, LoadError::EmptyName, "", false},
           {u"http://127.0.0.1:9/x", LoadError::File, LoadError::UrlUnreadable, "", false},
           {directory.Write("bad.xml", "<a>"), LoadError::Parsing, LoadError::ParseFailed,
            "Line 1, character 3: expected Whitespace (Blank, Tab, CR, LF)", false},
           {directory.Write("latin.xml", latin), LoadError::Decoding, LoadError::DecodeWarning, "",
            true},
           {directory.Write("cut.xml", "\xEF\xBB\xBF<a>\xC3"), LoadError::Decoding,
            LoadError::DecodeWarning, "", false},
           {u"/dev/null", LoadError::None, 0, "", true},
       }) {
    Loaded loaded;
    EXPECT_EQ(loaded.Load(row.path) != nullptr, row.hasTree) << ToNative(row.path);
    EXPECT_EQ(loaded.error.severity, row.severity) << ToNative(row.path);
    EXPECT_EQ(loaded.error.code, row.code) << ToNative(row.path);
    EXPECT_EQ(ToNative(loaded.error.message), row.message);
  }
  EncodedBytes bytes;
  LoadError error;
  EXPECT_FALSE(ReadWholeFile(directory.Name("pipe"), bytes, error, {.writerSeconds = 0}));
  EXPECT_EQ(error.message, u"No data came within 0 seconds");
  EXPECT_EQ(error.flag, 1);
  error = {};
  const TQString small = directory.Write("small", "12345");
  EXPECT_FALSE(ReadWholeFile(small, bytes, error, {.fileBytes = 4}));
  EXPECT_EQ(error.message, u"File too large");
}

TEST(LoadedDocument, ReadsPipesAndFilesOfUnknownSize) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string sent(300'000, 'x');
  std::thread writer([&] { directory.Write("pipe", sent); });
  EncodedBytes bytes;
  LoadError error;
  EXPECT_TRUE(ReadWholeFile(FromNative(path), bytes, error));
  writer.join();
  EXPECT_EQ(bytes.View(), sent);
  // The limit is what a pipe does not reach.
  for (const std::size_t size : {(1u << 20) - 1, 1u << 20}) {
    std::thread filler([&] { directory.Write("pipe", std::string(size, 'x')); });
    EXPECT_EQ(ReadWholeFile(FromNative(path), bytes, error, {.pipeMegabytes = 1}), size < 1u << 20);
    filler.join();
  }
  EXPECT_EQ(error.message, u"The input does not end within 1 MiB");
  // Somebody who has the pipe open is waited for, though he writes later.
  const int silent = open(path.c_str(), O_RDWR);
  std::thread later([&] {
    usleep(200'000);
    EXPECT_EQ(write(silent, "<a/>", 4), 4);
    close(silent);
  });
  EXPECT_TRUE(ReadWholeFile(FromNative(path), bytes, error, {.writerSeconds = 0}));
  later.join();
  EXPECT_EQ(bytes.View(), "<a/>");
  EXPECT_TRUE(ReadWholeFile(u"/proc/self/status", bytes, error));
  EXPECT_TRUE(bytes.View().starts_with("Name:"));

  // The writer of a pipe that was given to the process may be gone already.
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  EXPECT_EQ(write(ends[1], "<a/>", 4), 4);
  close(ends[1]);
  const std::string name = Join("/dev/fd/", std::to_string(ends[0]));
  for (const char* expected : {"<a/>", ""}) {
    EXPECT_TRUE(ReadWholeFile(FromNative(name), bytes, error, {.silentSeconds = 1}));
    EXPECT_EQ(bytes.View(), expected);
  }
  close(ends[0]);
}

TEST(LoadedDocument, NamesThatAreUrls) {
  for (const std::u16string_view name :
       {u"HTTP://x/y", u"https://", u"File://f", u"gopher://g", u"ftp://f/f"}) {
    EXPECT_EQ(ClassifyPath(name), 2) << ToNative(name);
  }
  for (const std::u16string_view name : {u"c:\\dir\\file.xml", u"http:/x", u"", u"mailto://x"}) {
    EXPECT_EQ(ClassifyPath(name), 1) << ToNative(name);
  }
}

TEST(DocumentManager, FindsWhatWasLoaded) {
  const TemporaryDirectory directory;
  DocumentManager manager(Kinds());
  const auto load = [&](const TQString& path, GrammarKind kind) {
    Loaded loaded;
    loaded.Load(path, kind);
    return manager.AdoptRecord(std::move(loaded.record));
  };
  const TQString path = directory.Write("a.xml", "<a/>");
  LoadRecord* first = load(path, GrammarKind::XML);
  LoadRecord* again = load(path, GrammarKind::XML);
  LoadRecord* entity = load(path, GrammarKind::Entity);
  LoadRecord* failed = load(directory.Name("none"), GrammarKind::XML);
  EXPECT_EQ(failed->Root(), nullptr);
  EXPECT_FALSE(failed->kind);
  EXPECT_EQ(manager.FindByPath(failed->path, GrammarKind::XML), nullptr);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::XML), first);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::Entity), entity);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::DTD), nullptr);
  EXPECT_EQ(manager.FindByRoot(again->Root()), again);
  manager.RemoveRecord(first);
  manager.RemoveRecord(failed);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::XML), again);
  manager.RemoveRecord(again);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::XML), nullptr);
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::Entity), entity);
  manager.ClearAll();
  EXPECT_EQ(manager.FindByPath(path, GrammarKind::Entity), nullptr);
}

}  // namespace
}  // namespace kelmora
