// UrlParts: a URL taken to pieces and put into the form in which a server may be asked for it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ystreamimpl/tqurlloader.h"

namespace kelmora {

struct UrlParts {
  UrlService service = UrlService::kOther;
  std::string scheme;    // lower case
  std::string user;      // decoded
  std::string password;  // decoded
  std::string server;    // lower case; an address of IP version 6 keeps its brackets
  std::uint16_t port = 0;
  std::string object;  // path and query: unsafe bytes as %XX, "\" of the path as "/", no fragment

  // Without user and password.
  std::string Url() const;
};

// Nothing for a text without "scheme://", without a server where one is needed, with a port that is
// no number, or with escaped control characters where a protocol would take them for line ends.
// Text outside ASCII is taken as UTF-8.
std::optional<UrlParts> ParseUrl(std::u16string_view url);

// "%41" becomes "A"; a "%" without two hexadecimal digits stays.
std::string PercentDecode(std::string_view text);

}  // namespace kelmora
