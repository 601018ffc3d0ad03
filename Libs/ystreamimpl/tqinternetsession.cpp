// One libcurl handle for all requests, so that connections stay open between them; its options are
// reset and set anew for each. The library is looked for by name when the first request comes, and
// its functions and the numbers of its options stand in curlapi.h, so that a build needs no headers
// of it.
//
// The trap is memory: libcurl keeps pointers to what it is given (headers, the data to send, the
// block that receives), so all of that lives in Perform until the transfer is over. Its callbacks
// are C functions: no exception may leave them, and what they could not do is told by the count
// that they return.
#include "tqinternetsession.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "tqcore/sharedlibrary.h"

namespace kelmora {

namespace {

constexpr const char* kLibraries[] = {"libcurl.so.4", "libcurl-gnutls.so.4"};
constexpr long kStallBytesPerSecond = 100;

// The library answers a header line of more than it takes with "out of memory", too. So it is told
// to take its memory by these, which notice when there is none.
bool memoryEnded = false;

template <class Piece>
Piece* Noticed(Piece* piece, bool isWanted = true) {
  if (piece == nullptr && isWanted) memoryEnded = true;
  return piece;
}

void* Allocate(std::size_t size) {
  return Noticed(std::malloc(size), size > 0);
}

void* Resize(void* piece, std::size_t size) {
  return Noticed(std::realloc(piece, size), size > 0);
}

char* Copy(const char* text) {
  return Noticed(strdup(text));
}

void* AllocateZeros(std::size_t count, std::size_t size) {
  return Noticed(std::calloc(count, size), count > 0 && size > 0);
}

}  // namespace

bool CurlApi::Load() {
  void* library = nullptr;
  for (const char* name : kLibraries) {
    library = OpenSharedLibrary(name);
    if (library != nullptr) break;
  }
  return library != nullptr && BindSymbol(library, "curl_global_init_mem", globalInit) &&
         BindSymbol(library, "curl_easy_init", easyInit) &&
         BindSymbol(library, "curl_easy_reset", easyReset) &&
         BindSymbol(library, "curl_easy_cleanup", easyCleanup) &&
         BindSymbol(library, "curl_easy_perform", easyPerform) &&
         BindSymbol(library, "curl_easy_setopt", easySetOption) &&
         BindSymbol(library, "curl_easy_getinfo", easyGetInfo) &&
         BindSymbol(library, "curl_slist_append", listAppend) &&
         BindSymbol(library, "curl_slist_free_all", listFree);
}

class TQInternetSession::HeaderList {
 public:
  HeaderList(const CurlApi& api, const std::vector<std::string>& lines) : api_(api) {
    for (const std::string& line : lines) Add(line.c_str());
    Add("Expect:");  // no waiting for leave to send a body
  }
  ~HeaderList() { api_.listFree(list_); }
  HeaderList(const HeaderList&) = delete;
  HeaderList& operator=(const HeaderList&) = delete;

  const void* Get() const { return list_; }

 private:
  void Add(const char* line) {
    const CurlApi::List longer = api_.listAppend(list_, line);
    if (longer == nullptr) {
      api_.listFree(list_);
      throw std::bad_alloc();
    }
    list_ = longer;
  }

  const CurlApi& api_;
  CurlApi::List list_ = nullptr;
};

struct TQInternetSession::Download {
  TQInternetSession& session;
  const UrlRequest& request;
  std::string body = {};
  bool ranOutOfMemory = false;

