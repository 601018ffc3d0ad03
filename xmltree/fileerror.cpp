#include "fileerror.h"

#include <cstring>
#include <utility>

#include "tqcore/tqtext.h"

namespace kelmora {

void SetSystemError(LoadError& error, int number) {
  SetFileError(error, number, FromNative(std::strerror(number)));
}

void SetFileError(LoadError& error, int number, TQString message) {
  error.Set(LoadError::File, number, std::move(message));
  error.flag = 1;
}

}  // namespace kelmora
