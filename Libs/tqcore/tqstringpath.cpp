// Paths and URLs of TQString. "/" and "\" both separate; a ":" means a drive or a URL scheme.
#include <algorithm>

#include "tqcore/tqstring.h"
#include "tqcore/tqtext.h"

namespace kelmora {

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;
constexpr std::u16string_view kSeparators = u"/\\";
constexpr std::u16string_view kSchemeEnd = u"://";
constexpr std::u16string_view kUpwards[] = {u"../", u"..\\"};
constexpr std::u16string_view kHere[] = {u"./", u".\\"};
constexpr std::size_t kShortestStep = 3;  // units of "../"

constexpr bool IsSeparator(char16_t unit) {
  return unit == u'/' || unit == u'\\';
}

bool StartsWithEither(std::u16string_view path, const std::u16string_view (&starts)[2]) {
  return path.starts_with(starts[0]) || path.starts_with(starts[1]);
}

char16_t PathUnit(char16_t unit) {
  return unit == u'\\' ? u'/' : LowerCase(unit);
}

// The directory of the document that refers to a path, with its separator.
TQString BaseDirectory(std::u16string_view base, std::u16string_view defaultDirectory) {
  if (base.empty()) {
    TQString directory(defaultDirectory);
    if (!defaultDirectory.empty() && !IsSeparator(defaultDirectory.back())) directory += u'\\';
    return directory;
  }
  const std::size_t last = base.find_last_of(kSeparators);
  if (last == kNone) return TQString(base);
  const std::u16string_view directory = base.substr(0, last + 1);
  if (directory.ends_with(kSchemeEnd)) return TQString(base) += u'/';  // a URL without a path
  return TQString(directory);
}

// A path that begins with a separator keeps the server, or the drive, of its base.
TQString ResolveRooted(std::u16string_view path, std::u16string_view base) {
  const std::size_t scheme = base.find(kSchemeEnd);
  if (scheme != kNone) {
    const std::size_t root = base.find(u'/', scheme + kSchemeEnd.size());
    if (root != kNone) return TQString(base.substr(0, root)) += path;
    return TQString(base) += path.substr(1);
  }
  return TQString(base.substr(0, base.find(u':') + 1)) += path;
}

}  // namespace

TQString TQString::FileName() const {
  return TQString(View().substr(View().find_last_of(kSeparators) + 1));
}

TQString TQString::Directory(bool keepSeparator) const {
  const std::size_t last = View().find_last_of(kSeparators);
  if (last == kNone) return {};
  return TQString(View().substr(0, keepSeparator ? last + 1 : last));
}

TQString TQString::Extension(bool lowerCase) const {
  const std::size_t point = View().rfind(u'.');
  if (point == kNone) return {};
  const std::u16string_view text = View().substr(point + 1);
  if (text.find_first_of(u" #%;/\\") != kNone) return {};
  TQString extension(text);
  if (lowerCase) extension.MakeLower();
  return extension;
}

bool TQString::IsRelativePath(bool rootCountsAsAbsolute) const {
  const std::u16string_view path = View();
  if (path.empty() || HasColon()) return false;
  if (!IsSeparator(path[0])) return true;
  const bool isNetworkPath = path.size() > 1 && IsSeparator(path[1]);
  return !rootCountsAsAbsolute && !isNetworkPath;
}

bool TQString::SamePath(const TQString& other) const {
  return std::ranges::equal(View(), other.View(), {}, PathUnit, PathUnit);
}

TQString TQString::ResolveRelativePath(const TQString& base,
                                       const TQString& defaultDirectory) const {
  if (!IsRelativePath(false)) return *this;
  const TQString directory = BaseDirectory(base.View(), defaultDirectory.View());
  std::u16string_view prefix = directory.View();
  std::u16string_view path = View();
  if (IsSeparator(path[0])) return ResolveRooted(path, prefix);

  if (StartsWithEither(path, kHere)) path.remove_prefix(kHere[0].size());
  bool canRise = !prefix.empty();
  while (path.size() >= kShortestStep && StartsWithEither(path, kUpwards)) {
    path.remove_prefix(kShortestStep);
    if (!canRise) continue;
    const std::size_t last = prefix.substr(0, prefix.size() - 1).find_last_of(kSeparators);
    canRise = last != kNone;
    if (canRise) prefix = prefix.substr(0, last + 1);
  }
  return TQString(prefix) += path;
}

}  // namespace kelmora
