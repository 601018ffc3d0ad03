// The seam between TQUrlLoader and what carries its requests out: libcurl, or a test.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "ystreamimpl/tqurlloader.h"

namespace kelmora {

struct UrlRequest {
  UrlService service = UrlService::kOther;
  std::string url;  // without user and password
  std::string user;
  std::string password;
  std::string proxyUser;
  std::string proxyPassword;
  bool isSend = false;
  std::string verb;                  // of http
  std::vector<std::string> headers;  // of http, without line ends
  std::string_view data;             // of a send
  UrlLimits limits;
  // May be empty; the arguments of TQUrlLoader::OnBlock.
  std::function<void(std::string_view, std::int64_t, std::int64_t)> onBlock;

  bool IsHttp() const { return service == UrlService::kHttp || service == UrlService::kHttps; }
  // Of other services every status counts; they report failures otherwise.
  bool IsSuccess(long status) const { return !IsHttp() || (status >= 200 && status <= 299); }
  bool HasBodyToRead(long status) const { return IsSuccess(status) || status == 500; }
};

struct UrlResponse {
  bool isComplete = false;  // nothing broke, in either direction
  long status = 0;
  bool hasBody = false;
  std::string body;
};

class UrlTransport {
 public:
  virtual ~UrlTransport() = default;
  // Raises nothing but std::bad_alloc.
  virtual UrlResponse Perform(const UrlRequest& request) = 0;
};

// Whom TQUrlLoader asks from now on; null is libcurl. Returns the one before. For tests.
UrlTransport* ReplaceUrlTransport(UrlTransport* transport);

}  // namespace kelmora
