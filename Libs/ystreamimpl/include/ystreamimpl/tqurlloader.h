// TQUrlLoader: the one place that talks to a network. Fetch brings a URL whole into memory, Send
// takes a block of memory to one; http, https, ftp, gopher (Fetch only) and file.
//
// The transfers are libcurl's, which is loaded when the first URL that needs it comes. There are
// no dialogs: a refused login is a failed transfer. What fails is false; only the end of memory is
// raised.
//
// Bounds of a transfer are those of UrlLimits; those that fail share the time of Patience. Fetch
// follows up to kMostRedirects redirects, to http and https only; a redirected Send is a failure.
// Certificates are verified.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tqcore/tqstring.h"

namespace kelmora {

struct UrlLimits {
  static constexpr long kMostRedirects = 10;

  int connectSeconds = 30;
  int stallSeconds = 60;                      // at less than 100 bytes a second
  long totalSeconds = 600;                    // of one transfer
  std::int64_t largestBody = 0x7FFFFFFF - 1;  // bytes
  std::string certificateAuthorities;         // a PEM file; empty: those of the system
};

enum class UrlService : std::int32_t {
  kFtp = 1,
  kGopher = 2,
  kHttp = 3,
  kOther = 0x1000,
  kFile = 0x1001,
  kHttps = 0x100B,
};

struct UrlRequest;
struct UrlResponse;

class TQUrlLoader {
 public:
  TQUrlLoader() = default;
  TQUrlLoader(TQString user, TQString password);
  TQUrlLoader(const TQUrlLoader&) = delete;
  TQUrlLoader& operator=(const TQUrlLoader&) = delete;
  virtual ~TQUrlLoader() = default;

  // For callers that may show message boxes and a login dialog. There are none on a console, so
  // whatever is set here, a refused login is a failed transfer.
  void SetShowMessages(bool /*show*/) {}
  void SetAskPassword(bool /*ask*/) {}
  // Initially true. False tells every cache on the way to reload.
  void SetUseCache(bool use) { useCache_ = use; }
  // Request lines of each http request, without line ends.
  void SetExtraHeaders(std::vector<TQString> lines) { extraHeaders_ = std::move(lines); }
  void SetLimits(UrlLimits limits) { limits_ = std::move(limits); }

  [[nodiscard]] bool Fetch(std::u16string_view url);
  // The response, if there is one, becomes the buffer. `verb` and `mediaType` are for http.
  [[nodiscard]] bool Send(std::u16string_view url, std::string_view data, std::string_view verb,
                          std::string_view mediaType);

  // The system's number, where the last Send failed at a file of this machine; else 0.
  int SystemError() const { return systemError_; }

  // What the last transfer brought. A response 500 has its body here though it is a failure.
  bool HasBuffer() const { return hasBuffer_; }
  std::int32_t Size() const { return static_cast<std::int32_t>(buffer_.size()); }
  std::string_view Buffer() const { return buffer_; }
  std::string TakeBuffer();

  // Those given to the constructor or, after a successful transfer with a login, those that worked.
  const TQString& User() const { return user_; }
  const TQString& Password() const { return password_; }

  // Logins that worked in this process, by server. A later transfer without a login uses them.
  static void ClearCredentialCache();

 protected:
  // After each block of a download: its bytes, all bytes so far, and the bytes to come in all or
  // -1 if the server doesn't tell.
  virtual void OnBlock(std::string_view /*block*/, std::int64_t /*received*/,
                       std::int64_t /*expected*/) {}

 private:
  bool Prepare(std::u16string_view url, UrlRequest& request);
  void AddHttpHeaders(UrlRequest& request) const;
  bool Transfer(UrlRequest& request);
  void RememberCredentials(const UrlRequest& request);
  void DropBuffer();

  std::string buffer_;
  bool hasBuffer_ = false;
  int systemError_ = 0;
  std::vector<TQString> extraHeaders_;
  UrlLimits limits_;
  bool useCache_ = true;
  bool userGiven_ = false;
  bool passwordGiven_ = false;
  TQString user_;
  TQString password_;
  TQString tryUser_;
  TQString tryPassword_;
  std::string server_;  // lower case, without the port
  std::string object_;  // path and query; of a file URL the decoded path
};

}  // namespace kelmora
