// CurlApi: the functions and numbers of libcurl that the system uses. The library is loaded by hand
// when the first URL comes, so that a run without one neither links nor starts it, and building
// needs no headers of it. The numbers are part of libcurl's frozen binary interface (soname 4);
// a test compares them with <curl/curl.h> where that is installed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelmora {

enum class CurlOption : int {
  kWriteData = 10001,
  kUrl = 10002,
  kReadData = 10009,
  kWriteFunction = 20011,
  kReadFunction = 20012,
  kTimeout = 13,
  kPostFields = 10015,
  kLowSpeedLimit = 19,
  kLowSpeedTime = 20,
  kHttpHeader = 10023,
  kCustomRequest = 10036,
  kUpload = 46,
  kFollowLocation = 52,
  kCaInfo = 10065,
  kMaxRedirects = 68,
  kConnectTimeout = 78,
  kHttpVersion = 84,
  kHttpAuth = 107,
  kProxyAuth = 111,
  kServerResponseTimeout = 112,
  kInFileSizeLarge = 30115,
  kMaxFileSizeLarge = 30117,
  kPostFieldSizeLarge = 30120,
  kUserName = 10173,
  kPassword = 10174,
  kProxyUserName = 10175,
  kProxyPassword = 10176,
  kProtocols = 181,
  kRedirectProtocols = 182,
};

namespace curl {
inline constexpr int kOk = 0;
inline constexpr int kOutOfMemory = 27;
inline constexpr long kGlobalAll = 3;
inline constexpr int kInfoResponseCode = 0x200002;   // long*
inline constexpr int kInfoContentLength = 0x60000F;  // std::int64_t*, -1 when unknown
inline constexpr long kHttpVersion11 = 2;
inline constexpr long kAnyAuthentication = ~0x10L;  // all but the variant for an old browser
inline constexpr long kProtocolHttp = 1 << 0;
inline constexpr long kProtocolHttps = 1 << 1;
inline constexpr long kProtocolFtp = 1 << 2;
inline constexpr long kProtocolGopher = 1 << 25;
}  // namespace curl

struct CurlApi {
  using Handle = void*;
  using List = void*;

  // The library then takes its memory by the functions given.
  int (*globalInit)(long flags, void* (*allocate)(std::size_t), void (*release)(void*),
                    void* (*resize)(void*, std::size_t), char* (*copy)(const char*),
                    void* (*allocateZeros)(std::size_t, std::size_t)) = nullptr;
  Handle (*easyInit)() = nullptr;
  void (*easyReset)(Handle) = nullptr;
  void (*easyCleanup)(Handle) = nullptr;
  int (*easyPerform)(Handle) = nullptr;
  int (*easySetOption)(Handle, int option, ...) = nullptr;
  int (*easyGetInfo)(Handle, int info, ...) = nullptr;
  List (*listAppend)(List, const char*) = nullptr;
  void (*listFree)(List) = nullptr;

  // False when the library, or a function of it, isn't there.
  [[nodiscard]] bool Load();
};

}  // namespace kelmora
