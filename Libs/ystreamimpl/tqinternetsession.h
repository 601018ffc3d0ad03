// TQInternetSession: carries requests out with libcurl, over one handle that keeps connections open
// between them.
#pragma once

#include "curlapi.h"
#include "urltransport.h"

namespace kelmora {

class TQInternetSession final : public UrlTransport {
 public:
  ~TQInternetSession() override;

  // The first request loads libcurl. Without it every request is incomplete.
  UrlResponse Perform(const UrlRequest& request) override;

 private:
  class HeaderList;
  struct Download;

  bool Open();
  // One per kind of value, since the C function takes any and checks none.
  void SetNumber(CurlOption option, long value);
  void SetSize(CurlOption option, std::int64_t value);
  void SetText(CurlOption option, const std::string& value);
  void SetPointer(CurlOption option, const void* value);

  void SetCommon(const UrlRequest& request);
  void SetHttp(const UrlRequest& request, const HeaderList& headers);
  void SetFtpUpload(std::string_view* unsent);
  static std::size_t OnWrite(char* bytes, std::size_t size, std::size_t count, void* download);
  static std::size_t OnRead(char* buffer, std::size_t size, std::size_t count, void* unsent);

  CurlApi api_;
  CurlApi::Handle handle_ = nullptr;
};

}  // namespace kelmora
