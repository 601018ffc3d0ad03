// Reading a file as a whole.
#pragma once

#include <cstddef>
#include <string_view>

#include "encodings/encodedbytes.h"
#include "xmltree/loaderror.h"

namespace kelmora {

// What may be read from something that tells no size in advance, so that nothing that never ends
// can hang a run or fill the memory.
struct StreamLimits {
  int silentSeconds = 60;    // to wait for the next byte
  int writerSeconds = 10;    // to wait for somebody who opens a named pipe to write
  int pipeMegabytes = 512;   // pipes, sockets
  int deviceMegabytes = 64;  // devices
  std::size_t fileBytes = EncodedBytes::kMostBytes;  // regular files
};

// The bytes of the file; a pipe or a device is read to its end. A directory is refused. False with
// the system's number and text in `error`, or with a text of ours when a limit was reached.
[[nodiscard]] bool ReadWholeFile(std::u16string_view path, EncodedBytes& bytes, LoadError& error,
                                 const StreamLimits& limits = {});

}  // namespace kelmora
