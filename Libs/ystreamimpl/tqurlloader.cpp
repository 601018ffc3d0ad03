// A URL is taken to pieces, the login chosen, and the request given to the transport; `file:` URLs
// are read and written here. The login that the caller gave goes before that in the URL, and that
// before the one that worked before with this server.
//
// Three things are kept for the whole process: the logins that worked (CredentialCache), the time
// that failed transfers may still take (Patience), and a transport that tests put in the place of
// the real one. A transfer that succeeds costs no patience, however long it takes.
#include "ystreamimpl/tqurlloader.h"

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "tqcore/processstate.h"
#include "tqcore/tqsingleton.h"
#include "tqcore/tqtext.h"
#include "tqinternetsession.h"
#include "urlparts.h"
#include "urltransport.h"
#include "ystreamimpl/filewriter.h"
#include "ystreamimpl/patience.h"

namespace kelmora {

namespace {

struct Credentials {
  TQString user;
  TQString password;
  TQString proxyUser;
  TQString proxyPassword;
};

// By server, for the whole process.
class CredentialCache {
 public:
  std::map<std::string, Credentials> servers;
};

std::map<std::string, Credentials>& CachedCredentials() {
  return TQSingleton<CredentialCache>::Instance().servers;
}

UrlTransport* replacedTransport = nullptr;

UrlTransport& Transport() {
  if (replacedTransport != nullptr) return *replacedTransport;
  return TQSingleton<TQInternetSession>::Instance();
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// What a failed transfer took comes off the time that later ones may wait.
UrlResponse PerformPatiently(UrlRequest& request) {
  using Clock = std::chrono::steady_clock;
  Patience& patience = ProcessState::Of<Patience>();
  if (patience.IsSpent()) return {};
  request.limits.connectSeconds = patience.Grant(request.limits.connectSeconds);
  request.limits.stallSeconds = patience.Grant(request.limits.stallSeconds);
  const Clock::time_point start = Clock::now();
  UrlResponse response = Transport().Perform(request);
  if (!response.isComplete) {
    const auto taken = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start);
    patience.Spend(static_cast<int>(taken.count()));
  }
  return response;
}

// Only a regular file has an end that can be relied on.
bool ReadLocalFile(const std::string& path, std::int64_t largest, std::string& data) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  const auto size = std::filesystem::file_size(path, error);
  if (error || size > static_cast<std::uintmax_t>(largest)) return false;
  const File file(std::fopen(path.c_str(), "rb"));
  if (file == nullptr) return false;
  data.resize(size);
  data.resize(std::fread(data.data(), 1, data.size(), file.get()));
  return std::ferror(file.get()) == 0;
}

// Returns 0 or the system's number of the failure.
int WriteLocalFile(const std::string& path, std::string_view data) {
  FileWriter file(path);
  int failure = file.Open();
  if (failure == 0) failure = file.Write(data);
  return failure == 0 ? file.Commit() : failure;
}

}  // namespace

UrlTransport* ReplaceUrlTransport(UrlTransport* transport) {
  return std::exchange(replacedTransport, transport);
}

TQUrlLoader::TQUrlLoader(TQString user, TQString password)
    : userGiven_(true),
      passwordGiven_(true),
      user_(std::move(user)),
      password_(std::move(password)) {}

void TQUrlLoader::ClearCredentialCache() {
  CachedCredentials().clear();
}

std::string TQUrlLoader::TakeBuffer() {
  hasBuffer_ = false;
  return std::exchange(buffer_, std::string());
}

void TQUrlLoader::DropBuffer() {
  TakeBuffer();
}

bool TQUrlLoader::Fetch(std::u16string_view url) {
  DropBuffer();
  UrlRequest request;
  if (!Prepare(url, request)) return false;
  if (request.service == UrlService::kFile) {
    hasBuffer_ = ReadLocalFile(object_, limits_.largestBody, buffer_);
    if (!hasBuffer_) DropBuffer();
    return hasBuffer_;
  }
  request.verb = "GET";
  request.headers.emplace_back("Accept: */*");
  return Transfer(request);
}

bool TQUrlLoader::Send(std::u16string_view url, std::string_view data, std::string_view verb,
                       std::string_view mediaType) {
  DropBuffer();
  systemError_ = 0;
  UrlRequest request;
  if (!Prepare(url, request)) return false;
  if (request.service == UrlService::kFile) {
    systemError_ = WriteLocalFile(object_, data);
    return systemError_ == 0;
  }
  if (!request.IsHttp() && request.service != UrlService::kFtp) return false;
  request.isSend = true;
  request.verb = verb;
  request.data = data;
  request.headers.push_back("Content-Type: " + std::string(mediaType));
  return Transfer(request);
}

// Takes the URL to pieces and decides on the login: the one given, else that of the URL, else the
// one that worked before.
bool TQUrlLoader::Prepare(std::u16string_view url, UrlRequest& request) {
  std::optional<UrlParts> parts = ParseUrl(url);
  if (!parts) return false;
  server_ = parts->server;
  object_ = parts->object;
  if (parts->service == UrlService::kFile) {
    object_ = PercentDecode(object_);
    if (object_.find('\0') != std::string::npos) return false;
  }
  tryUser_ = userGiven_ ? user_ : FromNative(parts->user);
  tryPassword_ = passwordGiven_ ? password_ : FromNative(parts->password);
  Credentials proxy;
  if (tryUser_.IsEmpty() && tryPassword_.IsEmpty()) {
    const auto cached = CachedCredentials().find(server_);
    if (cached != CachedCredentials().end()) {
      proxy = cached->second;
      tryUser_ = proxy.user;
      tryPassword_ = proxy.password;
    }
  }
  request.service = parts->service;
  request.url = parts->Url();
  request.user = ToNative(tryUser_);
  request.password = ToNative(tryPassword_);
  request.proxyUser = ToNative(proxy.proxyUser);
  request.proxyPassword = ToNative(proxy.proxyPassword);
  request.limits = limits_;
  return true;
}

void TQUrlLoader::AddHttpHeaders(UrlRequest& request) const {
  request.headers.emplace_back("User-Agent: Kelmora");
  if (!useCache_) {
    request.headers.emplace_back("Cache-Control: no-cache");
    request.headers.emplace_back("Pragma: no-cache");
  }
  for (const TQString& line : extraHeaders_) request.headers.push_back(ToNative(line));
}

bool TQUrlLoader::Transfer(UrlRequest& request) {
  // A directory would be listed; it is no document.
  if (request.service == UrlService::kFtp && object_.ends_with('/')) return false;
  if (request.IsHttp()) AddHttpHeaders(request);
  request.onBlock = [this](std::string_view block, std::int64_t received, std::int64_t expected) {
    OnBlock(block, received, expected);
  };
  UrlResponse response = PerformPatiently(request);
  hasBuffer_ = response.hasBody;
  if (hasBuffer_) buffer_ = std::move(response.body);
  if (!response.isComplete || !request.IsSuccess(response.status)) return false;
  RememberCredentials(request);
  return true;
}

void TQUrlLoader::RememberCredentials(const UrlRequest& request) {
  if (tryUser_.IsEmpty() || tryPassword_.IsEmpty()) return;
  CachedCredentials()[server_] = {tryUser_, tryPassword_, FromNative(request.proxyUser),
                                  FromNative(request.proxyPassword)};
  user_ = tryUser_;
  password_ = tryPassword_;
}

}  // namespace kelmora