  long Status() const {
    long status = 0;
    session.api_.easyGetInfo(session.handle_, curl::kInfoResponseCode, &status);
    return status;
  }
};

TQInternetSession::~TQInternetSession() {
  if (handle_ != nullptr) api_.easyCleanup(handle_);
}

bool TQInternetSession::Open() {
  if (handle_ != nullptr) return true;
  if (!api_.Load()) return false;
  const int result =
      api_.globalInit(curl::kGlobalAll, &Allocate, &std::free, &Resize, &Copy, &AllocateZeros);
  if (result == curl::kOk) handle_ = api_.easyInit();
  if (handle_ == nullptr) throw std::bad_alloc();  // nothing else can be missing by then
  return true;
}

UrlResponse TQInternetSession::Perform(const UrlRequest& request) {
  UrlResponse response;
  if (!Open()) return response;
  api_.easyReset(handle_);
  Download download{*this, request};
  std::string_view unsent = request.data;
  const HeaderList headers(api_, request.headers);

  SetCommon(request);
  if (request.IsHttp()) {
    SetHttp(request, headers);
  } else if (request.isSend) {
    SetFtpUpload(&unsent);
  }
  SetPointer(CurlOption::kWriteFunction, reinterpret_cast<const void*>(&OnWrite));
  SetPointer(CurlOption::kWriteData, &download);

  memoryEnded = false;
  const int result = api_.easyPerform(handle_);
  if ((result == curl::kOutOfMemory && memoryEnded) || download.ranOutOfMemory) {
    throw std::bad_alloc();
  }
  response.isComplete = result == curl::kOk;
  response.status = download.Status();
  response.hasBody = response.isComplete && request.HasBodyToRead(response.status);
  if (response.hasBody) response.body = std::move(download.body);
  return response;
}

void TQInternetSession::SetCommon(const UrlRequest& request) {
  const UrlLimits& limits = request.limits;
  SetText(CurlOption::kUrl, request.url);
  SetNumber(CurlOption::kConnectTimeout, limits.connectSeconds);
  SetNumber(CurlOption::kLowSpeedLimit, kStallBytesPerSecond);
  SetNumber(CurlOption::kLowSpeedTime, limits.stallSeconds);
  SetNumber(CurlOption::kServerResponseTimeout, limits.stallSeconds);
  SetNumber(CurlOption::kTimeout, limits.totalSeconds);
  SetSize(CurlOption::kMaxFileSizeLarge, limits.largestBody);
  SetNumber(CurlOption::kProtocols, curl::kProtocolHttp | curl::kProtocolHttps |
                                        curl::kProtocolFtp | curl::kProtocolGopher);
  SetNumber(CurlOption::kRedirectProtocols, curl::kProtocolHttp | curl::kProtocolHttps);
  if (!limits.certificateAuthorities.empty()) {
    SetText(CurlOption::kCaInfo, limits.certificateAuthorities);
  }
  if (!request.user.empty() || !request.password.empty()) {
    SetText(CurlOption::kUserName, request.user);
    SetText(CurlOption::kPassword, request.password);
    SetNumber(CurlOption::kHttpAuth, curl::kAnyAuthentication);
  }
  if (!request.proxyUser.empty()) {
    SetText(CurlOption::kProxyUserName, request.proxyUser);
    SetText(CurlOption::kProxyPassword, request.proxyPassword);
    SetNumber(CurlOption::kProxyAuth, curl::kAnyAuthentication);
  }
}

void TQInternetSession::SetHttp(const UrlRequest& request, const HeaderList& headers) {
  SetNumber(CurlOption::kHttpVersion, curl::kHttpVersion11);
  SetPointer(CurlOption::kHttpHeader, headers.Get());
  if (!request.isSend) {
    SetNumber(CurlOption::kFollowLocation, 1);
    SetNumber(CurlOption::kMaxRedirects, UrlLimits::kMostRedirects);
    return;
  }
  // As a posted block, whatever the verb, the data can be sent again after a login step.
  SetSize(CurlOption::kPostFieldSizeLarge, static_cast<std::int64_t>(request.data.size()));
  SetPointer(CurlOption::kPostFields, request.data.empty() ? "" : request.data.data());
  SetText(CurlOption::kCustomRequest, request.verb);
}

void TQInternetSession::SetFtpUpload(std::string_view* unsent) {
  SetNumber(CurlOption::kUpload, 1);
  SetSize(CurlOption::kInFileSizeLarge, static_cast<std::int64_t>(unsent->size()));
  SetPointer(CurlOption::kReadFunction, reinterpret_cast<const void*>(&OnRead));
  SetPointer(CurlOption::kReadData, unsent);
}

// Called from C: nothing may be raised. Returning less than was given ends the transfer.
std::size_t TQInternetSession::OnWrite(char* bytes, std::size_t size, std::size_t count,
                                       void* download) {
  auto& self = *static_cast<Download*>(download);
  const std::string_view block(bytes, size * count);
  const auto largest = static_cast<std::size_t>(self.request.limits.largestBody);
  if (block.size() > largest - self.body.size()) return 0;
  if (self.body.empty() && !self.request.HasBodyToRead(self.Status())) return 0;
  try {
    self.body += block;
    if (self.request.onBlock) {
      std::int64_t expected = -1;
      self.session.api_.easyGetInfo(self.session.handle_, curl::kInfoContentLength, &expected);
      self.request.onBlock(block, static_cast<std::int64_t>(self.body.size()), expected);
    }
  } catch (...) {
    self.ranOutOfMemory = true;
    return 0;
  }
  return block.size();
}

std::size_t TQInternetSession::OnRead(char* buffer, std::size_t size, std::size_t count,
                                      void* unsent) {
  auto& data = *static_cast<std::string_view*>(unsent);
  const std::size_t copied = data.copy(buffer, size * count);
  data.remove_prefix(copied);
  return copied;
}

void TQInternetSession::SetNumber(CurlOption option, long value) {
  api_.easySetOption(handle_, static_cast<int>(option), value);
}

void TQInternetSession::SetSize(CurlOption option, std::int64_t value) {
  api_.easySetOption(handle_, static_cast<int>(option), value);
}

void TQInternetSession::SetText(CurlOption option, const std::string& value) {
  SetPointer(option, value.c_str());
}

void TQInternetSession::SetPointer(CurlOption option, const void* value) {
  api_.easySetOption(handle_, static_cast<int>(option), value);
}

}  // namespace kelmora
