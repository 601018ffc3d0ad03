#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "streamblock.h"
#include "tqcore/tqtext.h"
#include "tqdelegatorstreamimpl.h"
#include "tqforwardingstream.h"
#include "ystreamimpl/embeddedfiles.h"
#include "ystreamimpl/ystream.h"

namespace kelmora {
namespace {

using namespace streamresult;

std::string ReadAll(YStream& stream) {
  std::string all(100000, '\0');
  auto count = static_cast<std::int32_t>(all.size());
  EXPECT_EQ(stream.Read(all.data(), count), kSuccess);
  all.resize(static_cast<std::size_t>(count));
  return all;
}

ResultCode WriteAll(YStream& stream, std::string_view bytes) {
  auto count = static_cast<std::int32_t>(bytes.size());
  const ResultCode result = stream.Write(bytes.data(), count);
  EXPECT_EQ(count, result == kSuccess ? static_cast<std::int32_t>(bytes.size()) : 0);
  return result;
}

std::string ReadLine(YStream& stream, std::int32_t limit = 100) {
  std::u16string buffer(static_cast<std::size_t>(limit) + 1, u'?');
  EXPECT_EQ(stream.ReadLine(buffer.data(), limit), kSuccess);
  EXPECT_EQ(buffer[static_cast<std::size_t>(limit)], 0);
  return ToNative(std::u16string_view(buffer).substr(0, static_cast<std::size_t>(limit)));
}

// Makes a block of that name with those bytes.
void MakeBlock(std::u16string_view name, std::string_view bytes) {
  const auto stream = CreateStream(StreamNumber::kMemory);
  ASSERT_EQ(stream->Open(name, StreamMode::kWrite), kSuccess);
  ASSERT_EQ(WriteAll(*stream, bytes), kSuccess);
}

ResultCode RaisedBy(const std::function<void()>& action) {
  try {
    action();
  } catch (const TQResultError& error) {
    return error.code;
  }
  return kSuccess;
}

class ScratchDirectory : public testing::Test {
 protected:
  void SetUp() override {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    directory_ = std::filesystem::temp_directory_path() / "kelmora-streams-";
    directory_ += info->name();
    directory_ += std::to_string(getpid());
    std::filesystem::create_directory(directory_);
    TQDelegatorStreamImpl::SearchDirectories().clear();
  }
  void TearDown() override { std::filesystem::remove_all(directory_); }

  TQString Path(const std::string& name) const { return FromNative((directory_ / name).native()); }
  void Put(const std::string& name, std::string_view bytes) const {
    std::ofstream(directory_ / name, std::ios::binary) << bytes;
  }

