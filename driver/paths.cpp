#include "paths.h"

#include <filesystem>
#include <system_error>

#include "tqcore/tqtext.h"

namespace kelmora {

TQString CurrentDirectory() {
  std::error_code error;
  const std::filesystem::path current = std::filesystem::current_path(error);
  TQString directory = FromNative(current.native());
  if (!directory.IsEmpty() && !directory.View().ends_with(u'/')) directory += u'/';
  return directory;
}

// ResolveRelativePath puts the text up to a first ":" of the directory in front of a rooted path,
// as a drive; here a directory may have a colon in its name and there are no drives.
void MakeAbsolute(TQString& path, const TQString& directory) {
  if (path.View().starts_with(u'/') || !path.IsRelativePath(false)) return;
  path = path.ResolveRelativePath(directory, TQString());
}

}  // namespace kelmora
