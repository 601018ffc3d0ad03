// The collation library's C functions carry its version in their names (ucol_open_72), and so does
// its file. No header of it is needed: the five functions and the few numbers of its stable
// interface that serve here are declared below.
#include "sorting/collation.h"

#include <cstdlib>
#include <new>
#include <string>
#include <string_view>

#include "tqcore/sharedlibrary.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

// Each unit as UTF-8 would write it, surrogates too: that keeps the order of the units, and most
// are one byte.
class UnitCollation final : public Collation {
 public:
  void AppendKey(std::u16string_view text, bool ignoreCase,
                 std::vector<std::uint8_t>& key) const override {
    constexpr std::size_t kMostBytes = 3;
    std::size_t at = key.size();
    key.resize(at + kMostBytes * text.size());  // grows geometrically; reserve wouldn't
    const auto put = [&key, &at](int byte) { key[at++] = static_cast<std::uint8_t>(byte); };
    for (const char16_t written : text) {
      const int unit = ignoreCase ? LowerCase(written) : written;
      if (unit < 0x80) {
        put(unit);
      } else if (unit < 0x800) {
        put(0xC0 | unit >> 6);
        put(0x80 | (unit & 0x3F));
      } else {
        put(0xE0 | unit >> 12);
        put(0x80 | (unit >> 6 & 0x3F));
        put(0x80 | (unit & 0x3F));
      }
    }
    key.resize(at);
  }
};

struct Collator;  // of the library

struct CollationLibrary {
  Collator* (*open)(const char* locale, int* status) = nullptr;
  void (*close)(Collator* collator) = nullptr;
  const char* (*localeByType)(const Collator* collator, int type, int* status) = nullptr;
  void (*setAttribute)(Collator* collator, int attribute, int value, int* status) = nullptr;
  int (*sortKey)(const Collator* collator, const char16_t* text, int length, std::uint8_t* key,
                 int capacity) = nullptr;

  static constexpr int kMemoryError = 7;  // status
  static constexpr int kValidLocale = 1;  // type of localeByType
  static constexpr int kAlternateHandling = 1, kNonIgnorable = 21;
  static constexpr int kStrength = 5, kSecondary = 1, kTertiary = 2;

  bool IsLoaded() const { return sortKey != nullptr; }
  static const CollationLibrary& Get() {
    static const CollationLibrary library = Load();
    return library;
  }

 private:
  static CollationLibrary Load();
  bool Bind(void* handle, const std::string& suffix);
};

bool CollationLibrary::Bind(void* handle, const std::string& suffix) {
  return BindSymbol(handle, ("ucol_open" + suffix).c_str(), open) &&
         BindSymbol(handle, ("ucol_close" + suffix).c_str(), close) &&
         BindSymbol(handle, ("ucol_getLocaleByType" + suffix).c_str(), localeByType) &&
         BindSymbol(handle, ("ucol_setAttribute" + suffix).c_str(), setAttribute) &&
         BindSymbol(handle, ("ucol_getSortKey" + suffix).c_str(), sortKey);
}

CollationLibrary CollationLibrary::Load() {
  constexpr int kNewestVersion = 99;
  constexpr int kOldestVersion = 50;
  for (int version = kNewestVersion; version >= kOldestVersion; --version) {
    const std::string number = std::to_string(version);
    void* handle = OpenSharedLibrary(("libicui18n.so." + number).c_str());
    if (handle == nullptr) continue;
    CollationLibrary library;
    if (library.Bind(handle, "_" + number)) return library;
  }
  return {};
}

// Two collators of one language: with case and without.
class LanguageCollation final : public Collation {
 public:
  LanguageCollation(Collator* withCase, Collator* withoutCase)
      : withCase_(withCase), withoutCase_(withoutCase) {}
  ~LanguageCollation() override {
    CollationLibrary::Get().close(withCase_);
    CollationLibrary::Get().close(withoutCase_);
  }

