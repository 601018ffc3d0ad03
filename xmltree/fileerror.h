// Failures of reading and writing files in the form of LoadError: severity File with the system's
// number and text, or with a text of our own.
#pragma once

#include "xmltree/loaderror.h"

namespace kelmora {

void SetSystemError(LoadError& error, int number);
void SetFileError(LoadError& error, int number, TQString message);

}  // namespace kelmora