  std::filesystem::path directory_;
};

TEST(EmbeddedFiles, SizesAndTerminators) {
  struct Row {
    const char16_t* name;
    std::size_t size;
  };
  const Row rows[] = {
      {u"blocks.txt", 3048},   {u"Blocks.txt", 3048},        {u"gra_3dml.txt", 3276},
      {u"gra_dtd.txt", 10485}, {u"gra_ent.txt", 3451},       {u"gra_re.txt", 3718},
      {u"GRA_XML.TXT", 11731}, {u"UnicodeData.txt", 850863}, {u"unicodedata.txt", 850863}};
  for (const Row& row : rows) {
    const std::string_view view = LookupEmbeddedFileView(row.name);
    ASSERT_NE(view.data(), nullptr) << ToNative(row.name);
    EXPECT_EQ(view.size(), row.size) << ToNative(row.name);
    EXPECT_EQ(view.data()[view.size()], '\0');
    std::unique_ptr<char[]> data;
    std::int32_t size = 0;
    ASSERT_TRUE(LookupEmbeddedFile(row.name, data, size));
    EXPECT_EQ(std::string_view(data.get(), static_cast<std::size_t>(size)), view);
    EXPECT_EQ(data[static_cast<std::size_t>(size)], '\0');
  }
  std::unique_ptr<char[]> data;
  std::int32_t size = 7;
  for (const char16_t* name : {u"gra_xsl.txt", u"gra_xml_td.txt", u"", u"gra_xml.tx"}) {
    EXPECT_FALSE(LookupEmbeddedFile(name, data, size)) << ToNative(name);
    EXPECT_EQ(LookupEmbeddedFileView(name).data(), nullptr);
  }
  EXPECT_EQ(size, 7);
}

TEST(StreamFactory, NumbersOfClasses) {
  for (int number = 0; number < 10; ++number) {
    const bool isKnown = number == 1 || number == 2 || (number >= 5 && number <= 8);
    EXPECT_EQ(CreateStream(static_cast<StreamNumber>(number)) != nullptr, isKnown) << number;
  }
}

TEST(MemoryStream, OpeningByName) {
  struct Row {
    const char16_t* name;
    StreamMode mode;
    ResultCode result;
  };
  const Row rows[] = {
      {u"", StreamMode::kRead, kFileNotFound},
      {u"y", StreamMode::kWrite, kFileNotFound},
      {u"MEMORY:open", StreamMode::kWrite, kFileNotFound},
      {u"memory:open", StreamMode::kRead, kFileNotFound},
      {u"memory:open", StreamMode::kAppend, kSuccess},
      {u"memory:open", StreamMode::kRead, kSuccess},
      {u"gra_xml.txt", StreamMode::kReadWrite, kFileNotFound},
      {u"gra_xml.txt", StreamMode::kRead, kSuccess},
      {u"gra_xml.txt", StreamMode::kReadWrite, kSuccess},
      {u"no_such.txt", StreamMode::kRead, kFileNotFound},
  };
  for (const Row& row : rows) {
    const auto stream = CreateStream(StreamNumber::kResource);
    EXPECT_EQ(stream->Open(row.name, row.mode), row.result) << ToNative(row.name);
    if (row.result == kSuccess) {
      EXPECT_EQ(stream->Open(row.name, row.mode), kAlreadyOpen);
    }
  }
}

TEST(MemoryStream, PositionsAndGrowth) {
  MakeBlock(u"memory:p", "abcdef");
  const auto stream = CreateStream(StreamNumber::kMemory);
  EXPECT_EQ(stream->GetLength(), -1);
  EXPECT_EQ(WriteAll(*stream, "x"), kWrongMode);
  ASSERT_EQ(stream->Open(u"memory:p", StreamMode::kRead), kSuccess);
  EXPECT_EQ(WriteAll(*stream, "x"), kWrongMode);
  EXPECT_TRUE(stream->Seek(4));
  EXPECT_EQ(ReadAll(*stream), "ef");
  EXPECT_FALSE(stream->Seek(6));
  EXPECT_TRUE(stream->Seek(seekposition::kStartForReading));
  EXPECT_EQ(ReadAll(*stream), "abcdef");
  EXPECT_EQ(stream->Close(), kSuccess);

  ASSERT_EQ(stream->Open(u"memory:p", StreamMode::kWrite), kSuccess);
  EXPECT_EQ(WriteAll(*stream, "AB"), kSuccess);
  EXPECT_EQ(stream->GetLength(), 6);
  EXPECT_TRUE(stream->Seek(5));
  EXPECT_EQ(stream->WriteChar(u'\u4142'), kSuccess);
  EXPECT_EQ(ReadAll(*stream), "ABcdeBA");
  stream->Close();

  ASSERT_EQ(stream->Open(u"memory:p", StreamMode::kAppend), kSuccess);
  std::int32_t count = 1;
  char byte = 0;
  EXPECT_EQ(stream->Read(&byte, count), kWrongMode);
  EXPECT_EQ(WriteAll(*stream, "z"), kSuccess);  // behind the capacity, not behind the text
  EXPECT_EQ(stream->GetLength(), StreamBlock::kStep + 1);
  stream->Close();

  ASSERT_EQ(stream->Open(u"memory:p", StreamMode::kReadWrite), kSuccess);
  EXPECT_TRUE(stream->Seek(seekposition::kEndForReading));
  EXPECT_EQ(ReadAll(*stream), "");
  EXPECT_TRUE(stream->Seek(StreamBlock::kStep));
  EXPECT_EQ(WriteAll(*stream, "Z"), kSuccess);
  EXPECT_EQ(ReadAll(*stream), "Z");
}

TEST(MemoryStream, WritingToACarriedFileLeavesTheOriginal) {
  const auto stream = CreateStream(StreamNumber::kMemory);
  ASSERT_EQ(stream->Open(u"gra_re.txt", StreamMode::kRead), kSuccess);
  stream->Close();
  ASSERT_EQ(stream->Open(u"gra_re.txt", StreamMode::kWrite), kSuccess);
  EXPECT_EQ(WriteAll(*stream, "\x01"), kSuccess);
  EXPECT_EQ(ReadAll(*stream)[0], '\x01');
  EXPECT_NE(LookupEmbeddedFileView(u"gra_re.txt")[0], '\x01');
}

TEST(ReadLine, LineEndsAndLimits) {
  struct Row {
    const char* bytes;
    std::int32_t limit;
    std::vector<std::string> lines;
  };
  const Row rows[] = {
      {"a\r\n\r\nb\r\n", 100, {"a", "", "b", ""}},
      {"a\nb", 100, {"a", "b", ""}},
      {"a\rxb\r", 100, {"a", "b", ""}},
      {"abcd\r\ne", 2, {"ab", "cd", "", "e", ""}},
      {"\xE9", 100, {ToNative(u"\uFFE9")}},
  };
  int number = 0;
  for (const Row& row : rows) {
    const TQString name = TQString::Format(u"memory:line%d", {number++});
    MakeBlock(name, row.bytes);
    const auto stream = CreateStream(StreamNumber::kMemory);
    ASSERT_EQ(stream->Open(name, StreamMode::kRead), kSuccess);
    for (const std::string& line : row.lines) EXPECT_EQ(ReadLine(*stream, row.limit), line);
    stream->Close();
    std::int32_t count = 5;
    char16_t buffer[6];
    EXPECT_EQ(stream->ReadLine(buffer, count), kWrongMode);
    EXPECT_EQ(count, 0);
  }
}

TEST_F(ScratchDirectory, FileStream) {
  const auto stream = CreateStream(StreamNumber::kFile);
  const TQString path = Path("new/deep/\xC3\xA9.txt");
  EXPECT_EQ(stream->Open(u"", StreamMode::kRead), kEmptyName);
  EXPECT_EQ(stream->Open(path, StreamMode::kRead), kFileNotFound);
  EXPECT_EQ(stream->GetLength(), -1);
  ASSERT_EQ(stream->Open(path, StreamMode::kWrite), kSuccess);
  EXPECT_EQ(stream->Open(path, StreamMode::kWrite), kAlreadyOpen);
  EXPECT_EQ(WriteAll(*stream, "abc\r\n"), kSuccess);
  EXPECT_EQ(stream->WriteChar(u'\u01E9'), kSuccess);
  EXPECT_EQ(stream->GetLength(), 6);
  EXPECT_EQ(stream->Close(), kSuccess);
  EXPECT_EQ(stream->Close(), kWrongMode);

  ASSERT_EQ(stream->Open(path, StreamMode::kAppend), kSuccess);
  EXPECT_EQ(WriteAll(*stream, "!"), kSuccess);
  DestroyStream(CreateStream(StreamNumber::kMemory));
  stream->Close();

  ASSERT_EQ(stream->Open(path, StreamMode::kReadWrite), kSuccess);
  EXPECT_EQ(ReadLine(*stream), "abc");
  char16_t unit = 0;
  EXPECT_TRUE(stream->ReadChar(unit));
  EXPECT_EQ(unit, 0x00E9);  // zero-extended
  EXPECT_EQ(WriteAll(*stream, "x"), kWriteFault);
  EXPECT_FALSE(stream->Seek(-1));
  EXPECT_TRUE(stream->Seek(5));
  EXPECT_EQ(ReadAll(*stream), "\xE9!");
  char16_t name[4];
  EXPECT_EQ(stream->GetName(name, 4), path.Length());
  EXPECT_EQ(std::u16string_view(name), path.View().substr(0, 3));
  EXPECT_EQ(CreateStream(StreamNumber::kFile)->Open(Path("new"), StreamMode::kRead), kFileNotFound);
}

TEST_F(ScratchDirectory, DelegatorSearchesTheDirectoriesOfWhatItOpened) {
  Put("a.xml", "A");
  Put("b.dtd", "B");
  const auto stream = CreateStream(StreamNumber::kDelegator);
  const auto open = [&](const TQString& name) {
    stream->Close();
    return stream->Open(name, StreamMode::kRead);
  };
  EXPECT_EQ(open(u"b.dtd"), kFail);
  EXPECT_EQ(open(Path("a.xml")), kSuccess);
  EXPECT_EQ(stream->Open(Path("a.xml"), StreamMode::kRead), kAlreadyOpen);
  EXPECT_EQ(ReadAll(*stream), "A");
  EXPECT_EQ(open(u"b.dtd"), kSuccess);
  EXPECT_EQ(ReadAll(*stream), "B");
  EXPECT_EQ(open(u"c.dtd"), kFail);
  EXPECT_EQ(open(Path("a.xml")), kSuccess);
  EXPECT_EQ(TQDelegatorStreamImpl::SearchDirectories().size(), 1u);
  for (int i = 0; i < 15; ++i) {
    const std::string name(1, static_cast<char>('a' + i));
    std::filesystem::create_directory(directory_ / name);
    Put(name + "/x", "");
    EXPECT_EQ(open(Path(name + "/x")), kSuccess);
  }
  EXPECT_EQ(TQDelegatorStreamImpl::SearchDirectories().size(), 10u);
}

TEST_F(ScratchDirectory, DelegatorRaises) {
  TQDelegatorStreamImpl stream;
  char byte = 0;
  std::int32_t count = 1;
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(stream.Open(u"", StreamMode::kRead)); }), kEmptyName);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(stream.Read(&byte, count)); }), kNoInnerStream);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(stream.WriteChar(u'x')); }), kNoInnerStream);
  EXPECT_EQ(stream.Close(), kSuccess);
  EXPECT_EQ(stream.GetLength(), 0);
  EXPECT_FALSE(stream.Seek(0));
  ASSERT_EQ(stream.Open(Path("w"), StreamMode::kWrite), kSuccess);
  EXPECT_EQ(RaisedBy([&] { static_cast<void>(stream.Read(&byte, count)); }), kWrongMode);
}

TEST(ModuleFileStream, LooksBesideTheExecutable) {
  struct Row {
    const char16_t *executable, *directory;
  };
  const Row rows[] = {
      {u"/opt/bin/prog", u"/opt/bin/"},
      {u"/x/release/bin/prog", u"/x/release/"},
      {u"/x/serverrelease/bin/prog", u"/x/serverrelease/"},
      {u"/prog", u"/"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ToNative(TQModuleFileStream::ModuleDirectory(row.executable)),
              ToNative(row.directory));
  }
  const std::string self = std::filesystem::read_symlink("/proc/self/exe").filename().native();
  const auto stream = CreateStream(StreamNumber::kModuleFile);
  EXPECT_EQ(stream->Open(FromNative("/elsewhere/" + self), StreamMode::kRead), kSuccess);
  EXPECT_GT(stream->GetLength(), 0);
}

}  // namespace
}  // namespace kelmora
