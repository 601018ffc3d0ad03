// Collation: the order of texts under a language. A text becomes a key of bytes, and texts compare
// as their keys do: byte by byte, a key that the other begins with coming first.
//
// In the C and POSIX locales, and where no collation data are installed, the order is that of the
// 16-bit units. The collation library is a large one, so it is loaded when a run first needs it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "tqcore/tqstring.h"

namespace kelmora {

class Collation {
 public:
  virtual ~Collation() = default;
  // With `ignoreCase` texts that differ in case alone get the same key.
  virtual void AppendKey(std::u16string_view text, bool ignoreCase,
                         std::vector<std::uint8_t>& key) const = 0;
};

class Collations {
 public:
  Collations();
  ~Collations();

  // The collation of the environment: LC_ALL, else LC_COLLATE, else LANG.
  const Collation& Present();
  // That of a language tag such as "de" or "de-AT". A language without data of its own leaves the
  // present one. Lives as long as this object.
  const Collation& ForLanguage(std::u16string_view language);

 private:
  const Collation* Find(std::u16string_view language);  // null without data

  std::unique_ptr<Collation> units_;
  std::map<TQString, std::unique_ptr<Collation>, TextLess> byLanguage_;  // null: without data
  const Collation* present_ = nullptr;  // looked up when it is first asked for
};

}  // namespace kelmora
