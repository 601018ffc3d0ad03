// ReadLine of every stream class, on top of its ReadChar. A template so that the calls of a final
// class are inlined.
#pragma once

#include "ystreamimpl/ystream.h"

namespace kelmora {

template <class Stream>
ResultCode ReadLineFrom(Stream& stream, StreamMode mode, char16_t* buffer, std::int32_t& count) {
  const std::int32_t limit = count;
  count = 0;
  if (mode != StreamMode::kRead && mode != StreamMode::kReadWrite) return streamresult::kWrongMode;
  char16_t unit = 0;
  while (count < limit && stream.ReadChar(unit)) {
    if (unit == u'\n') break;
    if (unit == u'\r') {
      static_cast<void>(stream.ReadChar(unit));  // taken for the LF of CR LF
      break;
    }
    buffer[count++] = unit;
  }
  buffer[count] = 0;
  return streamresult::kSuccess;
}

// GetName of the classes that keep one.
int CopyName(std::u16string_view name, char16_t* buffer, int size);

// Close for the destructors, which report a failure but can't raise it.
void CloseQuietly(YStream& stream);

}  // namespace kelmora
