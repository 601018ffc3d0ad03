#include "urlparts.h"

#include <algorithm>
#include <charconv>

#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

constexpr std::string_view kSchemeEnd = "://";
constexpr std::string_view kLocalHost = "localhost";

struct Scheme {
  std::string_view name;
  UrlService service;
  std::uint16_t port;
};

constexpr Scheme kSchemes[] = {
    {"http", UrlService::kHttp, 80}, {"https", UrlService::kHttps, 443},
    {"ftp", UrlService::kFtp, 21},   {"gopher", UrlService::kGopher, 70},
    {"file", UrlService::kFile, 0},
};

void LowerAscii(std::string& text) {
  for (char& byte : text) {
    if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte + ('a' - 'A'));
  }
}

int HexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

bool IsUnsafe(char byte) {
  constexpr std::string_view kUnsafe = "\"<>\\^`{|}";
  const auto value = static_cast<unsigned char>(byte);
  return value <= ' ' || value > '~' || kUnsafe.find(byte) != std::string_view::npos;
}

std::string CanonicalObject(std::string_view object) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  bool inPath = true;
  for (char byte : object.substr(0, object.find('#'))) {
    if (byte == '?') inPath = false;
    if (byte == '\\' && inPath) {
      result += '/';
    } else if (IsUnsafe(byte)) {
      const auto value = static_cast<unsigned char>(byte);
      result += {'%', kDigits[value >> 4], kDigits[value & 0xF]};
    } else {
      result += byte;
    }
  }
  return result;
}

// The line-based protocols send logins and selectors decoded: a line end would begin a new command.
bool HasControl(std::string_view decoded) {
  constexpr char kDelete = 0x7F;
  return std::ranges::any_of(decoded, [](char byte) {
    return (static_cast<unsigned char>(byte) < ' ' && byte != '\t') || byte == kDelete;
  });
}

// "server:port"; false for a port that is no number up to 65535.
bool ParseServer(std::string_view text, UrlParts& parts) {
  const std::size_t bracket = text.rfind(']');
  const std::size_t colon = text.find(':', bracket == std::string_view::npos ? 0 : bracket);
  parts.server = text.substr(0, colon);
  LowerAscii(parts.server);
  const auto isBlank = [](char byte) { return static_cast<unsigned char>(byte) <= ' '; };
  if (std::ranges::any_of(parts.server, isBlank)) return false;
  if (colon == std::string_view::npos || colon + 1 == text.size()) return true;
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + colon + 1, end, parts.port);
  return result.ec == std::errc() && result.ptr == end;
}

}  // namespace

std::string UrlParts::Url() const {
  return scheme + std::string(kSchemeEnd) + server + ':' + std::to_string(port) + object;
}

std::string PercentDecode(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape = text[i] == '%' && i + 2 < text.size();
    const int high = isEscape ? HexValue(text[i + 1]) : -1;
    const int low = isEscape ? HexValue(text[i + 2]) : -1;
    if (high < 0 || low < 0) {
      result += text[i];
      continue;
    }
    result += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return result;
}

std::optional<UrlParts> ParseUrl(std::u16string_view url) {
  const std::string bytes = ToNative(url);
  std::string_view rest = bytes;
  const std::size_t schemeEnd = rest.find(kSchemeEnd);
  if (schemeEnd == std::string_view::npos || schemeEnd == 0) return std::nullopt;
  UrlParts parts;
  parts.scheme = rest.substr(0, schemeEnd);
  LowerAscii(parts.scheme);
  rest.remove_prefix(schemeEnd + kSchemeEnd.size());
  const auto* scheme = std::ranges::find(kSchemes, parts.scheme, &Scheme::name);
  if (scheme != std::end(kSchemes)) {
    parts.service = scheme->service;
    parts.port = scheme->port;
  }

  const std::size_t objectStart = std::min(rest.find_first_of("/\\?#"), rest.size());
  std::string_view authority = rest.substr(0, objectStart);
  parts.object = CanonicalObject(rest.substr(objectStart));
  if (parts.object.empty() || parts.object[0] == '?') parts.object.insert(0, 1, '/');
  const std::size_t at = authority.rfind('@');
  if (at != std::string_view::npos) {
    const std::string_view login = authority.substr(0, at);
    const std::size_t colon = login.find(':');
    parts.user = PercentDecode(login.substr(0, colon));
    if (colon != std::string_view::npos) parts.password = PercentDecode(login.substr(colon + 1));
    authority.remove_prefix(at + 1);
  }
  if (HasControl(parts.user) || HasControl(parts.password)) return std::nullopt;
  const bool isLineBased =
      parts.service == UrlService::kFtp || parts.service == UrlService::kGopher;
  if (isLineBased && HasControl(PercentDecode(parts.object))) return std::nullopt;
  if (!ParseServer(authority, parts)) return std::nullopt;
  const bool isLocal = parts.server.empty() || parts.server == kLocalHost;
  if (parts.service == UrlService::kFile ? !isLocal : parts.server.empty()) return std::nullopt;
  return parts;
}

}  // namespace kelmora
