// Where the two documents lie: relative names count from the current directory.
#pragma once

#include "tqcore/tqstring.h"

namespace kelmora {

// With "/" at its end. Empty when the directory is gone; names then stay relative.
TQString CurrentDirectory();

// URLs and paths that begin with "/" stay as they are.
void MakeAbsolute(TQString& path, const TQString& directory);

}  // namespace kelmora
