// LoadError: how loading and saving report. Nothing is thrown; the first failure is kept.
#pragma once

#include <cstdint>

#include "tqcore/tqstring.h"

namespace kelmora {

struct LoadError {
  enum Severity : std::int32_t { None = 0, File = 1, Decoding = 2, Parsing = 3, Internal = 4 };
  enum Code : std::int32_t {
    UrlUnreadable = 1,  // severity File; file errors carry the system's own number
    DecodeWarning = 3,  // severity Decoding: bytes that the encoding doesn't allow, on load
    EncodeWarning = 4,  // the same, on save
    ParseFailed = 5,    // severity Parsing
    WalkFailed = 6,
    EmptyName = 7,  // severity Internal from here on
    NoKindRow = 8,
    NoTree = 9,
    NoStream = 10,
  };

  std::int32_t code = 0;
  std::uint8_t flag = 0;
  TQString message;
  std::int32_t severity = None;

  bool HasError() const { return code != 0; }
  void Set(std::int32_t newSeverity, std::int32_t newCode, TQString text = {}) {
    severity = newSeverity;
    code = newCode;
    message = static_cast<TQString&&>(text);
  }
};

}  // namespace kelmora
