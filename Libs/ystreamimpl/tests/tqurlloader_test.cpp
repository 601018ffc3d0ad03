// The loader's own decisions, over a transport that records what it is asked for.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "curlapi.h"
#include "tqcore/processstate.h"
#include "tqcore/tqtext.h"
#include "urlparts.h"
#include "urltransport.h"
#include "ystreamimpl/patience.h"
#include "ystreamimpl/tqurlloader.h"
#include "ystreamimpl/ystream.h"

#if __has_include(<curl/curl.h>)
#include <curl/curl.h>
#define KELMORA_SAME_OPTION(ours, theirs) \
  static_assert(static_cast<int>(kelmora::CurlOption::ours) == theirs)
KELMORA_SAME_OPTION(kWriteData, CURLOPT_WRITEDATA);
KELMORA_SAME_OPTION(kUrl, CURLOPT_URL);
KELMORA_SAME_OPTION(kReadData, CURLOPT_READDATA);
KELMORA_SAME_OPTION(kWriteFunction, CURLOPT_WRITEFUNCTION);
KELMORA_SAME_OPTION(kReadFunction, CURLOPT_READFUNCTION);
KELMORA_SAME_OPTION(kTimeout, CURLOPT_TIMEOUT);
KELMORA_SAME_OPTION(kPostFields, CURLOPT_POSTFIELDS);
KELMORA_SAME_OPTION(kLowSpeedLimit, CURLOPT_LOW_SPEED_LIMIT);
KELMORA_SAME_OPTION(kLowSpeedTime, CURLOPT_LOW_SPEED_TIME);
KELMORA_SAME_OPTION(kHttpHeader, CURLOPT_HTTPHEADER);
KELMORA_SAME_OPTION(kCustomRequest, CURLOPT_CUSTOMREQUEST);
KELMORA_SAME_OPTION(kUpload, CURLOPT_UPLOAD);
KELMORA_SAME_OPTION(kFollowLocation, CURLOPT_FOLLOWLOCATION);
KELMORA_SAME_OPTION(kCaInfo, CURLOPT_CAINFO);
KELMORA_SAME_OPTION(kMaxRedirects, CURLOPT_MAXREDIRS);
KELMORA_SAME_OPTION(kConnectTimeout, CURLOPT_CONNECTTIMEOUT);
KELMORA_SAME_OPTION(kHttpVersion, CURLOPT_HTTP_VERSION);
KELMORA_SAME_OPTION(kHttpAuth, CURLOPT_HTTPAUTH);
KELMORA_SAME_OPTION(kProxyAuth, CURLOPT_PROXYAUTH);
KELMORA_SAME_OPTION(kServerResponseTimeout, CURLOPT_FTP_RESPONSE_TIMEOUT);
KELMORA_SAME_OPTION(kInFileSizeLarge, CURLOPT_INFILESIZE_LARGE);
KELMORA_SAME_OPTION(kMaxFileSizeLarge, CURLOPT_MAXFILESIZE_LARGE);
KELMORA_SAME_OPTION(kPostFieldSizeLarge, CURLOPT_POSTFIELDSIZE_LARGE);
KELMORA_SAME_OPTION(kUserName, CURLOPT_USERNAME);
KELMORA_SAME_OPTION(kPassword, CURLOPT_PASSWORD);
KELMORA_SAME_OPTION(kProxyUserName, CURLOPT_PROXYUSERNAME);
KELMORA_SAME_OPTION(kProxyPassword, CURLOPT_PROXYPASSWORD);
#undef KELMORA_SAME_OPTION
static_assert(kelmora::curl::kOutOfMemory == CURLE_OUT_OF_MEMORY);
static_assert(kelmora::curl::kInfoResponseCode == CURLINFO_RESPONSE_CODE);
static_assert(kelmora::curl::kInfoContentLength == CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
static_assert(kelmora::curl::kHttpVersion11 == CURL_HTTP_VERSION_1_1);
static_assert(kelmora::curl::kAnyAuthentication == static_cast<long>(CURLAUTH_ANY));
static_assert(kelmora::curl::kProtocolGopher == CURLPROTO_GOPHER);
#endif

namespace kelmora {
namespace {

TEST(UrlParts, Parsing) {
  struct Row {
    const char16_t* url;
    const char* expected;  // service, user, password, URL; empty when it doesn't parse
  };
  const Row rows[] = {
      {u"HTTP://Host/A?b#c", "3|||http://host:80/A?b"},
      {u"https://h:8443", "4107|||https://h:8443/"},
      {u"https://h?q", "4107|||https://h:443/?q"},
      {u"ftp://ann:a%40b:c@h/x", "1|ann|a@b:c|ftp://h:21/x"},
      {u"gopher://[::1]:71/0/x", "2|||gopher://[::1]:71/0/x"},
      {u"http://h/a\\b c\u00E9%20?x\\y z", "3|||http://h:80/a/b%20c%C3%A9%20?x%5Cy%20z"},
      {u"http://h/\xDCE9", "3|||http://h:80/%E9"},
      {u"other://h/x", "4096|||other://h:0/x"},
      {u"file:///a%20b", "4097|||file://:0/a%20b"},
      {u"file://localhost/a", "4097|||file://localhost:0/a"},
      {u"file://h/a", ""},
      {u"http:///a", ""},
      {u"http://h:x/a", ""},
      {u"http://h:70000/a", ""},
      {u"http://a b/", ""},
      {u"://h", ""},
      {u"h/a", ""},
      {u"ftp://a%0d%0aDELE x@h/a", ""},
      {u"gopher://h/0a%0D%0Ab", ""},
  };
  for (const Row& row : rows) {
    const auto parts = ParseUrl(row.url);
    std::string got;
    if (parts) {
      got = std::to_string(static_cast<int>(parts->service)) + '|' + parts->user + '|' +
            parts->password + '|' + parts->Url();
    }
    EXPECT_EQ(got, row.expected) << ToNative(row.url);
  }
  EXPECT_EQ(PercentDecode("%41%4a%zz%4"), "AJ%zz%4");
}

class RecordingTransport : public UrlTransport {
 public:
  RecordingTransport() : previous_(ReplaceUrlTransport(this)) {
    TQUrlLoader::ClearCredentialCache();
  }
  ~RecordingTransport() override { ReplaceUrlTransport(previous_); }

  UrlResponse Perform(const UrlRequest& request) override {
    asked.clear();
    limits = request.limits;
    asked += request.verb + ' ' + request.url + ' ' + request.user + ':' + request.password;
    for (const std::string& header : request.headers) asked += " [" + header + ']';
    data = request.data;
    return answer;
  }

  std::string asked;
  std::string data;
  UrlLimits limits;
  UrlResponse answer{true, 200, true, "body"};

 private:
  UrlTransport* previous_;
};

TEST(UrlLoader, Headers) {
  RecordingTransport transport;
  TQUrlLoader loader;
  loader.SetExtraHeaders({TQString(u"X: 1")});
  EXPECT_TRUE(loader.Fetch(u"http://h/a"));
  EXPECT_EQ(transport.asked, "GET http://h:80/a : [Accept: */*] [User-Agent: Kelmora] [X: 1]");
  EXPECT_EQ(loader.TakeBuffer(), "body");
  EXPECT_EQ(loader.Size(), 0);
  loader.SetUseCache(false);
  EXPECT_TRUE(loader.Send(u"http://h/a", "data", "PUT", "text/xml"));
  EXPECT_EQ(transport.asked,
            "PUT http://h:80/a : [Content-Type: text/xml] [User-Agent: Kelmora] "
            "[Cache-Control: no-cache] [Pragma: no-cache] [X: 1]");
  EXPECT_EQ(transport.data, "data");
}

TEST(UrlLoader, Credentials) {
  RecordingTransport transport;
  const auto loginOf = [&](TQUrlLoader& loader, const char16_t* url) {
    static_cast<void>(loader.Fetch(url));
    const std::size_t begin = transport.asked.find(' ', 4) + 1;
    return transport.asked.substr(begin, transport.asked.find(' ', begin) - begin);
  };
  TQUrlLoader plain;
  TQUrlLoader given(TQString(u"ann"), TQString(u"pw"));
  transport.answer.status = 401;
  EXPECT_EQ(loginOf(given, u"http://h/a"), "ann:pw");
  EXPECT_EQ(loginOf(plain, u"http://h/a"), ":");  // what failed isn't remembered
  transport.answer.status = 200;
  EXPECT_EQ(loginOf(given, u"http://h/a"), "ann:pw");
  EXPECT_EQ(loginOf(plain, u"https://H:99/b"), "ann:pw");
  EXPECT_EQ(plain.User(), u"ann");
  EXPECT_EQ(plain.Password(), u"pw");
  EXPECT_EQ(loginOf(plain, u"http://other/"), ":");
  EXPECT_EQ(loginOf(plain, u"http://bob:x@h/"), "bob:x");
  EXPECT_EQ(loginOf(given, u"http://bob:x@h/"), "ann:pw");
}

TEST(UrlLoader, WaitsNoLongerThanTheRunMay) {
  RecordingTransport transport;
  TQUrlLoader loader;
  Patience& patience = ProcessState::Of<Patience>();
  const Patience before = patience;
  patience.Spend(Patience::kSeconds - 40);
  EXPECT_TRUE(loader.Fetch(u"http://h/a"));
  EXPECT_EQ(transport.limits.connectSeconds, 30);
  EXPECT_EQ(transport.limits.stallSeconds, 40);
  patience.Spend(41);
  transport.asked = "nothing";
  EXPECT_FALSE(loader.Fetch(u"http://h/a"));
  EXPECT_EQ(transport.asked, "nothing");
  patience = before;
}

TEST(UrlStream, FetchesOnOpenAndSendsOnClose) {
  RecordingTransport transport;
  const auto stream = CreateStream(StreamNumber::kUrl);
  EXPECT_EQ(stream->Open(u"", StreamMode::kRead), streamresult::kFileNotFound);
  EXPECT_EQ(stream->Open(u"http://h/a", StreamMode::kAppend), streamresult::kModeNotSupported);
  EXPECT_EQ(stream->GetLength(), -1);
  ASSERT_EQ(stream->Open(u"http://h/a", StreamMode::kRead), streamresult::kSuccess);
  EXPECT_EQ(stream->GetLength(), 4);
  char16_t line[10];
  std::int32_t count = 9;
  EXPECT_EQ(stream->ReadLine(line, count), streamresult::kSuccess);
  EXPECT_EQ(std::u16string_view(line), u"body");
  EXPECT_FALSE(stream->Seek(4));
  EXPECT_EQ(stream->Close(), streamresult::kSuccess);

  ASSERT_EQ(stream->Open(u"http://h/b", StreamMode::kWrite), streamresult::kSuccess);
  EXPECT_EQ(stream->GetLength(), 65536);
  EXPECT_TRUE(stream->Seek(65535));
  EXPECT_TRUE(stream->Seek(seekposition::kStartForWriting));
  EXPECT_EQ(stream->WriteChar(u'A'), streamresult::kSuccess);
  transport.answer.status = 403;
  EXPECT_EQ(stream->Close(), streamresult::kWriteFault);
  EXPECT_EQ(stream->Open(u"http://h/c", StreamMode::kRead), streamresult::kAlreadyOpen);
  transport.answer.status = 201;
  EXPECT_EQ(stream->Close(), streamresult::kSuccess);
  EXPECT_EQ(transport.data, std::string("A\0", 2));
  transport.answer.status = 404;
  EXPECT_EQ(stream->Open(u"http://h/c", StreamMode::kRead), streamresult::kFileNotFound);
}

}  // namespace
}  // namespace kelmora