  void AppendKey(std::u16string_view text, bool ignoreCase,
                 std::vector<std::uint8_t>& key) const override {
    const Collator* collator = ignoreCase ? withoutCase_ : withCase_;
    const auto length = static_cast<int>(text.size());
    const std::size_t start = key.size();
    const std::size_t guess = 3 * text.size() + 8;
    key.resize(start + guess);
    const auto& library = CollationLibrary::Get();
    int used =
        library.sortKey(collator, text.data(), length, key.data() + start, static_cast<int>(guess));
    if (static_cast<std::size_t>(used) > guess) {
      key.resize(start + static_cast<std::size_t>(used));
      used = library.sortKey(collator, text.data(), length, key.data() + start, used);
    }
    if (used == 0) throw std::bad_alloc();  // an empty text has a key too
    key.resize(start + static_cast<std::size_t>(used));
  }

  // Null for a language that the library has no data of its own for.
  static std::unique_ptr<Collation> Make(const std::string& language) {
    if (!CollationLibrary::Get().IsLoaded()) return nullptr;
    Collator* withCase = Open(language, CollationLibrary::kTertiary);
    Collator* withoutCase = Open(language, CollationLibrary::kSecondary);
    if (withCase != nullptr && withoutCase != nullptr) {
      return std::make_unique<LanguageCollation>(withCase, withoutCase);
    }
    if (withCase != nullptr) CollationLibrary::Get().close(withCase);
    if (withoutCase != nullptr) CollationLibrary::Get().close(withoutCase);
    return nullptr;
  }

 private:
  static Collator* Open(const std::string& language, int strength) {
    const auto& library = CollationLibrary::Get();
    int status = 0;  // positive: an error
    Collator* collator = library.open(language.c_str(), &status);
    if (status == CollationLibrary::kMemoryError) throw std::bad_alloc();
    if (collator == nullptr) return nullptr;
    const char* found =
        status <= 0 ? library.localeByType(collator, CollationLibrary::kValidLocale, &status)
                    : nullptr;
    if (found == nullptr || *found == '\0' || std::string_view(found) == "root") {
      library.close(collator);
      return nullptr;
    }
    library.setAttribute(collator, CollationLibrary::kAlternateHandling,
                         CollationLibrary::kNonIgnorable, &status);
    library.setAttribute(collator, CollationLibrary::kStrength, strength, &status);
    return collator;
  }

  Collator* withCase_;
  Collator* withoutCase_;
};

// The language of a tag or of a locale name such as "de_AT.UTF-8@euro"; empty for what is no name.
std::string LanguageOf(std::u16string_view name) {
  constexpr std::size_t kLongest = 80;  // units; no language tag comes near
  std::string language;
  for (const char16_t unit : name.substr(0, kLongest)) {
    if (unit == u'.' || unit == u'@') break;
    const bool isLetter = (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
    const bool isDigit = unit >= u'0' && unit <= u'9';
    if (!isLetter && !isDigit && unit != u'-' && unit != u'_') return {};
    language += unit == u'-' ? '_' : static_cast<char>(unit);
  }
  return language == "C" || language == "POSIX" ? std::string() : language;
}

TQString EnvironmentLocale() {
  for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return FromNative(value);
  }
  return {};
}

}  // namespace

Collations::Collations() : units_(std::make_unique<UnitCollation>()) {}
Collations::~Collations() = default;

const Collation& Collations::Present() {
  if (present_ == nullptr) present_ = Find(EnvironmentLocale());
  if (present_ == nullptr) present_ = units_.get();
  return *present_;
}

const Collation& Collations::ForLanguage(std::u16string_view language) {
  const Collation* found = Find(language);
  return found != nullptr ? *found : Present();
}

const Collation* Collations::Find(std::u16string_view language) {
  const auto known = byLanguage_.find(language);
  if (known != byLanguage_.end()) return known->second.get();
  const std::string name = LanguageOf(language);
  auto made = name.empty() ? nullptr : LanguageCollation::Make(name);
  return byLanguage_.emplace(language, std::move(made)).first->second.get();
}

}  // namespace kelmora
